// The values of an answer are shown when the exchange after it shows that answers are in step.
#include "host/session/read_once.h"
#include "host/session/recipe_transfer.h"
#include "host/session/session.h"
#include "tests/host/session_fixture.h"

#include <random>

using namespace kmr;
using Outcome = RequestResult::Outcome;

namespace {

const QByteArray D0_IS_7_AND_8 = ":01030400070008E9\r\n";
class ConfirmationTest : public SessionTest {
protected:
    ConfirmationTest()
    {
        m_inStep = true;
        session(EchoMode::Off);
    }

    Quality quality(const QString &text) const
    {
        return m_session->state(tag(text)).quality;
    }

    // Each answer is repeated before the next one.
    void repeatAnswers()
    {
        m_spoil = [this](const QByteArray &, const QByteArray &answer) {
            return std::exchange(m_repeated, answer) + answer;
        };
    }

    static bool isCheck(const QByteArray &request)
    {
        return request.startsWith(":01020400");
    }

    QByteArray m_repeated;
};

} // namespace

TEST_F(ConfirmationTest, ValueIsShownOnceTheNextExchangeConfirmsIt)
{
    setElement("D", 0, 7);
    poll({"D0", "D100x2"});
    m_session->step();
    EXPECT_EQ(quality("D0"), Quality::Unread);
    m_session->step();
    EXPECT_EQ(quality("D0"), Quality::Good);
    EXPECT_EQ(m_session->values(tag("D0")), Values{7});
    EXPECT_EQ(quality("D100"), Quality::Unread);
}

TEST_F(ConfirmationTest, QuestionThatLooksLikeTheOneBeforeIsPrecededByACheckQuestion)
{
    poll({"D0", "D100"});
    m_session->step();
    m_session->step();
    ASSERT_EQ(m_device.sent().size(), 3U);
    EXPECT_EQ(m_device.sent()[1], ":010204000028D1\r\n"); // 40 bits from X0 on
    EXPECT_EQ(quality("D0"), Quality::Good);
}

TEST_F(ConfirmationTest, QuestionsThatDifferNeedNoCheckQuestion)
{
    poll({"D0", "D100x2", "D200x3"});
    for (int i = 0; i < 9; ++i)
        m_session->step();
    EXPECT_EQ(m_device.sent().size(), 9U);
}

TEST_F(ConfirmationTest, RepeatedAnswerLeavesWhatWasShownBefore)
{
    setElement("D", 0, 7);
    poll({"D0", "D100x2"});
    for (int i = 0; i < 4; ++i)
        m_session->step();
    setElement("D", 0, 9);
    setElement("D", 100, 5);
    m_session->step(); // D0
    repeatAnswers();
    m_repeated = ":0103020009F1\r\n";
    m_session->step(); // D100, after D0's answer once more
    EXPECT_EQ(m_session->values(tag("D0")), Values{7});
    EXPECT_EQ(quality("D0"), Quality::Good);
    m_spoil = nullptr;
    m_session->step();
    EXPECT_EQ(m_session->values(tag("D100")), Values{5});
    m_session->step();
    EXPECT_EQ(m_session->values(tag("D0")), Values{9});
}

TEST_F(ConfirmationTest, LineThatRepeatsAllAnswersShowsNothingFalse)
{
    setElement("D", 0, 7);
    setElement("D", 100, 5);
    repeatAnswers();
    poll({"D0", "D100"});
    for (int i = 0; i < 50; ++i) {
        m_session->step();
        EXPECT_TRUE(quality("D0") != Quality::Good || m_session->values(tag("D0")) == Values{7});
        EXPECT_TRUE(quality("D100") != Quality::Good ||
                    m_session->values(tag("D100")) == Values{5});
    }
    EXPECT_EQ(m_session->statistics().strays(), m_device.sent().size() - 1);
}

TEST_F(ConfirmationTest, ReadingOnceEndsWithACheckQuestion)
{
    setElement("D", 100, 5);
    EXPECT_EQ(readNow(*m_session, tags({"D100"}))[0].values, Values{5});
    ASSERT_EQ(m_device.sent().size(), 2U);
    EXPECT_TRUE(isCheck(m_device.sent()[1]));
    EXPECT_EQ(m_session->statistics().checks(), 1U);
}

TEST_F(ConfirmationTest, RefusalIsConfirmedAsAValueIs)
{
    m_spoil = [](const QByteArray &request, const QByteArray &answer) {
        return isCheck(request) ? answer : QByteArray(":0183027A\r\n");
    };
    EXPECT_EQ(m_session->readOnce({1, "D", 0, 1}).outcome, Outcome::Refused);
    EXPECT_EQ(quality("D0"), Quality::Stale);
}

