// kmr series: the driver's addresses at equal distances.
#include "kmr/command_definition.h"
#include "kmr/commands/commands.h"
#include "kmr/connection.h"

#include <QVector>

namespace kmr {

namespace {

const char *const HELP =
    R"(An address after the area's end is replaced by the end, and the command ends with 1.

Examples:
  kmr series D 100 4 2
  kmr series X 0 10 1)";

// Of the bits of words, which are counted through all words.
constexpr std::uint64_t HIGHEST_BIT = 65535 * 16 + 15;

struct SeriesOptions {
    std::string area;
    int start = 0; // as the driver expects it: for X and Y the octal digits
    int count = 1;
    int step = 1;
};

// Whether the driver accepts the text as an address of bits or of words.
bool isAddress(const DriverFunctions &driver, const QString &area, const QString &text)
{
    qint32 address = 0;
    return driver.checkAddrValidity(area, text, &address, 1, 0) == 0 ||
           driver.checkAddrValidity(area, text, &address, 1, 1) == 0;
}

// A series may contain texts that are not addresses: in an octal number the driver carries only the
// last digit. Returns false if it does.
bool checkSeries(const DriverFunctions &driver, const QString &area, const QVector<QString> &texts)
{
    QStringList wrong;
    for (const QString &text : texts) {
        if (!isAddress(driver, area, text))
            wrong.append(area + text);
    }
    if (wrong.isEmpty())
        return true;
    printError(
        QString("%1 of %2 are not addresses of %3, the first is %4: take another start or step")
            .arg(wrong.size())
            .arg(texts.size())
            .arg(area, wrong.front()));
    return false;
}

ExitCode runSeries(const Options &options, const SeriesOptions &series)
{
    const QString area = toQString(series.area);
    const auto library = loadDriver(options);
    QVector<QString> texts;
    QVector<qint32> numbers;
    const int result = library->functions().multiCopy(area, series.start, series.count, series.step,
                                                      &texts, &numbers);
    if (result != 1 && result != 2) {
        throw Error(
            ErrorKind::Usage,
            QString("%1 is not an area (result %2): 'kmr areas' lists them").arg(area).arg(result));
    }
    RecordWriter records(options.format, "series", {"address"}, false, print);
    for (const QString &text : texts)
        records.add(area + text, {area + text});
    records.end();
    const bool areAddresses = checkSeries(library->functions(), area, texts);
    if (result == 1)
        return areAddresses ? ExitCode::Ok : ExitCode::ItemFailed;
    printError(QString("some addresses lie after the end of %1 and were replaced by the end "
                       "(result 2): take fewer or a smaller step")
                   .arg(area));
    return ExitCode::ItemFailed;
}

} // namespace

void addSeries(CLI::App &app, Command &chosen)
{
    const auto series = std::make_shared<SeriesOptions>();
    CommandDefinition command(app, "series", "List addresses at equal distances");
    command.add("AREA", series->area, "device area").required();
    command.add("START", series->start, "first address (X and Y: its octal digits)")
        .required()
        .between(0, HIGHEST_BIT);
    command.add("COUNT", series->count, "number of addresses").required().between(1, 65537);
    command.add("STEP", series->step, "distance between them").required().between(1, HIGHEST_BIT);
    command.setHelp(HELP);
    command.setAction(chosen, series, runSeries);
}

} // namespace kmr
