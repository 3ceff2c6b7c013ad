#include "kmr/watch/watcher.h"

#include "host/session/request_ranges.h"
#include "kmr/connection.h"
#include "kmr/output.h"

#include <QTime>

#include <utility>

namespace kmr {

namespace {

constexpr std::chrono::milliseconds DRAW_INTERVAL(200);

std::chrono::steady_clock::time_point clockNow()
{
    return std::chrono::steady_clock::now();
}

void noteChange(WatchRow &row, const Tag &tag, const Values &values, bool isFirst)
{
    const std::vector<Value> shown = interpret(tag, values);
    row.value = formatValues(tag, values);
    row.changes += isFirst ? 0 : 1;
    if (std::holds_alternative<QString>(shown.front()))
        return;
    row.trend.push_back(toText(shown.front()).toDouble());
    if (row.trend.size() > WatchRow::TREND_LENGTH)
        row.trend.pop_front();
}

} // namespace

Watcher::Watcher(Session &session, std::vector<Tag> tags, Format format, bool isLive,
                 std::chrono::milliseconds wantedCycle, std::optional<std::uint64_t> maxChanges)
    : m_session(session), m_tags(std::move(tags)), m_maxChanges(maxChanges), m_rows(m_tags.size()),
      m_shown(m_tags.size()), m_lastGood(m_tags.size()), m_ranges(session.ranges(m_tags)),
      m_cycle(wantedCycle), m_nextDraw(clockNow()), m_outages(printError, now)
{
    for (std::size_t i = 0; i < m_tags.size(); ++i) {
        m_rows[i].tag = m_tags[i].text;
        m_rows[i].unit = m_tags[i].unit;
    }
    if (isLive) {
        m_table.emplace();
        setAroundErrors([this] { m_table->erase(); }, [this] { m_table->drawAgain(); });
    } else {
        m_records.emplace(format, "watch",
                          QStringList{"time", "tag", "values", "unit", "quality", "error"}, true,
                          print);
    }
    m_session.setObserver([this](const Exchange &exchange) { note(exchange); });
    m_session.setConfirmObserver([this](const ElementRange &run) { noteConfirmed(run); });
    m_session.setStepObserver([this](const StepNews &news) { noteStep(news); });
    m_session.setWaitObserver([this] { draw(); });
}

Watcher::~Watcher()
{
    setAroundErrors({}, {});
    m_session.setObserver({});
    m_session.setConfirmObserver({});
    m_session.setStepObserver({});
    m_session.setWaitObserver({});
}

void Watcher::beginPolling()
{
    m_cycle.begin(m_session.poll(m_ranges), clockNow());
}

std::chrono::nanoseconds Watcher::pause() const
{
    return m_cycle.pause(clockNow());
}

void Watcher::note(const Exchange &exchange)
{
    m_rates.note(exchange);
    m_cycle.note(exchange, clockNow());
    noteOutage(exchange, refreshedBy(exchange.request));
    if (exchange.outcome != Exchange::Outcome::Good)
        noteStation(exchange.request.var.station);
}

void Watcher::noteConfirmed(const ElementRange &run)
{
    for (std::size_t i = 0; i < m_tags.size() && !isOver(); ++i) {
        if (!overlap(m_tags[i].elements, run))
            continue;
        showGood(i);
        noteQuality(i);
    }
}

void Watcher::noteStep(const StepNews &news)
{
    if (news.kind != StepNews::Kind::Stray)
        return;
    m_outages.noteStray(news.station, news.late, clockNow());
    noteStation(news.station);
}

void Watcher::noteStation(int station)
{
    for (std::size_t i = 0; i < m_tags.size() && !isOver(); ++i) {
        if (m_tags[i].elements.station == station)
            noteQuality(i);
    }
}

void Watcher::noteLoss()
{
    if (!std::exchange(m_isLost, true))
        printError(now() + " the line was lost, opening it again");
    for (std::size_t i = 0; i < m_tags.size(); ++i)
        makeStale(i, "the line was lost");
}

void Watcher::noteReconnection()
{
    m_outages.forget();
    beginPolling();
}

void Watcher::draw()
{
    const Time time = clockNow();
    stopWithoutReader();
    m_outages.tellEnds(time);
    if (!m_table || time < m_nextDraw)
        return;
    m_nextDraw = time + DRAW_INTERVAL;
    for (std::size_t i = 0; i < m_rows.size(); ++i) {
        if (m_lastGood[i])
            m_rows[i].age =
                std::chrono::duration_cast<std::chrono::milliseconds>(time - *m_lastGood[i]);
    }
    m_table->draw(m_rows, m_rates.text(m_cycle.text(), m_session.statistics()));
}

void Watcher::end()
{
    m_outages.tellAllEnds();
    m_nextDraw = clockNow();
    draw();
    setAroundErrors({}, {});
    if (m_records)
        m_records->end();
}

ExitCode Watcher::outcome() const
{
    ExitCodes codes;
    for (std::size_t i = 0; i < m_tags.size(); ++i) {
        if (m_rows[i].state != WatchRow::State::Stale)
            continue;
        const int exception = m_session.state(m_tags[i]).failure.exceptionCode;
        codes.add(exception != 0 ? ExitCode::Refused : ExitCode::NoAnswer);
    }
    return codes.total();
}

// What was good may be so no more, through other requests to its station as well.
void Watcher::noteQuality(std::size_t index)
{
    const ElementState state = m_session.state(m_tags[index]);
    if (state.quality == Quality::Stale)
        makeStale(index, toTextWithHint(state.failure));
    else if (state.quality == Quality::Unread && m_rows[index].state == WatchRow::State::Good)
        m_rows[index].state = WatchRow::State::Unread;
}

void Watcher::showGood(std::size_t index)
{
    const Tag &tag = m_tags[index];
    if (m_session.state(tag).quality != Quality::Good)
        return;
    WatchRow &row = m_rows[index];
    const bool wasStale = row.state == WatchRow::State::Stale;
    row.state = WatchRow::State::Good;
    m_lastGood[index] = clockNow();
    Values values = m_session.values(tag);
    const bool isChanged = values != m_shown[index];
    if (isChanged)
        noteChange(row, tag, values, m_shown[index].empty());
    if (isChanged || wasStale)
        addRecord(index, isChanged ? tag.text + ' ' + row.value : QString(), values, {});
    m_changes += isChanged ? 1 : 0;
    m_shown[index] = std::move(values);
}

void Watcher::makeStale(std::size_t index, const QString &cause)
{
    WatchRow &row = m_rows[index];
    if (row.state == WatchRow::State::Stale)
        return;
    row.state = WatchRow::State::Stale;
    row.staleSince = QTime::currentTime().toString("HH:mm:ss");
    addRecord(index, {}, m_shown[index], cause);
}

void Watcher::addRecord(std::size_t index, const QString &plain, const Values &values,
                        const QString &error)
{
    if (!m_records)
        return;
    const Tag &tag = m_tags[index];
    const QString time = now();
    const Field shown = values.empty() ? Field() : Field(interpret(tag, values));
    m_records->add(plain.isEmpty() ? QString() : time + ' ' + plain,
                   {time, tag.text, shown, textField(tag.unit), toText(m_rows[index].state),
                    textField(error)});
}

void Watcher::noteOutage(const Exchange &exchange, const ElementRange &run)
{
    if (exchange.outcome == Exchange::Outcome::GivenUp)
        m_outages.noteFailure(run, {exchange.fault, exchange.exceptionCode, exchange.length},
                              clockNow());
    if (exchange.outcome != Exchange::Outcome::Good)
        return;
    m_outages.noteAnswer(run, clockNow());
    if (std::exchange(m_isLost, false))
        printError(now() + " the line is back");
}

} // namespace kmr
