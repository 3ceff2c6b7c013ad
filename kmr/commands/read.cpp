// kmr read: reads tags once.
#include "host/session/read_once.h"
#include "kmr/command_definition.h"
#include "kmr/commands/commands.h"
#include "kmr/connection.h"

namespace kmr {

namespace {

const char *const HELP =
    R"(Prints only values that the controller has just answered. If a station does not answer two
requests in a row, its other tags are reported as not asked.

)";
const char *const EXAMPLES = R"(

Examples:
  kmr read D100 D200x8 --link tcp://192.168.0.10:8888
  kmr read 2#X0x8 TV5.3 --link serial:///dev/ttyUSB0)";

struct ReadOptions {
    std::vector<std::string> tags;
};

QString outcomeOf(const Reading &reading)
{
    const bool isAsked = reading.result.outcome != RequestResult::Outcome::NotSent;
    return isAsked ? outcomeName(reading.result) : QString("not asked");
}

ExitCode runRead(const Options &options, const ReadOptions &read)
{
    Connection connection(options);
    const std::vector<Tag> wanted = connection.readTags(toQStrings(read.tags));
    const std::vector<Reading> readings = readNow(connection.open(), wanted);

    RecordWriter records(options.format, "read",
                         {"time", "tag", "values", "unit", "outcome", "error"}, false, print);
    ExitCodes codes;
    for (std::size_t i = 0; i < wanted.size(); ++i) {
        const Tag &tag = wanted[i];
        const RequestResult &result = readings[i].result;
        codes.add(exitCodeOf(result));
        const Field unit = textField(tag.unit);
        if (result.isDone()) {
            const Values &values = readings[i].values;
            records.add(tag.text + ' ' + withUnit(tag, values),
                        {now(), tag.text, interpret(tag, values), unit, QString("good"), {}});
        } else {
            const QString error = readErrorText(readings[i], tag);
            printError(QString("%1: %2").arg(tag.text, error));
            records.add({}, {now(), tag.text, {}, unit, outcomeOf(readings[i]), error});
        }
    }
    records.end();
    return codes.total();
}

} // namespace

void addRead(CLI::App &app, Command &chosen)
{
    const auto read = std::make_shared<ReadOptions>();
    CommandDefinition command(app, "read", "Read tags once");
    command.add("TAG", read->tags, WANTED_TAGS);
    command.setHelp(std::string(HELP) + TAG_HELP + EXAMPLES);
    command.setAction(chosen, read, runRead);
}

} // namespace kmr
