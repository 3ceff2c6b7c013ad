// The speed of a serial line, for links that are faster.
#pragma once

#include "simulator/responder.h"

#include <QObject>

#include <chrono>
#include <functional>

namespace simulator {

// Delays an answer by the time that it and its request take on a serial line with ten bits a
// character: 17 and 43 characters take 5.208 ms at 115200 baud. Other traffic on the line is not
// taken into account.
class Pacing {
public:
    // `baud`: bits a second, 0 for a line without a pace.
    explicit Pacing(int baud = 0);

    // The time that `characters` take on the wire; 0 on a line without a pace.
    std::chrono::nanoseconds timeOf(qint64 characters) const;

    // Delays each piece of `plan` until its last character would have arrived. The request of
    // `requestChars` characters counts as begun when it is received.
    void slowDown(Plan &plan, qint64 requestChars) const;

private:
    int m_baud;
};

// Calls `action` once, `time` from now or later, as exactly as the system can; QTimer has only
// whole milliseconds. Does not call it if `owner` has been deleted. Needs a running Qt event loop.
void callAfter(std::chrono::nanoseconds time, QObject &owner, std::function<void()> action);

// Passes the pieces of `plan` to `send`, in order and each at its time; those that are due now
// before it returns. Drops the rest if `owner` is deleted.
void sendPieces(const Plan &plan, QObject &owner, std::function<void(const QByteArray &)> send);

} // namespace simulator
