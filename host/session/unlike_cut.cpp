#include "host/session/unlike_cut.h"

#include <algorithm>

namespace kmr {

namespace {

constexpr int WORD_BYTES = 2;
constexpr int COUNTER_BYTES = 4;
constexpr int PAIR_KEY = 4; // the count for which the driver reads two counters
constexpr int LAST_COUNTER = 255;

// Words that must be in one request.
struct Atom {
    int first;
    int end;
};

std::vector<Atom> atomsOf(const std::set<int> &numbers, const std::set<int> &tied)
{
    std::vector<Atom> atoms;
    for (const int number : numbers) {
        if (!atoms.empty() && tied.count(atoms.back().end - 1) > 0)
            atoms.back().end = number + 1;
        else
            atoms.push_back({number, number + 1});
    }
    return atoms;
}

using AtomIterator = std::vector<Atom>::const_iterator;

// The end of the longest request that begins with `begin`.
AtomIterator longest(AtomIterator begin, AtomIterator end, int limit)
{
    auto last = begin + 1;
    while (last != end && last->end - begin->first <= limit)
        ++last;
    return last;
}

// Whether a request from `begin` to before `cut` can be followed by one that is not joined to
// it and does not look like it.
bool canFollow(AtomIterator begin, AtomIterator cut, AtomIterator end, int limit)
{
    if (cut == end)
        return true;
    const auto next = longest(cut, end, limit);
    if (next != end)
        return true; // the rest can be cut again
    const int length = std::prev(cut)->end - begin->first;
    const int nextLength = std::prev(next)->end - cut->first;
    return nextLength != length && std::prev(next)->end - begin->first > limit;
}

} // namespace

void UnlikeCut::add(ElementRange run, int bytes, std::vector<ElementRange> &runs)
{
    m_beforeLast = m_last;
    m_last = bytes;
    runs.push_back(std::move(run));
}

void UnlikeCut::cutWords(const ElementRange &kind, const std::set<int> &numbers,
                         const std::set<int> &tied, std::vector<ElementRange> &runs)
{
    const std::vector<Atom> atoms = atomsOf(numbers, tied);
    int previous = -m_groupLimit - 1; // where the last run began
    for (auto begin = atoms.begin(); begin != atoms.end();) {
        const auto most = longest(begin, atoms.end(), m_groupLimit);
        auto best = most;
        int bestRank = 3;
        for (auto cut = most; cut != begin && bestRank > 0; --cut) {
            const int end = std::prev(cut)->end;
            const int bytes = WORD_BYTES * (end - begin->first);
            const bool isApart = end - previous > m_groupLimit;
            const int rank =
                bytes == m_last || !isApart || !canFollow(begin, cut, atoms.end(), m_groupLimit) ? 3
                : bytes == m_beforeLast                                                          ? 1
                                        : 0;
            if (rank < bestRank) {
                best = cut;
                bestRank = rank;
            }
        }
        ElementRange run = kind;
        run.first = begin->first;
        run.count = std::prev(best)->end - run.first;
        const bool canBeWidened = WORD_BYTES * run.count == m_last && run.count < m_groupLimit &&
                                  run.first > 0 && nextBorder(run.area, run.first - 1) != run.first;
        if (canBeWidened) {
            --run.first;
            ++run.count;
        }
        previous = run.first;
        add(run, WORD_BYTES * run.count, runs);
        begin = best;
    }
}

void UnlikeCut::cutCounters(const ElementRange &kind, const std::set<int> &numbers,
                            std::vector<ElementRange> &runs)
{
    for (auto number = numbers.begin(); number != numbers.end();) {
        ElementRange run = kind;
        run.first = *number;
        const bool isPair = m_last != 2 * COUNTER_BYTES && m_groupLimit >= PAIR_KEY &&
                            numbers.count(run.first + 1) > 0 &&
                            run.first + PAIR_KEY - 1 <= LAST_COUNTER;
        run.count = isPair ? 2 : 1;
        add(run, COUNTER_BYTES * run.count, runs);
        std::advance(number, run.count);
    }
}

void UnlikeCut::cutBits(const ElementRange &kind, const std::set<int> &numbers,
                        std::vector<ElementRange> &runs)
{
    constexpr int ONE_BLOCK = -2; // bytes
    constexpr int TWO_BLOCKS = -4;
    for (auto number = numbers.begin(); number != numbers.end();) {
        const int begin = *number / BLOCK_BITS * BLOCK_BITS;
        const int border = nextBorder(kind.area, *number);
        const auto afterOne = numbers.lower_bound(begin + BLOCK_BITS);
        const auto afterTwo = numbers.lower_bound(std::min(begin + 2 * BLOCK_BITS, border));
        const bool reachesTwo = begin + 2 * BLOCK_BITS <= border;
        ElementRange run = kind;
        run.first = begin;
        if (reachesTwo && m_last != TWO_BLOCKS && (afterTwo != afterOne || m_last == ONE_BLOCK)) {
            run.count = 2 * BLOCK_BITS;
            add(run, TWO_BLOCKS, runs);
            number = afterTwo;
        } else { // for 16 bits the driver reads 32; it also refreshes the last one
            run.count = BLOCK_BITS - 1;
            add(run, ONE_BLOCK, runs);
            number = afterOne;
        }
    }
}

} // namespace kmr
