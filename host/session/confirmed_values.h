// The confirmed values of the controller: an element has the value of its last confirmed answer.
#pragma once

#include "host/session/quality.h"
#include "host/tags/element_range.h"

#include <QString>

#include <cstdint>
#include <map>
#include <utility>
#include <vector>

namespace kmr {

class ConfirmedValues {
public:
    // Makes an element Good with `value`. Returns true if its value changes; the first one changes
    // from 0.
    bool confirm(int station, const QString &area, int number, std::uint32_t value);

    // Sets the state of all elements of a run; their values stay.
    void set(const ElementRange &run, const ElementState &state);

    // Sets the state of all elements of a station that have one.
    void setStation(int station, const ElementState &state);

    // The state of the first element that isn't Good, or Good.
    ElementState worst(const ElementRange &run) const;

    // The last confirmed values of a run; 0 for elements without one.
    std::vector<std::uint32_t> values(const ElementRange &run) const;

private:
    struct Element {
        ElementState state;
        std::uint32_t value = 0;
    };
    using Elements = std::map<int, Element>; // by number

    const Element *find(const Elements *elements, int number) const;
    const Elements *elementsOf(const ElementRange &run) const;

    std::map<std::pair<int, QString>, Elements> m_elements; // by station and area
};

} // namespace kmr