TEST_F(ConfirmationTest, WriteIsDoneWhenACheckQuestionConfirmsIt)
{
    poll({"D0"});
    EXPECT_TRUE(write("D0", {7}).isDone());
    EXPECT_TRUE(isCheck(m_device.sent().back()));
}

TEST_F(ConfirmationTest, WriteWhoseAcknowledgementComesTwiceIsDone)
{
    poll({"D0"});
    repeatAnswers();
    EXPECT_TRUE(write("D0", {7}).isDone());
}

TEST_F(ConfirmationTest, WriteThatIsRefusedAfterAnAcknowledgementIsUnknown)
{
    poll({"D0"});
    m_spoil = [](const QByteArray &request, const QByteArray &answer) {
        return isCheck(request) ? ":0190026D\r\n" + answer : answer;
    };
    const RequestResult result = write("D0", {7});
    EXPECT_EQ(result.outcome, Outcome::Unknown);
    EXPECT_EQ(result.failure.fault, ReplyFault::NotConfirmed);
}

TEST_F(ConfirmationTest, WriteWhoseCheckQuestionGetsNoAnswerIsUnknown)
{
    poll({"D0"});
    m_spoil = [](const QByteArray &request, const QByteArray &answer) {
        return isCheck(request) ? QByteArray() : answer;
    };
    EXPECT_EQ(write("D0", {7}).outcome, Outcome::Unknown);
}

TEST_F(ConfirmationTest, StationThatLeavesBitsUnansweredIsAskedForWords)
{
    setElement("D", 100, 5);
    m_spoil = [](const QByteArray &request, const QByteArray &answer) {
        return isCheck(request) ? QByteArray() : answer;
    };
    poll({"D100"});
    for (int i = 0; i < 10 && quality("D100") != Quality::Good; ++i)
        m_session->step();
    EXPECT_EQ(m_session->values(tag("D100")), Values{5});
}

TEST_F(ConfirmationTest, UploadWhoseAnswersAreRepeatedBeginsAgain)
{
    setElement("D", 0, 7);
    setElement("D", 100, 5);
    int answers = 0;
    m_spoil = [&answers](const QByteArray &, const QByteArray &answer) {
        return ++answers == 2 ? D0_IS_7_AND_8 + answer : answer;
    };
    std::vector<RecipeItem> items = {{tag("D0"), {}}, {tag("D100"), {}}};
    EXPECT_TRUE(upload(*m_session, items).result.isDone());
    EXPECT_EQ(items[0].values, Values{7});
    EXPECT_EQ(items[1].values, Values{5});
    EXPECT_GT(m_device.sent().size(), 5U);
}

TEST_F(ConfirmationTest, DownloadWhoseAcknowledgementsAreRepeatedIsDone)
{
    repeatAnswers();
    const TransferResult down =
        download(*m_session, {{tag("D0"), {7}}, {tag("D100x10"), Values(10, 5)}});
    EXPECT_TRUE(down.result.isDone());
    EXPECT_EQ(down.finished, 3);
    EXPECT_EQ(element("D", 109), 5U);
}

TEST_F(ConfirmationTest, DownloadThatIsBrokenOffNamesTheEntriesThatAreNotConfirmed)
{
    int answers = 0;
    m_spoil = [&answers](const QByteArray &, const QByteArray &answer) {
        return ++answers <= 2 ? answer : QByteArray();
    };
    const TransferResult down =
        download(*m_session, {{tag("D0"), {7}}, {tag("D100"), {5}}, {tag("D200"), {5}}});
    EXPECT_EQ(down.result.outcome, Outcome::NoAnswer);
    EXPECT_EQ(down.finished, 1);
    EXPECT_EQ(down.unsure, 2);
    EXPECT_EQ(down.failedName, "1#D200");
}

TEST_F(ConfirmationTest, ValuesAreTrueWhateverIsLostAndRepeated)
{
    std::mt19937 random(3);
    m_spoil = [&](const QByteArray &, const QByteArray &answer) {
        const auto choice = random() % 40;
        const QByteArray before = choice == 0 ? m_repeated : QByteArray();
        m_repeated = answer;
        return choice == 1 ? QByteArray() : before + answer;
    };
    const QStringList polled = {"D0x8", "D100x8", "M0x40", "CV2200x3", "TV5"};
    poll(polled);
    int good = 0;
    for (std::uint32_t i = 0; i < 2000; ++i) {
        m_session->step();
        if (i % 50 == 0 && write("D3", {i}).isDone()) {
            EXPECT_EQ(element("D", 3), i);
        }
        for (const QString &text : polled) {
            if (quality(text) != Quality::Good)
                continue;
            ++good;
            EXPECT_EQ(m_session->values(tag(text)).back(),
                      element(tag(text).elements.area,
                              shownNumber(tag(text).elements.area, tag(text).elements.end() - 1)));
        }
    }
    EXPECT_GT(good, 2000);
}
