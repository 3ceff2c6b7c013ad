#include "host/project/capture.h"

#include "host/error.h"
#include "tests/kmr/file_size_limit.h"

#include <QFileInfo>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace kmr {
namespace {

const char *const HEADING =
    "{\"kmr_capture\":1,\"begin\":\"2024-05-01T12:00:00.000Z\",\"link\":\"tcp://a:1\"}\n";

QString faultOf(const QByteArray &text)
{
    try {
        parseCapture(text, "field");
    } catch (const Error &error) {
        EXPECT_EQ(error.kind(), ErrorKind::Usage);
        return error.text();
    }
    return "none";
}

} // namespace

TEST(Capture, PiecesKeepTimeDirectionAndEveryCharacter)
{
    const Capture capture = parseCapture(
        QByteArray(HEADING) + "{\"us\":5,\"sent\":\":01\\r\\n\"}\n{\"us\":9,\"received\":\"\\u00b1"
                              "\\u0000\"}\n",
        "field");
    EXPECT_EQ(capture.link, "tcp://a:1");
    EXPECT_EQ(capture.begin, QDateTime(QDate(2024, 5, 1), QTime(12, 0), Qt::UTC));
    ASSERT_EQ(capture.pieces.size(), 2U);
    EXPECT_TRUE(capture.pieces[0].isSent);
    EXPECT_EQ(capture.pieces[0].characters, ":01\r\n");
    EXPECT_EQ(capture.pieces[1].microseconds, 9);
    EXPECT_EQ(capture.pieces[1].characters, QByteArray("\xB1\x00", 2));
}

TEST(Capture, WrittenFileReadsBack)
{
    const QTemporaryDir directory;
    const QString path = directory.filePath("capture");
    CaptureWriter writer(path, "tcp://a:1");
    writer.add(true, ":01\r\n");
    writer.add(false, QByteArray("\xB1\x00\xFF", 3));
    const Capture capture = readCapture(path);
    ASSERT_EQ(capture.pieces.size(), 2U);
    EXPECT_TRUE(capture.pieces[0].isSent);
    EXPECT_FALSE(capture.pieces[1].isSent);
    EXPECT_EQ(capture.pieces[1].characters, QByteArray("\xB1\x00\xFF", 3));
    EXPECT_LE(capture.pieces[0].microseconds, capture.pieces[1].microseconds);
}

TEST(Capture, EarlierCaptureIsRefusedAndKept)
{
    const QTemporaryDir directory;
    const QString path = directory.filePath("capture");
    CaptureWriter(path, "tcp://a:1").add(true, ":01\r\n");
    EXPECT_THROW(CaptureWriter(path, "tcp://b:2"), Error);
    EXPECT_EQ(readCapture(path).link, "tcp://a:1");
    EXPECT_EQ(readCapture(path).pieces.size(), 1U);
}

TEST(Capture, EmptyFileIsFilled)
{
    const QTemporaryDir directory;
    const QString path = directory.filePath("capture");
    ASSERT_TRUE(QFile(path).open(QIODevice::WriteOnly));
    CaptureWriter(path, "tcp://a:1").add(true, ":01\r\n");
    EXPECT_EQ(readCapture(path).pieces.size(), 1U);
}

TEST(Capture, LimitedOneKeepsTheNewestInTwoWholeCaptures)
{
    const QTemporaryDir directory;
    const QString path = directory.filePath("capture");
    CaptureWriter writer(path, "tcp://a:1", 300);
    for (const char *piece : {"1", "2", "3", "4", "5", "6"})
        writer.add(true, QByteArray(120, *piece)); // a heading and one piece have room
    const Capture newest = readCapture(path);
    const Capture before = readCapture(path + ".1");
    EXPECT_EQ(newest.link, "tcp://a:1");
    ASSERT_EQ(newest.pieces.size(), 1U);
    EXPECT_EQ(newest.pieces[0].characters, QByteArray(120, '6'));
    ASSERT_EQ(before.pieces.size(), 1U);
    EXPECT_EQ(before.pieces[0].characters, QByteArray(120, '5'));
    EXPECT_LE(QFileInfo(path).size(), 300);

    QFile::remove(path);
    EXPECT_THROW(CaptureWriter(path, "", 300), Error); // an earlier one's older half
    EXPECT_NO_THROW(CaptureWriter(path, ""));
}

TEST(Capture, FullDiskIsAnErrorAndLeavesTheWholePiecesBefore)
{
    const QTemporaryDir directory;
    const QString path = directory.filePath("capture");
    CaptureWriter writer(path, "tcp://a:1");
    const FileSizeLimit limit(200);
    writer.add(true, ":01\r\n");
    EXPECT_THROW(writer.add(false, QByteArray(200, 'x')), Error);
    const Capture capture = readCapture(path);
    ASSERT_EQ(capture.pieces.size(), 1U);
    EXPECT_EQ(capture.pieces[0].characters, ":01\r\n");
}

TEST(Capture, LastLineThatBreaksOffIsNamedAndLeftOut)
{
    const Capture capture = parseCapture(
        QByteArray(HEADING) + "{\"us\":5,\"sent\":\":01\\r\\n\"}\n{\"us\":9,\"rec", "field");
    EXPECT_EQ(capture.pieces.size(), 1U);
    EXPECT_EQ(capture.cut, "field:3: is incomplete and left out");
}

TEST(Capture, WholeLastLineNeedsNoEnd)
{
    const Capture capture = parseCapture(QByteArray(HEADING) + "{\"us\":5,\"sent\":\"\"}", "field");
    EXPECT_EQ(capture.pieces.size(), 1U);
    EXPECT_EQ(capture.cut, "");
}

TEST(Capture, BadLineIsNamedWithItsNumberAndWhatIsExpected)
{
    const QString noCapture =
        "field:1: not a capture of kmr, which begins with {\"kmr_capture\":1, ...}";
    const QString noPiece =
        "not a piece of traffic, such as {\"us\":1250,\"sent\":\":01031064000187\\r\\n\"}";
    EXPECT_EQ(faultOf("nonsense\n"), noCapture);
    EXPECT_EQ(faultOf(""), noCapture);
    EXPECT_EQ(faultOf(QByteArray(HEADING) + "{\"us\":5}\n"), "field:2: " + noPiece);
    EXPECT_EQ(faultOf(QByteArray(HEADING) + "\nnonsense\n"), "field:3: " + noPiece);
    EXPECT_TRUE(faultOf("{\"kmr_capture\":2,\"begin\":\"2024-05-01T12:00:00.000Z\"}\n")
                    .contains("another version"));
    EXPECT_EQ(faultOf("{\"kmr_capture\":1,\"begin\":\"yesterday\"}\n"),
              "field:1: \"begin\" is not a time such as 2024-05-01T12:00:00.000+02:00");
}

TEST(Capture, FileThatCannotBeOpenedIsAnError)
{
    EXPECT_THROW(readCapture("/no/such/file"), Error);
    EXPECT_THROW(CaptureWriter("/no/such/file", ""), Error);
    EXPECT_THROW(CaptureWriter("/dev/full", ""), Error);
}

} // namespace kmr
