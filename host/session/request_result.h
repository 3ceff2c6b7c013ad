// The outcome of one request, as the exchanges on the line show it.
#pragma once

#include "host/line/poll_loop.h"
#include "host/session/quality.h"

namespace kmr {

struct RequestResult {
    enum class Outcome {
        Done,     // answered; a write is confirmed
        Refused,  // the controller's last answer was an exception
        NoAnswer, // given up; a write may have been carried out
        NotSent,  // the line was lost, or the user stopped, before it was sent
        Unknown   // sent, but then the line was lost, the user stopped, or the answer does not say;
                  // also a write that got no answer and was refused when it was sent again
    };

    Outcome outcome = Outcome::NotSent;
    Failure failure; // of the last attempt, if it failed; not with Done

    bool isDone() const
    {
        return outcome == Outcome::Done;
    }
};

// The result of a request that this exchange ended. `wasUnanswered`: an earlier attempt got no
// answer, so a write may have been carried out although it is refused now.
RequestResult resultOf(const Exchange &exchange, bool wasUnanswered);

// Whether the driver turns to another request after the exchange.
bool isFinal(const Exchange &exchange);

// The message of the exchange's request: station, function, data.
QByteArray messageOf(const Exchange &exchange);

// Whether the news confirm the answer to a request: its message and Exchange::number.
bool confirms(const StepNews &news, const QByteArray &request, std::uint64_t number);

// Whether the news put that answer in doubt for ever.
bool putsInDoubt(const StepNews &news, const QByteArray &request, bool isRefused);

} // namespace kmr
