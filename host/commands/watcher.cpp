#include "host/commands/watcher.h"

#include "host/commands/connection.h"
#include "host/commands/output.h"
#include "host/poll_plan.h"

#include <QTime>

#include <utility>

namespace kmr {

namespace {

constexpr std::chrono::milliseconds DRAW_INTERVAL(200);

bool overlap(const Run &left, const Run &right)
{
    return left.station == right.station && left.area == right.area && left.first < right.end() &&
           right.first < left.end();
}

std::chrono::steady_clock::time_point clockNow()
{
    return std::chrono::steady_clock::now();
}

// A refusal concerns the elements asked for, everything else the whole station.
QString subject(const Run &run, bool isRefusal)
{
    const QString station = QString("station %1").arg(run.station);
    return isRefusal ? station + ' ' + runName(run) : station;
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
      m_shown(m_tags.size()), m_lastGood(m_tags.size()),
      m_runs(readRuns(m_tags, session.groupLimit())), m_cycle(wantedCycle), m_nextDraw(clockNow())
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
}

Watcher::~Watcher()
{
    setAroundErrors({}, {});
    m_session.setObserver({});
}

void Watcher::beginPolling()
{
    m_cycle.begin(m_session.poll(m_runs), clockNow());
}

std::chrono::nanoseconds Watcher::pause() const
{
    return m_cycle.pause(clockNow());
}

void Watcher::note(const Exchange &exchange)
{
    m_rates.note(exchange);
    m_cycle.note(exchange, clockNow());
    const Run run = refreshedBy(exchange.request);
    if (exchange.outcome == Exchange::Outcome::GivenUp)
        beginOutage(run, {exchange.fault, exchange.exceptionCode});
    if (exchange.outcome == Exchange::Outcome::Good)
        endOutage(run);
    for (std::size_t i = 0; i < m_tags.size() && !isOver(); ++i) {
        if (overlap(m_tags[i].elements, run))
            refresh(i);
    }
}

void Watcher::noteLoss(const QString &advice)
{
    printError(now() + " the line was lost" + advice);
    for (std::size_t i = 0; i < m_tags.size(); ++i)
        makeStale(i, "the line was lost");
}

void Watcher::noteReconnection()
{
    printError(now() + " the line is back");
    m_outages.clear();
    beginPolling();
}

void Watcher::draw()
{
    const Time time = clockNow();
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

void Watcher::refresh(std::size_t index)
{
    const ElementState state = m_session.state(m_tags[index]);
    if (state.quality == Quality::Good)
        showGood(index);
    else if (state.quality == Quality::Stale)
        makeStale(index, toText(state.failure));
}

void Watcher::showGood(std::size_t index)
{
    const Tag &tag = m_tags[index];
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

void Watcher::beginOutage(const Run &run, const Failure &failure)
{
    const bool isRefusal = failure.exceptionCode != 0;
    const QString name = subject(run, isRefusal);
    if (!m_outages.insert(name).second)
        return; // one line, also where the cause changes from request to request
    const QString request = isRefusal ? QString() : ", asked for " + runName(run);
    printError(QString("%1 %2: %3").arg(now(), name, toText(failure)) + request);
}

void Watcher::endOutage(const Run &run)
{
    for (const bool isRefusal : {false, true}) {
        const QString name = subject(run, isRefusal);
        if (m_outages.erase(name) > 0)
            printError(QString("%1 %2 answers again").arg(now(), name));
    }
}

} // namespace kmr
