#include "view/tag_index.h"

#include <algorithm>

namespace kmr {

TagIndex::TagIndex(const std::vector<ElementRange> &ranges)
{
    for (std::size_t place = 0; place < ranges.size(); ++place) {
        const ElementRange &range = ranges[place];
        Area &area = m_areas[{range.station, range.area}];
        area.entries.push_back({range.first, range.end(), place});
        area.longest = std::max(area.longest, range.count);
    }
    for (auto &[key, area] : m_areas) {
        std::sort(area.entries.begin(), area.entries.end(),
                  [](const Entry &left, const Entry &right) { return left.first < right.first; });
    }
}

std::vector<std::size_t> TagIndex::in(const ElementRange &range) const
{
    std::vector<std::size_t> places;
    const auto area = m_areas.find({range.station, range.area});
    if (area == m_areas.end())
        return places;
    const std::vector<Entry> &entries = area->second.entries;
    auto entry =
        std::lower_bound(entries.begin(), entries.end(), range.first - area->second.longest + 1,
                         [](const Entry &candidate, int first) { return candidate.first < first; });
    for (; entry != entries.end() && entry->first < range.end(); ++entry) {
        if (entry->end > range.first)
            places.push_back(entry->place);
    }
    return places;
}

} // namespace kmr
