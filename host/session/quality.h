// How far an element's value can be trusted.
#pragma once

#include "host/line/reply_filter.h"
#include "host/tags/element_range.h"

#include <QString>

namespace kmr {

enum class Quality {
    Unread, // never read since the run began, or since the last write near it
    Good,   // the controller held this value when it was last read, and that is confirmed
    Stale,  // the last read was given up: the value is an old one, or none
};

// Why requests fail.
struct Failure {
    ReplyFault fault = ReplyFault::None;
    int exceptionCode = 0; // not 0: refused by the controller
    AnswerLength length = {};
};

// "refused: illegal data address (exception 02)" or the fault's text.
QString toText(const Failure &failure);

struct ElementState {
    Quality quality = Quality::Unread;
    Failure failure; // with Stale
};

// The elements whose value the driver no longer shows as read once `written` is queued: all of a
// block of 16 bits, for a counter also the next one, which the driver settles along with it.
ElementRange disturbedBy(const ElementRange &written);

} // namespace kmr
