// What the driver makes of a poll list, found out by asking it: its frames, what they read, and
// what of it would never be right.
#pragma once

#include "host/driver_library.h"
#include "host/tags/element_range.h"
#include "host/tags/tag.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <vector>

namespace kmr {

// One request of the driver's poll cycle.
struct PlanBlock {
    QByteArray frame;       // ':' to LF
    int replyChars = 0;     // of a good answer, ':' to LF
    ElementRange refreshed; // what a good answer refreshes; count 0 where the request asks nothing
    int unasked = 0;        // elements of these that nobody asked for
};

// Elements asked for that the plan doesn't bring, and why.
struct PlanGap {
    ElementRange elements;
    QString reason;
};

struct Plan {
    std::vector<PlanBlock> blocks; // one cycle, in the driver's order
    std::vector<PlanGap> gaps;     // in the order of station, area and number
};

// Configures the driver, hands it `keys` and lets it go once through its cycle, each request
// answered by a good reply of zeros. `asked`: the tags that the keys are for. `groupLimit` is 1 to
// 8. No session may exist; the driver's values are lost.
Plan makePlan(const DriverFunctions &driver, const QList<KEY_ADDRESS> &keys,
              const std::vector<Tag> &asked, int groupLimit);

// The tags as another host would hand them over: each as it is typed.
QList<KEY_ADDRESS> toRawKeys(const std::vector<Tag> &tags);

} // namespace kmr
