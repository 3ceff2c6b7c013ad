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
    Terminal terminal("LC_ALL=C " + watch(arguments()), 80, 24); // trends are drawn even there
    terminal.waitFor("\nD100 +1 +good +0\\.[0-9] s +0 ");
    m_answer = ":0103020002F8\r\n";
    const QString screen = terminal.waitFor("\nD100 +2 +good +0\\.[0-9] s +1 +▁█\n");
    EXPECT_TRUE(matches(screen, HEADING)) << qPrintable(screen);
    EXPECT_EQ(screen.count("TAG"), 1);
    EXPECT_TRUE(matches(screen, "\n[0-9.]+ exchanges/s  cycle \\S+ ms  retries 0  given up 0  "
                                "line used [0-9]+ %\n"))
        << qPrintable(screen);
}

TEST_F(LiveTableTest, WantedCycleIsKeptAndShownBesideTheOneReached)
{
    Terminal terminal(watch(arguments() + " --cycle 300"), 80, 24);
    terminal.waitFor("\n[1-4]\\.[0-9] exchanges/s  cycle 3[0-9][0-9]/300 ms  retries 0");
}

TEST_F(LiveTableTest, EachWindowFrom40To300ColumnsIsDrawnWhole)
{
    Terminal terminal(watch(arguments()), 80, 24);
    terminal.waitFor("\nD100 +1 +good ");
    for (const auto &[columns, rows] : {std::pair(300, 50), {40, 8}, {120, 24}, {24, 6}}) {
        SCOPED_TRACE(columns);
        terminal.resize(columns, rows);
        const int most = columns;
        const QString screen = terminal.waitFor([rows = rows](const QString &screen) {
            return screen.split('\n').value(rows - 1).contains(" exchanges/s") &&
                   matches(screen, "^TAG +VALUE +.*\nD100 +1 +good");
        });
        for (const QString &line : screen.split('\n'))
            EXPECT_LE(line.size(), most);
        EXPECT_EQ(screen.count("\nD100"), 2); // the row and what is said of it
    }
    EXPECT_FALSE(terminal.isCursorVisible());
}

TEST_F(LiveTableTest, MoreTagsThanLinesAreScrolledAndFiltered)
{
    Simulator simulator({"--listen", "tcp://127.0.0.1:0"});
    Terminal terminal(watch("D0 D1 D2 D3 D4 D5 D6 D7 D8 D9 --gap 10 --link " + simulator.link()),
                      80, 6);
    terminal.waitFor("\nD0 [^\n]*\nD1 [^\n]*\nD0  1#D0\n10 tags  [^\n]*\n[1-9]");
    terminal.press("End");
    terminal.waitFor("\nD8 [^\n]*\nD9 [^\n]*\nD9  1#D9\n");
    terminal.type("/D5");
    terminal.press("Enter");
    terminal.waitFor("^TAG [^\n]*\nD5 [^\n]*\n\nD5  1#D5\n1 of 10 tags  filter D5 ");
    EXPECT_EQ(terminal.scrolledLines(), 0);
}

TEST_F(LiveTableTest, ConfirmedWriteGoesToTheControllerAndIsReported)
{
    const Simulator simulator({"--listen", "tcp://127.0.0.1:0"});
    Terminal terminal(watch("D100 X0 --link ") + simulator.link() + " </dev/null", 80, 24);
    terminal.waitFor("\nD100 +0 +good");
    terminal.type("w250");
    terminal.press("Enter");
    terminal.waitFor("\nWrite D100=250, that is 1#D100 = 250 \\(0x00FA\\)\\? y/n\n");
    terminal.type("y");
    terminal.waitFor("\nD100 +250 +good[^$]*\nwrite D100=250: confirmed\n");
    terminal.press("Down");
    terminal.type("w");
    terminal.waitFor("\nX0 can't be written: X are inputs\n");
    terminal.type("q");
    const QString screen = terminal.waitFor("\nexit code 0\n");
    EXPECT_TRUE(matches(screen, "^\\d{4}-\\S+ write D100=250: confirmed\nTAG "))
        << qPrintable(screen);
    EXPECT_EQ(run({"read", "D100", "--link", simulator.link()}).out, "D100 250\n");
}

TEST_F(LiveTableTest, WriteThatIsNotConfirmedSaysSoAsKmrWriteDoes)
{
    const std::pair<QByteArray, const char *> cases[] = {
        {":0190026D\r\n", "write D100=7: refused: illegal data address"},
        {"", "write D100=7: not confirmed .it may have been written.: no answer"}};
    for (const auto &[answer, report] : cases) {
        const FakeController controller([this, answer = answer](const QByteArray &line) {
            return line.startsWith(":0110") ? answer : m_answer;
        });
        Terminal terminal(watch("D100 --timeout 200 --retries 0 --link ") + controller.link(), 120,
                          24);
        terminal.waitFor("\nD100 +1 +good");
        terminal.type("w7");
        terminal.press("Enter");
        terminal.waitFor("y/n\n");
        terminal.type("y");
        terminal.waitFor(report);
        terminal.waitFor("\nD100 +1 +good"); // and goes on
    }
}

