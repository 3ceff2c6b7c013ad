#include "tests/properties/model_plan.h"

#include <algorithm>
#include <deque>
#include <map>
#include <set>

namespace model {
namespace {

using Elements = std::set<long long>;

struct Chunk {
    int station;
    std::string area;
    Elements elements;
};

int orderOf(const std::string &area)
{
    static const std::vector<std::string> order = {"TV", "CV", "CV2", "D", "X",     "Y",
                                                   "M",  "S",  "T",   "C", "TV_bit"};
    const auto found = std::find(order.begin(), order.end(), area);
    return found == order.end() ? -1 : static_cast<int>(found - order.begin());
}

bool isBitArea(const std::string &area)
{
    return orderOf(area) >= orderOf("X") && orderOf(area) <= orderOf("C");
}

// The elements that a run wants read; words for "TV_bit".
std::vector<long long> wanted(const Run &run)
{
    long long first = run.address;
    long long number = run.count;
    if (run.area == "TV_bit") {
        const long long bits = run.address % 16 + static_cast<long long>(run.count);
        first = run.address / 16;
        number = bits / 16 + (bits % 16 != 0 ? 1 : 0);
    }
    std::vector<long long> elements;
    for (long long i = 0; i < number; ++i)
        elements.push_back(first + i);
    return elements;
}

Variable block(const Chunk &chunk)
{
    Variable var;
    var.reqTag = 4;
    var.station = chunk.station;
    var.area = chunk.area;
    var.address = static_cast<int>(*chunk.elements.begin());
    var.count = static_cast<int>(chunk.elements.size());
    return var;
}

// Adds all elements after `covered` up to the last of `chunk`, including the gap between them.
void extend(Elements &covered, const Elements &chunk)
{
    while (*covered.rbegin() < *chunk.rbegin())
        covered.insert(covered.end(), *covered.rbegin() + 1);
}

// Adds the blocks of one key; `chunks` come newest first.
void addBlocks(std::vector<Variable> &plan, std::deque<Chunk> chunks, long long limit)
{
    std::stable_sort(chunks.begin(), chunks.end(), [](const Chunk &a, const Chunk &b) {
        return *a.elements.begin() < *b.elements.begin();
    });
    Elements covered;
    for (const Chunk &chunk : chunks) {
        const bool first = covered.empty();
        if (!first && chunk.area == "CV2") {
            plan.push_back(block(chunk));
            continue;
        }
        if (!first && *chunk.elements.rbegin() <= *covered.rbegin())
            continue;
        const bool timerOrCounter = chunk.area == "T" || chunk.area == "C";
        const bool seam =
            timerOrCounter && *chunk.elements.begin() >= 255 && !first && *covered.begin() < 255;
        if (first || seam || *chunk.elements.rbegin() - *covered.begin() + 1 > limit) {
            plan.push_back(block(chunk));
            covered = chunk.elements;
        } else {
            extend(covered, chunk.elements);
            plan.back().count = static_cast<int>(covered.size());
        }
    }
}

} // namespace

std::vector<Variable> pollPlan(const std::vector<Run> &runs, int groupLimit)
{
    const long long words = std::max(groupLimit, 1);
    const long long bits = std::max(8LL * groupLimit, 1LL);
    std::map<int, std::deque<Chunk>> chunksOfKey;
    for (const Run &run : runs) {
        if (orderOf(run.area) < 0)
            continue;
        std::deque<Chunk> &chunks = chunksOfKey[orderOf(run.area) * 256 + run.station];
        const auto limit = static_cast<size_t>(isBitArea(run.area) ? bits : words);
        Chunk chunk = {run.station, run.area, {}};
        for (const long long element : wanted(run)) {
            chunk.elements.insert(chunk.elements.end(), element);
            if (chunk.elements.size() == limit) {
                chunks.push_front(chunk);
                chunk.elements.clear();
            }
        }
        if (!chunk.elements.empty())
            chunks.push_front(chunk);
    }
    std::vector<Variable> plan;
    for (const auto &[key, chunks] : chunksOfKey)
        addBlocks(plan, chunks, words);
    return plan;
}

} // namespace model
