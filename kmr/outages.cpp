#include "kmr/outages.h"

#include "kmr/outcome.h"

namespace kmr {

namespace {

QString stationName(const ElementRange &run)
{
    return QString("station %1").arg(run.station);
}

QString elementsName(const ElementRange &run)
{
    return stationName(run) + ' ' + runName(run);
}

} // namespace

void Outages::note(const Exchange &exchange, Time now)
{
    if (!isRead(exchange.request))
        return;
    const ElementRange run = refreshedBy(exchange.request);
    if (exchange.outcome == Exchange::Outcome::GivenUp)
        noteFailure(run, {exchange.fault, exchange.exceptionCode, exchange.length}, now);
    if (exchange.outcome == Exchange::Outcome::Good)
        noteAnswer(run, now);
}

void Outages::noteFailure(const ElementRange &run, const Failure &failure, Time now)
{
    const bool isRefusal = failure.exceptionCode != 0;
    if (isRefusal)
        noteAnswer(stationName(run), run, now);
    const QString subject = isRefusal ? elementsName(run) : stationName(run);
    const auto [outage, isNew] = m_outages.try_emplace(subject);
    outage->second.unanswered.insert(runName(run));
    if (!isNew)
        return;
    const QString request = isRefusal ? QString() : ", asked for " + runName(run);
    m_tell(QString("%1 %2: %3").arg(m_wallClock(), subject, toTextWithHint(failure)) + request);
}

void Outages::noteAnswer(const ElementRange &run, Time now)
{
    noteAnswer(stationName(run), run, now);
    noteAnswer(elementsName(run), run, now);
}

void Outages::noteAnswer(const QString &subject, const ElementRange &run, Time now)
{
    const auto found = m_outages.find(subject);
    if (found == m_outages.end())
        return;
    Outage &outage = found->second;
    if (outage.unanswered.erase(runName(run)) == 0 || !outage.unanswered.empty())
        return;
    outage.answered = now;
    outage.answeredAt = m_wallClock();
}

void Outages::noteStray(int station, std::optional<std::chrono::nanoseconds> late, Time now)
{
    Strays &strays = m_strays[station];
    strays.last = now;
    if (++strays.count > 1)
        return;
    const QString how = late ? QString("late, by %1 s: raise --timeout")
                                   .arg(std::chrono::duration<double>(*late).count(), 0, 'f', 1)
                             : QString("that no request waits for, for example twice");
    m_tell(QString("%1 station %2: answers come %3; values in doubt are read again")
               .arg(m_wallClock())
               .arg(station)
               .arg(how));
}

void Outages::tellEnds(Time now)
{
    for (auto strays = m_strays.begin(); strays != m_strays.end();) {
        const bool isOver = now - strays->second.last >= STEADY;
        if (isOver)
            m_tell(QString("%1 station %2: answers are in step again, after %3 out of step")
                       .arg(m_wallClock())
                       .arg(strays->first)
                       .arg(strays->second.count));
        strays = isOver ? m_strays.erase(strays) : std::next(strays);
    }
    for (auto outage = m_outages.begin(); outage != m_outages.end();) {
        const bool isOver =
            outage->second.unanswered.empty() && now - outage->second.answered >= CALM;
        if (isOver)
            m_tell(outage->second.answeredAt + ' ' + outage->first + " answers again");
        outage = isOver ? m_outages.erase(outage) : std::next(outage);
    }
}

void Outages::tellAllEnds()
{
    tellEnds(Time::max());
}

} // namespace kmr
