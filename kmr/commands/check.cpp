// kmr check: asks the driver whether addresses are valid.
#include "kmr/command_definition.h"
#include "kmr/commands/commands.h"
#include "kmr/connection.h"

namespace kmr {

namespace {

const char *const HELP =
    R"(Results: 0 valid, 1 wrong kind, 2 out of range, 3 unknown area, 4 not an address.
Ends with 1 if one is not valid.

Examples:
  kmr check D100 X17 TV5.3
  kmr check D11999x2 2#M0..17)";

struct CheckOptions {
    std::vector<std::string> tags;
};

QString resultText(int result)
{
    static const char *const TEXTS[] = {
        "valid",          "bits wanted from a word area, or words from a bit area",
        "out of range",   "unknown area",
        "not an address", "a data type that counters don't have"};
    return result >= 0 && result < static_cast<int>(std::size(TEXTS)) ? TEXTS[result]
                                                                      : "unknown result";
}

// Returns false if the tag is not valid.
bool addCheck(RecordWriter &records, const NamedTagReader &tags, const QString &text)
{
    try {
        const AddressCheck check = tags.check(text);
        const QString meaning = resultText(check.result);
        records.add(QString("%1: %2 (result %3), area %4, address %5, count %6")
                        .arg(text, meaning)
                        .arg(check.result)
                        .arg(check.area, check.address)
                        .arg(check.count),
                    {text, check.area, check.address, check.count, check.result, meaning});
        return check.result == 0;
    } catch (const Error &error) { // the driver was not asked
        records.add(error.text(), {text, {}, {}, {}, {}, error.text()});
        return false;
    }
}

ExitCode runCheck(const Options &options, const CheckOptions &check)
{
    const Connection connection(options);
    RecordWriter records(options.format, "check",
                         {"text", "area", "address", "count", "result", "meaning"}, false, print);
    ExitCode code = ExitCode::Ok;
    for (const QString &text : toQStrings(check.tags)) {
        if (!addCheck(records, connection.tags(), text))
            code = ExitCode::ItemFailed;
    }
    records.end();
    return code;
}

} // namespace

void addCheck(CLI::App &app, Command &chosen)
{
    const auto check = std::make_shared<CheckOptions>();
    CommandDefinition command(app, "check", "Ask the driver whether addresses are valid");
    command.add("TAG", check->tags, "the tags to check").required();
    command.setHelp(HELP);
    command.setAction(chosen, check, runCheck);
}

} // namespace kmr
