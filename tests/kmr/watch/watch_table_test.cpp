#include "kmr/watch/watch_table.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <functional>
#include <limits>
#include <unistd.h>

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

// The output on a terminal without a known size. It may come in pieces.
QByteArray shownBy(const std::function<void()> &draw)
{
    const int terminal = posix_openpt(O_RDWR | O_NOCTTY);
    EXPECT_TRUE(terminal >= 0 && grantpt(terminal) == 0 && unlockpt(terminal) == 0);
    const int line = open(ptsname(terminal), O_RDWR | O_NOCTTY);
    std::fflush(stdout);
    const int standardOutput = dup(STDOUT_FILENO);
    dup2(line, STDOUT_FILENO);
    draw();
    const QByteArray end = "the end";
    std::fputs(end.constData(), stdout);
    std::fflush(stdout);
    dup2(standardOutput, STDOUT_FILENO);

    QByteArray shown;
    char characters[1024];
    while (!shown.endsWith(end)) {
        const ssize_t count = read(terminal, characters, sizeof characters);
        if (count <= 0)
            break;
        shown.append(characters, static_cast<int>(count));
    }
    for (const int file : {terminal, line, standardOutput})
        close(file);
    shown.chop(end.size());
    return shown;
}

} // namespace

TEST(LiveTable, HasEightyColumnsAndTwentyFourLinesWhereTheTerminalDoesNotSay)
{
    const std::vector<WatchRow> rows(30, row(QString(90, 't'), WatchRow::State::Good));
    LiveTable table;
    const QByteArray shown = shownBy([&] { table.draw(rows, "status"); });
    const QList<QByteArray> lines = QByteArray(shown).replace("\x1b[K", "").split('\n');
    ASSERT_EQ(lines.size(), 24); // the last one holds the cursor
    EXPECT_EQ(lines[1], QByteArray(77, 't') + "...\r");
    EXPECT_EQ(lines[21], "... 10 more\r");
    EXPECT_EQ(lines[22], "status\r");
}

TEST(LiveTable, ErasedOneIsDrawnFromTheCursorOn)
{
    LiveTable table;
    const QByteArray shown = shownBy([&table] {
        table.erase(); // nothing is there yet
        table.draw({}, "first");
        table.erase();
        table.draw({}, "second");
    });
    const QByteArray heading = "\x1b[KTAG  VALUE  UNIT  QUALITY  AGE  CHANGES  TREND\r\n";
    EXPECT_EQ(shown, heading + "\x1b[Kfirst\r\n\x1b[J" + "\r\x1b[2A\x1b[K\r\n\x1b[K\r\n\r\x1b[2A" +
                         heading + "\x1b[Ksecond\r\n\x1b[J");
}

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
    EXPECT_EQ(tableLines(rows, "", 6, 24, true)[1],
              "\x1b[31mD1 ...\x1b[0m"); // ended where it is cut
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

TEST(WatchTable, ValuesAreCutBetweenNumbersAndOtherColumnsMakeRoomForThem)
{
    WatchRow words = row("D0x8", WatchRow::State::Good);
    words.value = "61111 61112 61113 61114 61115 61116 61117 61118";
    const auto line = [&words](int width) {
        return tableLines({words}, "", width, 24, false)[1].toStdString();
    };
    EXPECT_EQ(line(99), "D0x8  61111 61112 61113 61114 61115 61116 61117 61118  C     good     "
                        "1.2 s  4        ▁█");
    EXPECT_EQ(line(60), "D0x8  61111 61112 61113 61114 ...       C     good     1.2 s");
    EXPECT_EQ(line(24), "D0x8  61111 ...  good");
    EXPECT_EQ(line(18), "D0x8  ...  good");
}

TEST(WatchTable, StatusIsCutBetweenFigures)
{
    EXPECT_EQ(tableLines({}, "20.0 exchanges/s  cycle 512/500 ms", 30, 24, false)[1],
              "20.0 exchanges/s  cycle ...");
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