TEST_F(LiveTableTest, WriteWhileTheLineIsLostIsRefusedAndNeverSentLater)
{
    int writes = 0;
    bool isUp = true;
    const FakeController controller([&](const QByteArray &line) {
        writes += line.startsWith(":0110") ? 1 : 0;
        return isUp ? m_answer : QByteArray();
    });
    Terminal terminal(watch("D100 --link ") + controller.link(), 120, 24);
    terminal.waitFor("\nD100 +1 +good");
    isUp = false;
    terminal.waitFor("the line was lost, opening it again\n");
    terminal.type("w7");
    terminal.press("Enter");
    terminal.waitFor("y/n\n");
    terminal.type("y");
    terminal.waitFor("write D100=7: not sent: the line was lost\n");
    isUp = true;
    terminal.waitFor("the line is back\n");
    terminal.waitFor("\nD100 +1 +good");
    EXPECT_EQ(writes, 0);
}

TEST_F(LiveTableTest, OutageIsShownAsStaleSinceWhenAndComesBackGood)
{
    Terminal terminal(watch(arguments() + " --timeout 200"), 100, 24);
    terminal.waitFor("\nD100 +1 +good");
    m_answer = "";
    QString screen = terminal.waitFor("\nD100 +1 +stale since \\d\\d:\\d\\d:\\d\\d +[0-9.]+ s ");
    EXPECT_TRUE(matches(screen, "\n\\d{4}-\\S+ station 1: no answer, asked for D100\n"))
        << qPrintable(screen);
    EXPECT_TRUE(matches(terminal.colouredScreen(), "31m[^\n]*D100 +1 +stale"));
    m_answer = ":0103020002F8\r\n";
    terminal.waitFor("\nD100 +2 +good");
    screen = terminal.waitFor("station 1 answers again\n");
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
    terminal.waitFor("\nD100 +1 +good +[1-9]\\.[0-9] s [^$]*retries 0");
}

TEST_F(LiveTableTest, AgeGoesOnWhileARequestIsSentAgain)
{
    Terminal terminal(watch("D100 --timeout 100 --retries 100 --link ") + m_controller.link(), 80,
                      24);
    terminal.waitFor("\nD100 +1 +good +0\\.[0-9] s ");
    m_answer = "";
    terminal.waitFor("\nD100 +1 +good +[1-9]\\.[0-9] s [^$]*retries [1-9]");
}

TEST_F(LiveTableTest, NoColorShowsStaleWithoutColours)
{
    Terminal terminal("NO_COLOR=1 " + watch(arguments() + " --timeout 200"), 80, 24);
    terminal.waitFor("\nD100 +1 +good");
    m_answer = "";
    terminal.waitFor("\nD100 +1 +stale");
    EXPECT_FALSE(terminal.colouredScreen().contains("31m"));
}

TEST_F(LiveTableTest, CtrlCLeavesTheTableWithASummaryBelow)
{
    Terminal terminal(watch(arguments()), 80, 24);
    terminal.waitFor("\nD100 +1 +good");
    terminal.press("C-c");
    const QString screen = terminal.waitFor("\nexit code 0\n");
    EXPECT_TRUE(matches(screen, "^TAG [^\n]*\nD100 +1 +good[^\n]*\n[0-9]+ requests "
                                "sent, [^\n]*\nround trip min/median/p95/p99/max [^\n]*\n"))
        << qPrintable(screen);
    EXPECT_TRUE(terminal.isCursorVisible());
}

TEST_F(LiveTableTest, TracedLinesAreShownBelowAndLeftAboveTheTableAtTheEnd)
{
    Terminal terminal(watch(arguments() + " --trace"), 150, 12);
    terminal.waitFor("^TAG [^\n]*\nD100 +1 [^$]*station 01 answers D100: 1\n");
    terminal.type("q");
    terminal.waitFor("station 01 answers D100: 1\nTAG [^\n]*\nD100 +1 [^\n]*\n[0-9]+ requests");
}

TEST_F(LiveTableTest, SignalThatEndsAtOnceGivesTheTerminalBack)
{
    Terminal terminal("trap : QUIT; " + watch(arguments()) + "; stty -a", 80, 24);
    terminal.waitFor("\nD100 +1 +good");
    terminal.press("C-\\");
    const QString screen = terminal.waitFor("\nexit code 0\n");
    EXPECT_TRUE(matches(screen, "isig icanon iexten echo ")) << qPrintable(screen);
    EXPECT_FALSE(screen.contains("TAG"));
    EXPECT_TRUE(terminal.isCursorVisible());
}

TEST_F(LiveTableTest, TerminalThatCannotBeDrawnOnGetsLinesAndIsToldWhy)
{
    for (const QString name : {"dumb", "unheard-of"}) {
        Terminal terminal("TERM=" + name + ' ' + watch(arguments()), 120, 24);
        const QString screen = terminal.waitFor("\n\\d{4}-\\S+ D100 1\n");
        EXPECT_TRUE(screen.startsWith("kmr: no live table, a line for each change instead: "));
        EXPECT_TRUE(screen.contains("TERM=" + name)) << qPrintable(screen);
    }
}
