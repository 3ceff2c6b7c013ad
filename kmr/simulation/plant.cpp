#include "kmr/simulation/plant.h"

#include "host/error.h"

#include <QStringList>

namespace kmr {

Plant::Plant(const std::vector<int> &stations, simulator::Registers registers)
{
    for (const int station : stations) {
        const QByteArray digits = QByteArray::number(station).rightJustified(2, '0');
        m_controllers.try_emplace(station, digits, registers);
    }
}

simulator::Memory &Plant::memory(int station)
{
    const auto found = m_controllers.find(station);
    if (found != m_controllers.end())
        return found->second.memory();
    QStringList known;
    for (const auto &[number, controller] : m_controllers)
        known.append(QString::number(number));
    throw Error(ErrorKind::Usage, QString("station %1 is not simulated, only %2: see --station")
                                      .arg(station)
                                      .arg(known.join(", ")));
}

std::vector<Setting> Plant::settingsOf(const Tag &tag, const Values &values)
{
    const ElementRange &range = tag.elements;
    const simulator::Memory &held = memory(range.station);
    const bool isBitOfWord = tag.kind == ElementKind::WordBit;
    const QString area = range.area == WORD_BIT_AREA ? QString("TV") : range.area;
    std::vector<Setting> settings;
    for (int i = 0; i < range.count; ++i) {
        const auto place = modbus::placeOf(area, range.first + i);
        if (!place)
            throw Error(ErrorKind::Usage, tag.text + " is not an element of the controller");
        const std::uint32_t value =
            isBitOfWord ? held.value(place->address) : values[static_cast<std::size_t>(i)];
        settings.push_back({range.station, *place, value});
    }
    for (int i = 0; isBitOfWord && i < tag.count; ++i) {
        const int bit = tag.firstBit + i;
        std::uint32_t &word = settings[static_cast<std::size_t>(bit / WORD_BITS)].value;
        const std::uint32_t mask = 1U << bit % WORD_BITS;
        word = values[static_cast<std::size_t>(i)] != 0 ? word | mask : word & ~mask;
    }
    return settings;
}

void Plant::set(const std::vector<Setting> &settings)
{
    for (const Setting &setting : settings)
        simulator::setElement(memory(setting.station), setting.place, setting.value);
}

void Plant::setObserver(const simulator::Controller::Observer &observer)
{
    for (auto &[station, controller] : m_controllers)
        controller.setObserver(observer);
}

simulator::Responder Plant::responder(simulator::Faults &faults)
{
    return [this, &faults](const QByteArray &line) {
        for (auto &[station, controller] : m_controllers) {
            if (controller.isAddressedBy(line))
                return faults.answer(controller, line);
        }
        // All controllers carry out a broadcast, and one reports the line.
        for (auto next = std::next(m_controllers.begin()); next != m_controllers.end(); ++next)
            next->second.carryOut(line);
        return faults.answer(m_controllers.begin()->second, line);
    };
}

} // namespace kmr
