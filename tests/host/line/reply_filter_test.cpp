#include "host/line/reply_filter.h"

#include <gtest/gtest.h>

using namespace kmr;
using Verdict = ReplyFilter::Verdict;

namespace {

const QByteArray READ_D100 = ":01031064000187\r\n";
const QByteArray D100_IS_1234 = ":0103021234B4\r\n";
const QByteArray READ_M0 = ":010208000010E5\r\n";
const QByteArray SET_M0 = ":01050800FF00F3\r\n";

Echo echoOf(EchoMode mode)
{
    Echo echo;
    echo.mode = mode;
    return echo;
}

// The result of `received` after `request` while nothing is known about the echo; the end of its
// time is the end of `received`.
ReplyFault faultOf(const QByteArray &request, const QByteArray &received)
{
    Echo echo;
    ReplyFilter filter(request, echo);
    Verdict verdict = filter.take(received);
    if (verdict == Verdict::MoreWanted)
        verdict = filter.end();
    EXPECT_EQ(verdict == Verdict::Good, filter.fault() == ReplyFault::None);
    EXPECT_EQ(verdict == Verdict::Good, !filter.reply().isEmpty());
    return filter.fault();
}

struct Row {
    const char *rule;
    QByteArray request;
    QByteArray received;
    ReplyFault fault;
};

void expectFaults(const std::vector<Row> &rows)
{
    for (const Row &row : rows)
        EXPECT_EQ(faultOf(row.request, row.received), row.fault) << row.rule;
}

} // namespace

TEST(ReplyFilter, AnswerIsGoodOnlyWithItsLastCharacter)
{
    Echo echo;
    ReplyFilter filter(READ_D100, echo);
    for (int i = 0; i < D100_IS_1234.size() - 1; ++i)
        ASSERT_EQ(filter.take(D100_IS_1234.mid(i, 1)), Verdict::MoreWanted) << i;
    EXPECT_EQ(filter.take("\n"), Verdict::Good);
    EXPECT_EQ(filter.reply(), D100_IS_1234);
    EXPECT_EQ(filter.exceptionCode(), 0);
}

TEST(ReplyFilter, AnswerAfterALineThatAnswersSomethingElseIsGood)
{
    Echo echo;
    ReplyFilter filter(READ_D100, echo);
    EXPECT_EQ(filter.take(":01030412345678E4\r\n"), Verdict::MoreWanted);
    EXPECT_EQ(filter.take(D100_IS_1234), Verdict::Good);
    EXPECT_EQ(filter.reply(), D100_IS_1234);
}

TEST(ReplyFilter, WrongLengthSaysWhatWasExpectedAndReceived)
{
    const auto textOf = [](const QByteArray &request, const QByteArray &received) {
        Echo echo;
        ReplyFilter filter(request, echo);
        filter.take(received);
        filter.end();
        return toText(filter.fault(), filter.length()).section(": ", 1).toStdString();
    };
    EXPECT_EQ(textOf(READ_D100, ":01030112E9\r\n"), "expected 2 bytes of data, received 1");
    EXPECT_EQ(textOf(READ_D100, ":01030412345678E4\r\n"), "expected 2 bytes of data, received 4");
    EXPECT_EQ(textOf(READ_D100, ":0103041234B2\r\n"), "expected 2 bytes of data, received 4");
    EXPECT_EQ(textOf(READ_D100, ":01837C\r\n"), "expected 1 bytes of data, received 0");
    EXPECT_EQ(textOf(READ_D100, ":0203021234B3\r\n"), ""); // another fault
}

