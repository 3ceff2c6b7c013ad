#include "host/poll_plan.h"

#include <algorithm>
#include <map>
#include <set>
#include <utility>

namespace kmr {

namespace {

constexpr int BLOCK_BITS = 16;

using Numbers = std::set<int>;

// The numbers asked for, widened below borders so that the last run there is complete.
void widenBelowBorders(const QString &area, int runLength, Numbers &numbers)
{
    std::set<int> borders;
    for (const int number : numbers) {
        const int border = nextBorder(area, number);
        if (number >= border - runLength)
            borders.insert(border);
    }
    for (const int border : borders) {
        for (int number = border - runLength; number < border; ++number)
            numbers.insert(number);
    }
}

void cutBits(Run run, const Numbers &numbers, int blockBits, std::vector<Run> &runs)
{
    for (auto it = numbers.begin(); it != numbers.end();) {
        const int blockEnd = (*it / blockBits + 1) * blockBits;
        const auto next = numbers.lower_bound(blockEnd);
        run.first = *it;
        run.count = *std::prev(next) - run.first + 1;
        if (run.end() == nextBorder(run.area, run.first))
            --run.count;
        runs.push_back(run);
        it = next;
    }
}

void cutWords(Run run, const Numbers &numbers, int groupLimit, std::vector<Run> &runs)
{
    for (auto it = numbers.begin(); it != numbers.end();) {
        run.first = *it;
        run.count = 0;
        const int border = nextBorder(run.area, run.first);
        // A run may not reach into the full group below a border, nor beyond it.
        const int groupBegin = border - groupLimit;
        const int limit = run.first < groupBegin ? groupBegin : border;
        while (it != numbers.end() && *it == run.end() && run.count < groupLimit && *it < limit) {
            ++run.count;
            ++it;
        }
        runs.push_back(run);
    }
}

} // namespace

std::vector<Run> readRuns(const std::vector<Tag> &tags, int groupLimit)
{
    std::map<std::pair<int, QString>, Numbers> asked;
    for (const Tag &tag : tags) {
        Numbers &numbers = asked[{tag.elements.station, tag.elements.area}];
        for (int number = tag.elements.first; number < tag.elements.end(); ++number)
            numbers.insert(number);
    }

    std::vector<Run> runs;
    for (auto &[key, numbers] : asked) {
        const Run run{key.first, key.second, 0, 1};
        if (isBitArea(run.area)) {
            const int blockBits = std::min(BLOCK_BITS, 8 * groupLimit);
            widenBelowBorders(run.area, blockBits, numbers);
            cutBits(run, numbers, blockBits, runs);
        } else if (isCounterArea(run.area)) {
            cutWords(run, numbers, 1, runs);
        } else {
            widenBelowBorders(run.area, groupLimit, numbers);
            cutWords(run, numbers, groupLimit, runs);
        }
    }
    return runs;
}

std::vector<Run> writeRuns(const Tag &tag, int groupLimit)
{
    const bool isWord = tag.kind == ElementKind::Word;
    std::vector<Run> runs;
    for (int number = tag.elements.first; number < tag.elements.end();) {
        const int end = std::min({number + (isWord ? groupLimit : 1), tag.elements.end(),
                                  nextBorder(tag.elements.area, number)});
        runs.push_back({tag.elements.station, tag.elements.area, number, end - number});
        number = end;
    }
    return runs;
}

QList<KEY_ADDRESS> toKeys(const std::vector<Run> &runs)
{
    QList<KEY_ADDRESS> keys;
    for (const Run &run : runs)
        keys.append(toKey(run));
    return keys;
}

} // namespace kmr
