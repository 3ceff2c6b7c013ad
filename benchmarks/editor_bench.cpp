// The editor's services: checks of typed addresses, the catalogue, and series of addresses.
#include "benchmarks/panel.h"

#include <benchmark/benchmark.h>

using namespace bench;

namespace {

void checkValidity(benchmark::State &state, const char *areaName, const char *typed, int wantWord,
                   int expected)
{
    const kmr::DriverFunctions &functions = intf();
    const QString area = QString::fromLatin1(areaName);
    const QString text = QString::fromLatin1(typed);
    qint32 address = -1;
    require(functions.checkAddrValidity(area, text, &address, 1, wantWord) == 0,
            "the address is valid");
    require(address == expected, "the address is read");
    for (auto _ : state)
        benchmark::DoNotOptimize(functions.checkAddrValidity(area, text, &address, 1, wantWord));
}
BENCHMARK_CAPTURE(checkValidity, word, "D", "11999", 1, 11999)->Name("editor/check_word");
BENCHMARK_CAPTURE(checkValidity, octal, "X", "23417", 0, 23417)->Name("editor/check_octal_bit");
BENCHMARK_CAPTURE(checkValidity, bit_of_word, "TV_bit", "1234.15", 0, 19759)
    ->Name("editor/check_bit_of_word");

void checkWithDataType(benchmark::State &state)
{
    const kmr::DriverFunctions &functions = intf();
    const QString area = QStringLiteral("CV2");
    const QString text = QStringLiteral("200");
    qint32 address = -1;
    require(functions.checkAddr(area, text, &address, 3, 1) == 0, "the address is valid");
    require(address == 200, "the address is read");
    for (auto _ : state)
        benchmark::DoNotOptimize(functions.checkAddr(area, text, &address, 3, 1));
}
BENCHMARK(checkWithDataType)->Name("editor/check_with_data_type");

void describeArea(benchmark::State &state)
{
    const kmr::DriverFunctions &functions = intf();
    const QString area = QStringLiteral("D");
    QStringList texts;
    require(functions.getRegDiscription(area, texts) == 1, "the area is known");
    require(texts.join(' ') == "ddddd 0 11999 1 1", "the area is described");
    for (auto _ : state) {
        texts.clear();
        functions.getRegDiscription(area, texts);
    }
}
BENCHMARK(describeArea)->Name("editor/describe_area");

void series(benchmark::State &state, const char *areaName, int last)
{
    const kmr::DriverFunctions &functions = intf();
    const QString area = QString::fromLatin1(areaName);
    QVector<QString> texts;
    QVector<qint32> numbers;
    require(functions.multiCopy(area, 0, 100, 1, &texts, &numbers) == 1, "the series fits");
    require(numbers.size() == 100 && numbers.at(99) == last, "the numbers of the series");
    require(texts.at(99) == QString::number(last), "the texts of the series");
    for (auto _ : state) {
        texts.clear();
        numbers.clear();
        functions.multiCopy(area, 0, 100, 1, &texts, &numbers);
    }
}
BENCHMARK_CAPTURE(series, decimal, "D", 99)->Name("editor/series_of_100");
// Only the last digit carries in octal: 0 to 7, 10 to 17, ... 77, 80, ...
BENCHMARK_CAPTURE(series, octal, "X", 123)->Name("editor/series_of_100_octal");

} // namespace
