// The progress of a transfer, in words and on a terminal.
#include "kmr/progress.h"

#include "simulator/controller.h"
#include "simulator/faults.h"
#include "simulator/tcp_server.h"
#include "tests/kmr/kmr_process.h"
#include "tests/kmr/terminal.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace kmr;
using std::chrono::milliseconds;

namespace {

// A controller that pauses after 20 answers, so that the screen can be checked, until it continues.
class HaltingController {
public:
    HaltingController()
    {
        EXPECT_EQ(m_server.listen("127.0.0.1", 0), "");
    }

    // The link for kmr, which waits until it continues.
    QString options() const
    {
        return QString("--timeout 500 --retries 1000 --in-step off --link tcp://127.0.0.1:%1")
            .arg(m_server.port());
    }

    void goOn()
    {
        m_answersLeft = 1000;
    }

private:
    int m_answersLeft = 20;
    simulator::Controller m_controller{"01"};
    simulator::Responder m_respond = simulator::respondAs(m_controller);
    simulator::TcpServer m_server{[this](const QByteArray &request) {
        return m_answersLeft-- > 0 ? m_respond(request) : simulator::Plan();
    }};
};

} // namespace

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
    for (const char *command : {"compare", "download --verify", "upload"}) {
        SCOPED_TRACE(command);
        HaltingController controller;
        Terminal terminal(QString("\"$KMR\" recipe %1 %2 %3")
                              .arg(command, directory.filePath("mixer.csv"), controller.options()),
                          30, 10);
        terminal.waitFor("\\[#+\\.+\\] 20 of( 5)?\n\n");
        controller.goOn();
        const QString screen = terminal.waitFor("exit code [06]\n");
        EXPECT_FALSE(screen.contains('#')) << qPrintable(screen);
    }
}

TEST(Progress, StaysBelowTracedLinesOnATerminal)
{
    const QTemporaryDir directory;
    saveFile(directory.filePath("mixer.csv"), "D0x400,0\n");
    HaltingController controller;
    Terminal terminal("\"$KMR\" recipe upload " + directory.filePath("mixer.csv") + " --trace " +
                          controller.options(),
                      150, 10);
    terminal.waitFor("\n[^\n]*station 01[^\n]*\n\\[#+\\.+\\] 20 of 50 entries, [^\n]* s left\n+$");
    controller.goOn();
    terminal.waitFor("50 of 50 requests answered\nexit code 0\n");
    EXPECT_FALSE(terminal.screen().contains("entries"));
}
