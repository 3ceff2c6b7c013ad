#include "kmr/watch/watch_cycle.h"

#include "host/tags/element_range.h"

#include <algorithm>

namespace kmr {

namespace {

bool isOver(const Exchange &exchange)
{
    switch (exchange.outcome) {
    case Exchange::Outcome::Good:
    case Exchange::Outcome::GivenUp:
    case Exchange::Outcome::PassedOver:
        return true;
    case Exchange::Outcome::SentAgain:
    case Exchange::Outcome::Interrupted:
        break;
    }
    return false;
}

} // namespace

void WatchCycle::begin(int requests, Time now)
{
    m_requests = requests;
    m_done = 0;
    m_begin = now;
}

void WatchCycle::note(const Exchange &exchange, Time now)
{
    if (!isRead(exchange.request) || !isOver(exchange) || ++m_done < m_requests)
        return;
    const Time next = std::max(now, m_begin + m_wanted);
    ++m_ended;
    m_reached = next - m_begin;
    m_begin = next;
    m_done = 0;
}

std::chrono::nanoseconds WatchCycle::pause(Time now) const
{
    return std::max<std::chrono::nanoseconds>(m_begin - now, std::chrono::nanoseconds(0));
}

QString WatchCycle::text() const
{
    const double reached = std::chrono::duration<double, std::milli>(m_reached).count();
    QString text = reached > 0 ? QString::number(reached, 'f', reached < 10 ? 1 : 0) : QString("-");
    if (m_wanted.count() > 0)
        text += QString("/%1").arg(m_wanted.count());
    return text + " ms";
}

} // namespace kmr
