// The simulated controllers on one line, by station.
#pragma once

#include "host/tags/values.h"
#include "modbus/areas.h"
#include "simulator/controller.h"
#include "simulator/faults.h"
#include "simulator/responder.h"

#include <map>
#include <vector>

namespace kmr {

// One bit or register of a station, and its new value.
struct Setting {
    int station = 1;
    modbus::Place place;
    std::uint32_t value = 0;
};

class Plant {
public:
    // `stations`: 1 to 99, at least one.
    explicit Plant(const std::vector<int> &stations,
                   simulator::Registers registers = simulator::Registers::OfAreas);

    using Controllers = std::map<int, simulator::Controller>;
    const Controllers &controllers() const
    {
        return m_controllers;
    }

    // The lowest station, which is used if none is named.
    int firstStation() const
    {
        return m_controllers.begin()->first;
    }

    // Throws Error (Usage) for a station that is not simulated.
    simulator::Memory &memory(int station);

    // The settings that give a tag `values`, also for inputs. Throws the same as memory().
    std::vector<Setting> settingsOf(const Tag &tag, const Values &values);

    void set(const std::vector<Setting> &settings);

    void setObserver(const simulator::Controller::Observer &observer);

    // Answers as the controllers do on a line with `faults`. This object and `faults` must outlive
    // it.
    simulator::Responder responder(simulator::Faults &faults);

private:
    Controllers m_controllers;
};

} // namespace kmr
