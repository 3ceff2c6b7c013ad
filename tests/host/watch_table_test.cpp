#include "host/commands/watch_table.h"

#include <gtest/gtest.h>

using namespace kmr;

namespace {

WatchRow row(const QString &tag, WatchRow::State state)
{
    WatchRow row;
    row.tag = tag;
    row.value = "23.5";
    row.unit = "C";
    row.state = state;
    row.age = std::chrono::milliseconds(1200);
    row.changes = 4;
    row.staleSince = "12:00:05";
    row.trend = {1, 2};
    return row;
}

} // namespace

TEST(WatchTable, HasColumnsThatFitAndTheStatusBelow)
{
    EXPECT_EQ(
        tableLines({row("boiler.temp", WatchRow::State::Good)}, "12 exchanges/s", 80, 24, false),
        (QStringList{"TAG          VALUE  UNIT  QUALITY  AGE    CHANGES  TREND",
                     QString::fromUtf8("boiler.temp  23.5   C     good     1.2 s  4        ▁█"),
                     "12 exchanges/s"}));
}

TEST(WatchTable, StaleRowIsRedOnlyWithColours)
{
    const std::vector<WatchRow> rows = {row("D1", WatchRow::State::Stale)};
    EXPECT_TRUE(tableLines(rows, "", 80, 24, true)[1].startsWith("\x1b[31mD1"));
    EXPECT_FALSE(tableLines(rows, "", 80, 24, false)[1].contains('\x1b'));
    EXPECT_TRUE(tableLines(rows, "", 80, 24, false)[1].contains("stale since 12:00:05"));
}

TEST(WatchTable, FitsTheTerminal)
{
    const std::vector<WatchRow> rows(10, row("D1", WatchRow::State::Good));
    const QStringList lines = tableLines(rows, "a status line", 10, 6, false);
    EXPECT_EQ(lines.size(), 6);
    EXPECT_EQ(lines[4], "... 7 more");
    for (const QString &line : lines)
        EXPECT_LE(line.size(), 10);
}

TEST(WatchTable, TrendGoesFromTheLeastToTheGreatest)
{
    EXPECT_EQ(trendLine({0, 7, 3}), QString::fromUtf8("▁█▄"));
    EXPECT_EQ(trendLine({5, 5}), QString::fromUtf8("▄▄"));
    EXPECT_EQ(trendLine({}), "");
}

TEST(WatchTable, RowWithoutAnAnswerYetIsPending)
{
    WatchRow pending;
    pending.tag = "D1";
    EXPECT_EQ(tableLines({pending}, "", 80, 24, false)[1], "D1   -            pending  -    0");
}

TEST(WatchTable, AgeFromTenSecondsOnHasNoTenths)
{
    WatchRow old = row("D1", WatchRow::State::Good);
    old.age = std::chrono::milliseconds(9999);
    EXPECT_TRUE(tableLines({old}, "", 80, 24, false)[1].contains(" 10.0 s "));
    old.age = std::chrono::milliseconds(12900);
    EXPECT_TRUE(tableLines({old}, "", 80, 24, false)[1].contains(" 12 s "));
}
