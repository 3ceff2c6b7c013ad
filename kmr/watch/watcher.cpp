#include "kmr/watch/watcher.h"

#include "host/session/request_ranges.h"
#include "kmr/assignment.h"
#include "kmr/connection.h"
#include "kmr/output.h"

#include <QTime>

#include <cstdio>
#include <unistd.h>
#include <utility>

namespace kmr {

namespace {

constexpr std::chrono::milliseconds DRAW_INTERVAL(100);

std::chrono::steady_clock::time_point clockNow()
{
    return std::chrono::steady_clock::now();
}

std::vector<WatchRow> rowsOf(const std::vector<Tag> &tags)
{
    std::vector<WatchRow> rows(tags.size());
    for (std::size_t i = 0; i < tags.size(); ++i)
        rows[i].tag = tags[i];
    return rows;
}

// Shows lines on a terminal that may have been closed.
void leave(const QStringList &lines)
{
    const bool isShown =
        std::fputs((lines.join('\n') + '\n').toLocal8Bit().constData(), stdout) >= 0 &&
        std::fflush(stdout) == 0;
    static_cast<void>(isShown);
}

// For a person: what became of a write.
QString writeReport(const Assignment &assignment, const WriteResult &result)
{
    const QString what =
        "write " + assignment.tag.text + '=' + withUnit(assignment.tag, assignment.values);
    const QString place =
        result.stoppedAt.isEmpty() ? QString() : ": stopped at " + result.stoppedAt;
    if (result.request.isDone())
        return what + ": " + writeOutcome(result.request);
    return what + place + ": " + writeErrorText(result.request);
}

} // namespace

Watcher::Watcher(Session &session, std::vector<Tag> tags, Format format, bool isLive,
                 std::chrono::milliseconds wantedCycle, std::optional<std::uint64_t> maxChanges)
    : m_session(session), m_tags(std::move(tags)), m_maxChanges(maxChanges), m_rows(rowsOf(m_tags)),
      m_lastGood(m_tags.size()), m_ranges(session.ranges(m_tags)), m_cycle(wantedCycle),
      m_nextDraw(clockNow()), m_outages(printError, now)
{
    if (isLive) {
        openTable();
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
    closeTable();
    m_session.setObserver({});
    m_session.setConfirmObserver({});
    m_session.setStepObserver({});
    m_session.setWaitObserver({});
}

void Watcher::openTable()
{
    m_table.emplace(m_rows, m_session.groupLimit());
    m_screen.emplace();
    const bool isSeparate = isatty(STDERR_FILENO) != 1;
    setErrorSink([this, isSeparate](const QString &line) {
        m_table->addMessage(line);
        if (isSeparate)
            writeError(line);
    });
}

// Gives the terminal back, and what was to be read on stderr meanwhile.
void Watcher::closeTable()
{
    if (!m_screen)
        return;
    m_screen.reset();
    setErrorSink({});
    if (isatty(STDERR_FILENO) != 1)
        return;
    for (const QString &line : m_table->messages())
        writeError(line);
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
    m_outages.note(exchange, clockNow());
    if (exchange.outcome != Exchange::Outcome::Good)
        noteStation(exchange.request.var.station);
    else if (std::exchange(m_isLost, false))
        printError(now() + " the line is back");
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
    if (!m_screen)
        return;
    takeKeys();
    if (time < m_nextDraw && m_screen->size() == m_size)
        return;
    m_nextDraw = time + DRAW_INTERVAL;
    m_size = m_screen->size();
    for (std::size_t i = 0; i < m_rows.size(); ++i) {
        if (m_lastGood[i])
            m_rows[i].age =
                std::chrono::duration_cast<std::chrono::milliseconds>(time - *m_lastGood[i]);
    }
    m_screen->show(m_table->frame(m_size, m_rates.text(m_cycle.text(), m_session.statistics())));
}

// What a key does is seen at once.
void Watcher::takeKeys()
{
    for (const Key &key : m_screen->takeKeys()) {
        m_table->take(key);
        m_nextDraw = clockNow();
    }
    if (m_isLost)
        refuseWrite();
}

// A write that was confirmed is never sent later, when the machine may be in another state.
void Watcher::refuseWrite()
{
    if (const auto assignment = m_table->takeWrite())
        tellWrite(*assignment, {{RequestResult::Outcome::NotSent, {}}, {}});
}

void Watcher::writeConfirmed()
{
    const auto assignment = m_table ? m_table->takeWrite() : std::nullopt;
    if (!assignment)
        return;
    const WriteResult result = writeTag(m_session, assignment->tag, assignment->values);
    tellWrite(*assignment, result);
    for (std::size_t i = 0; i < m_tags.size(); ++i)
        noteQuality(i);
}

void Watcher::tellWrite(const Assignment &assignment, const WriteResult &result)
{
    const QString report = writeReport(assignment, result);
    m_table->setNotice(report);
    printError(now() + ' ' + report);
    m_nextDraw = clockNow();
}

void Watcher::end()
{
    m_outages.tellAllEnds();
    if (m_screen) {
        m_nextDraw = clockNow();
        draw();
        closeTable();
        leave(m_table->lastPicture());
    }
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

// What was good may no longer be so, through other requests to its station as well.
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
    const Values values = m_session.values(tag);
    const bool isChanged = values != row.values;
    if (isChanged)
        noteValues(row, values);
    if (isChanged || wasStale)
        addRecord(index, isChanged ? tag.text + ' ' + row.text : QString(), {});
    m_changes += isChanged ? 1 : 0;
}

void Watcher::makeStale(std::size_t index, const QString &cause)
{
    WatchRow &row = m_rows[index];
    if (row.state == WatchRow::State::Stale)
        return;
    row.state = WatchRow::State::Stale;
    row.staleSince = QTime::currentTime().toString("HH:mm:ss");
    row.cause = cause;
    addRecord(index, {}, cause);
}

void Watcher::addRecord(std::size_t index, const QString &plain, const QString &error)
{
    if (!m_records)
        return;
    const Tag &tag = m_tags[index];
    const QString time = now();
    const Values &values = m_rows[index].values;
    const Field shown = values.empty() ? Field() : Field(interpret(tag, values));
    m_records->add(plain.isEmpty() ? QString() : time + ' ' + plain,
                   {time, tag.text, shown, textField(tag.unit), toText(m_rows[index].state),
                    textField(error)});
}

} // namespace kmr
