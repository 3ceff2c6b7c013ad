#include "host/line/owed_answers.h"

#include <algorithm>

namespace kmr {

void OwedAnswers::noteSent(const QByteArray &station, bool isRetry, TimePoint now)
{
    Owed &owed = m_stations[station];
    if (!isRetry)
        owed.answers = 0;
    owed.lastSent = now;
    if (owed.answers == 0)
        owed.firstSent = now;
    ++owed.answers;
}

void OwedAnswers::noteEnd(const QByteArray &station, bool isAnswered, TimePoint now)
{
    Owed &owed = m_stations[station];
    if (isAnswered)
        --owed.answers;
    owed.until =
        isAnswered ? now + (owed.lastSent - owed.firstSent) + m_timeout : now + 3 * m_timeout;
    owed.until = std::max(owed.until, owed.lastSent + owed.slowest + m_timeout);
}

bool OwedAnswers::noteStray(const QByteArray &station, int awaited, TimePoint now)
{
    const auto asked = m_stations.find(station);
    if (asked == m_stations.end() || asked->second.answers <= awaited)
        return false;
    Owed &owed = asked->second;
    --owed.answers;
    owed.slowest = std::max<std::chrono::nanoseconds>(owed.slowest, now - owed.firstSent);
    owed.until = std::max(owed.until, owed.lastSent + owed.slowest + m_timeout);
    return true;
}

OwedAnswers::TimePoint OwedAnswers::until(const QByteArray &station) const
{
    const auto asked = m_stations.find(station);
    return asked != m_stations.end() && asked->second.answers > 0 ? asked->second.until
                                                                  : TimePoint::min();
}

} // namespace kmr
