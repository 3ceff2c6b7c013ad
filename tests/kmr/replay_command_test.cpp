// 'kmr replay' as its users run it: one kmr captures, another reads the same again.
#include "tests/kmr/kmr_process.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

class ReplayOnBothLinks : public testing::TestWithParam<const char *> {
protected:
    // The file of a capture of `arguments` against a simulator.
    QString capture(const QStringList &arguments)
    {
        const Simulator simulator({"--listen", "tcp://127.0.0.1:0"});
        run({"write", "D100=250", "CV2200=70000", "--link", simulator.link()});
        const QString file = m_directory.filePath("field.jsonl");
        m_captured = run(arguments + QStringList{"--capture", file, "--link", simulator.link()});
        return file;
    }

    QStringList arguments(const QString &file) const
    {
        if (QString(GetParam()) == "tcp")
            return {file, "--listen", "tcp://127.0.0.1:0"};
        return {file, "--pty", m_directory.filePath("line")};
    }

    QTemporaryDir m_directory;
    Finished m_captured;
};

} // namespace

INSTANTIATE_TEST_SUITE_P(Links, ReplayOnBothLinks, testing::Values("tcp", "pty"),
                         [](const auto &info) { return std::string(info.param); });

TEST_P(ReplayOnBothLinks, CapturedValuesAreReadAgain)
{
    const QStringList read = {"read", "D100", "CV2200", "X0x8"};
    Simulator replay(arguments(capture(read)), "replay");
    const Finished again = run(read + QStringList{"--link", replay.link()});
    EXPECT_EQ(again.exitCode, 0) << again.err.toStdString();
    EXPECT_EQ(again.out, "D100 250\nCV2200 70000\nX0x8 0 0 0 0 0 0 0 0\n");
    EXPECT_EQ(again.out, m_captured.out);
    EXPECT_EQ(replay.terminate(), 0);
    EXPECT_EQ(replay.log(), "");
}

TEST_P(ReplayOnBothLinks, CutCaptureIsReplayedAsFarAsItGoes)
{
    const QString file = capture({"read", "D100", "--in-step", "off"});
    saveFile(file, loadFile(file) + "{\"us\":99,\"se");
    Simulator replay(arguments(file), "replay");
    EXPECT_EQ(run({"read", "D100", "--in-step", "off", "--link", replay.link()}).out, "D100 250\n");
    EXPECT_EQ(replay.terminate(), 0);
    EXPECT_EQ(replay.log(), file + ":4: is incomplete and left out\n");
}

TEST_P(ReplayOnBothLinks, UnknownRequestIsReportedOnceAndNotAnswered)
{
    Simulator replay(arguments(capture({"read", "D100"})), "replay");
    const Finished other =
        run({"read", "D101", "--retries", "1", "--timeout", "20", "--link", replay.link()});
    EXPECT_EQ(other.exitCode, 4);
    EXPECT_EQ(replay.terminate(), 0);
    const QString log = replay.log();
    EXPECT_TRUE(matches(log, "^\\d{4}-\\S+ not in \\S+/field.jsonl, no answer: "
                             ":01031065000186\\\\r\\\\n  station 01: read D101\n$"))
        << log.toStdString();
}
