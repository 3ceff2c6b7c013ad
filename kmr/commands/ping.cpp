// kmr ping: round trips to one station.
#include "kmr/command_definition.h"
#include "kmr/commands/commands.h"
#include "kmr/connection.h"
#include "kmr/exchange_records.h"
#include "kmr/stop_signal.h"

#include <optional>

namespace kmr {

namespace {

const char *const HELP =
    R"(Nothing is sent again, so every loss counts. A refusal is also an answer. Ends with 0 if all
requests were answered, 1 if some were lost, 4 if all were lost.

Examples:
  kmr ping 10 --link tcp://192.168.0.10:8888
  kmr ping --interval 0.1 --station 2 --link serial:///dev/ttyUSB0)";

struct PingOptions {
    std::optional<std::uint64_t> count; // requests; none: until Ctrl-C
    double interval = 1;                // seconds
    std::string tag = "D0";             // to be read
};

// One request's record, held back until its answer is confirmed.
struct Held {
    QString line;
    std::vector<Field> fields;
    std::optional<std::chrono::nanoseconds> roundTrip; // if it was answered
    bool isInDoubt = false;
};

// The record of an answer that came out of step.
Held inDoubt(const Held &held, const QString &station, const QString &tag)
{
    const QString fault = toText(ReplyFault::NotConfirmed);
    return {QString("station %1 %2: %3").arg(station, tag, fault),
            {held.fields[0], held.fields[1], tag, "out of step", {}, fault},
            {},
            true};
}

QString summary(std::uint64_t sent, std::uint64_t answered, const Statistics &statistics)
{
    const double lost =
        sent == 0 ? 0.0 : 100.0 * static_cast<double>(sent - answered) / static_cast<double>(sent);
    const QString counts = QString("%1 requests sent, %2 answered, %3% lost")
                               .arg(sent)
                               .arg(answered)
                               .arg(lost, 0, 'f', 1);
    return answered == 0 ? counts : counts + '\n' + toText(statistics.roundTrips());
}

// Reads one element repeatedly, without retries.
ExitCode runPing(const Options &options, const PingOptions &ping)
{
    Connection connection(withoutRetries(options));
    const Tag tag = connection.readTags({toQString(ping.tag)}).front();
    Session &session = connection.open();
    RecordWriter records = exchangeRecords(options.format, "ping");
    std::uint64_t sent = 0;
    std::uint64_t answered = 0;
    Statistics statistics;
    Held held;
    session.setObserver([&](const Exchange &exchange) {
        ++sent;
        held = {QString("station %1 %2: %3")
                    .arg(tag.elements.station)
                    .arg(tag.text, replyText(exchange)),
                exchangeFields(exchange, tag.text),
                {},
                false};
        if (isAnswered(exchange))
            held.roundTrip = exchange.roundTrip;
    });
    session.setStepObserver([&](const StepNews &news) {
        held.isInDoubt = held.isInDoubt || news.kind == StepNews::Kind::Stray;
    });
    const auto tell = [&] {
        if (held.fields.empty())
            return;
        if (held.isInDoubt && held.roundTrip && options.inStep)
            held = inDoubt(held, QString::number(tag.elements.station), tag.text);
        if (held.roundTrip) {
            ++answered;
            statistics.countGood(*held.roundTrip);
        }
        records.add(held.line, held.fields);
        held = {};
    };
    ElementRange one = tag.elements;
    one.count = 1;
    session.poll({one});

    PollLoop::Step last = PollLoop::Step::Exchanged;
    while (last == PollLoop::Step::Exchanged && !(ping.count && sent >= *ping.count)) {
        if (sent > 0)
            sleepUnlessStopped(
                std::chrono::milliseconds(static_cast<qint64>(ping.interval * 1000)));
        last = session.step();
        if (last == PollLoop::Step::Exchanged)
            last = session.confirm();
        tell();
    }
    records.end();
    printError(summary(sent, answered, statistics));
    if (last == PollLoop::Step::LineLost)
        printError("the line was lost: check the cable or the network, then start again");
    if (answered == 0 && last == PollLoop::Step::Exchanged)
        printError(QString("no answer within %1 ms: 'kmr doctor' finds out if answers come late")
                       .arg(options.timeout.count()));
    if (answered == 0)
        return ExitCode::NoAnswer;
    return answered == sent && last != PollLoop::Step::LineLost ? ExitCode::Ok
                                                                : ExitCode::ItemFailed;
}

} // namespace

void addPing(CLI::App &app, Command &chosen)
{
    const auto ping = std::make_shared<PingOptions>();
    CommandDefinition command(app, "ping", "Measure round trips to a station");
    command.add("COUNT", ping->count, "requests (default: until Ctrl-C)").between(1, 1000000000);
    command.add("--interval", ping->interval, "seconds between requests")
        .numberBetween(0, 3600)
        .showDefault();
    command.add("--tag", ping->tag, "the element to read").showDefault();
    command.setHelp(HELP);
    command.setAction(chosen, ping, runPing);
}

} // namespace kmr
