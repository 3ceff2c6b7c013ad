// The editor's services: is an address valid, and the addresses of a series.
#include "host/commands/connection.h"
#include "host/commands/diagnosis.h"

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
        throw Error(ExitCode::Usage, QString("%1 is no area (result %2): 'kmr areas' lists them")
                                         .arg(series.area)
                                         .arg(result));
    }
    RecordWriter records(options.format, "series", {"address"}, false, print);
    for (const QString &text : texts)
        records.add(series.area + text, {series.area + text});
    records.end();
    if (result == 1)
        return ExitCode::Ok;
    printError(QString("some addresses lie behind the end of %1 and were replaced by the end "
                       "(result 2): take fewer or a smaller step")
                   .arg(series.area));
    return ExitCode::ItemFailed;
}

} // namespace kmr
