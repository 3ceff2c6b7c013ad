// kmr with a full disk or a file that can't be written: it reports this, and no exchange is
// lost.
#include "tests/kmr/kmr_process.h"

#include <QFileInfo>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

class OutputTest : public testing::Test {
protected:
    Finished kmr(const QStringList &arguments)
    {
        return run(arguments + QStringList{"--link", m_simulator.link()});
    }

    // With a disk on which no file has more than one block of 512 or 1024 bytes, whatever the
    // shell's. That keeps a coverage build from writing its counters, too.
    Finished kmrOnSmallDisk(const QString &arguments)
    {
        return runShell("trap '' XFSZ; ulimit -f 1; LLVM_PROFILE_FILE=/dev/null exec \"$KMR\" " +
                        arguments + " --link " + m_simulator.link());
    }

    QString path(const QString &name) const
    {
        return m_directory.filePath(name);
    }

    QTemporaryDir m_directory;
    Simulator m_simulator{{"--listen", "tcp://127.0.0.1:0"}};
};

} // namespace

TEST_F(OutputTest, CaptureThatFillsTheDiskIsToldOnceAndTheReadGoesOn)
{
    const Finished read =
        kmrOnSmallDisk("read D0 D20 D40 D60 D80 D100 D120 D140 D160 D180 D200 D220 --capture " +
                       path("field.jsonl"));
    EXPECT_EQ(read.exitCode, 1);
    EXPECT_EQ(read.out.count('\n'), 12) << qPrintable(read.err);
    EXPECT_EQ(read.err, "kmr: cannot write the capture " + path("field.jsonl") +
                            ": File too large; further traffic is not captured\n");
    EXPECT_EQ(run({"trace", path("field.jsonl")}).exitCode, 0);
}

TEST_F(OutputTest, WriteIsConfirmedThoughItsCaptureEnds)
{
    const Finished write =
        kmrOnSmallDisk("write D0x90=" + QStringList(QVector<QString>(90, "7").toList()).join(',') +
                       " --capture " + path("field.jsonl"));
    EXPECT_EQ(write.exitCode, 1);
    EXPECT_TRUE(write.out.endsWith(" confirmed\n")) << qPrintable(write.err);
    EXPECT_EQ(kmr({"read", "D89"}).out, "D89 7\n");
}

TEST_F(OutputTest, CaptureThatCannotBeBegunKeepsEverythingFromBeingSent)
{
    const Finished write = kmr({"write", "D0=7", "--capture", "/dev/full"});
    EXPECT_EQ(write.exitCode, 2);
    EXPECT_EQ(write.err, "kmr: cannot write the capture /dev/full: No space left on device\n");
    EXPECT_EQ(kmr({"read", "D0"}).out, "D0 0\n");
}

TEST_F(OutputTest, ValuesThatDoNotReachStdoutEndWithOne)
{
    const Finished read =
        runShell("exec \"$KMR\" read D0 D1 --link " + m_simulator.link() + " >/dev/full");
    EXPECT_EQ(read.exitCode, 1);
    EXPECT_EQ(read.err, "kmr: cannot write to stdout: No space left on device\n");
}

TEST_F(OutputTest, NothingTakesThePlaceOfAClosedStdout)
{
    const Finished read = runShell("exec \"$KMR\" read D0 --link " + m_simulator.link() + " >&-");
    EXPECT_EQ(read.exitCode, 1);
    EXPECT_EQ(read.err, "kmr: cannot write to stdout: Bad file descriptor\n");
}

TEST_F(OutputTest, HelpThatDoesNotReachStdoutEndsWithOne)
{
    for (const char *command : {"--help", "read --help"}) {
        const Finished help =
            runShell(QString("exec \"$KMR\" %1 >/dev/full").arg(QString(command)));
        EXPECT_EQ(help.exitCode, 1);
        EXPECT_EQ(help.err, "kmr: cannot write to stdout: No space left on device\n");
    }
}

TEST_F(OutputTest, ReaderThatHasSeenEnoughEndsAWatchWithoutAnError)
{
    const Simulator serial({"--pty", path("line")}); // there Qt does not keep SIGPIPE away
    for (const QString &reader :
         {"watch D0 D1 --link " + m_simulator.link() + "; echo $? >&2; } | :",
          "watch D0 D1 --link " + serial.link() + "; echo $? >&2; } | :",
          // nothing changes, so nothing more is printed
          "watch D0 --link " + serial.link() + "; echo $? >&2; } | head -1"}) {
        const Finished watch = runShell("{ \"$KMR\" " + reader);
        EXPECT_FALSE(watch.err.contains("cannot write")) << qPrintable(watch.err);
        EXPECT_TRUE(watch.err.endsWith("\n0\n")) << qPrintable(watch.err);
    }
}

TEST_F(OutputTest, UploadThatDoesNotFitOnTheDiskLeavesTheOldFile)
{
    saveFile(path("mixer.csv"), "D0x500,0\n");
    const Finished upload = kmrOnSmallDisk("recipe upload " + path("mixer.csv"));
    EXPECT_EQ(upload.exitCode, 1);
    EXPECT_EQ(upload.err, "kmr: cannot write " + path("mixer.csv") + ": File too large\n");
    EXPECT_EQ(loadFile(path("mixer.csv")), "D0x500,0\n");
}

TEST_F(OutputTest, UploadToADeviceLeavesTheDevice)
{
    EXPECT_EQ(kmr({"recipe", "upload", "/dev/stdout", "D0x2"}).out, "tag,value\nD0x2,0 0\n");
    EXPECT_EQ(kmr({"recipe", "upload", "/dev/full", "D0"}).exitCode, 1);
    EXPECT_FALSE(QFileInfo("/dev/full").isFile());
}
