// Cuts the elements of one station so that the answers to successive requests have different forms
// (AnswerForm), if that costs less than a check question between them (InStep).
//
//  - Words: full groups, groups of one word less and of two less in turn.
//  - Counters: one and two in turn.
//  - Bits: one block of 16 and two in turn.
//  - If two would still look alike, words are read with the word below, and a block of 16 bits with
//    the next block.
#pragma once

#include "host/tags/element_range.h"

#include <set>
#include <vector>

namespace kmr {

class UnlikeCut {
public:
    // The areas of a station must be passed in the driver's order of polling. `kind`: station and
    // area; the runs are appended to `runs`.
    explicit UnlikeCut(int groupLimit) : m_groupLimit(groupLimit) {}

    // `tied`: words that must be in one request with the word after them. No group of them is
    // longer than the group limit.
    void cutWords(const ElementRange &kind, const std::set<int> &numbers, const std::set<int> &tied,
                  std::vector<ElementRange> &runs);
    void cutCounters(const ElementRange &kind, const std::set<int> &numbers,
                     std::vector<ElementRange> &runs);
    void cutBits(const ElementRange &kind, const std::set<int> &numbers,
                 std::vector<ElementRange> &runs);

private:
    int m_groupLimit;
    int m_last = 0;       // bytes of the last request's answer; negative: bits
    int m_beforeLast = 0; // the same for the request before

    void add(ElementRange run, int bytes, std::vector<ElementRange> &runs);
};

} // namespace kmr
