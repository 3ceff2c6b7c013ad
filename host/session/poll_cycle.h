// The driver's poll cycle for a poll list, found by running the driver: its frames, the elements
// that they read, and those that they never read correctly.
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
struct PollBlock {
    QByteArray frame;       // ':' to LF
    int replyChars = 0;     // of a good answer, ':' to LF
    ElementRange refreshed; // what a good answer refreshes; count 0 if the request reads nothing
    int unasked = 0;        // elements of these that nobody asked for
};

// Elements that the cycle doesn't read although they were asked for, and why.
struct PollGap {
    ElementRange elements;
    QString reason;
};

struct PollCycle {
    std::vector<PollBlock> blocks; // one cycle, in the driver's order
    std::vector<PollGap> gaps;     // in the order of station, area and number
};

// Configures the driver, passes it `keys` and runs its cycle once, with a good reply of zeros to
// each request. `asked`: the tags that the keys are for. `groupLimit`: 1 to 8. No session may
// exist; the driver's values are lost.
PollCycle pollCycleOf(const DriverFunctions &driver, const QList<KEY_ADDRESS> &keys,
                      const std::vector<Tag> &asked, int groupLimit);

// The tags as another host would pass them: each as it is typed.
QList<KEY_ADDRESS> toRawKeys(const std::vector<Tag> &tags);

} // namespace kmr
