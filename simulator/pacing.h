// The pace of a serial line, for links that are faster than one.
#pragma once

#include "simulator/responder.h"

#include <QObject>

#include <chrono>
#include <functional>

namespace simulator {

// Gives an answer the time that it and its request would take on a serial line, where a character
// has ten bits: 17 and 43 characters take 5.208 ms at 115200 baud. It knows nothing of what else
// is on the line.
class Pacing {
public:
    // `baud`: bits a second, 0 for a line without a pace.
    explicit Pacing(int baud = 0);

    // How long so many characters take on the wire; 0 on a line without a pace.
    std::chrono::nanoseconds timeOf(qint64 characters) const;

    // Has each piece of `plan` come when its last character would be through, where the request of
    // `requestChars` characters begins when it is received.
    void slowDown(Plan &plan, qint64 requestChars) const;

private:
    int m_baud;
};

// Calls `action` once after `time`, at the earliest, as exactly as the system can: QTimer knows but
// whole milliseconds. Not if `owner` is deleted before. Needs a running Qt event loop.
void callAfter(std::chrono::nanoseconds time, QObject &owner, std::function<void()> action);

// Hands the pieces of `plan` to `send`, each at its time and in their order; those that are due now
// before it returns. Not the rest if `owner` is deleted before.
void sendPieces(const Plan &plan, QObject &owner, std::function<void(const QByteArray &)> send);

} // namespace simulator
