#include "host/plan.h"

#include "host/commands/connection.h"
#include "host/commands/diagnosis.h"
#include "host/link.h"
#include "host/poll_plan.h"

namespace kmr {

namespace {

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

QString elementsText(const Run &run)
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

} // namespace

ExitCode runPlan(const Options &options, const PlanOptions &request)
{
    const Connection connection(options);
    const std::vector<Tag> tags = connection.readTags(request.tags);
    const std::chrono::nanoseconds character = characterTimeOf(options, request.baud);
    const QList<KEY_ADDRESS> keys =
        request.isRaw ? toRawKeys(tags) : toKeys(readRuns(tags, options.groupLimit));
    const Plan plan = makePlan(connection.driver(), keys, tags, options.groupLimit);

    int characters = 0;
    for (const PlanBlock &block : plan.blocks) {
        const int sent = static_cast<int>(block.frame.size());
        characters += sent + block.replyChars;
        print(QString("station %1 %2: %3 sent %4 received %5 characters, %6 ms, %7 not asked for")
                  .arg(block.refreshed.station)
                  .arg(elementsText(block.refreshed), QString(block.frame.trimmed()))
                  .arg(sent)
                  .arg(block.replyChars)
                  .arg(milliseconds(character * (sent + block.replyChars)))
                  .arg(block.unasked));
    }
    print(QString("cycle: %1 requests, %2 characters, %3 ms on the wire")
              .arg(plan.blocks.size())
              .arg(characters)
              .arg(milliseconds(character * characters)));
    for (const PlanGap &gap : plan.gaps)
        print(QString("station %1 %2: %3")
                  .arg(gap.elements.station)
                  .arg(elementsText(gap.elements), gap.reason));
    return plan.gaps.empty() ? ExitCode::Ok : ExitCode::ItemFailed;
}

} // namespace kmr
