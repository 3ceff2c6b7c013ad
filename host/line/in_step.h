// Keeps questions and answers in step. Answers carry no mark of their request, so one that comes
// twice or late can pass for that of the next request, and then all that follow are shifted:
//
//     asked      A    B    C    D
//     answered   a  a    b    c        B shows what A holds, C what B holds, ...
//
//  - Neighbouring requests to a station never look alike: no good answer to one passes for that of
//    the next. A check question goes between two that would: a read of a form that no other request
//    has.
//  - An answer is confirmed by that to the next request, if it could not have been its own. Until
//    then it is in doubt.
//  - A line that no request waited for, and a request that was given up, put in doubt for good what
//    is not confirmed. For some time only check questions confirm then.
//  - An answer that may be the late one to another request of its form is confirmed only when that
//    one has had PATIENCE timeouts to come, and one more than the latest took so far.
//  - A shift by as many answers as the forms take to repeat is found by a check question that comes
//    after an irregular number of requests.
//
// Knows no line and no driver. Requests are messages (station, function, data).
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

    // Requests to a station between two check questions, drawn anew each time.
    static constexpr int FEWEST_BETWEEN_CHECKS = 96;
    static constexpr int MOST_BETWEEN_CHECKS = 159;

    // Requests after a line too much that only a check question confirms.
    static constexpr int DOUBTFUL_REQUESTS = 8;

    // Timeouts, from the request on.
    static constexpr int PATIENCE = 6;

    explicit InStep(std::chrono::milliseconds timeout) : m_timeout(timeout) {}

    // Whether a check question must precede `request`, which is not the last one once more.
    bool needsCheck(const QByteArray &request) const;

    // A check question to a station. `next`: the request that follows it, or empty.
    QByteArray checkQuestion(const QByteArray &station, const QByteArray &next);

    void noteSent(const QByteArray &request, TimePoint now);

    // The answer to the last request came, good or an exception; it waits to be confirmed under
    // `number`, from 1 on and rising. Returns the number up to which it confirms answers of the
    // station, 0 for none.
    Number noteAnswer(const QByteArray &request, bool isRefused, Number number, TimePoint now);
    Number noteCheckAnswer(const QByteArray &question, bool isRefused, TimePoint now);

    // No answer to the last request came in time.
    void noteSilence(const QByteArray &request);

    // A line came from the station that no request waited for. Returns how long after its request
    // if it was a late one.
    std::optional<std::chrono::nanoseconds> noteStray(const QByteArray &message, TimePoint now);

    // A request to the station was given up without an answer, or a check question.
    void noteGiveUp(const QByteArray &station);
    void noteCheckGiveUp(const QByteArray &station);

    // Whether an answer of the station waits for an exchange that confirms it.
    bool hasUnconfirmed(const QByteArray &station) const;

    // The station whose answers wait the longest for such an exchange, since `latest` at the
    // latest; empty when there is none.
    QByteArray waitingSince(TimePoint latest) const;

    // When the last answer can be confirmed that may be a late one; the past when there is none.
    TimePoint heldUntil() const;

private:
    struct Unconfirmed {
        QByteArray request;
        bool isRefused = false;
        Number number = 0;
        TimePoint since;
        TimePoint notBefore;   // a late answer that it may be had its time
        bool isInStep = false; // by an exchange after it
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
        std::chrono::nanoseconds latest{0};   // what came late, came within this time
        int doubtful = 0;
        int untilCheck = MOST_BETWEEN_CHECKS;
        int question = 0;       // turn of the check questions
        bool asksWords = false; // rather than bits
    };

    Number confirm(Station &station, const QByteArray &request, bool isRefused, TimePoint now);
    TimePoint timeOfLate(const Station &station, const QByteArray &request, bool isRefused) const;

    const std::chrono::milliseconds m_timeout;
    std::map<QByteArray, Station> m_stations; // by the byte that stands for them in messages
    std::minstd_rand m_random;
};

// The check questions' messages that go between requests asked in turn, for ever, in one round.
std::vector<QByteArray> checksOfRound(const std::vector<QByteArray> &requests);

// The number of the station that `station` stands for in messages: the driver writes it in decimal
// digits, so that 0x12 is 12. 0 for what it can't write.
int stationNumber(const QByteArray &station);

// Whether `stray` leaves the answer to a request in doubt: of a read always, of a write when it may
// be the answer that says the opposite.
bool putsInDoubt(const QByteArray &stray, const QByteArray &request, bool isRefused);

} // namespace kmr