TEST(ReplyFilter, OnlyAWholeLineOfTheStationAboutTheRequestIsAnAnswer)
{
    const QByteArray toStation12 = ":12031064000176\r\n";
    expectFaults({
        {"answer", READ_D100, D100_IS_1234, ReplyFault::None},
        {"colon in the middle", READ_D100, ":0103:01" + D100_IS_1234, ReplyFault::None},
        {"noise before it", READ_D100, "\xFF\x01zz" + D100_IS_1234, ReplyFault::None},
        {"wrong LRC", READ_D100, ":0103021234B5\r\n", ReplyFault::WrongLrc},
        {"no digits", READ_D100, ":0103021G34B4\r\n", ReplyFault::NotHex},
        {"overlong", READ_D100, ":" + QByteArray(1024, '0'), ReplyFault::TooLong},
        {"another station", READ_D100, ":0203021234B3\r\n", ReplyFault::WrongStation},
        {"station's characters", toStation12, ":1203021234A3\r\n", ReplyFault::None},
        {"station's number", toStation12, ":0C03021234A9\r\n", ReplyFault::WrongStation},
        {"another function", READ_D100, ":0102021234B5\r\n", ReplyFault::WrongFunction},
        {"refusal of another one", READ_D100, ":0182027B\r\n", ReplyFault::WrongFunction},
        {"too short", READ_D100, ":01030112E9\r\n", ReplyFault::WrongLength},
        {"too long", READ_D100, ":01030412345678E4\r\n", ReplyFault::WrongLength},
        {"station alone", READ_D100, ":01FF\r\n", ReplyFault::WrongLength},
        {"byte count", READ_D100, ":0103041234B2\r\n", ReplyFault::WrongLength},
        {"short refusal", READ_D100, ":01837C\r\n", ReplyFault::WrongLength},
        {"refusal without code", READ_D100, ":0183007C\r\n", ReplyFault::NoExceptionCode},
        {"refused write without code", ":01101064000102123432\r\n", ":0190006F\r\n",
         ReplyFault::NoExceptionCode},
        {"silence", READ_D100, "", ReplyFault::Silence},
        {"noise", READ_D100, "\xFE\x81\r\n", ReplyFault::Noise},
        {"broken off", READ_D100, ":01030212", ReplyFault::Incomplete},
        {"echo alone", READ_D100, READ_D100, ReplyFault::Silence},
        {"echo twice", READ_D100, READ_D100 + READ_D100, ReplyFault::WrongLength},
        {"request without function", ":01FF\r\n", D100_IS_1234, ReplyFault::WrongFunction},
        {"its echo", ":01FF\r\n", ":01FF\r\n", ReplyFault::Silence},
    });
}

TEST(ReplyFilter, LengthOfAnAnswerIsThatOfWhatWasAskedFor)
{
    const QByteArray counter = ":0103040001117076\r\n";
    const QByteArray readTen = ":01031064001078\r\n"; // in decimal digits, sixteen for it
    const QByteArray writeTwo = ":011010640002040001000272\r\n";
    expectFaults({
        {"first counter", ":01030EC8000125\r\n", counter, ReplyFault::None},
        {"last counter", ":01030EFF0001EE\r\n", counter, ReplyFault::None},
        {"two bytes", ":01030EC8000125\r\n", ":010302117079\r\n", ReplyFault::WrongLength},
        {"behind the counters", ":01030F000001EC\r\n", D100_IS_1234, ReplyFault::None},
        {"before the counters", ":01030EC7000126\r\n", D100_IS_1234, ReplyFault::None},
        {"sixteen", readTen, ":010320" + QByteArray(64, '0') + "DC\r\n", ReplyFault::None},
        {"ten", readTen, ":010314" + QByteArray(40, '0') + "E8\r\n", ReplyFault::WrongLength},
        {"16 bits", READ_M0, ":0102020100FA\r\n", ReplyFault::None},
        {"8 bits", READ_M0, ":0102010100FB\r\n", ReplyFault::WrongLength},
        {"write", writeTwo, ":01101064000279\r\n", ReplyFault::None},
        {"address", writeTwo, ":01101065000278\r\n", ReplyFault::WrongAcknowledgement},
        {"write's length", writeTwo, ":01101064007B\r\n", ReplyFault::WrongLength},
        {"another bit", SET_M0, ":01050801FF00F2\r\n", ReplyFault::WrongAcknowledgement},
        {"another value", SET_M0, ":010508000000F2\r\n", ReplyFault::WrongAcknowledgement},
    });
}

TEST(ReplyFilter, TwoDifferentAnswersAtOnceAreNone)
{
    const QByteArray other = ":0103020001F9\r\n";
    expectFaults({
        {"two", READ_D100, D100_IS_1234 + other, ReplyFault::SeveralAnswers},
        {"refusal first", READ_D100, ":0183027A\r\n" + D100_IS_1234, ReplyFault::SeveralAnswers},
        {"repetition", READ_D100, D100_IS_1234 + D100_IS_1234, ReplyFault::None},
        {"and another one", READ_D100, D100_IS_1234 + D100_IS_1234 + other,
         ReplyFault::SeveralAnswers},
        {"station 2", READ_D100, D100_IS_1234 + ":0203020001F8\r\n", ReplyFault::None},
        {"garbled", READ_D100, D100_IS_1234 + ":0103020001F8\r\n", ReplyFault::None},
    });
}

TEST(ReplyFilter, ExceptionIsGoodAndNamed)
{
    for (const QByteArray &request : {READ_D100, SET_M0}) {
        Echo echo;
        ReplyFilter filter(request, echo);
        EXPECT_EQ(filter.take(request == SET_M0 ? ":01850278\r\n" : ":0183027A\r\n"),
                  Verdict::Good);
        EXPECT_EQ(filter.exceptionCode(), 2);
        EXPECT_EQ(echo.isUnknown(), request == SET_M0);
    }
}

