// Reports outages: a line when one begins and a line when it ends.
#pragma once

#include "host/line/poll_loop.h"
#include "host/session/quality.h"
#include "host/tags/element_range.h"

#include <QString>

#include <chrono>
#include <functional>
#include <map>
#include <optional>
#include <set>

namespace kmr {

// A station that does not answer is one outage, for all its requests and all causes; elements that
// it refuses are one outage each. An outage has ended when all its requests are answered and none
// failed for CALM, so that a line that fails now and then is reported once.
class Outages {
public:
    using Time = std::chrono::steady_clock::time_point;
    using Tell = std::function<void(const QString &line)>;
    using WallClock = std::function<QString()>;

    static constexpr std::chrono::seconds CALM{3};

    // Answers of a station that come twice or late are one outage, until none came for this time.
    static constexpr std::chrono::seconds STEADY{60};

    // `tell` is called with each line, which begins with the text of `wallClock`.
    Outages(Tell tell, WallClock wallClock)
        : m_tell(std::move(tell)), m_wallClock(std::move(wallClock))
    {
    }

    // An exchange of the polling. A request to write is not part of an outage: it has its outcome.
    void note(const Exchange &exchange, Time now);

    // The request for `run` was given up.
    void noteFailure(const ElementRange &run, const Failure &failure, Time now);

    // The request for `run` was answered.
    void noteAnswer(const ElementRange &run, Time now);

    // An answer came that no request waited for, `late` after its request if it was owed.
    void noteStray(int station, std::optional<std::chrono::nanoseconds> late, Time now);

    // Reports the outages that have ended by `now`. To be called often.
    void tellEnds(Time now);

    // Reports the end of all outages whose requests have been answered.
    void tellAllEnds();

    // Forgets all outages: the line has been opened again.
    void forget()
    {
        m_outages.clear();
        m_strays.clear();
    }

private:
    struct Outage {
        std::set<QString> unanswered; // its requests
        Time answered;                // time of the last answer
        QString answeredAt;           // the same as text
    };

    struct Strays {
        int count = 0;
        Time last;
    };

    void noteAnswer(const QString &subject, const ElementRange &run, Time now);

    const Tell m_tell;
    const WallClock m_wallClock;
    std::map<QString, Outage> m_outages; // by station or elements
    std::map<int, Strays> m_strays;      // by station
};

} // namespace kmr
