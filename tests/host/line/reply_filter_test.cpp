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

// The fault of one whole line as the answer to `request`.
ReplyFault faultOf(const QByteArray &request, const QByteArray &line)
{
    Echo echo;
    ReplyFilter filter(request, echo);
    Verdict verdict = filter.take(line);
    if (verdict == Verdict::MoreWanted)
        verdict = filter.end();
    return verdict == Verdict::Bad ? filter.fault() : ReplyFault::None;
}

Verdict verdictOf(const QByteArray &request, const QByteArray &line)
{
    Echo echo;
    return ReplyFilter(request, echo).take(line);
}

ReplyFault faultAtEnd(const QByteArray &request, const QByteArray &bytes)
{
    Echo echo;
    ReplyFilter filter(request, echo);
    EXPECT_EQ(filter.take(bytes), Verdict::MoreWanted);
    EXPECT_EQ(filter.end(), Verdict::Bad);
    return filter.fault();
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

TEST(ReplyFilter, TwoDifferentAnswersAtOnceAreNone)
{
    EXPECT_EQ(faultOf(READ_D100, D100_IS_1234 + ":0103020001F9\r\n"), ReplyFault::SeveralAnswers);
    EXPECT_EQ(faultOf(READ_D100, ":0183027A\r\n" + D100_IS_1234), ReplyFault::SeveralAnswers);
    EXPECT_EQ(verdictOf(READ_D100, D100_IS_1234 + D100_IS_1234), Verdict::Good);
    Echo echo;
    ReplyFilter filter(READ_D100, echo);
    filter.take(D100_IS_1234 + ":0103020001F9\r\n");
    EXPECT_EQ(filter.reply(), "");
    EXPECT_EQ(verdictOf(READ_D100, D100_IS_1234 + ":0203020001F8\r\n"), Verdict::Good);
    EXPECT_EQ(verdictOf(READ_D100, D100_IS_1234 + ":0103020001F8\r\n"), Verdict::Good); // garbled
}

TEST(ReplyFilter, ColonInTheMiddleStartsTheAnswerAnew)
{
    EXPECT_EQ(verdictOf(READ_D100, ":0103:01" + D100_IS_1234), Verdict::Good);
}

TEST(ReplyFilter, NoiseBeforeTheAnswerIsSkipped)
{
    EXPECT_EQ(verdictOf(READ_D100, "\xFF\x00zz" + D100_IS_1234), Verdict::Good);
}

TEST(ReplyFilter, WrongLrcIsBad)
{
    EXPECT_EQ(faultOf(READ_D100, ":0103021234B5\r\n"), ReplyFault::WrongLrc);
}

TEST(ReplyFilter, CharactersThatAreNoDigitsAreBad)
{
    EXPECT_EQ(faultOf(READ_D100, ":0103021G34B4\r\n"), ReplyFault::NotHex);
}

TEST(ReplyFilter, AnotherStationsAnswerIsBad)
{
    EXPECT_EQ(faultOf(READ_D100, ":0203021234B3\r\n"), ReplyFault::WrongStation);
}

TEST(ReplyFilter, AnswerAfterALineThatAnswersSomethingElseIsGood)
{
    Echo echo;
    ReplyFilter filter(READ_D100, echo);
    EXPECT_EQ(filter.take(":01030412345678E4\r\n"), Verdict::MoreWanted);
    EXPECT_EQ(filter.take(D100_IS_1234), Verdict::Good);
    EXPECT_EQ(filter.reply(), D100_IS_1234);
}

TEST(ReplyFilter, StationIsComparedByItsCharacters)
{
    const QByteArray toStation12 = ":12031064000176\r\n";
    EXPECT_EQ(verdictOf(toStation12, ":1203021234A3\r\n"), Verdict::Good);
    EXPECT_EQ(faultOf(toStation12, ":0C03021234A9\r\n"), ReplyFault::WrongStation);
}

TEST(ReplyFilter, AnswerToAnotherFunctionIsBad)
{
    EXPECT_EQ(faultOf(READ_D100, ":0102021234B5\r\n"), ReplyFault::WrongFunction);
    EXPECT_EQ(faultOf(READ_D100, ":0182027B\r\n"), ReplyFault::WrongFunction);
}

TEST(ReplyFilter, ShorterAndLongerAnswersAreBad)
{
    EXPECT_EQ(faultOf(READ_D100, ":01030112E9\r\n"), ReplyFault::WrongLength);
    EXPECT_EQ(faultOf(READ_D100, ":01030412345678E4\r\n"), ReplyFault::WrongLength);
    EXPECT_EQ(faultOf(READ_D100, ":01FF\r\n"), ReplyFault::WrongLength);
}

TEST(ReplyFilter, ByteCountMustFitTheCharacters)
{
    EXPECT_EQ(faultOf(READ_D100, ":0103041234B2\r\n"), ReplyFault::WrongLength);
}

TEST(ReplyFilter, OverlongLineIsBad)
{
    EXPECT_EQ(faultOf(READ_D100, ":" + QByteArray(1024, '0')), ReplyFault::TooLong);
}

TEST(ReplyFilter, ExceptionIsGoodAndNamed)
{
    Echo echo;
    ReplyFilter filter(READ_D100, echo);
    EXPECT_EQ(filter.take(":0183027A\r\n"), Verdict::Good);
    EXPECT_EQ(filter.exceptionCode(), 2);
    EXPECT_EQ(exceptionText(2), "illegal data address (exception 02)");
}

TEST(ReplyFilter, ExceptionOfTheWrongLengthIsBad)
{
    EXPECT_EQ(faultOf(READ_D100, ":01837C\r\n"), ReplyFault::WrongLength);
}

TEST(ReplyFilter, ExceptionWithCodeZeroIsNeitherAnswerNorRefusal)
{
    EXPECT_EQ(faultOf(READ_D100, ":0183007C\r\n"), ReplyFault::NoExceptionCode);
    EXPECT_EQ(faultOf(":01101064000102123432\r\n", ":0190006F\r\n"), ReplyFault::NoExceptionCode);
    EXPECT_EQ(toText(ReplyFault::NoExceptionCode), "an exception without a code");
}

TEST(ReplyFilter, CountersAnswerWithFourBytesEach)
{
    const QByteArray readCounter200 = ":01030EC8000125\r\n";
    EXPECT_EQ(verdictOf(readCounter200, ":0103040001117076\r\n"), Verdict::Good);
    EXPECT_EQ(faultOf(readCounter200, ":010302117079\r\n"), ReplyFault::WrongLength);
    const QByteArray readLastCounter = ":01030EFF0001EE\r\n";
    EXPECT_EQ(verdictOf(readLastCounter, ":0103040001117076\r\n"), Verdict::Good);
    const QByteArray readWordBehind = ":01030F000001EC\r\n";
    EXPECT_EQ(verdictOf(readWordBehind, D100_IS_1234), Verdict::Good);
    const QByteArray readWordBefore = ":01030EC7000126\r\n";
    EXPECT_EQ(verdictOf(readWordBefore, D100_IS_1234), Verdict::Good);
}

TEST(ReplyFilter, ReadQuantityIsWhatAControllerMakesOfItsDigits)
{
    const QByteArray readTen = ":01031064001078\r\n"; // ten in decimal digits, sixteen for it
    EXPECT_EQ(verdictOf(readTen, ":010320" + QByteArray(64, '0') + "DC\r\n"), Verdict::Good);
    EXPECT_EQ(faultOf(readTen, ":010314" + QByteArray(40, '0') + "E8\r\n"),
              ReplyFault::WrongLength);
}

TEST(ReplyFilter, BitsAnswerWithOneByteForEight)
{
    EXPECT_EQ(verdictOf(READ_M0, ":0102020100FA\r\n"), Verdict::Good);
    EXPECT_EQ(faultOf(READ_M0, ":0102010100FB\r\n"), ReplyFault::WrongLength);
}

TEST(ReplyFilter, WordWriteIsAcknowledgedByItsAddressAndQuantity)
{
    const QByteArray writeTwo = ":011010640002040001000272\r\n";
    EXPECT_EQ(verdictOf(writeTwo, ":01101064000279\r\n"), Verdict::Good);
    EXPECT_EQ(faultOf(writeTwo, ":01101065000278\r\n"), ReplyFault::WrongAcknowledgement);
    EXPECT_EQ(faultOf(writeTwo, ":01101064007B\r\n"), ReplyFault::WrongLength);
}

TEST(ReplyFilter, SilenceNoiseAndBrokenOffLinesAreToldApart)
{
    EXPECT_EQ(faultAtEnd(READ_D100, ""), ReplyFault::Silence);
    EXPECT_EQ(faultAtEnd(READ_D100, "\xFE\x81\r\n"), ReplyFault::Noise);
    EXPECT_EQ(faultAtEnd(READ_D100, ":01030212"), ReplyFault::Incomplete);
}

TEST(ReplyFilter, EchoBeforeAReadsAnswerIsDroppedAndLearned)
{
    Echo echo;
    ReplyFilter filter(READ_D100, echo);
    EXPECT_EQ(filter.take(READ_D100), Verdict::MoreWanted);
    EXPECT_EQ(filter.take(D100_IS_1234), Verdict::Good);
    EXPECT_EQ(filter.reply(), D100_IS_1234);
    EXPECT_TRUE(echo.isCertain());
}

TEST(ReplyFilter, EchoAloneIsSilence)
{
    EXPECT_EQ(faultAtEnd(READ_D100, READ_D100), ReplyFault::Silence);
}

TEST(ReplyFilter, EchoOfAReadIsBadWhereItIsRuledOut)
{
    Echo echo = echoOf(EchoMode::Off);
    ReplyFilter filter(READ_D100, echo);
    EXPECT_EQ(filter.take(READ_D100), Verdict::Bad);
    EXPECT_EQ(filter.fault(), ReplyFault::UnexpectedEcho);
}

TEST(ReplyFilter, AnswerWithoutEchoDisprovesIt)
{
    Echo echo;
    ReplyFilter(READ_D100, echo).take(D100_IS_1234);
    EXPECT_FALSE(echo.isUnknown());
    EXPECT_FALSE(echo.isCertain());
}

TEST(ReplyFilter, AnswerBehindNoiseDisprovesNothing)
{
    Echo echo;
    ReplyFilter(READ_D100, echo).take("\xFF" + D100_IS_1234);
    EXPECT_TRUE(echo.isUnknown());
}

TEST(ReplyFilter, AnswerBehindADamagedEchoDisprovesNothing)
{
    Echo echo;
    ReplyFilter filter(READ_D100, echo);
    EXPECT_EQ(filter.take(READ_D100.left(8) + D100_IS_1234), Verdict::Good);
    EXPECT_TRUE(echo.isUnknown());
}

TEST(ReplyFilter, ProvenEchoStays)
{
    Echo echo;
    ReplyFilter(READ_D100, echo).take(READ_D100 + D100_IS_1234);
    ReplyFilter(READ_D100, echo).take(D100_IS_1234);
    EXPECT_TRUE(echo.isCertain());
}

TEST(ReplyFilter, AnswerWithoutTheCertainEchoIsBad)
{
    Echo echo = echoOf(EchoMode::On);
    ReplyFilter filter(READ_D100, echo);
    EXPECT_EQ(filter.take(D100_IS_1234), Verdict::Bad);
    EXPECT_EQ(filter.fault(), ReplyFault::MissingEcho);
}

TEST(ReplyFilter, ExceptionWithoutTheCertainEchoIsNoRefusal)
{
    Echo echo = echoOf(EchoMode::On);
    ReplyFilter filter(READ_D100, echo);
    EXPECT_EQ(filter.take(":0183027A\r\n"), Verdict::Bad);
    EXPECT_EQ(filter.exceptionCode(), 0);
}

// One damage makes a valid answer out of this request: its first "00" comes twice.
TEST(ReplyFilter, DamagedEchoOfABitReadIsNotItsAnswer)
{
    Echo echo;
    ReplyFilter(READ_D100, echo).take(READ_D100 + D100_IS_1234);
    ReplyFilter filter(":010204000020D9\r\n", echo);
    EXPECT_EQ(filter.take(":01020400000020D9\r\n"), Verdict::Bad);
    EXPECT_EQ(filter.fault(), ReplyFault::MissingEcho);
}

TEST(ReplyFilter, DisprovenEchoIsProvenByTheNextOne)
{
    Echo echo;
    ReplyFilter(READ_D100, echo).take(D100_IS_1234);
    ReplyFilter(READ_D100, echo).take(READ_D100 + D100_IS_1234);
    EXPECT_TRUE(echo.isCertain());
}

TEST(ReplyFilter, BitWriteIsAnsweredByItsOwnTextWithoutEcho)
{
    Echo off = echoOf(EchoMode::Off);
    EXPECT_EQ(ReplyFilter(SET_M0, off).take(SET_M0), Verdict::Good);
    Echo disproved;
    ReplyFilter(READ_D100, disproved).take(D100_IS_1234);
    EXPECT_EQ(ReplyFilter(SET_M0, disproved).take(SET_M0), Verdict::Good);
}

TEST(ReplyFilter, BitWriteNeedsItsTextTwiceWithEcho)
{
    Echo echo = echoOf(EchoMode::On);
    ReplyFilter filter(SET_M0, echo);
    EXPECT_EQ(filter.take(SET_M0), Verdict::MoreWanted);
    EXPECT_EQ(filter.take(SET_M0), Verdict::Good);
    ReplyFilter unanswered(SET_M0, echo);
    unanswered.take(SET_M0);
    EXPECT_EQ(unanswered.end(), Verdict::Bad);
    EXPECT_EQ(unanswered.fault(), ReplyFault::Silence);
}

TEST(ReplyFilter, BitWriteThatComesBackOnceProvesNothingWhileTheEchoIsUnknown)
{
    EXPECT_EQ(faultAtEnd(SET_M0, SET_M0), ReplyFault::EchoOrAnswer);
}

TEST(ReplyFilter, BitWriteThatComesBackTwiceProvesTheEcho)
{
    Echo echo;
    ReplyFilter filter(SET_M0, echo);
    EXPECT_EQ(filter.take(SET_M0 + SET_M0), Verdict::Good);
    EXPECT_TRUE(echo.isCertain());
}

TEST(ReplyFilter, BitWriteAnsweredForAnotherBitIsBad)
{
    EXPECT_EQ(faultOf(SET_M0, ":01050801FF00F2\r\n"), ReplyFault::WrongAcknowledgement);
    EXPECT_EQ(faultOf(SET_M0, ":010508000000F2\r\n"), ReplyFault::WrongAcknowledgement);
}

TEST(ReplyFilter, RequestWithoutFunctionHasNoAnswer)
{
    EXPECT_EQ(faultOf(":01FF\r\n", D100_IS_1234), ReplyFault::WrongFunction);
}

TEST(ReplyFilter, RequestWithoutFunctionThatComesBackIsNoAnswer)
{
    EXPECT_EQ(faultAtEnd(":01FF\r\n", ":01FF\r\n"), ReplyFault::Silence);
}

TEST(ReplyFilter, ReadThatComesBackTwiceIsBad)
{
    EXPECT_EQ(faultOf(READ_D100, READ_D100 + READ_D100), ReplyFault::WrongLength);
}

TEST(ReplyFilter, RefusalOfABitWriteDisprovesNoEcho)
{
    Echo echo;
    ReplyFilter filter(SET_M0, echo);
    EXPECT_EQ(filter.take(":01850278\r\n"), Verdict::Good);
    EXPECT_EQ(filter.exceptionCode(), 2);
    EXPECT_TRUE(echo.isUnknown());
}

TEST(ReplyFilter, ExceptionsThatNoStandardNamesKeepTheirCode)
{
    EXPECT_EQ(exceptionText(0x0B), "gateway target device failed to respond (exception 0b)");
    EXPECT_EQ(exceptionText(0x00), "a reason of its own (exception 00)");
    EXPECT_EQ(exceptionText(0x07), "a reason of its own (exception 07)");
    EXPECT_EQ(exceptionText(0x0C), "a reason of its own (exception 0c)");
}

TEST(ReplyFault, SaysWhatToDoOrWhatWasWrong)
{
    EXPECT_EQ(toText(ReplyFault::WrongFunction), "an answer to another function");
    EXPECT_EQ(toText(ReplyFault::WrongAcknowledgement), "the acknowledgement of another write");
    EXPECT_EQ(toText(ReplyFault::NotSendable), "the request fits no frame");
    EXPECT_EQ(toText(ReplyFault::EchoOrAnswer),
              "the request came back once, as its answer or as the line's echo: say --echo on or "
              "--echo off");
}
