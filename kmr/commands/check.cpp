// The editor's services: is an address valid, and the addresses of a series.
#include "kmr/commands/diagnosis.h"
#include "kmr/connection.h"

#include <QVector>

namespace kmr {

namespace {

QString resultText(int result)
{
    static const char *const TEXTS[] = {
        "valid",        "bits asked of a word area, or words of a bit area",
        "out of range", "unknown area",
        "no address",   "a data type that counters don't have"};
    return result >= 0 && result < static_cast<int>(std::size(TEXTS)) ? TEXTS[result]
                                                                      : "unknown result";
}

// False where the tag is not valid.
bool addCheck(RecordWriter &records, const TagReader &tags, const QString &text)
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
    } catch (const Error &error) { // the driver was not even asked
        records.add(error.text(), {text, {}, {}, {}, {}, error.text()});
        return false;
    }
}

// Whether the driver takes the text for an address, of bits or of words.
bool isAddress(const DriverFunctions &driver, const QString &area, const QString &text)
{
    qint32 address = 0;
    return driver.checkAddrValidity(area, text, &address, 1, 0) == 0 ||
           driver.checkAddrValidity(area, text, &address, 1, 1) == 0;
}

// A series may hold what is no address: the driver carries only an octal number's last digit over,
// and shows a start below 0 as a large number. False where it does.
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
        QString("%1 of %2 are no addresses of %3, the first is %4: take another start or step")
            .arg(wrong.size())
            .arg(texts.size())
            .arg(area, wrong.front()));
    return false;
}

} // namespace

ExitCode runCheck(const Options &options, const QStringList &texts)
{
    const Connection connection(options);
    RecordWriter records(options.format, "check",
                         {"text", "area", "address", "count", "result", "meaning"}, false, print);
    ExitCode code = ExitCode::Ok;
    for (const QString &text : texts) {
        if (!addCheck(records, connection.tags(), text))
            code = ExitCode::ItemFailed;
    }
    records.end();
    return code;
}

ExitCode runSeries(const Options &options, const SeriesOptions &series)
{
    const auto library = loadDriver(options);
    QVector<QString> texts;
    QVector<qint32> numbers;
    const int result = library->functions().multiCopy(series.area, series.start, series.count,
                                                      series.step, &texts, &numbers);
    if (result != 1 && result != 2) {
        throw Error(ErrorKind::Usage, QString("%1 is no area (result %2): 'kmr areas' lists them")
                                          .arg(series.area)
                                          .arg(result));
    }
    RecordWriter records(options.format, "series", {"address"}, false, print);
    for (const QString &text : texts)
        records.add(series.area + text, {series.area + text});
    records.end();
    const bool areAddresses = checkSeries(library->functions(), series.area, texts);
    if (result == 1)
        return areAddresses ? ExitCode::Ok : ExitCode::ItemFailed;
    printError(QString("some addresses lie behind the end of %1 and were replaced by the end "
                       "(result 2): take fewer or a smaller step")
                   .arg(series.area));
    return ExitCode::ItemFailed;
}

} // namespace kmr
