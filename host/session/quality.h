// How far the driver's value of an element can be trusted. The driver shows a written value at once
// and keeps showing old ones when nobody answers; this is where the host knows better.
#pragma once

#include "host/line/reply_filter.h"
#include "host/tags/element_range.h"

#include <QString>

#include <map>
#include <tuple>

namespace kmr {

enum class Quality {
    Unread, // never read since the run began, or since the last write near it
    Good,   // the controller held this value when it was last read
    Stale,  // the last read was given up: the value is an old one, or none
};

// Why requests fail.
struct Failure {
    ReplyFault fault = ReplyFault::None;
    int exceptionCode = 0; // not 0: refused by the controller
};

// "refused: illegal data address (exception 02)" or the fault's text.
QString toText(const Failure &failure);

struct ElementState {
    Quality quality = Quality::Unread;
    Failure failure; // with Stale
};

class QualityMap {
public:
    // Sets the state of all elements of a run.
    void set(const ElementRange &run, const ElementState &state);

    // Sets that of all elements of a station that have one.
    void setStation(int station, const ElementState &state);

    // The state of the first element that isn't Good, or Good.
    ElementState worst(const ElementRange &run) const;

private:
    std::map<std::tuple<int, QString, int>, ElementState> m_states; // station, area, number
};

// The elements whose value the driver no longer shows as read once `written` is queued: all of a
// block of 16 bits, for a counter also the next one, which the driver settles along with it.
ElementRange disturbedBy(const ElementRange &written);

} // namespace kmr
