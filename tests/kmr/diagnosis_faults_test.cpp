// The commands that test a line, over both links, when the line or the controller fails.
#include "tests/kmr/kmr_process.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <csignal>

namespace {

class DiagnosisOnBothLinks : public testing::TestWithParam<const char *> {
protected:
    // kmr against a simulated controller with a fault.
    Finished kmr(const QStringList &arguments, const QString &fault)
    {
        const QStringList place = QString(GetParam()) == "tcp"
                                      ? QStringList{"--listen", "tcp://127.0.0.1:0"}
                                      : QStringList{"--pty", m_directory.filePath("line")};
        const Simulator simulator(place + QStringList{"--fault", fault});
        return run(arguments + QStringList{"--link", simulator.link()});
    }

    QTemporaryDir m_directory;
};

// Stops the command while it waits for an answer that never comes.
Finished stopped(const QString &command, const QString &format)
{
    pid_t process = 0;
    const FakeController controller([&process](const QByteArray &) {
        kill(process, SIGINT);
        return QByteArray("");
    });
    return run(
        {command, "--format", format, "--link", controller.link()},
        [&process](const QProcess &started) { process = static_cast<pid_t>(started.processId()); });
}

} // namespace

INSTANTIATE_TEST_SUITE_P(Links, DiagnosisOnBothLinks, testing::Values("tcp", "pty"),
                         [](const auto &info) { return std::string(info.param); });

TEST_P(DiagnosisOnBothLinks, PingAndScanTellAnswersFromLosses)
{
    struct Row {
        const char *typed;
        const char *fault;
        int exitCode;
        const char *out; // patterns
        const char *err;
    };
    const Row rows[] = {
        // A refusal is also an answer.
        {"ping 2 --interval 0", "exception=4", 0,
         "^(station 1 D0: answered in [\\d.]+ ms, refused: server device failure \\(exception "
         "04\\)\n){2}$",
         "^2 requests sent, 2 answered, 0.0% lost\n"},
        {"scan --stations 1..2", "exception=2", 0,
         "^station 1: answered in [\\d.]+ ms, refused: illegal data address \\(exception 02\\)\n$",
         "^1 of 2 stations answer\n$"},
        {"ping 4 --interval 0 --in-step off", "silence,every=2", 1,
         "(?s)(station 1 D0: no answer\n.*){2}", "^4 requests sent, 2 answered, 50.0% lost\n"},
        {"ping 1", "station", 4, "^station 1 D0: another station's answer\n$", "100.0% lost\n"},
        {"scan --stations 1", "station", 4, "^$",
         "^station 1: another station's answer\n0 of 1 stations answer\n$"},
        {"ping 1", "echo", 0, "answered in ", " 0.0% lost\n"},
        {"ping 1 --echo off", "echo", 4, "does the line echo\\? Try --echo on\n$", "100.0% lost\n"},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(std::string(row.typed) + ", " + row.fault);
        const Finished ended =
            kmr(QString(row.typed).split(' ') + QStringList{"--timeout", "500"}, row.fault);
        EXPECT_EQ(ended.exitCode, row.exitCode);
        EXPECT_TRUE(matches(ended.out, row.out)) << ended.out.toStdString();
        EXPECT_TRUE(matches(ended.err, row.err)) << ended.err.toStdString();
    }
}

TEST(DiagnosisFaults, LostLineEndsPingAndScanWithFour)
{
    const FakeController controller([](const QByteArray &) { return QByteArray(); });
    for (const QStringList &command : {QStringList{"ping", "5"}, QStringList{"scan"}}) {
        const Finished lost = run(command + QStringList{"--link", controller.link()});
        EXPECT_EQ(lost.exitCode, 4);
        EXPECT_TRUE(lost.err.endsWith(
            "the line was lost: check the cable or the network, then start again\n"))
            << lost.err.toStdString();
    }
}

TEST(DiagnosisFaults, CtrlCCompletesTheDocumentAndTheSummary)
{
    const Finished ping = stopped("ping", "json");
    EXPECT_EQ(ping.exitCode, 4);
    EXPECT_TRUE(ping.out.endsWith("\"error\":\"stopped or line lost\"}\n]}\n"))
        << ping.out.toStdString();
    EXPECT_EQ(ping.err, "1 requests sent, 0 answered, 100.0% lost\n");
}

TEST(DiagnosisFaults, CtrlCEndsTheDoctorWithoutARecord)
{
    const Finished doctor = stopped("doctor", "csv");
    EXPECT_EQ(doctor.exitCode, 4);
    EXPECT_EQ(doctor.out, "time,link,finding,text,advice\n");
    EXPECT_EQ(doctor.err, "stopped before the diagnosis was complete\n");
}
