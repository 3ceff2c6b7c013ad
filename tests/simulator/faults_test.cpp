#include "simulator/faults.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace std::chrono_literals;
using simulator::Fault;
using simulator::FaultKind;
using simulator::Faults;
using simulator::Plan;

const QByteArray READ = ":010310000001EB\r\n";        // register 1000
const QByteArray ANSWER = ":0103021234B4\r\n";        // it holds 1234
const QByteArray WRITE = ":01101000000102BEEF2F\r\n"; // BEEF into the same

Fault fault(const QString &text)
{
    QString error;
    const auto parsed = simulator::parseFault(text, error);
    EXPECT_TRUE(parsed) << error.toStdString();
    return parsed.value_or(Fault());
}

std::string errorOf(const QString &text)
{
    QString error;
    EXPECT_FALSE(simulator::parseFault(text, error));
    return error.section('\n', 0, 0).toStdString();
}

std::string bytesOf(const Plan &plan)
{
    QByteArray bytes;
    for (const Plan::Piece &piece : plan.pieces)
        bytes += piece.bytes;
    return bytes.toStdString();
}

class FaultyLine : public testing::Test {
protected:
    FaultyLine()
    {
        controller.memory().setValue(0x1000, 0x1234);
    }

    // The plan for one request on a line with these faults.
    Plan plan(const QStringList &texts, const QByteArray &request = READ, std::uint64_t seed = 1)
    {
        std::vector<Fault> list;
        for (const QString &text : texts)
            list.push_back(fault(text));
        return Faults(list, seed).answer(controller, request);
    }

    std::uint32_t value() const
    {
        return controller.memory().value(0x1000);
    }

    simulator::Controller controller{"01"};
};

TEST_F(FaultyLine, AnswersAtOnceWithoutFaults)
{
    const Plan answered = plan({});
    ASSERT_EQ(answered.pieces.size(), 1U);
    EXPECT_EQ(answered.pieces[0].after, 0ms);
    EXPECT_EQ(answered.pieces[0].bytes, ANSWER);
    EXPECT_FALSE(answered.closedFor);
}

TEST_F(FaultyLine, DeafControllerNeitherObeysNorAnswers)
{
    EXPECT_TRUE(plan({"deaf"}, WRITE).pieces.empty());
    EXPECT_EQ(value(), 0x1234U);
}

TEST_F(FaultyLine, SilentControllerObeysButAnswersNothing)
{
    EXPECT_TRUE(plan({"silence"}, WRITE).pieces.empty());
    EXPECT_EQ(value(), 0xBEEFU);
}

TEST_F(FaultyLine, FaultsMakeTheirOwnOfTheAnswer)
{
    const std::string echo = ":010310000001EB\r\n";
    const std::string longLine = ":" + std::string(2048, '0') + "\r\n";
    const struct {
        QStringList faults;
        std::string sent;
    } ROWS[] = {
        {{"exception"}, ":01830478\r\n"},
        {{"exception=6"}, ":01830676\r\n"},
        {{"station"}, ":0203021234B3\r\n"},
        {{"long"}, longLine},
        {{"no-lf"}, ":0103021234B4\r"},
        {{"echo"}, echo + ":0103021234B4\r\n"},
        {{"echo", "deaf"}, echo},
        {{"echo", "silence"}, echo},
        // Two at once: each acts on the result of the one before, in the order of the kinds.
        {{"echo", "no-lf", "station"}, echo + ":0203021234B3\r"},
        {{"station", "exception=2"}, ":02830279\r\n"},
        {{"station", "station"}, ":0303021234B2\r\n"},
        {{"no-lf", "long"}, longLine.substr(0, 2050)},
        {{"echo", "echo"}, echo + echo + ":0103021234B4\r\n"},
        {{"deaf", "exception"}, ""},
        {{"silence", "late"}, ""},
    };
    for (const auto &row : ROWS)
        EXPECT_EQ(bytesOf(plan(row.faults)), row.sent) << row.faults.join(' ').toStdString();
}

TEST_F(FaultyLine, ExceptionDoesNotObey)
{
    EXPECT_EQ(bytesOf(plan({"exception=6"}, WRITE)), ":01900669\r\n");
    EXPECT_EQ(value(), 0x1234U);
}

TEST_F(FaultyLine, OfTwoTimesTheFirstTypedCounts)
{
    const Plan cut = plan({"late=30ms", "late=40ms", "pieces=7ms", "pieces=9ms"});
    EXPECT_EQ(cut.pieces.front().after, 30ms);
    EXPECT_EQ(cut.pieces.back().after, 7ms);
    EXPECT_EQ(plan({"close=70ms", "close=80ms"}).closedFor, 70ms);
}

