// kmr plan: the requests for polling tags.
#include "host/line/link.h"
#include "host/session/cycle_cost.h"
#include "host/session/poll_cycle.h"
#include "host/session/request_ranges.h"
#include "kmr/command_definition.h"
#include "kmr/commands/commands.h"
#include "kmr/connection.h"

namespace kmr {

namespace {

const char *const HELP =
    R"(Opens no link. Times are those of the characters, in the link's frame format or 7E1, and of
--gap. Ends with 1 if an element would never be refreshed or would be read wrongly.

)";
const char *const EXAMPLES = R"(

Examples:
  kmr plan D100 D103 X0x8
  kmr plan --raw M0x40 D4095x2 --baud 19200)";

struct PlanOptions {
    std::vector<std::string> tags;
    std::optional<int> baud; // bits a second; none: the link's
    bool isRaw = false;      // the tags as typed, not as kmr polls them
};

// With the settings of a serial link, else with the driver's default settings.
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

void tellRequest(RecordWriter &records, const PollBlock &block, std::chrono::nanoseconds time,
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

void tellCost(RecordWriter &records, const char *kind, const QString &text, const CycleCost &cost,
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

void tellCycle(RecordWriter &records, const PollCycle &plan, std::chrono::nanoseconds characterTime,
               std::chrono::milliseconds gap)
{
    const CycleCost cost = costOf(plan);
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

// The cost of keeping in step: check questions, and requests that are cut so that they differ.
void tellInStep(RecordWriter &records, const PollCycle &plan, const PollCycle &old,
                std::chrono::nanoseconds characterTime, std::chrono::milliseconds gap)
{
    const CycleCost with = costInStep(plan);
    const CycleCost without = costOf(old);
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

void tellGap(RecordWriter &records, const PollGap &gap)
{
    const int station = gap.elements.station;
    const QString elements = elementsText(gap.elements);
    records.add(QString("station %1 %2: %3").arg(station).arg(elements, gap.reason),
                {"gap", station, elements, {}, {}, {}, {}, {}, {}, gap.reason});
}

// Shows the read requests that the driver builds.
ExitCode runPlan(const Options &options, const PlanOptions &request)
{
    const Connection connection(options);
    const std::vector<Tag> tags = connection.readTags(toQStrings(request.tags));
    const std::chrono::nanoseconds character = characterTimeOf(options, request.baud);
    const bool isInStep = options.inStep && !request.isRaw;
    const auto planOf = [&](const QList<KEY_ADDRESS> &keys) {
        return pollCycleOf(connection.driver(), keys, tags, options.groupLimit);
    };
    const auto rangesOf = [&](Neighbours neighbours) {
        return toKeys(readRanges(tags, options.groupLimit, neighbours));
    };
    const PollCycle old = planOf(request.isRaw ? toRawKeys(tags) : rangesOf(Neighbours::Any));
    const PollCycle plan = isInStep ? planOf(rangesOf(Neighbours::Unlike)) : old;

    RecordWriter records(options.format, "plan",
                         {"kind", "station", "elements", "frame", "sent", "received", "wire_ms",
                          "silence_ms", "not_asked", "error"},
                         false, print);
    for (const PollBlock &block : plan.blocks)
        tellRequest(records, block,
                    character * (static_cast<int>(block.frame.size()) + block.replyChars),
                    options.gap);
    tellCycle(records, plan, character, options.gap);
    if (isInStep)
        tellInStep(records, plan, old, character, options.gap);
    for (const PollGap &gap : plan.gaps)
        tellGap(records, gap);
    records.end();
    return plan.gaps.empty() ? ExitCode::Ok : ExitCode::ItemFailed;
}

} // namespace

void addPlan(CLI::App &app, Command &chosen)
{
    const auto plan = std::make_shared<PlanOptions>();
    CommandDefinition command(app, "plan", "Show the requests for polling tags");
    command.add("TAG", plan->tags, "the tags to poll (default: those of kmr.toml)");
    command.add("--baud", plan->baud, "bits a second (default: the link's, else 9600)")
        .between(1, 4000000);
    command.addFlag("--raw", plan->isRaw, "the list as typed, as another host would pass it");
    command.setHelp(std::string(HELP) + TAG_HELP + EXAMPLES);
    command.setAction(chosen, plan, runPlan);
}

} // namespace kmr
