#include "host/commands/commands.h"
#include "host/commands/connection.h"

namespace kmr {

namespace {

QString row(const QStringList &cells)
{
    static const int WIDTHS[] = {6, 9, 8, 9, 8};
    QString line;
    for (int i = 0; i < cells.size(); ++i)
        line +=
            i < static_cast<int>(std::size(WIDTHS)) ? cells[i].leftJustified(WIDTHS[i]) : cells[i];
    return line;
}

QString elementsOf(const QString &area, bool isWord)
{
    if (isCounterArea(area))
        return "counters";
    return isWord ? "words" : "bits";
}

} // namespace

ExitCode runAreas(const Options &options)
{
    const auto library = loadDriver(options);
    const DriverFunctions &driver = library->functions();
    QStringList areas;
    driver.getRegListByType(0, areas);
    driver.getRegListByType(1, areas);

    print(row({"AREA", "ELEMENTS", "LOWEST", "HIGHEST", "DIGITS", "ACCESS"}));
    for (const QString &area : areas) {
        QStringList description; // mask, lowest, highest, word area, writable
        driver.getRegDiscription(area, description);
        print(row({area, elementsOf(area, description.value(3) == "1"), description.value(1),
                   description.value(2), description.value(0).startsWith('o') ? "octal" : "decimal",
                   description.value(4) == "1" ? "read, write" : "read"}));
    }
    return ExitCode::Ok;
}

} // namespace kmr