TEST_F(FaultyLine, ClosedLinkObeysButAnswersNothing)
{
    const Plan closed = plan({"close=70ms", "echo"}, WRITE);
    EXPECT_EQ(closed.closedFor, 70ms);
    EXPECT_TRUE(closed.pieces.empty());
    EXPECT_EQ(value(), 0xBEEFU);
}

TEST_F(FaultyLine, NoiseStandsBeforeTheStartAndHasNone)
{
    const std::string sent = bytesOf(plan({"noise"}));
    EXPECT_GT(sent.size(), 15U);
    EXPECT_LE(sent.size(), 35U);
    EXPECT_EQ(sent.substr(sent.find(':')), ":0103021234B4\r\n");
}

TEST_F(FaultyLine, LosesOrDoublesOneToThreeCharacters)
{
    for (std::uint64_t seed = 0; seed < 100; ++seed) {
        const std::size_t lost = bytesOf(plan({"lose"}, READ, seed)).size();
        const std::size_t doubled = bytesOf(plan({"double"}, READ, seed)).size();
        EXPECT_TRUE(lost >= 12 && lost <= 14) << lost;
        EXPECT_TRUE(doubled >= 16 && doubled <= 18) << doubled;
    }
}

TEST_F(FaultyLine, FlipsTheLowestBitOfOneCharacter)
{
    for (std::uint64_t seed = 0; seed < 100; ++seed) {
        const std::string sent = bytesOf(plan({"flip"}, READ, seed));
        ASSERT_EQ(sent.size(), 15U);
        int flipped = 0;
        for (std::size_t i = 0; i < sent.size(); ++i)
            flipped += sent[i] != ANSWER[static_cast<int>(i)] ? 1 : 0;
        EXPECT_EQ(flipped, 1);
    }
}

TEST_F(FaultyLine, DamageNeverMeetsDamage)
{
    // A flipped bit changes no length.
    EXPECT_EQ(bytesOf(plan({"flip", "flip", "flip"})).size(), 15U);
    EXPECT_LT(bytesOf(plan({"lose", "double"})).size(), 15U);
}

TEST_F(FaultyLine, LateAnswerIsWholeAndLate)
{
    const Plan late = plan({"late=800ms"});
    ASSERT_EQ(late.pieces.size(), 1U);
    EXPECT_EQ(late.pieces[0].after, 800ms);
    EXPECT_EQ(late.pieces[0].bytes, ANSWER);
}

TEST_F(FaultyLine, PiecesFollowOneAnotherAfterPauses)
{
    for (std::uint64_t seed = 0; seed < 100; ++seed) {
        const Plan cut = plan({"pieces=7ms", "late=30ms"}, READ, seed);
        ASSERT_GE(cut.pieces.size(), 2U);
        ASSERT_LE(cut.pieces.size(), 5U);
        EXPECT_EQ(cut.pieces.front().after, 30ms);
        EXPECT_EQ(cut.pieces.back().after, 7ms);
        EXPECT_FALSE(cut.pieces.front().bytes.isEmpty());
        EXPECT_EQ(bytesOf(cut), ANSWER.toStdString());
    }
}

TEST_F(FaultyLine, CountHitsEverySoManyThRequest)
{
    Faults faults({fault("silence,every=3")}, 1);
    std::string heard;
    for (int i = 0; i < 9; ++i)
        heard += faults.answer(controller, READ).pieces.empty() ? '-' : '+';
    EXPECT_EQ(heard, "++-++-++-");
}

TEST_F(FaultyLine, ProbabilityHitsThatShareOfRequests)
{
    for (const auto &[probability, share] : {std::pair("0", 0), {"0.25", 2500}, {"1", 10000}}) {
        Faults faults({fault(QString("silence,probability=") + probability)}, 1);
        int silent = 0;
        for (int i = 0; i < 10000; ++i)
            silent += faults.answer(controller, READ).pieces.empty() ? 1 : 0;
        EXPECT_NEAR(silent, share, share == 2500 ? 150 : 0);
    }
}

TEST_F(FaultyLine, LinesThatAreNotForItAloneMeetNoFaultAndDoNotCount)
{
    Faults faults({fault("exception,every=2")}, 1);
    faults.answer(controller, READ);
    EXPECT_TRUE(faults.answer(controller, ":020310000001EA\r\n").pieces.empty()); // station 02
    EXPECT_TRUE(faults.answer(controller, ":010310000001FF\r\n").pieces.empty()); // wrong LRC
    EXPECT_TRUE(faults.answer(controller, ":00101000000102BEEF30\r\n").pieces.empty());
    EXPECT_EQ(value(), 0xBEEFU); // by the broadcast
    EXPECT_EQ(bytesOf(faults.answer(controller, READ)), ":01830478\r\n");
}

