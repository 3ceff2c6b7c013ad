// Round trips to one station, and which stations answer at all.
#include "kmr/commands/diagnosis.h"
#include "kmr/connection.h"
#include "kmr/stop_signal.h"

#include <optional>
#include <thread>

namespace kmr {

namespace {

constexpr std::chrono::milliseconds STOP_CHECK(50);

QString milliseconds(std::chrono::nanoseconds time)
{
    return QString::number(static_cast<double>(time.count()) / 1e6, 'f', 3);
}

// A refusal is an answer, too: the station is there.
bool isAnswered(const Exchange &exchange)
{
    return exchange.outcome == Exchange::Outcome::Good || exchange.exceptionCode != 0;
}

QString replyText(const Exchange &exchange)
{
    QString time = "answered in " + milliseconds(exchange.roundTrip) + " ms";
    if (exchange.outcome == Exchange::Outcome::Good)
        return time;
    if (exchange.exceptionCode != 0)
        return time + ", refused: " + exceptionText(exchange.exceptionCode);
    if (exchange.outcome == Exchange::Outcome::Interrupted)
        return "broken off";
    return toText(exchange.fault);
}

RecordWriter exchangeRecords(const Options &options, const char *command)
{
    return {options.format,
            command,
            {"time", "station", "tag", "outcome", "round_trip_ms", "error"},
            true,
            print};
}

std::vector<Field> exchangeFields(const Exchange &exchange, const QString &tag)
{
    const std::int64_t station = exchange.request.var.station;
    if (exchange.outcome == Exchange::Outcome::Good)
        return {now(), station, tag, "good", millisecondsField(exchange.roundTrip), {}};
    if (exchange.exceptionCode != 0) {
        return {now(),
                station,
                tag,
                "refused",
                millisecondsField(exchange.roundTrip),
                exceptionText(exchange.exceptionCode)};
    }
    return {now(), station, tag, "no answer", {}, replyText(exchange)};
}

// One request's record, held back until its answer is confirmed.
struct Held {
    QString line;
    std::vector<Field> fields;
    std::optional<std::chrono::nanoseconds> roundTrip; // when it was answered
    bool isInDoubt = false;
};

// What is said of an answer that came out of step instead.
Held inDoubt(const Held &held, const QString &station, const QString &tag)
{
    const QString fault = toText(ReplyFault::NotConfirmed);
    return {QString("station %1 %2: %3").arg(station, tag, fault),
            {held.fields[0], held.fields[1], tag, "out of step", {}, fault},
            {},
            true};
}

void pause(std::chrono::milliseconds time)
{
    for (; time.count() > 0 && !stopFlag(); time -= STOP_CHECK)
        std::this_thread::sleep_for(std::min(time, STOP_CHECK));
}

// Each request goes out once, so that each loss is seen.
Options withoutRetries(Options options)
{
    options.retries = 0;
    return options;
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

} // namespace

ExitCode runPing(const Options &options, const PingOptions &ping)
{
    Connection connection(withoutRetries(options));
    const Tag tag = connection.readTags({ping.tag}).front();
    Session &session = connection.open();
    RecordWriter records = exchangeRecords(options, "ping");
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
            pause(ping.interval);
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
        printError(QString("no answer within %1 ms: 'kmr doctor' finds out whether they come late")
                       .arg(options.timeout.count()));
    if (answered == 0)
        return ExitCode::NoAnswer;
    return answered == sent && last != PollLoop::Step::LineLost ? ExitCode::Ok
                                                                : ExitCode::ItemFailed;
}

ExitCode runScan(const Options &options, const ScanOptions &scan)
{
    Connection connection(withoutRetries(options));
    const ElementRange first = connection.readTags({scan.tag}).front().elements;
    Session &session = connection.open();
    RecordWriter records = exchangeRecords(options, "scan");
    int asked = 0;
    int found = 0;
    session.setObserver([&](const Exchange &exchange) {
        const QString line =
            QString("station %1: %2").arg(exchange.request.var.station).arg(replyText(exchange));
        if (exchange.outcome != Exchange::Outcome::Interrupted)
            ++asked;
        if (isAnswered(exchange))
            ++found;
        else if (exchange.fault != ReplyFault::Silence)
            printError(line);
        records.add(isAnswered(exchange) ? line : QString(), exchangeFields(exchange, scan.tag));
    });
    PollLoop::Step last = PollLoop::Step::Exchanged;
    for (int station = scan.first; station <= scan.last && last == PollLoop::Step::Exchanged;
         ++station) {
        session.poll({{station, first.area, first.first, 1}});
        last = session.step();
        if (last == PollLoop::Step::Exchanged)
            last = session.confirm();
    }
    records.end();
    const int left = scan.last - scan.first + 1 - asked;
    printError(QString("%1 of %2 stations answer").arg(found).arg(asked) +
               (left > 0 ? QString(", %1 not asked").arg(left) : QString()));
    if (last == PollLoop::Step::LineLost)
        printError("the line was lost: check the cable or the network, then start again");
    return found > 0 && last != PollLoop::Step::LineLost ? ExitCode::Ok : ExitCode::NoAnswer;
}

} // namespace kmr
