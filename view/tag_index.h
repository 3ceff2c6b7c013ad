// Which tags lie in a range of elements, found without asking every one.
#pragma once

#include "host/tags/element_range.h"

#include <QString>

#include <cstddef>
#include <map>
#include <utility>
#include <vector>

namespace kmr {

class TagIndex {
public:
    // `ranges`: the elements of each tag.
    explicit TagIndex(const std::vector<ElementRange> &ranges = {});

    // The places in the list of those that have an element in common with `range`.
    std::vector<std::size_t> in(const ElementRange &range) const;

private:
    struct Entry {
        int first = 0;
        int end = 0;
        std::size_t place = 0;
    };
    struct Area {
        std::vector<Entry> entries; // in the order of their first elements
        int longest = 0;            // elements of the longest
    };
    std::map<std::pair<int, QString>, Area> m_areas; // by station and area
};

} // namespace kmr
