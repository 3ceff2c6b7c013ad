#include "host/commands/commands.h"
#include "host/commands/connection.h"
#include "host/commands/stop.h"
#include "host/commands/watch_table.h"
#include "host/poll_plan.h"

#include <algorithm>
#include <map>
#include <thread>
#include <unistd.h>

namespace kmr {

namespace {

bool overlap(const Run &left, const Run &right)
{
    return left.station == right.station && left.area == right.area && left.first < right.end() &&
           right.first < left.end();
}

using Time = std::chrono::steady_clock::time_point;

Time clockNow()
{
    return std::chrono::steady_clock::now();
}

// Figures for the status line, taken anew each second.
class Rates {
public:
    explicit Rates(std::size_t requestsPerCycle) : m_requestsPerCycle(requestsPerCycle) {}

    void note(const Exchange &exchange)
    {
        if (exchange.outcome == Exchange::Outcome::PassedOver)
            return;
        ++m_exchanges;
        m_busy += exchange.roundTrip;
    }

    QString text(const Statistics &statistics)
    {
        using Seconds = std::chrono::duration<double>;
        const double elapsed = Seconds(clockNow() - m_begin).count();
        if (elapsed >= 1) {
            m_rate = m_exchanges / elapsed;
            m_use = 100 * Seconds(m_busy).count() / elapsed;
            m_begin = clockNow();
            m_exchanges = 0;
            m_busy = std::chrono::nanoseconds(0);
        }
        const QString cycle =
            m_rate > 0 ? QString::number(1000.0 * static_cast<double>(m_requestsPerCycle) / m_rate,
                                         'f', 0) +
                             " ms"
                       : QString("-");
        return QString("%1 exchanges/s  cycle %2  retries %3  given up %4  line used %5 %")
            .arg(m_rate, 0, 'f', 1)
            .arg(cycle)
            .arg(statistics.retries())
            .arg(statistics.giveUps())
            .arg(m_use, 0, 'f', 0);
    }

private:
    const std::size_t m_requestsPerCycle;
    Time m_begin = clockNow();
    int m_exchanges = 0;
    std::chrono::nanoseconds m_busy{0};
    double m_rate = 0;
    double m_use = 0;
};

// Shows changes, as records or in a table, and a line when an outage begins and when it ends.
class Watcher {
public:
    // Ends with record number `maxRecords`.
    Watcher(Session &session, std::vector<Tag> tags, Format format, bool isLive,
            std::optional<std::uint64_t> maxRecords)
        : m_session(session), m_tags(std::move(tags)), m_maxRecords(maxRecords),
          m_rows(m_tags.size()), m_shown(m_tags.size()), m_lastGood(m_tags.size()),
          m_runs(readRuns(m_tags, session.groupLimit())), m_rates(m_runs.size())
    {
        for (std::size_t i = 0; i < m_tags.size(); ++i) {
            m_rows[i].tag = m_tags[i].text;
            m_rows[i].unit = m_tags[i].unit;
        }
        if (isLive)
            m_table.emplace();
        else
            m_records.emplace(format, "watch",
                              QStringList{"time", "tag", "values", "unit", "quality", "error"},
                              true, print);
    }

    void beginPolling()
    {
        m_session.poll(m_runs);
    }

    void note(const Exchange &exchange)
    {
        m_rates.note(exchange);
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

    // The line is lost: nothing is fresh any more.
    void noteLoss(const QString &cause)
    {
        say(now() + " the line was lost" + cause);
        for (std::size_t i = 0; i < m_tags.size(); ++i)
            makeStale(i, "the line was lost");
    }

    void noteReconnection()
    {
        say(now() + " the line is back");
        m_outages.clear();
        beginPolling();
    }

    // Draws the table when it is time to. To be called often.
    void draw()
    {
        if (!m_table || clockNow() < m_nextDraw)
            return;
        m_nextDraw = clockNow() + DRAW_INTERVAL;
        for (std::size_t i = 0; i < m_rows.size(); ++i) {
            if (m_lastGood[i])
                m_rows[i].age = std::chrono::duration_cast<std::chrono::milliseconds>(
                    clockNow() - *m_lastGood[i]);
        }
        m_table->draw(m_rows, m_rates.text(m_session.statistics()));
    }

    void end()
    {
        if (m_records)
            m_records->end();
    }

    bool isOver() const
    {
        return m_maxRecords && m_changes >= *m_maxRecords;
    }

    // What keeps tags from being up to date.
    ExitCode outcome() const
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

private:
    static constexpr std::chrono::milliseconds DRAW_INTERVAL{200};

    void refresh(std::size_t index)
    {
        const ElementState state = m_session.state(m_tags[index]);
        if (state.quality == Quality::Good)
            showGood(index);
        else if (state.quality == Quality::Stale)
            makeStale(index, toText(state.failure));
    }

    void showGood(std::size_t index)
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
        if (m_records && (isChanged || wasStale)) {
            const QString plain = QString("%1 %2 %3").arg(now(), tag.text, row.value);
            m_records->add(isChanged ? plain : QString(), recordOf(index, values, {}));
        }
        m_changes += isChanged ? 1 : 0;
        m_shown[index] = std::move(values);
    }

