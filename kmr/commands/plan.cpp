#include "host/session/poll_cycle.h"

#include "host/line/answer_form.h"
#include "host/line/in_step.h"
#include "host/line/link.h"
#include "host/session/request_ranges.h"
#include "kmr/commands/diagnosis.h"
#include "kmr/connection.h"

namespace kmr {

namespace {

constexpr int READ_ANSWER_CHARS = 11; // that are not data

// The link's settings where it is a serial one, else the driver's default ones.
std::chrono::nanoseconds characterTimeOf(const Options &options, std::optional<int> baud)
{
    LinkAddress address;
    if (!options.link.isEmpty())
        address = parseLink(options.link);
    address.kind = LinkAddress::Kind::Serial;
    if (baud)
        address.baud = *baud;
    return characterTime(address);
}

QString elementsText(const ElementRange &run)
{
    if (run.count == 0)
        return "nothing of " + run.area;
    const QString first = elementName(run.area, run.first);
    return run.count == 1 ? first : first + " to " + elementName(run.area, run.end() - 1);
}

QString milliseconds(std::chrono::nanoseconds time)
{
    return QString::number(static_cast<double>(time.count()) / 1e6, 'f', 1);
}

void tellRequest(RecordWriter &records, const PlanBlock &block, std::chrono::nanoseconds time,
                 std::chrono::milliseconds gap)
{
    const QString elements = elementsText(block.refreshed);
    const QString frame = block.frame.trimmed();
    const int sent = static_cast<int>(block.frame.size());
    records.add(QString("station %1 %2: %3 sent %4 received %5 characters, %6 ms, %7 not asked for")
                    .arg(block.refreshed.station)
                    .arg(elements, frame)
                    .arg(sent)
                    .arg(block.replyChars)
                    .arg(milliseconds(time))
                    .arg(block.unasked),
                {"request",
                 block.refreshed.station,
                 elements,
                 frame,
                 sent,
                 block.replyChars,
                 millisecondsField(time),
                 millisecondsField(gap),
                 block.unasked,
                 {}});
}

// What one round takes.
struct Cost {
    int requests = 0;
    int sent = 0; // characters
    int received = 0;

    int characters() const
    {
        return sent + received;
    }
};

Cost costOf(const Plan &plan)
{
    Cost cost;
    for (const PlanBlock &block : plan.blocks) {
        ++cost.requests;
        cost.sent += static_cast<int>(block.frame.size());
        cost.received += block.replyChars;
    }
    return cost;
}

// With the check questions of --in-step on.
Cost costInStep(const Plan &plan)
{
    std::vector<QByteArray> requests;
    for (const PlanBlock &block : plan.blocks)
        requests.push_back(modbus::decodeLine(block.frame).message);
    Cost cost = costOf(plan);
    for (const QByteArray &check : checksOfRound(requests)) {
        ++cost.requests;
        cost.sent += static_cast<int>(modbus::encodeLine(check).size());
        cost.received += READ_ANSWER_CHARS + 2 * answerBytes(check);
    }
    return cost;
}

void tellCost(RecordWriter &records, const char *kind, const QString &text, const Cost &cost,
              std::chrono::nanoseconds characterTime, std::chrono::milliseconds gap)
{
    records.add(text, {kind,
                       {},
                       {},
                       {},
                       cost.sent,
                       cost.received,
                       millisecondsField(characterTime * cost.characters()),
                       millisecondsField(gap * cost.requests),
                       {},
                       {}});
}

void tellCycle(RecordWriter &records, const Plan &plan, std::chrono::nanoseconds characterTime,
               std::chrono::milliseconds gap)
{
    const Cost cost = costOf(plan);
    const std::chrono::nanoseconds time = characterTime * cost.characters();
    const std::chrono::milliseconds silence = gap * cost.requests;
    QString text = QString("cycle: %1 requests, %2 characters, %3 ms on the wire")
                       .arg(cost.requests)
                       .arg(cost.characters())
                       .arg(milliseconds(time));
    if (silence.count() > 0)
        text += QString(", %1 ms with the silence of --gap").arg(milliseconds(time + silence));
    tellCost(records, "cycle", text, cost, characterTime, gap);
}

// What keeping in step costs: check questions, and requests that are cut so that they differ.
void tellInStep(RecordWriter &records, const Plan &plan, const Plan &old,
                std::chrono::nanoseconds characterTime, std::chrono::milliseconds gap)
{
    const Cost with = costInStep(plan);
    const Cost without = costOf(old);
    const double more =
        100.0 * (with.characters() - without.characters()) / std::max(1, without.characters());
    const QString text =
        QString("in step: %1 of them and %2 check questions, %3 ms; with --in-step "
                "off %4 requests, %5 ms, so that it takes %6 % more")
            .arg(plan.blocks.size())
            .arg(with.requests - static_cast<int>(plan.blocks.size()))
            .arg(milliseconds(characterTime * with.characters()))
            .arg(without.requests)
            .arg(milliseconds(characterTime * without.characters()))
            .arg(more, 0, 'f', 1);
    tellCost(records, "in step", text, with, characterTime, gap);
    tellCost(records, "not in step", {}, without, characterTime, gap);
}

void tellGap(RecordWriter &records, const PlanGap &gap)
{
    const int station = gap.elements.station;
    const QString elements = elementsText(gap.elements);
    records.add(QString("station %1 %2: %3").arg(station).arg(elements, gap.reason),
                {"gap", station, elements, {}, {}, {}, {}, {}, {}, gap.reason});
}

} // namespace

ExitCode runPlan(const Options &options, const PlanOptions &request)
{
    const Connection connection(options);
    const std::vector<Tag> tags = connection.readTags(request.tags);
    const std::chrono::nanoseconds character = characterTimeOf(options, request.baud);
    const bool isInStep = options.inStep && !request.isRaw;
    const auto planOf = [&](const QList<KEY_ADDRESS> &keys) {
        return makePlan(connection.driver(), keys, tags, options.groupLimit);
    };
    const auto rangesOf = [&](Neighbours neighbours) {
        return toKeys(readRanges(tags, options.groupLimit, neighbours));
    };
    const Plan old = planOf(request.isRaw ? toRawKeys(tags) : rangesOf(Neighbours::Any));
    const Plan plan = isInStep ? planOf(rangesOf(Neighbours::Unlike)) : old;

    RecordWriter records(options.format, "plan",
                         {"kind", "station", "elements", "frame", "sent", "received", "wire_ms",
                          "silence_ms", "not_asked", "error"},
                         false, print);
    for (const PlanBlock &block : plan.blocks)
        tellRequest(records, block,
                    character * (static_cast<int>(block.frame.size()) + block.replyChars),
                    options.gap);
    tellCycle(records, plan, character, options.gap);
    if (isInStep)
        tellInStep(records, plan, old, character, options.gap);
    for (const PlanGap &gap : plan.gaps)
        tellGap(records, gap);
    records.end();
    return plan.gaps.empty() ? ExitCode::Ok : ExitCode::ItemFailed;
}

} // namespace kmr
