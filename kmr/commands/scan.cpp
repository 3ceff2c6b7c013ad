// kmr scan: finds the stations that answer.
#include "host/tags/tag.h"
#include "kmr/command_definition.h"
#include "kmr/commands/commands.h"
#include "kmr/connection.h"
#include "kmr/exchange_records.h"

#include <QRegularExpression>

#include <optional>

namespace kmr {

namespace {

const char *const HELP =
    R"(Asks each station once and waits --timeout for its answer. Ends with 4 if none answers.

Examples:
  kmr scan --link tcp://192.168.0.10:8888
  kmr scan --stations 1..99 --timeout 200 --link serial:///dev/ttyUSB0)";

const char *const TAG = "D0"; // to be read

struct ScanOptions {
    std::string stations = "1..31";
};

struct Stations {
    int first;
    int last;
};

// Reads "1..31" or "5".
std::optional<Stations> parseStations(const std::string &text)
{
    static const QRegularExpression RANGE("^([0-9]{1,2})(?:\\.\\.([0-9]{1,2}))?$");
    const QRegularExpressionMatch match = RANGE.match(toQString(text));
    const int first = match.captured(1).toInt();
    const int last = match.captured(2).isEmpty() ? first : match.captured(2).toInt();
    if (!match.hasMatch() || first < MIN_STATION || first > last)
        return std::nullopt;
    return Stations{first, last};
}

std::string faultOfStations(const std::string &text)
{
    return parseStations(text) ? std::string()
                               : "expected stations from 1 to 99, for example 1..31";
}

// Asks each station once.
ExitCode runScan(const Options &options, const ScanOptions &scan)
{
    const Stations stations = parseStations(scan.stations).value();
    Connection connection(withoutRetries(options));
    const ElementRange first = connection.readTags({TAG}).front().elements;
    Session &session = connection.open();
    RecordWriter records = exchangeRecords(options.format, "scan");
    int asked = 0;
    bool isBrokenOff = false; // stopped before the last answer came
    int found = 0;
    session.setObserver([&](const Exchange &exchange) {
        const QString line =
            QString("station %1: %2").arg(exchange.request.var.station).arg(replyText(exchange));
        ++asked;
        isBrokenOff = exchange.outcome == Exchange::Outcome::Interrupted;
        if (isAnswered(exchange))
            ++found;
        else if (exchange.fault != ReplyFault::Silence)
            printError(line);
        records.add(isAnswered(exchange) ? line : QString(), exchangeFields(exchange, TAG));
    });
    PollLoop::Step last = PollLoop::Step::Exchanged;
    for (int station = stations.first;
         station <= stations.last && last == PollLoop::Step::Exchanged; ++station) {
        session.poll({{station, first.area, first.first, 1}});
        last = session.step();
        if (last == PollLoop::Step::Exchanged)
            last = session.confirm();
    }
    records.end();
    const int left = stations.last - stations.first + 1 - asked;
    printError(QString("%1 of %2 stations answer").arg(found).arg(asked) +
               (isBrokenOff ? ", stopped while waiting for the last one" : "") +
               (left > 0 ? QString(", %1 not asked").arg(left) : QString()));
    if (last == PollLoop::Step::LineLost)
        printError("the line was lost: check the cable or the network, then start again");
    return found > 0 && last != PollLoop::Step::LineLost ? ExitCode::Ok : ExitCode::NoAnswer;
}

} // namespace

void addScan(CLI::App &app, Command &chosen)
{
    const auto scan = std::make_shared<ScanOptions>();
    CommandDefinition command(app, "scan", "Find the stations that answer");
    command.add("--stations", scan->stations, "the stations to ask, FIRST..LAST")
        .showDefault()
        .check(faultOfStations);
    command.setHelp(HELP);
    command.setAction(chosen, scan, runScan);
}

} // namespace kmr
