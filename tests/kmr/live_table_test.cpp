// 'kmr watch' on a terminal.
#include "tests/kmr/kmr_process.h"
#include "tests/kmr/terminal.h"

#include <gtest/gtest.h>

namespace {

const char *const HEADING = "^TAG +VALUE +UNIT +QUALITY +AGE +CHANGES +TREND\n";

QString watch(const QString &arguments)
{
    return "\"$KMR\" watch " + arguments;
}

// A controller whose D100 can be set, and which can be made silent.
class LiveTableTest : public testing::Test {
protected:
    QString arguments() const
    {
        return "D100 --gap 10 --retries 0 --link " + m_controller.link();
    }

    QByteArray m_answer = ":0103020001F9\r\n"; // 1
    FakeController m_controller{[this](const QByteArray &) { return m_answer; }};
};

} // namespace

TEST_F(LiveTableTest, ValuesAreDrawnInPlace)
{
    Terminal terminal(watch(arguments()), 80, 24);
    terminal.waitFor("\nD100 +1 +good +0\\.[0-9] s +0 ");
    m_answer = ":0103020002F8\r\n";
    const QString screen = terminal.waitFor("\nD100 +2 +good +0\\.[0-9] s +1 +▁█\n");
    EXPECT_TRUE(matches(screen, HEADING)) << qPrintable(screen);
    EXPECT_EQ(screen.count("D100"), 1);
    EXPECT_TRUE(matches(screen, "\n[0-9.]+ exchanges/s  cycle \\S+ ms  retries 0  given up 0  "
                                "line used [0-9]+ %\n"))
        << qPrintable(screen);
}

TEST_F(LiveTableTest, WantedCycleIsKeptAndShownBesideTheOneReached)
{
    Terminal terminal(watch(arguments() + " --cycle 300"), 80, 24);
    terminal.waitFor("\n[1-4]\\.[0-9] exchanges/s  cycle 3[0-9][0-9]/300 ms  retries 0");
}

TEST_F(LiveTableTest, NarrowTerminalCutsLinesAndWrapsNone)
{
    Terminal terminal(watch(arguments()), 24, 8);
    m_answer = ":0103020002F8\r\n";
    terminal.waitFor("\nD100  2");
    const QString screen = terminal.waitFor("[1-9][0-9.]* exchanges/s");
    const QStringList lines = screen.split('\n');
    EXPECT_EQ(lines[0], "TAG   VALUE  QUALITY");
    EXPECT_TRUE(lines[1].startsWith("D100  2")) << qPrintable(screen);
    EXPECT_TRUE(lines[2].contains("exchanges/s")) << qPrintable(screen);
    EXPECT_EQ(terminal.cursorRow(), 3);
}

TEST_F(LiveTableTest, TableHigherThanTheTerminalIsCutAndDoesNotScroll)
{
    Simulator simulator({"--listen", "tcp://127.0.0.1:0"});
    Terminal terminal(watch("D0 D1 D2 D3 D4 D5 D6 D7 D8 D9 --gap 10 --link " + simulator.link()),
                      80, 6);
    terminal.waitFor("\nD1 [^\n]*\n... 8 more\n[1-9][0-9.]* exchanges/s"); // drawn several times
    EXPECT_EQ(terminal.scrolledLines(), 0);
}

TEST_F(LiveTableTest, OutageIsShownAsStaleSinceWhenAndComesBackGood)
{
    Terminal terminal(watch(arguments() + " --timeout 200"), 100, 24);
    terminal.waitFor("\nD100 +1 +good");
    m_answer = "";
    QString screen = terminal.waitFor("\nD100 +1 +stale since \\d\\d:\\d\\d:\\d\\d +[0-9.]+ s ");
    EXPECT_TRUE(matches(screen, "\\d{4}-\\S+ station 1: no answer, asked for D100\nTAG "))
        << qPrintable(screen);
    EXPECT_TRUE(terminal.colouredScreen().contains("\x1b[31mD100"));
    m_answer = ":0103020002F8\r\n";
    terminal.waitFor("\nD100 +2 +good");
    screen = terminal.waitFor("station 1 answers again\nTAG ");
    EXPECT_EQ(screen.count("TAG "), 1);
}

TEST_F(LiveTableTest, AgeOfAValueThatNeverChangesStaysSmall)
{
    const Simulator simulator({"--listen", "tcp://127.0.0.1:0", "--animate"});
    Terminal terminal(watch("D100 CV2200 --gap 10 --link ") + simulator.link(), 80, 24);
    // CV2200 moves every 200 ms: eight changes take more than a second.
    terminal.waitFor("\nD100 +0 +good +0\\.[0-9] s +0 [^\n]*\n"
                     "CV2200 +[0-9]+ +good +[0-9.]+ s +([89]|[1-9][0-9]) ");
}

TEST_F(LiveTableTest, AgeGoesOnWhileAnAnswerIsWaitedFor)
{
    Terminal terminal(watch("D100 --timeout 10000 --link ") + m_controller.link(), 80, 24);
    terminal.waitFor("\nD100 +1 +good +0\\.[0-9] s ");
    m_answer = "";
    terminal.waitFor("\nD100 +1 +good +[1-9]\\.[0-9] s [^\n]*\n[^\n]*retries 0");
}

TEST_F(LiveTableTest, AgeGoesOnWhileARequestIsSentAgain)
{
    Terminal terminal(watch("D100 --timeout 100 --retries 100 --link ") + m_controller.link(), 80,
                      24);
    terminal.waitFor("\nD100 +1 +good +0\\.[0-9] s ");
    m_answer = "";
    terminal.waitFor("\nD100 +1 +good +[1-9]\\.[0-9] s [^\n]*\n[^\n]*retries [1-9]");
}

TEST_F(LiveTableTest, NoColorShowsStaleWithoutColours)
{
    Terminal terminal("NO_COLOR=1 " + watch(arguments() + " --timeout 200"), 80, 24);
    terminal.waitFor("\nD100 +1 +good");
    m_answer = "";
    terminal.waitFor("\nD100 +1 +stale");
    EXPECT_FALSE(terminal.colouredScreen().contains('\x1b'));
}

TEST_F(LiveTableTest, CtrlCLeavesTheTableWithASummaryBelow)
{
    Terminal terminal(watch(arguments()), 80, 24);
    terminal.waitFor("\nD100 +1 +good");
    terminal.press("C-c");
    const QString screen = terminal.waitFor("\nexit code 0\n");
    EXPECT_TRUE(matches(screen, "\nD100 +1 +good[^\n]*\n[^\n]*exchanges/s[^\n]*\n[0-9]+ requests "
                                "sent, [^\n]*\nround trip min/median/p95/p99/max [^\n]*\n"))
        << qPrintable(screen);
    EXPECT_TRUE(terminal.isCursorVisible());
}

TEST_F(LiveTableTest, TracedLinesScrollAboveTheTable)
{
    Terminal terminal(watch(arguments() + " --trace"), 80, 12);
    const QString screen = terminal.waitFor(
        "station 01 answers D100: 1\nTAG [^\n]*\nD100 +1 [^\n]*\n[1-9][0-9.]* exchanges/s");
    EXPECT_EQ(screen.count("TAG "), 1);
}

TEST_F(LiveTableTest, TerminalThatCannotBeDrawnOnGetsLines)
{
    Terminal terminal("TERM=dumb " + watch(arguments()), 80, 24);
    const QString screen = terminal.waitFor("^\\d{4}-\\S+ D100 1\n");
    EXPECT_FALSE(screen.contains("TAG"));
}