TEST(ReplyFilter, EchoBeforeAReadsAnswerIsDroppedAndLearned)
{
    Echo echo;
    ReplyFilter filter(READ_D100, echo);
    EXPECT_EQ(filter.take(READ_D100), Verdict::MoreWanted);
    EXPECT_EQ(filter.take(D100_IS_1234), Verdict::Good);
    EXPECT_EQ(filter.reply(), D100_IS_1234);
    EXPECT_TRUE(echo.isCertain());
    ReplyFilter(READ_D100, echo).take(D100_IS_1234); // and stays
    EXPECT_TRUE(echo.isCertain());
}

TEST(ReplyFilter, AnswerWithoutEchoDisprovesItUntilOneComes)
{
    Echo echo;
    ReplyFilter(READ_D100, echo).take(D100_IS_1234);
    EXPECT_FALSE(echo.isUnknown());
    EXPECT_FALSE(echo.isCertain());
    EXPECT_EQ(ReplyFilter(SET_M0, echo).take(SET_M0), Verdict::Good);
    ReplyFilter(READ_D100, echo).take(READ_D100 + D100_IS_1234);
    EXPECT_TRUE(echo.isCertain());
}

TEST(ReplyFilter, AnswerBehindNoiseOrADamagedEchoDisprovesNothing)
{
    for (const QByteArray &before : {QByteArray("\xFF"), READ_D100.left(8)}) {
        Echo echo;
        EXPECT_EQ(ReplyFilter(READ_D100, echo).take(before + D100_IS_1234), Verdict::Good);
        EXPECT_TRUE(echo.isUnknown());
    }
}

TEST(ReplyFilter, EchoOfAReadIsBadIfItIsRuledOut)
{
    Echo echo = echoOf(EchoMode::Off);
    ReplyFilter filter(READ_D100, echo);
    EXPECT_EQ(filter.take(READ_D100), Verdict::Bad);
    EXPECT_EQ(filter.fault(), ReplyFault::UnexpectedEcho);
}

TEST(ReplyFilter, NothingCountsWithoutTheCertainEcho)
{
    // One damage makes a valid answer out of the last request: its first "00" comes twice.
    const std::pair<QByteArray, QByteArray> ROWS[] = {
        {READ_D100, D100_IS_1234},
        {READ_D100, ":0183027A\r\n"},
        {":010204000020D9\r\n", ":01020400000020D9\r\n"}};
    for (const auto &[request, received] : ROWS) {
        Echo echo = echoOf(EchoMode::On);
        ReplyFilter filter(request, echo);
        EXPECT_EQ(filter.take(received), Verdict::Bad);
        EXPECT_EQ(filter.fault(), ReplyFault::MissingEcho);
        EXPECT_EQ(filter.exceptionCode(), 0);
    }
}

TEST(ReplyFilter, BitWriteIsAnsweredByItsOwnTextWithoutEchoAndByTwoWithIt)
{
    Echo off = echoOf(EchoMode::Off);
    EXPECT_EQ(ReplyFilter(SET_M0, off).take(SET_M0), Verdict::Good);
    Echo on = echoOf(EchoMode::On);
    ReplyFilter filter(SET_M0, on);
    EXPECT_EQ(filter.take(SET_M0), Verdict::MoreWanted);
    EXPECT_EQ(filter.take(SET_M0), Verdict::Good);
    ReplyFilter unanswered(SET_M0, on);
    unanswered.take(SET_M0);
    EXPECT_EQ(unanswered.end(), Verdict::Bad);
    EXPECT_EQ(unanswered.fault(), ReplyFault::Silence);
}

TEST(ReplyFilter, BitWriteThatComesBackOnceProvesNothingWhileTheEchoIsUnknown)
{
    EXPECT_EQ(faultOf(SET_M0, SET_M0), ReplyFault::EchoOrAnswer);
    Echo echo;
    EXPECT_EQ(ReplyFilter(SET_M0, echo).take(SET_M0 + SET_M0), Verdict::Good);
    EXPECT_TRUE(echo.isCertain());
}

TEST(ReplyFault, SaysWhatToDoOrWhatWasWrong)
{
    EXPECT_EQ(toText(ReplyFault::NoExceptionCode), "an exception without a code");
    EXPECT_EQ(toText(ReplyFault::WrongFunction), "an answer to another function");
    EXPECT_EQ(toText(ReplyFault::WrongAcknowledgement), "the acknowledgement of another write");
    EXPECT_EQ(toText(ReplyFault::NotSendable), "the request does not fit a frame");
    EXPECT_EQ(toText(ReplyFault::EchoOrAnswer),
              "the request came back once, as its answer or as the line's echo");
}
