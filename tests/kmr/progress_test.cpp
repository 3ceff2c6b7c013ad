// How far a transfer has come, in words and on a terminal.
#include "kmr/progress.h"

#include "tests/kmr/kmr_process.h"
#include "tests/kmr/terminal.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace kmr;
using std::chrono::milliseconds;

TEST(Progress, ShowsEntriesRateAndTimeLeft)
{
    EXPECT_EQ(progressText(12, 50, milliseconds(500), 20),
              "[####................] 12 of 50 entries, 24 a second, 2 s left");
    EXPECT_EQ(progressText(50, 50, milliseconds(5000), 10),
              "[##########] 50 of 50 entries, 10 a second, 0 s left");
}

TEST(Progress, FirstEntryTellsTheRate)
{
    EXPECT_EQ(progressText(0, 50, milliseconds(500), 4), "[....] 0 of 50 entries");
    EXPECT_EQ(progressText(0, 0, milliseconds(0), 4), "[####] 0 of 0 entries");
}

TEST(Progress, NarrowTerminalCutsTheLineWrapsNoneAndKeepsNothingOfIt)
{
    const QTemporaryDir directory;
    QString text; // 50 requests, whose last tag differs from the controller's
    for (int number = 0; number < 400; number += 8)
        text += QString("D%1x8,0 0 0 0 0 0 0 %2\n").arg(number).arg(number == 392 ? 1 : 0);
    saveFile(directory.filePath("mixer.csv"), text.toUtf8());
    const Simulator simulator({"--listen", "tcp://127.0.0.1:0", "--baud", "38400"});
    for (const char *command : {"compare", "download --verify", "upload"}) {
        SCOPED_TRACE(command);
        Terminal terminal(QString("\"$KMR\" recipe %1 %2 --link %3")
                              .arg(command, directory.filePath("mixer.csv"), simulator.link()),
                          30, 10);
        terminal.waitFor("\\[#+\\.+\\] \\d+ of( 5)?\n\n");
        const QString screen = terminal.waitFor("exit code [06]\n");
        EXPECT_FALSE(screen.contains('#')) << qPrintable(screen);
    }
}

TEST(Progress, StaysBelowTracedLinesOnATerminal)
{
    const QTemporaryDir directory;
    saveFile(directory.filePath("mixer.csv"), "D0x400,0\n");
    Simulator simulator({"--listen", "tcp://127.0.0.1:0", "--baud", "19200"});
    Terminal terminal("\"$KMR\" recipe upload " + directory.filePath("mixer.csv") +
                          " --trace --link " + simulator.link(),
                      150, 10);
    terminal.waitFor(
        "\n[^\n]*station 01[^\n]*\n\\[#+\\.+\\] \\d+ of 50 entries, [^\n]* s left\n\n");
    terminal.waitFor("50 of 50 requests answered\nexit code 0\n");
    EXPECT_FALSE(terminal.screen().contains("entries"));
}