TEST_F(FaultyLine, LogNamesTheFaultsAndWhatCameOfTheRequest)
{
    const struct {
        QStringList faults;
        QByteArray request;
        std::string words;
    } ROWS[] = {
        {{}, READ, "read 1 register from 1000, answered"},
        {{"deaf"}, READ, "read 1 register from 1000, not received (fault deaf)"},
        {{"silence"}, READ, "read 1 register from 1000, not answered (fault silence)"},
        {{"close"}, WRITE, "write 1 register from 1000, executed, not answered (fault close)"},
        {{"exception=6"},
         WRITE,
         "write 1 register from 1000, refused: server device busy (fault exception)"},
        {{"flip", "echo"}, READ, "read 1 register from 1000, answered (fault echo, flip)"},
    };
    for (const auto &row : ROWS) {
        std::vector<std::string> log;
        controller.setObserver([&log](const simulator::Exchange &exchange) {
            log.push_back(describe(exchange).toStdString());
        });
        plan(row.faults, row.request);
        EXPECT_EQ(log, std::vector{"station 01: " + row.words});
    }
}

// Everything that a line with every kind of fault sends for 300 requests.
std::string sentWithSeed(std::uint64_t seed)
{
    simulator::Controller controller("01");
    std::vector<Fault> list;
    for (const char *kind : {"deaf", "close", "silence", "exception", "station", "long", "no-lf",
                             "noise", "echo", "lose", "double", "flip", "late", "pieces"})
        list.push_back(fault(QString(kind) + ",probability=0.2"));
    Faults faults(list, seed);
    std::string sent;
    for (int i = 0; i < 300; ++i) {
        const Plan plan = faults.answer(controller, READ);
        for (const Plan::Piece &piece : plan.pieces)
            sent += std::to_string(piece.after.count()) + piece.bytes.toStdString();
        sent += plan.closedFor ? "closed" : "open";
    }
    return sent;
}

TEST(Faults, SameSeedGivesTheSameFaultsAndAnotherSeedOthers)
{
    EXPECT_EQ(sentWithSeed(7), sentWithSeed(7));
    EXPECT_NE(sentWithSeed(7), sentWithSeed(8));
}

TEST(ParseFault, ReadsKindValueAndChoice)
{
    const Fault late = fault("late=800ms,every=50");
    EXPECT_EQ(late.kind, FaultKind::Late);
    EXPECT_EQ(late.value, 800);
    EXPECT_EQ(late.every, 50);
    EXPECT_EQ(late.probability, 1);
    const Fault flip = fault("flip,probability=0.02");
    EXPECT_EQ(flip.kind, FaultKind::Flip);
    EXPECT_EQ(flip.every, 1);
    EXPECT_EQ(flip.probability, 0.02);
}

TEST(ParseFault, TakesUsualValuesWhereNoneIsTyped)
{
    EXPECT_EQ(fault("late").value, 1500);
    EXPECT_EQ(fault("pieces").value, 20);
    EXPECT_EQ(fault("close").value, 500);
    EXPECT_EQ(fault("exception").value, 4);
}

TEST(ParseFault, NamesWhatIsWrongAndWhatIsExpected)
{
    const std::string time = ": expected a time of 0ms to 600000ms, for example ";
    const struct {
        const char *text;
        std::string fault;
    } ROWS[] = {
        {"slow", "there is no kind \"slow\", only deaf, close, silence, exception, station, long, "
                 "no-lf, noise, echo, lose, double, flip, late, pieces"},
        {"late=8", "late=8" + time + "late=1500ms"},
        {"close=-1ms", "close=-1ms" + time + "close=500ms"},
        {"pieces=600001ms,every=2", "pieces=600001ms" + time + "pieces=20ms"},
        {"exception=256", "exception=256: expected its code, 1 to 255"},
        {"exception=0", "exception=0: expected its code, 1 to 255"},
        {"flip=1", "flip takes no value"},
        {"flip,every=0", "every=0: expected a whole number from 1 on"},
        {"flip,probability=1.5", "probability=1.5: expected 0 to 1, for example 0.02"},
        {"flip,every=2,probability=nan", "probability=nan: expected 0 to 1, for example 0.02"},
        {"flip,often", "\"often\": after the kind only every=N and probability=P are known"},
    };
    for (const auto &row : ROWS)
        EXPECT_EQ(errorOf(row.text), "bad fault \"" + std::string(row.text) + "\": " + row.fault);
    EXPECT_EQ(errorOf("").substr(0, 34), "bad fault \"\": there is no kind \"\",");
}

TEST(FaultHelp, ShowsEachKindWithItsUsualValue)
{
    const QString help = simulator::faultHelp();
    EXPECT_EQ(help.count('\n'), 14);
    EXPECT_TRUE(help.contains("  late=1500ms    everything comes that much later\n"));
    EXPECT_TRUE(help.contains("  exception=4    refused with that exception, not executed\n"));
}

} // namespace
