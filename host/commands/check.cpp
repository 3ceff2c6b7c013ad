// The editor's services: is an address valid, and the addresses of a series.
#include "host/commands/connection.h"
#include "host/commands/diagnosis.h"

#include <QRegularExpression>
#include <QVector>

#include <algorithm>

namespace kmr {

namespace {

const char *const WORD_BITS = "TV_bit"; // the driver's area of "TV5.3"

QString resultText(int result)
{
    static const char *const TEXTS[] = {
        "valid",        "bits asked of a word area, or words of a bit area",
        "out of range", "unknown area",
        "no address",   "a data type that counters don't have"};
    return result >= 0 && result < static_cast<int>(std::size(TEXTS)) ? TEXTS[result]
                                                                      : "unknown result";
}

struct TypedAddress {
    QString area;
    QString address;
    int count = 1;
};

// Splits what was typed without judging it: that is the driver's part. An area that the driver
// doesn't know is all up to the first digit.
TypedAddress split(const QString &text, QStringList areas)
{
    static const QRegularExpression COUNT("^(.*[^x])x([0-9]{1,6})$");
    static const QRegularExpression PARTS("^([^0-9]*)(.*)$");
    TypedAddress typed;
    QString name = text;
    const QRegularExpressionMatch counted = COUNT.match(text);
    if (counted.hasMatch()) {
        name = counted.captured(1);
        typed.count = counted.captured(2).toInt();
    }
    const QRegularExpressionMatch parts = PARTS.match(name);
    typed.area = parts.captured(1);
    typed.address = parts.captured(2);
    std::sort(areas.begin(), areas.end(),
              [](const QString &a, const QString &b) { return a.size() > b.size(); });
    for (const QString &area : areas) {
        if (name.startsWith(area)) {
            typed.area = area;
            typed.address = name.mid(area.size());
            break;
        }
    }
    if (typed.area == "TV" && typed.address.contains('.'))
        typed.area = WORD_BITS;
    return typed;
}

int check(const DriverFunctions &driver, const TypedAddress &typed, int &number)
{
    const bool isBit = typed.area == WORD_BITS || isBitArea(typed.area);
    return driver.checkAddrValidity(typed.area, typed.address, &number, typed.count, isBit ? 0 : 1);
}

} // namespace

ExitCode runCheck(const Options &options, const QStringList &texts)
{
    const auto library = loadDriver(options);
    const DriverFunctions &driver = library->functions();
    QStringList areas;
    driver.getRegListByType(0, areas);
    driver.getRegListByType(1, areas);

    RecordWriter records(options.format, "check",
                         {"text", "area", "address", "count", "result", "meaning"}, false, print);
    ExitCode code = ExitCode::Ok;
    for (const QString &text : texts) {
        TypedAddress typed = split(text, areas);
        int number = 0;
        int result = check(driver, typed, number);
        // CV21 is the word CV 21, since CV2 begins at 200.
        const TypedAddress word{"CV", text.mid(2).section('x', 0, 0), typed.count};
        if (result != 0 && typed.area == "CV2" && check(driver, word, number) == 0) {
            typed = word;
            result = 0;
        }
        records.add(QString("%1: %2 (result %3), area %4, address %5, count %6")
                        .arg(text, resultText(result))
                        .arg(result)
                        .arg(typed.area, typed.address)
                        .arg(typed.count),
                    {text, typed.area, typed.address, typed.count, result, resultText(result)});
        if (result != 0)
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
