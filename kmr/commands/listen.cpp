// kmr listen: explains the traffic of a line with another master.
#include "host/line/line_trace.h"
#include "host/line/link.h"
#include "kmr/command_definition.h"
#include "kmr/commands/commands.h"
#include "kmr/connection.h"
#include "kmr/frame_records.h"
#include "kmr/output.h"
#include "kmr/stop_signal.h"

#include <QDeadlineTimer>

namespace kmr {

namespace {

const char *const HELP =
    R"(Never sends, so it does not disturb the other host and its controllers.
Each line: time, direction (> request, < answer), frame, meaning. An answer is explained by the
request before it. Characters that are not a whole frame are shown when the next frame begins or
after a second of silence.
On a two-wire line it receives both sides; on RS-232 and four wires only the side that is connected
to its receiver. Over TCP the gateway has to send all traffic to each connection.
With --capture the requests are stored as sent, so that 'kmr replay' can replace the controller.
Ends on Ctrl-C, after --for, and when the link is lost, with a summary on stderr. Exit codes: 0
whole frames were received, 3 the link could not be opened, 4 no whole frame was received or the
link was lost.

Examples:
  kmr listen --link serial:///dev/ttyUSB0?baud=19200
  kmr listen --for 60 --capture field.jsonl --capture-limit 100 --link serial:///dev/ttyUSB0)";

constexpr std::chrono::milliseconds STOP_CHECK(50);

// The longest silence within a frame (Modbus over Serial Line V1.02, section 2.5.2.1).
constexpr std::chrono::seconds LONGEST_SILENCE(1);

struct ListenOptions {
    std::optional<double> seconds; // time to listen
};

struct Heard {
    int requests = 0;
    int answers = 0;
    int refusals = 0;
    int unreadable = 0; // also those with a wrong LRC
};

void count(const TracedLine &line, Heard &heard)
{
    int &counter = !line.frame.isGood                      ? heard.unreadable
                   : line.isSent                           ? heard.requests
                   : line.frame.kind == FrameKind::Refusal ? heard.refusals
                                                           : heard.answers;
    ++counter;
}

// Passes the received characters to `trace`. Returns false if the line is lost before `end`.
bool hear(QIODevice &line, const QDeadlineTimer &end, LineTrace &trace)
{
    QDeadlineTimer silence(LONGEST_SILENCE);
    while (!stopFlag() && !end.hasExpired()) {
        line.waitForReadyRead(static_cast<int>(STOP_CHECK.count()));
        const QByteArray characters = line.readAll();
        if (!characters.isEmpty()) {
            trace.add(QDateTime::currentDateTime(), false, characters);
            silence.setRemainingTime(LONGEST_SILENCE);
        } else if (isLost(line)) {
            return false;
        } else if (silence.hasExpired()) {
            trace.flush();
        }
        stopWithoutReader();
    }
    return true;
}

ExitCode report(const Heard &heard, bool isLineLost)
{
    printError(QString("heard %1 requests, %2 answers, %3 refusals and %4 unreadable lines")
                   .arg(heard.requests)
                   .arg(heard.answers)
                   .arg(heard.refusals)
                   .arg(heard.unreadable));
    if (isLineLost) {
        printError("the link is lost: the other side closed it, or the adapter was unplugged");
        return ExitCode::NoAnswer;
    }
    if (heard.requests + heard.answers + heard.refusals > 0)
        return ExitCode::Ok;
    printError(heard.unreadable > 0
                   ? "no whole frame came: check baud and frame in --link, and the wires"
                   : "nothing came: check that a host uses this line, the wires and their order, "
                     "and over TCP that the gateway sends all traffic to each connection");
    return ExitCode::NoAnswer;
}

ExitCode runListen(const Options &options, const ListenOptions &listen)
{
    const std::unique_ptr<QIODevice> line =
        openLink(linkOf(options), CONNECT_LIMIT, stopFlag(), QIODevice::ReadOnly);
    std::unique_ptr<CaptureWriter> writer = beginCapture(options);
    RecordWriter records(options.format, "listen", tracedFieldNames(), true, print);
    Heard heard;
    LineTrace trace(
        [&](const TracedLine &traced) {
            count(traced, heard);
            capture(writer, traced.isSent, traced.characters);
            records.add(toText(traced), tracedFields(traced));
        },
        Traffic::Overheard);
    const QDeadlineTimer end = listen.seconds
                                   ? QDeadlineTimer(static_cast<qint64>(*listen.seconds * 1000))
                                   : QDeadlineTimer(QDeadlineTimer::Forever);
    const bool isWhole = hear(*line, end, trace);
    trace.flush();
    records.end();
    return report(heard, !isWhole);
}

} // namespace

void addListen(CLI::App &app, Command &chosen)
{
    const auto listen = std::make_shared<ListenOptions>();
    CommandDefinition command(app, "listen",
                              "Explain the traffic of another host, without sending");
    command.add("--for", listen->seconds, "end after this many seconds").aboveZero(1e9);
    command.setHelp(HELP);
    command.setAction(chosen, listen, runListen);
}

} // namespace kmr
