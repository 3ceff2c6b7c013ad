// Cuts tags into requests whose elements the driver refreshes completely.
//
//  - Bits: the driver reads whole blocks of 16, and 32 bits at most, whatever the run's length. So
//    there is one run for one or two neighbouring blocks of 16, from the first bit asked for to the
//    last.
//  - Words: one run for each group of neighbours, cut at the group limit, but never between the two
//    words of a 32-bit value: they could come from before and after a change.
//  - Counters: one by one, because the driver halves a larger count.
//  - The driver joins neighbouring runs while the joined run is no longer than the group limit,
//    also across the borders of nextBorder(), and would then read other memory after the border.
//    The last run below a border is therefore so long that nothing can be joined to it:
//     - words in a full group; if that would cut through a value, the group begins after the value,
//       and the first run after the border is longer by what the group lacks
//     - bits from the first one of their block on. If that is the only block of the run, it ends
//       one bit below the border: 16 bits make the driver read 32; the last one is also refreshed
#pragma once

#include "host/tags/element_range.h"
#include "host/tags/tag.h"

#include <QList>

#include <vector>

namespace kmr {

// All elements of `tags`, without duplicates, in runs of one request each, ordered by station, area
// and number. `groupLimit`: the driver's, 1 to 8. Throws Error (Usage) for 32-bit values that do
// not fit one request of so many words. `Unlike`: as UnlikeCut cuts them, with elements that nobody
// asked for if that makes neighbours unlike.
enum class Neighbours { Any, Unlike };
std::vector<ElementRange> readRanges(const std::vector<Tag> &tags, int groupLimit,
                                     Neighbours neighbours = Neighbours::Any);

// The elements of `tags` in their order, in runs of one write request each: single bits and
// counters, groups of words up to the limit and the border, both words of a 32-bit value in one.
// Consecutive words are in one request, also those of two tags. `Unlike`: full groups and shorter
// ones in turn, for reads. Throws Error (Usage) if the limit is too low for a value.
std::vector<ElementRange> writeRanges(const std::vector<Tag> &tags, int groupLimit,
                                      Neighbours neighbours = Neighbours::Any);

// A run as the driver expects it for one request: with several counters it halves the count.
KEY_ADDRESS requestKey(const ElementRange &run);

// The runs as the driver's poll list.
QList<KEY_ADDRESS> toKeys(const std::vector<ElementRange> &runs);

} // namespace kmr
