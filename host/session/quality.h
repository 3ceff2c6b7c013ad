// The quality of an element's value.
#pragma once

#include "host/line/reply_filter.h"
#include "host/tags/element_range.h"

#include <QString>

namespace kmr {

enum class Quality {
    Unread, // not read since the start, or since the last write near it
    Good,   // the controller held this value when it was last read, and that is confirmed
    Stale,  // the last read was given up: the value is old, or there is none
};

// Why a request failed.
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

// The elements whose value in the driver is no longer the one read once `written` is queued: all of
// a block of 16 bits, and for a counter also the next one, which the driver settles with it.
ElementRange disturbedBy(const ElementRange &written);

} // namespace kmr
