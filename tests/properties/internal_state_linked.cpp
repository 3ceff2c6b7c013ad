#include "tests/properties/internal_state.h"

#include "driver/ostrel_kmr.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace {

// Target and tag; values are compared where they leave the driver.
bool same(const VARIABLE &var, const model::Variable &expected)
{
    return var.reqTag == expected.reqTag && var.station == expected.station &&
           var.area.toStdString() == expected.area && var.address == expected.address &&
           var.count == expected.count;
}

bool same(const QList<VARIABLE> &list, const model::Driver::Queue &expected)
{
    return std::equal(list.begin(), list.end(), expected.begin(), expected.end(),
                      [](const VARIABLE &a, const model::Variable &b) { return same(a, b); });
}

bool same(const _DATA_ &entry, const model::Key &key, const model::Element &expected)
{
    return key == model::Key(entry.station, entry.area.toStdString(), entry.index) &&
           entry.commFailed == static_cast<int>(expected.failed) &&
           entry.writePending == static_cast<int>(expected.pending) && entry.dataSpare == 0 &&
           entry.wordMonitor == static_cast<int>(expected.watched) &&
           entry.bitMonitor == static_cast<int>(expected.watchedBits) &&
           std::equal(expected.read.begin(), expected.read.end(), entry.readValue) &&
           std::equal(expected.written.begin(), expected.written.end(), entry.writtenValue);
}

std::string storeDifference(const model::Driver &expected)
{
    const QList<_DATA_> &entries = driver.dataAreas;
    if (static_cast<size_t>(entries.size()) != expected.storeOrder.size())
        return "the store has " + std::to_string(entries.size()) + " entries instead of " +
               std::to_string(expected.storeOrder.size());
    for (size_t i = 0; i < expected.storeOrder.size(); ++i) {
        const model::Key &key = expected.storeOrder[i];
        if (!same(entries.at(static_cast<int>(i)), key, expected.store.at(key)))
            return "entry " + std::to_string(i) + " of the store differs, in the model " +
                   std::get<std::string>(key) + " " + std::to_string(std::get<2>(key));
    }
    return {};
}

} // namespace

std::string internalDifference(const model::Driver &expected)
{
    const std::vector<std::pair<const char *, bool>> parts = {
        {"devId", driver.devId == expected.devId},
        {"writeQueueOff", driver.writeQueueOff == expected.writeQueueOff},
        {"propToken3", driver.propToken3 == expected.propToken3},
        {"retryLimit", driver.retryLimit == expected.retryLimit},
        {"groupLimit", driver.groupLimit == expected.groupLimit},
        {"cyclicReads", same(driver.cyclicReads, expected.cyclicReads)},
        {"pendingWrites", same(driver.pendingWrites, expected.pendingWrites)},
        {"pendingReads", same(driver.pendingReads, expected.pendingReads)},
        {"recipeVars", driver.recipeVars.size() == static_cast<int>(expected.recipe.size())},
        {"recipeCursor", driver.recipeCursor == expected.recipeCursor},
        {"lastVar", same(driver.lastVar, expected.lastVar)},
        {"curVar", same(driver.curVar, expected.curVar)},
        {"sendState", driver.sendState == expected.state},
        {"burstCount", driver.burstCount == expected.burstCount},
        {"retryCount", driver.retryCount == expected.retryCount},
        {"commError", driver.commError == static_cast<int>(expected.commError)},
        {"frames", driver.frames.size() == (expected.inFlight ? 1 : 0)}};
    for (const auto &[name, agrees] : parts) {
        if (!agrees)
            return std::string(name) + " differs";
    }
    return storeDifference(expected);
}
