// kmr log: records values in a file.
#include "host/error.h"
#include "kmr/command_definition.h"
#include "kmr/commands/commands.h"
#include "kmr/connection.h"
#include "kmr/log/log_sampler.h"
#include "kmr/log/log_writer.h"
#include "kmr/outages.h"
#include "kmr/outcome.h"
#include "kmr/output.h"
#include "kmr/reconnection.h"
#include "kmr/stop_signal.h"
#include "kmr/watch/watch_cycle.h"

#include <algorithm>
#include <thread>

namespace kmr {

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr milliseconds STOP_CHECK(50);

const char *const HELP =
    R"(Reads all tags in turn and appends a row for each round: the time, and for each tag
its value and quality. A value is only in the row in which it was read:
  good       read, and confirmed
  not read   good before, but not read since the previous row; the value is empty
  stale      its last request was given up, or the line is lost; the value is empty
  pending    not read yet; the value is empty

The file's name decides on the format: .csv has a row for each round and two columns
for each tag; .sqlite, .sqlite3 and .db are databases with a table
samples(time, tag, value, unit, quality). A file with the same tags is continued.
A power failure loses at most the last second. A lost line is opened again. Ctrl-C ends it.

)";
const char *const EXAMPLES = R"(

Examples:
  kmr log D100 X0x8 --output line.csv --link tcp://192.168.0.10:8888
  kmr log boiler.temp --every 10 --rotate day --output boiler.csv
  kmr log D100x8 --on-change --rotate 100 --output line.sqlite)";

struct LogOptions {
    std::vector<std::string> tags;
    std::string output;
    double every = 1; // seconds
    bool isOnChange = false;
    std::string rotate; // "day", or megabytes
    std::optional<double> seconds;
};

LogRotation rotationOf(const std::string &text)
{
    LogRotation rotation;
    bool isNumber = false;
    const double megabytes = toQString(text).toDouble(&isNumber);
    if (text == "day")
        rotation.isDaily = true;
    else if (isNumber && megabytes >= 0.001 && megabytes <= 1e6)
        rotation.bytes = static_cast<qint64>(megabytes * 1e6);
    else if (!text.empty())
        throw Error(ErrorKind::Usage,
                    QString("bad --rotate \"%1\": expected day, or a number of megabytes from "
                            "0.001 to 1000000")
                        .arg(toQString(text)));
    return rotation;
}

// One run of the command.
class Logger {
public:
    Logger(const Options &options, const LogOptions &log)
        : m_log(log), m_connection(options), m_tags(m_connection.readTags(toQStrings(log.tags))),
          m_rotation(rotationOf(log.rotate)), m_session(m_connection.open()),
          m_sampler(m_session, m_tags),
          m_writer(toQString(log.output), m_tags, m_rotation, QDateTime::currentDateTime()),
          m_cycle(milliseconds(static_cast<int>(1000 * log.every))), m_reconnection(m_connection)
    {
        m_session.setObserver([this](const Exchange &exchange) { note(exchange); });
        m_session.setConfirmObserver(
            [this](const ElementRange &run) { m_sampler.noteConfirmed(run); });
    }
    ~Logger()
    {
        m_session.setObserver({});
        m_session.setConfirmObserver({});
    }
    Logger(const Logger &) = delete;
    Logger &operator=(const Logger &) = delete;

    ExitCode run()
    {
        beginPolling();
        while (!isOver())
            next();
        m_session.confirm(false);
        m_writer.sync();
        printError(m_writer.summary());
        return outcome();
    }

private:
    bool isOver() const
    {
        return stopFlag() || (m_log.seconds && steady_clock::now() - m_begin >=
                                                   std::chrono::duration<double>(*m_log.seconds));
    }

    void beginPolling()
    {
        m_cycle.begin(m_session.poll(m_sampler.ranges()), steady_clock::now());
    }

    // One exchange, a part of a pause, or a reconnection.
    void next()
    {
        if (m_rowsOfCycles != m_cycle.ended()) {
            m_rowsOfCycles = m_cycle.ended();
            m_session.confirm(false);
            addRow();
        }
        m_outages.tellEnds(steady_clock::now());
        m_writer.syncWhenDue(QDateTime::currentDateTime());
        const std::chrono::nanoseconds pause = m_cycle.pause(steady_clock::now());
        if (pause > std::chrono::nanoseconds::zero())
            std::this_thread::sleep_for(std::min<std::chrono::nanoseconds>(pause, STOP_CHECK));
        else if (m_session.step() == PollLoop::Step::LineLost)
            bringBack();
    }

    void addRow()
    {
        const LogRow row = m_sampler.take(QDateTime::currentDateTime());
        const bool isNews = m_sampler.isNews(row);
        if (isNews || !m_log.isOnChange)
            m_writer.append(row);
    }

    void bringBack()
    {
        if (!std::exchange(m_isLost, true)) {
            m_reconnection.noteAnswer();
            printError(now() + " the line was lost, opening it again");
        }
        LogRow row = m_sampler.take(QDateTime::currentDateTime());
        for (LogCell &cell : row.cells)
            cell = {{}, Quality::Stale};
        if (m_sampler.isNews(row))
            m_writer.append(row);
        m_writer.sync();
        if (!m_reconnection.await([this] { return isOver(); }))
            return;
        m_outages.forget();
        beginPolling();
    }

    void note(const Exchange &exchange)
    {
        m_cycle.note(exchange, steady_clock::now());
        m_outages.note(exchange, steady_clock::now());
        if (exchange.outcome == Exchange::Outcome::Good && std::exchange(m_isLost, false))
            printError(now() + " the line is back");
    }

    ExitCode outcome() const
    {
        ExitCodes codes;
        for (const Tag &tag : m_tags) {
            const ElementState state = m_session.state(tag);
            if (m_isLost)
                codes.add(ExitCode::NoAnswer);
            else if (state.quality == Quality::Stale)
                codes.add(state.failure.exceptionCode != 0 ? ExitCode::Refused
                                                           : ExitCode::NoAnswer);
        }
        return codes.total();
    }

    const LogOptions &m_log;
    Connection m_connection;
    const std::vector<Tag> m_tags;
    const LogRotation m_rotation;
    Session &m_session;
    LogSampler m_sampler;
    LogWriter m_writer;
    WatchCycle m_cycle;
    Reconnection m_reconnection;
    Outages m_outages{printError, now};
    const steady_clock::time_point m_begin = steady_clock::now();
    std::uint64_t m_rowsOfCycles = 0;
    bool m_isLost = false;
};

ExitCode runLog(const Options &options, const LogOptions &log)
{
    requireLogName(toQString(log.output)); // before the line is opened
    return Logger(options, log).run();
}

} // namespace

void addLog(CLI::App &app, Command &chosen)
{
    const auto log = std::make_shared<LogOptions>();
    CommandDefinition command(app, "log", "Record values in a file");
    command.add("TAG", log->tags, WANTED_TAGS);
    command.add("--output", log->output, "the file: NAME.csv, .sqlite, .sqlite3 or .db").required();
    command.add("--every", log->every, "minimum seconds from one row to the next")
        .numberBetween(0.001, 86400)
        .showDefault();
    command.addFlag("--on-change", log->isOnChange, "leave out rows without a change");
    command.add("--rotate", log->rotate,
                "begin a new file, with its start time in the name: day, or after so many "
                "megabytes");
    command.add("--for", log->seconds, "end after this many seconds").aboveZero(1e9);
    command.setHelp(std::string(HELP) + TAG_HELP + EXAMPLES);
    command.setAction(chosen, log, runLog);
}

} // namespace kmr
