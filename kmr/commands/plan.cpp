// kmr plan: the requests that polling tags takes.
#include "host/line/link.h"
#include "host/session/poll_cycle.h"
#include "host/session/request_ranges.h"
#include "kmr/command_line.h"
#include "kmr/commands/commands.h"
#include "kmr/connection.h"

namespace kmr {

namespace {

const char *const HELP =
    R"(Opens no link. Times are those of the characters, in the link's frame format or 7E1, and of
--gap. Ends with 1 when an element would never be refreshed or read wrongly.

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

// The link's settings if it is a serial one, else the driver's default ones.
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

void tellCycle(RecordWriter &records, const PollCycle &cycle,
               std::chrono::nanoseconds characterTime, std::chrono::milliseconds gap)
{
    int sent = 0;
    int received = 0;
    for (const PollBlock &block : cycle.blocks) {
        sent += static_cast<int>(block.frame.size());
        received += block.replyChars;
    }
    const std::chrono::nanoseconds time = characterTime * (sent + received);
    const std::chrono::milliseconds silence = gap * static_cast<int>(cycle.blocks.size());
    QString text = QString("cycle: %1 requests, %2 characters, %3 ms on the wire")
                       .arg(cycle.blocks.size())
                       .arg(sent + received)
                       .arg(milliseconds(time));
    if (silence.count() > 0)
        text += QString(", %1 ms with the silence of --gap").arg(milliseconds(time + silence));
    records.add(text, {"cycle",
                       {},
                       {},
                       {},
                       sent,
                       received,
                       millisecondsField(time),
                       millisecondsField(silence),
                       {},
                       {}});
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
    const QList<KEY_ADDRESS> keys =
        request.isRaw ? toRawKeys(tags)
                      : toKeys(readRanges(tags, options.groupLimit,
                                          options.inStep ? Neighbours::Unlike : Neighbours::Any));
    const PollCycle cycle = pollCycleOf(connection.driver(), keys, tags, options.groupLimit);

    RecordWriter records(options.format, "plan",
                         {"kind", "station", "elements", "frame", "sent", "received", "wire_ms",
                          "silence_ms", "not_asked", "error"},
                         false, print);
    for (const PollBlock &block : cycle.blocks)
        tellRequest(records, block,
                    character * (static_cast<int>(block.frame.size()) + block.replyChars),
                    options.gap);
    tellCycle(records, cycle, character, options.gap);
    for (const PollGap &gap : cycle.gaps)
        tellGap(records, gap);
    records.end();
    return cycle.gaps.empty() ? ExitCode::Ok : ExitCode::ItemFailed;
}

} // namespace

void addPlan(CLI::App &app, Command &chosen)
{
    const auto plan = std::make_shared<PlanOptions>();
    CLI::App *command = app.add_subcommand("plan", "Show the requests that polling tags takes");
    command->add_option("TAG", plan->tags, "what to poll (default: the tags of the project file)");
    command->add_option("--baud", plan->baud, "bits a second (default: the link's, else 9600)")
        ->check(aboveZero(4e6));
    command->add_flag("--raw", plan->isRaw, "the list as typed, as another host hands it over");
    command->footer(std::string(HELP) + TAG_HELP + EXAMPLES);
    setAction(*command, chosen, plan, runPlan);
}

} // namespace kmr
