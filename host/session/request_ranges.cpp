#include "host/session/request_ranges.h"

#include "host/error.h"
#include "host/session/unlike_cut.h"

#include <algorithm>
#include <climits>
#include <map>
#include <set>
#include <utility>

namespace kmr {

namespace {

constexpr int MOST_WORDS = 8; // the highest group limit

using Numbers = std::set<int>;

// The elements wanted in one area of one station.
struct Elements {
    Numbers numbers;
    Numbers tied; // must be in one request with the number after them
};

// Adds the numbers from `first` to `end` - 1, to be read in one request.
void addTied(int first, int end, Elements &elements)
{
    for (int number = first; number < end; ++number) {
        elements.numbers.insert(number);
        if (number + 1 < end)
            elements.tied.insert(number);
    }
}

// The wanted bits, extended below borders so that the last run there is complete.
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

// `runBits`: a run of so many bits, from a multiple of it on, makes one request.
void cutBits(ElementRange run, const Numbers &numbers, int runBits, std::vector<ElementRange> &runs)
{
    const int blockBits = std::min(runBits, BLOCK_BITS);
    for (auto it = numbers.begin(); it != numbers.end();) {
        const int border = nextBorder(run.area, *it);
        const int begin = *it / blockBits * blockBits;
        const auto next = numbers.lower_bound(std::min(begin + runBits, border));
        run.first = *it;
        run.count = *std::prev(next) - run.first + 1;
        if (run.end() == border && begin + blockBits == border)
            --run.count;
        runs.push_back(run);
        it = next;
    }
}

// Extends the last request below a border and the first one after it until they can't be joined.
void keepApartAtBorders(const QString &area, int groupLimit, Elements &words)
{
    for (int border = nextBorder(area, 0); border != INT_MAX; border = nextBorder(area, border)) {
        const auto after = words.numbers.lower_bound(border);
        if (after == words.numbers.begin() || after == words.numbers.end() ||
            *after - *std::prev(after) >= groupLimit)
            continue;
        int begin = border - groupLimit;
        while (words.tied.count(begin - 1) > 0)
            ++begin;
        addTied(begin, border, words);
        addTied(*after, begin + groupLimit + 1, words);
    }
}

void checkLength(const ElementRange &values, int groupLimit)
{
    if (values.count <= groupLimit)
        return;
    throw Error(
        ErrorKind::Usage,
        QString("the values of 32 or 64 bits in %1 to %2 need a request of %3 words, but the "
                "group limit is %4: %5")
            .arg(elementName(values.area, values.first), elementName(values.area, values.end() - 1))
            .arg(values.count)
            .arg(groupLimit)
            .arg(values.count <= MOST_WORDS ? "raise it" : "name fewer values that overlap"));
}

void cutWords(const ElementRange &kind, const Elements &words, int groupLimit,
              std::vector<ElementRange> &runs)
{
    const std::size_t begin = runs.size();
    for (auto it = words.numbers.begin(); it != words.numbers.end(); ++it) {
        ElementRange run = kind;
        run.first = *it;
        while (words.tied.count(*it) > 0)
            ++it;
        run.count = *it + 1 - run.first;
        checkLength(run, groupLimit);
        if (runs.size() > begin && runs.back().end() == run.first &&
            runs.back().count + run.count <= groupLimit)
            runs.back().count += run.count;
        else
            runs.push_back(run);
    }
}

using Asked = std::map<std::pair<int, QString>, Elements>; // by station and area

// Runs whose neighbours don't look alike. The driver polls the areas of a station in this order.
std::vector<ElementRange> cutUnlike(const Asked &asked, int groupLimit)
{
    std::map<int, UnlikeCut> stations;
    std::vector<ElementRange> runs;
    for (const char *area : {"TV", "CV", "CV2", "D", "X", "Y", "M", "S", "T", "C"}) {
        for (const auto &[key, elements] : asked) {
            if (key.second != area)
                continue;
            const ElementRange kind{key.first, key.second, 0, 1};
            UnlikeCut &cut = stations.try_emplace(key.first, groupLimit).first->second;
            if (isBitArea(kind.area))
                cut.cutBits(kind, elements.numbers, runs);
            else if (isCounterArea(kind.area))
                cut.cutCounters(kind, elements.numbers, runs);
            else
                cut.cutWords(kind, elements.numbers, elements.tied, runs);
        }
    }
    return runs;
}

// Adds a value to the last run if it follows that and there is room, else as a new run.
// `most`: elements of a run.
void addValue(const ElementRange &value, int most, Neighbours neighbours,
              std::vector<ElementRange> &runs)
{
    const bool isAfterFull = runs.size() > 1 && runs[runs.size() - 2].count == most;
    const int room = neighbours == Neighbours::Unlike && isAfterFull ? most - 1 : most;
    const bool goesOn = !runs.empty() && runs.back().station == value.station &&
                        runs.back().area == value.area && runs.back().end() == value.first &&
                        nextBorder(value.area, runs.back().first) != value.first;
    if (goesOn && runs.back().count + value.count <= room)
        runs.back().count += value.count;
    else
        runs.push_back(value);
}

} // namespace

std::vector<ElementRange> readRanges(const std::vector<Tag> &tags, int groupLimit,
                                     Neighbours neighbours)
{
    Asked asked;
    for (const Tag &tag : tags) {
        Elements &elements = asked[{tag.elements.station, tag.elements.area}];
        const int step = elementsPerNumber(tag);
        for (int first = tag.elements.first; first < tag.elements.end(); first += step)
            addTied(first, first + step, elements);
    }

    const int chunkBits = 8 * groupLimit; // the driver cuts longer runs
    const int runBits =
        chunkBits >= 2 * BLOCK_BITS ? 2 * BLOCK_BITS : std::min(chunkBits, BLOCK_BITS);
    for (auto &[key, elements] : asked) {
        if (isBitArea(key.second))
            widenBelowBorders(key.second, std::min(runBits, BLOCK_BITS), elements.numbers);
        else if (!isCounterArea(key.second))
            keepApartAtBorders(key.second, groupLimit, elements);
    }
    std::vector<ElementRange> runs;
    for (const auto &[key, elements] : asked) {
        const ElementRange run{key.first, key.second, 0, 1};
        if (isBitArea(run.area))
            cutBits(run, elements.numbers, runBits, runs);
        else
            cutWords(run, elements, isCounterArea(run.area) ? 1 : groupLimit, runs);
    }
    return neighbours == Neighbours::Unlike && runBits == 2 * BLOCK_BITS
               ? cutUnlike(asked, groupLimit)
               : runs;
}

std::vector<ElementRange> writeRanges(const std::vector<Tag> &tags, int groupLimit,
                                      Neighbours neighbours)
{
    std::vector<ElementRange> runs;
    for (const Tag &tag : tags) {
        const auto &[station, area, first, count] = tag.elements;
        const int together = elementsPerNumber(tag);
        if (tag.kind == ElementKind::Word)
            checkLength({station, area, first, together}, groupLimit);
        for (int number = first; number < tag.elements.end();) {
            const int end =
                std::min({number + together, tag.elements.end(), nextBorder(area, number)});
            addValue({station, area, number, end - number},
                     tag.kind == ElementKind::Word ? groupLimit : 1, neighbours, runs);
            number = end;
        }
    }
    return runs;
}

KEY_ADDRESS requestKey(const ElementRange &run)
{
    KEY_ADDRESS key = toKey(run);
    if (isCounterArea(run.area) && run.count > 1)
        key.count *= 2;
    return key;
}

QList<KEY_ADDRESS> toKeys(const std::vector<ElementRange> &runs)
{
    QList<KEY_ADDRESS> keys;
    for (const ElementRange &run : runs)
        keys.append(requestKey(run));
    return keys;
}

} // namespace kmr
