// kmr areas: the device areas of the driver's catalogue.
#include "kmr/command_definition.h"
#include "kmr/commands/commands.h"
#include "kmr/connection.h"

namespace kmr {

namespace {

const char *const HELP = R"(Examples:
  kmr areas
  kmr areas --driver ./libostrel_kmr.so.1)";

QString elementsOf(const QString &area, bool isWord)
{
    if (isCounterArea(area))
        return "counters";
    return isWord ? "words" : "bits";
}

ExitCode runAreas(const Options &options)
{
    const auto library = loadDriver(options);
    const DriverFunctions &driver = library->functions();
    QStringList areas;
    driver.getRegListByType(0, areas);
    driver.getRegListByType(1, areas);

    RecordWriter records(options.format == Format::Plain ? Format::Table : options.format, "areas",
                         {"area", "elements", "lowest", "highest", "digits", "access"}, false,
                         print);
    for (const QString &area : areas) {
        QStringList description; // mask, lowest, highest, word area, writable
        driver.getRegDiscription(area, description);
        records.add({}, {area, elementsOf(area, description.value(3) == "1"), description.value(1),
                         description.value(2),
                         QString(description.value(0).startsWith('o') ? "octal" : "decimal"),
                         QString(description.value(4) == "1" ? "read, write" : "read")});
    }
    records.end();
    return ExitCode::Ok;
}

} // namespace

void addAreas(CLI::App &app, Command &chosen)
{
    CommandDefinition command(app, "areas", "List the controller's device areas");
    command.setHelp(HELP);
    command.setAction(chosen, runAreas);
}

} // namespace kmr
