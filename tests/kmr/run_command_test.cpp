// 'kmr run' on a line that fails, and stopped by the user. Its other reports:
// golden_test.cpp.
#include "tests/kmr/kmr_process.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <csignal>

namespace {

class Run : public testing::Test {
protected:
    QStringList typed(const QByteArray &script, const QString &link) const
    {
        saveFile(m_directory.filePath("a.test"), script);
        return {"run",
                m_directory.filePath("a.test"),
                "--keep-going",
                "--timeout",
                "50",
                "--retries",
                "0",
                "--link",
                link};
    }

    static std::string without(const QString &path, QString text)
    {
        return text.replace(path + '/', "").toStdString();
    }

    const QTemporaryDir m_directory;
};

} // namespace

TEST_F(Run, EndsAfterAWriteOfUnknownOutcomeAndSaysSo)
{
    const FakeController silent([](const QByteArray &) { return QByteArray(""); });
    const Finished kmr = run(typed("write D1=1\nexpect D1=1\n", silent.link()));
    EXPECT_EQ(kmr.exitCode, 1);
    EXPECT_EQ(without(m_directory.path(), kmr.out),
              "a.test:1: write D1=1 failed: not confirmed (it may have been written): "
              "no answer\n"
              "a.test:2: expect D1=1 not run\n");
}

TEST_F(Run, EndsWhenTheLineIsLost)
{
    const FakeController gone([](const QByteArray &) { return QByteArray(); });
    const Finished kmr = run(typed("wait until D1=1 within 10min\nexpect D1=1\n", gone.link()));
    EXPECT_EQ(kmr.exitCode, 1);
    EXPECT_EQ(without(m_directory.path(), kmr.out),
              "a.test:1: wait until D1=1 within 10min failed: no answer: the line was lost\n"
              "a.test:2: expect D1=1 not run\n");
}

TEST_F(Run, WaitFailsIfTheAnswerThatMeetsItsConditionComesTooLate)
{
    const Simulator slow({"--listen", "tcp://127.0.0.1:0", "--fault", "late=20ms"});
    QStringList arguments = typed("wait until D1=0 within 10ms\n", slow.link());
    arguments[arguments.indexOf("--timeout") + 1] = "10000";
    EXPECT_TRUE(matches(run(arguments).out,
                        "a.test:1: wait until D1=0 within 10ms failed: not in time: the answer "
                        "came after [0-9]+ ms\n$"));
}

TEST_F(Run, ReportDoesNotReplaceTheScript)
{
    const Finished kmr = run(typed("expect D1=0\n", "tcp://127.0.0.1:1") +
                             QStringList{"--junit", m_directory.filePath("./a.test")});
    EXPECT_EQ(kmr.exitCode, 2);
    EXPECT_TRUE(matches(kmr.err, "a.test would replace the script: name another file\n$"));
    EXPECT_EQ(loadFile(m_directory.filePath("a.test")), "expect D1=0\n");
}

TEST_F(Run, CtrlCEndsItAndTheReportSaysAtWhichStep)
{
    const Simulator simulator({"--listen", "tcp://127.0.0.1:0"});
    for (const char *step : {"pause 10min", "wait until D1=1 within 10min"}) {
        const Finished kmr =
            run(typed(QByteArray("write D2=1\n") + step + "\nwrite D2=2\n", simulator.link()),
                [](QProcess &process) {
                    while (process.bytesAvailable() == 0 && process.waitForReadyRead(10000)) {
                    }
                    kill(static_cast<pid_t>(process.processId()), SIGINT);
                });
        EXPECT_EQ(kmr.exitCode, 1);
        EXPECT_TRUE(matches(kmr.out, "^[^\n]*a.test:1: write D2=1 passed\n"
                                     "[^\n]*a.test:2: [^\n]* stopped: stopped [^\n]*\n"
                                     "[^\n]*a.test:3: write D2=2 not run\n$"))
            << kmr.out.toStdString();
    }
    EXPECT_EQ(run({"read", "D2", "--link", simulator.link()}).out, "D2 1\n");
}
