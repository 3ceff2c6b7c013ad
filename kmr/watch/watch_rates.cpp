#include "kmr/watch/watch_rates.h"

namespace kmr {

void WatchRates::note(const Exchange &exchange)
{
    if (exchange.outcome == Exchange::Outcome::PassedOver)
        return;
    ++m_exchanges;
    m_busy += exchange.roundTrip;
}

QString WatchRates::text(const QString &cycle, const Statistics &statistics)
{
    using Seconds = std::chrono::duration<double>;
    const auto now = std::chrono::steady_clock::now();
    const double elapsed = Seconds(now - m_begin).count();
    if (elapsed >= 1) {
        m_rate = m_exchanges / elapsed;
        m_use = 100 * Seconds(m_busy).count() / elapsed;
        m_begin = now;
        m_exchanges = 0;
        m_busy = std::chrono::nanoseconds(0);
    }
    return QString("%1 exchanges/s  cycle %2  retries %3  given up %4  line used %5 %")
        .arg(m_rate, 0, 'f', 1)
        .arg(cycle)
        .arg(statistics.retries())
        .arg(statistics.giveUps())
        .arg(m_use, 0, 'f', 0);
}

} // namespace kmr