    static void noteChange(WatchRow &row, const Tag &tag, const Values &values, bool isFirst)
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

    void makeStale(std::size_t index, const QString &cause)
    {
        if (m_rows[index].state == WatchRow::State::Stale)
            return;
        m_rows[index].state = WatchRow::State::Stale;
        if (m_records)
            m_records->add({}, recordOf(index, m_shown[index], cause));
    }

    std::vector<Field> recordOf(std::size_t index, const Values &values, const QString &error) const
    {
        const Tag &tag = m_tags[index];
        const Field shown = values.empty() ? Field() : Field(interpret(tag, values));
        return {now(),           tag.text, shown, textField(tag.unit), toText(m_rows[index].state),
                textField(error)};
    }

    // A line on stderr, above the table.
    void say(const QString &line)
    {
        if (m_table)
            m_table->erase();
        printError(line);
        m_nextDraw = clockNow();
    }

    // A refusal concerns the elements asked for, everything else the whole station.
    static QString subject(const Run &run, bool isRefusal)
    {
        const QString station = QString("station %1").arg(run.station);
        return isRefusal ? station + ' ' + elementName(run.area, run.first) : station;
    }

    void beginOutage(const Run &run, const Failure &failure)
    {
        const QString name = subject(run, failure.exceptionCode != 0);
        const QString text = toText(failure);
        if (m_outages[name] == text)
            return;
        m_outages[name] = text;
        say(QString("%1 %2: %3").arg(now(), name, text));
    }

    void endOutage(const Run &run)
    {
        for (const bool isRefusal : {false, true}) {
            const QString name = subject(run, isRefusal);
            if (m_outages.erase(name) > 0)
                say(QString("%1 %2 answers again").arg(now(), name));
        }
    }

    Session &m_session;
    const std::vector<Tag> m_tags;
    const std::optional<std::uint64_t> m_maxRecords;
    std::vector<WatchRow> m_rows; // by tag, as all these
    std::vector<Values> m_shown;  // empty before the first
    std::vector<std::optional<Time>> m_lastGood;
    const std::vector<Run> m_runs;
    Rates m_rates;
    std::optional<RecordWriter> m_records; // or
    std::optional<LiveTable> m_table;
    Time m_nextDraw = clockNow();
    std::map<QString, QString> m_outages;
    std::uint64_t m_changes = 0;
};

// The pauses between attempts to connect again: half a second, doubled up to half a minute.
constexpr std::chrono::milliseconds FIRST_PAUSE(500);
constexpr std::chrono::milliseconds LONGEST_PAUSE(30000);
constexpr std::chrono::milliseconds STOP_CHECK(50);

} // namespace

ExitCode runWatch(const Options &options, const WatchOptions &watch)
{
    Connection connection(options);
    const std::vector<Tag> tags = connection.readTags(watch.tags);
    Session &session = connection.open();
    const bool isLive = !watch.count && !options.isFormatAsked && isatty(STDOUT_FILENO) == 1;
    Watcher watcher(session, tags, options.format, isLive, watch.count);
    session.setObserver([&watcher](const Exchange &exchange) { watcher.note(exchange); });
    watcher.beginPolling();

    const Time begin = clockNow();
    const auto isOver = [&] {
        return stopFlag() || watcher.isOver() ||
               (watch.duration && clockNow() - begin >= *watch.duration);
    };
    // False when the end has come before the line.
    const auto awaitReconnection = [&] {
        std::chrono::milliseconds pause = FIRST_PAUSE;
        Time next = clockNow() + pause;
        while (!isOver()) {
            watcher.draw();
            std::this_thread::sleep_for(STOP_CHECK);
            if (clockNow() < next)
                continue;
            if (connection.reconnect())
                return true;
            pause = std::min(2 * pause, LONGEST_PAUSE);
            next = clockNow() + pause;
        }
        return false;
    };

    while (!isOver()) {
        if (session.step() == PollLoop::Step::LineLost && !isOver()) {
            const bool canReconnect = connection.canReconnect();
            watcher.noteLoss(canReconnect ? ", connecting again"
                                          : ": check the cable, then start again");
            if (!canReconnect || !awaitReconnection())
                break;
            watcher.noteReconnection();
        }
        watcher.draw();
    }
    watcher.end();
    printError(summary(session.statistics()));
    return watcher.outcome();
}

} // namespace kmr
