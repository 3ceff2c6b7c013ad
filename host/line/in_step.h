// Keeps requests and answers in step. An answer does not say which request it belongs to. One that
// comes twice or late can be taken for that to the next request; then all that follow are shifted:
//
//     asked      A    B    C    D
//     answered   a  a    b    c        B shows what A holds, C what B holds, ...
//
//  - Successive requests to a station never look alike: no good answer to one can be taken for that
//    to the next. If two would look alike, a check question is sent between them: a read of a form
//    that no other request has.
//  - An answer is confirmed by the answer to the next request, if the two can't be confused. Until
//    then it is in doubt.
//  - After a line that no request waited for, or a request that was given up, what is not confirmed
//    stays in doubt. For some time only check questions confirm then.
//  - An answer that may be the late one to another request of its form is confirmed only when that
//    one has had PATIENCE timeouts to come, and one more than the latest took so far.
//  - A shift by as many answers as the forms take to repeat is found by a check question that comes
//    after an irregular number of requests.
//
// Uses no line and no driver. Requests are messages (station, function, data).
#pragma once

#include <QByteArray>

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <random>
#include <vector>

namespace kmr {

class InStep {
public:
    using TimePoint = std::chrono::steady_clock::time_point;
    using Number = std::uint64_t;

    // Requests to a station between two check questions; a random number each time.
    static constexpr int FEWEST_BETWEEN_CHECKS = 96;
    static constexpr int MOST_BETWEEN_CHECKS = 159;

    // Requests after a surplus line that only a check question confirms.
    static constexpr int DOUBTFUL_REQUESTS = 8;

    // The time for a late answer, in timeouts from its request on.
    static constexpr int PATIENCE = 6;

    explicit InStep(std::chrono::milliseconds timeout) : m_timeout(timeout) {}

    // Whether a check question must precede `request`, which is not a retry of the last one.
    bool needsCheck(const QByteArray &request) const;

    // A check question to a station. `next`: the request that follows it, or empty.
    QByteArray checkQuestion(const QByteArray &station, const QByteArray &next);

    // To be called for each request that is sent, check questions included.
    void noteSent(const QByteArray &request, TimePoint now);

    // The answer to the last request came, good or an exception; it waits to be confirmed under
    // `number`, ascending from 1. Returns the number up to which it confirms answers of the
    // station, 0 for none.
    Number noteAnswer(const QByteArray &request, bool isRefused, Number number, TimePoint now);
    Number noteCheckAnswer(const QByteArray &question, bool isRefused, TimePoint now);

    // No answer to the last request came in time.
    void noteSilence(const QByteArray &request);

    // A line came from the station that no request waited for. Returns the time since its request
    // if it was a late answer.
    std::optional<std::chrono::nanoseconds> noteStray(const QByteArray &message, TimePoint now);

    // A request to the station was given up without an answer, or a check question.
    void noteGiveUp(const QByteArray &station);
    void noteCheckGiveUp(const QByteArray &station);

    // Whether an answer of the station waits for an exchange that confirms it.
    bool hasUnconfirmed(const QByteArray &station) const;

    // The station whose answers have waited longest for such an exchange, since `latest` or before;
    // empty if there is none.
    QByteArray waitingSince(TimePoint latest) const;

    // The time from which all answers that may be late ones can be confirmed; in the past if there
    // are none.
    TimePoint heldUntil() const;

private:
    struct Unconfirmed {
        QByteArray request;
        bool isRefused = false;
        Number number = 0;
        TimePoint since;
        TimePoint notBefore;   // until then it may be a late answer
        bool isInStep = false; // shown by an exchange after it
    };

    struct Late {
        QByteArray request;
        TimePoint sent;
    };

    struct Station {
        QByteArray last; // request sent
        TimePoint lastSent;
        bool isRefused = false;
        std::vector<Unconfirmed> unconfirmed; // in the order of their numbers
        std::vector<Late> late;               // unanswered in time, the oldest first
        std::chrono::nanoseconds latest{0};   // the longest time of a late answer so far
        int doubtful = 0;                     // requests left that only a check question confirms
        int untilCheck = MOST_BETWEEN_CHECKS; // requests left until the next check question
        int question = 0;                     // the next one of the check questions
        bool asksWords = false;               // check questions read words instead of bits
    };

    Number confirm(Station &station, const QByteArray &request, bool isRefused, TimePoint now);
    TimePoint timeOfLate(const Station &station, const QByteArray &request, bool isRefused) const;

    const std::chrono::milliseconds m_timeout;
    std::map<QByteArray, Station> m_stations; // by their byte in messages
    std::minstd_rand m_random;
};

// The messages of the check questions in one round of requests that are repeated in turn.
std::vector<QByteArray> checksOfRound(const std::vector<QByteArray> &requests);

// The number of the station with the byte `station` in messages: the driver writes it in decimal
// digits, so that 0x12 is 12. 0 for a byte that the driver can't write.
int stationNumber(const QByteArray &station);

// Whether `stray` puts the answer to a request in doubt: always for a read; for a write if it may
// be the answer that says the opposite.
bool putsInDoubt(const QByteArray &stray, const QByteArray &request, bool isRefused);

} // namespace kmr
