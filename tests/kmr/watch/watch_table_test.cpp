#include "kmr/watch/watch_table.h"

#include <gtest/gtest.h>

#include <limits>

using namespace kmr;

namespace {

// With the value 23.5.
WatchRow row(const QString &tag, WatchRow::State state)
{
    WatchRow row;
    row.tag.text = tag;
    row.tag.unit = "C";
    row.text = "23.5";
    row.state = state;
    row.age = std::chrono::milliseconds(1200);
    row.changes = 4;
    row.staleSince = "12:00:05";
    row.trend = {1, 2};
    return row;
}

// The heading, and a line for the row.
QStringList lines(const WatchRow &row, int width)
{
    const QStringList cells = cellsOf(row, NumberFormat::AsTag);
    TableColumns columns;
    columns.add(columnHeadings());
    columns.add(cells);
    columns.fit(width);
    return {columns.line(columnHeadings()), columns.line(cells)};
}

} // namespace

TEST(WatchTable, HasColumnsThatFit)
{
    EXPECT_EQ(
        lines(row("boiler.temp", WatchRow::State::Good), 80),
        (QStringList{"TAG          VALUE  UNIT  QUALITY  AGE    CHANGES  TREND",
                     QString::fromUtf8("boiler.temp  23.5   C     good     1.2 s  4        ▁█")}));
    EXPECT_EQ(lines(row("D1", WatchRow::State::Stale), 80)[1],
              "D1   23.5   C     stale since 12:00:05  1.2 s  4        ▁█");
}

TEST(WatchTable, ValuesAreCutBetweenNumbersAndOtherColumnsMakeRoomForThem)
{
    WatchRow words = row("D0x8", WatchRow::State::Good);
    words.text = "61111 61112 61113 61114 61115 61116 61117 61118";
    EXPECT_EQ(lines(words, 99)[1],
              "D0x8  61111 61112 61113 61114 61115 61116 61117 61118  C     good     "
              "1.2 s  4        ▁█");
    EXPECT_EQ(lines(words, 60)[1], "D0x8  61111 61112 61113 61114 ...       C     good     1.2 s");
    EXPECT_EQ(lines(words, 24)[1], "D0x8  61111 ...  good");
    EXPECT_EQ(lines(words, 18)[1], "D0x8  ...  good");
}

TEST(WatchTable, LongTagAndQualityMakeRoomForTheValueAtLast)
{
    EXPECT_EQ(lines(row("boiler.left.temperature.above", WatchRow::State::Stale), 40)[1],
              "boiler.left.tempera...  23.5   stale ...");
    EXPECT_EQ(lines(row("boiler.left.temperature.above", WatchRow::State::Good), 20)[1],
              "boiler.le...  good");
}

TEST(WatchTable, NoLineIsWiderThanTheTerminal)
{
    WatchRow wide = row(QString(90, 't'), WatchRow::State::Stale);
    wide.text = QString(12, '1') + ' ' + QString(500, '2');
    for (int width = 1; width <= 300; ++width) {
        for (const QString &line : lines(wide, width))
            EXPECT_LE(line.size(), width);
    }
}

TEST(WatchTable, ColumnsStayAsWideAsTheyWere)
{
    TableColumns columns;
    const WatchRow good = row("D1", WatchRow::State::Good);
    columns.add(columnHeadings());
    columns.add(cellsOf(row("D1", WatchRow::State::Stale), NumberFormat::AsTag));
    columns.add(cellsOf(good, NumberFormat::AsTag));
    columns.fit(80);
    EXPECT_EQ(columns.line(cellsOf(good, NumberFormat::AsTag)),
              "D1   23.5   C     good                  1.2 s  4        ▁█");
}

TEST(WatchTable, StatusIsCutBetweenFigures)
{
    EXPECT_EQ(shortened("20.0 exchanges/s  cycle 512/500 ms", 30), "20.0 exchanges/s  cycle ...");
}

TEST(WatchTable, OtherFormatShowsTheHeldNumberWithoutTheUnitOfTheScaledOne)
{
    WatchRow oven = row("oven", WatchRow::State::Good);
    oven.tag.scaling.emplace("0.1");
    noteValues(oven, {235});
    EXPECT_EQ(cellsOf(oven, NumberFormat::AsTag).mid(1, 2), (QStringList{"23.5", "C"}));
    EXPECT_EQ(cellsOf(oven, NumberFormat::Hex).mid(1, 2), (QStringList{"0x00EB", ""}));
}

TEST(WatchTable, TrendGoesFromTheLeastToTheGreatest)
{
    EXPECT_EQ(trendLine({0, 7, 3}), QString::fromUtf8("▁█▄"));
    EXPECT_EQ(trendLine({5, 5}), QString::fromUtf8("▄▄"));
    EXPECT_EQ(trendLine({}), "");
}

TEST(WatchTable, TrendLeavesOutNumbersThatAreNotFinite)
{
    const double infinite = std::numeric_limits<double>::infinity();
    EXPECT_EQ(trendLine({0, infinite, 7, -infinite, 3}), QString::fromUtf8("▁█▄"));
    EXPECT_EQ(trendLine({infinite}), "");
    const double greatest = std::numeric_limits<double>::max();
    EXPECT_EQ(trendLine({-greatest, greatest}), QString::fromUtf8("▁█"));
}

TEST(WatchTable, RowWithoutAnAnswerYetIsPending)
{
    WatchRow pending;
    pending.tag.text = "D1";
    EXPECT_EQ(lines(pending, 80)[1], "D1   -            pending  -    0");
}

TEST(WatchTable, AgeFromTenSecondsOnHasNoTenths)
{
    WatchRow old = row("D1", WatchRow::State::Good);
    old.age = std::chrono::milliseconds(9999);
    EXPECT_TRUE(lines(old, 80)[1].contains(" 10.0 s "));
    old.age = std::chrono::milliseconds(12900);
    EXPECT_TRUE(lines(old, 80)[1].contains(" 12 s "));
}

TEST(WatchTable, FirstValueIsNotAChange)
{
    WatchRow word = row("D1", WatchRow::State::Good);
    word.changes = 0;
    noteValues(word, {7});
    EXPECT_EQ(word.changes, 0U);
    noteValues(word, {8});
    EXPECT_EQ(word.changes, 1U);
    EXPECT_EQ(word.text, "8");
}
