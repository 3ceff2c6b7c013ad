#include "kmr/exchange_records.h"

#include "kmr/outcome.h"
#include "kmr/output.h"
#include "modbus/protocol.h"

namespace kmr {

namespace {

QString milliseconds(std::chrono::nanoseconds time)
{
    return QString::number(static_cast<double>(time.count()) / 1e6, 'f', 3);
}

} // namespace

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
        return time + ", refused: " + modbus::exceptionText(exchange.exceptionCode);
    if (exchange.outcome == Exchange::Outcome::Interrupted)
        return "stopped or line lost";
    return toTextWithHint({exchange.fault, 0, exchange.length});
}

RecordWriter exchangeRecords(Format format, const char *command)
{
    return {format,
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
                modbus::exceptionText(exchange.exceptionCode)};
    }
    return {now(), station, tag, "no answer", {}, replyText(exchange)};
}

Options withoutRetries(Options options)
{
    options.retries = 0;
    return options;
}

} // namespace kmr
