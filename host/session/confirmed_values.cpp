#include "host/session/confirmed_values.h"

#include <utility>

namespace kmr {

bool ConfirmedValues::confirm(int station, const QString &area, int number, std::uint32_t value)
{
    Element &element = m_elements[{station, area}][number];
    const bool isNew = element.value != value;
    element = {{Quality::Good, {}}, value};
    return isNew;
}

void ConfirmedValues::set(const ElementRange &run, const ElementState &state)
{
    Elements &elements = m_elements[{run.station, run.area}];
    for (int number = run.first; number < run.end(); ++number)
        elements[number].state = state;
}

void ConfirmedValues::setStation(int station, const ElementState &state)
{
    for (auto &[place, elements] : m_elements) {
        if (place.first != station)
            continue;
        for (auto &[number, element] : elements)
            element.state = state;
    }
}

ElementState ConfirmedValues::worst(const ElementRange &run) const
{
    const Elements *elements = elementsOf(run);
    for (int number = run.first; number < run.end(); ++number) {
        const Element *element = find(elements, number);
        if (element == nullptr)
            return {};
        if (element->state.quality != Quality::Good)
            return element->state;
    }
    return {Quality::Good, {}};
}

std::vector<std::uint32_t> ConfirmedValues::values(const ElementRange &run) const
{
    const Elements *elements = elementsOf(run);
    std::vector<std::uint32_t> values;
    for (int number = run.first; number < run.end(); ++number) {
        const Element *element = find(elements, number);
        values.push_back(element != nullptr ? element->value : 0);
    }
    return values;
}

const ConfirmedValues::Elements *ConfirmedValues::elementsOf(const ElementRange &run) const
{
    const auto found = m_elements.find({run.station, run.area});
    return found != m_elements.end() ? &found->second : nullptr;
}

const ConfirmedValues::Element *ConfirmedValues::find(const Elements *elements, int number) const
{
    if (elements == nullptr)
        return nullptr;
    const auto found = elements->find(number);
    return found != elements->end() ? &found->second : nullptr;
}

} // namespace kmr
