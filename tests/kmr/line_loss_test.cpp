// The output and results of read, write and recipe when a TCP line is lost: before a request is
// sent, after it was sent, and in a recipe.
#include "tests/kmr/kmr_process.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

const char *const ANSWER = ":0103020001F9\r\n";            // one word, 1
const char *const ACKNOWLEDGEMENT = ":0110106400017A\r\n"; // of D100

// The address of a request: "1064" is D100.
QByteArray addressOf(const QByteArray &line)
{
    return line.mid(5, 4);
}

bool isRead(const QByteArray &line)
{
    return line.mid(3, 2) == "03";
}

// Answers requests for D100 and closes the connection on all others.
QByteArray onlyD100(const QByteArray &line)
{
    if (addressOf(line) != "1064")
        return {};
    return isRead(line) ? ANSWER : ACKNOWLEDGEMENT;
}

class LineLossTest : public testing::Test {
protected:
    // The command with three words D100, D200, D300 in a recipe file.
    Finished recipe(const QString &command)
    {
        saveFile(file(), RECIPE);
        return kmr({"recipe", command, file()});
    }

    Finished kmr(const QStringList &arguments)
    {
        return run(arguments + QStringList{"--in-step", m_inStep, "--link", m_controller.link()});
    }

    QString file() const
    {
        return m_directory.filePath("mixer.csv");
    }

    QString m_inStep = "off"; // an answer counts without the one after it
    static constexpr const char *RECIPE = "D100,1\nD200,2\nD300,3\n";
    QTemporaryDir m_directory;
    FakeController m_controller{onlyD100};
};

} // namespace

TEST_F(LineLossTest, AnswerThatNoFurtherOneConfirmsIsNotShown)
{
    m_inStep = "on";
    const Finished read = kmr({"read", "D100", "D200"});
    EXPECT_EQ(read.exitCode, 4);
    EXPECT_EQ(read.out, "");
}

TEST_F(LineLossTest, ReadShowsWhatWasAnsweredAndEndsWithFour)
{
    const Finished read = kmr({"read", "D100", "D200", "D300", "M0"});
    EXPECT_EQ(read.exitCode, 4);
    EXPECT_EQ(read.out, "D100 1\n");
    EXPECT_EQ(read.err, "D200: no answer: the line was lost\nD300: not asked: the line was lost\n"
                        "M0: not asked: the line was lost\n");
}

TEST_F(LineLossTest, WriteThatWasSentIsUnknownAndThoseBehindItAreNotSent)
{
    const Finished write = kmr({"write", "D100=1", "D200=2", "D300=3", "--format", "csv"});
    EXPECT_EQ(write.exitCode, 6);
    EXPECT_EQ(write.err, "D200: unknown: the line was lost before the answer came\n"
                         "D300: not written because an earlier write failed\n");
    const char *const records =
        "^time,tag,values,unit,outcome,error\n"
        "\\S+,D100,1,,confirmed,\n"
        "\\S+,D200,2,,unknown,unknown: the line was lost before the answer came\n"
        "\\S+,D300,3,,not sent,not written because an earlier write failed\n$";
    EXPECT_TRUE(matches(write.out, records)) << qPrintable(write.out);
}

TEST_F(LineLossTest, WriteThatCouldNotBeSentEndsWithFour)
{
    // A bit write first learns from a read whether the line echoes, and there the line is lost.
    const Finished write = kmr({"write", "M0=1"});
    EXPECT_EQ(write.exitCode, 4);
    EXPECT_EQ(write.err, "M0: not sent: the line was lost\n");
}

TEST_F(LineLossTest, WrittenValuesThatCannotBeReadBackStayConfirmed)
{
    FakeController controller([](const QByteArray &line) {
        return isRead(line) ? QByteArray() : QByteArray(ACKNOWLEDGEMENT);
    });
    const Finished write = run({"write", "--verify", "D100=1", "--link", controller.link()});
    EXPECT_EQ(write.exitCode, 4);
    EXPECT_EQ(write.err, "D100: not read back: no answer: the line was lost\n");
}

TEST_F(LineLossTest, DownloadSaysWhatIsCertain)
{
    const Finished download = recipe("download");
    EXPECT_EQ(download.exitCode, 6);
    EXPECT_EQ(
        download.err,
        "download stopped at 1#D200: unknown: the line was lost before the answer came; 1 of 3 "
        "requests were answered before\nwritten for certain: 1#D100\n"
        "unknown whether written: 1#D200\nnot written: 1#D300\n");
}

TEST_F(LineLossTest, UploadLeavesItsFileAndEndsWithFour)
{
    const Finished upload = recipe("upload");
    EXPECT_EQ(upload.exitCode, 4);
    EXPECT_EQ(upload.err, file() +
                              " is unchanged, upload stopped at 1#D200: no answer: the line was "
                              "lost; 1 of 3 requests were answered before\n");
    EXPECT_EQ(loadFile(file()), RECIPE);
}

TEST_F(LineLossTest, ComparisonShowsNothingAndEndsWithFour)
{
    const Finished compare = recipe("compare");
    EXPECT_EQ(compare.exitCode, 4);
    EXPECT_EQ(compare.out, "");
    EXPECT_EQ(compare.err, "comparison stopped at 1#D200: no answer: the line was lost; 1 of 3 "
                           "requests were answered before\n");
}
