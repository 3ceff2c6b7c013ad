// A value is good only while the controller holds it: the driver mirrors writes at once and
// settles them by rules that affect neighbours, and the session must handle this.
#include "host/session/read_once.h"
#include "host/session/session.h"
#include "tests/host/session_fixture.h"

#include <random>

using namespace kmr;
using Outcome = RequestResult::Outcome;

namespace {

class TruthTest : public SessionTest {
protected:
    // Bits are written at once: the echo is already known.
    TruthTest()
    {
        session(EchoMode::Off);
    }

    void step(int times = 1)
    {
        for (int i = 0; i < times; ++i)
            m_session->step();
    }

    Quality quality(const QString &text) const
    {
        return m_session->state(tag(text)).quality;
    }

    // The answer to reads of the words from D `number` on never comes.
    void silenceReadsOfD(int number)
    {
        const QByteArray address = QByteArray::number(0x1000 + number, 16).toUpper();
        m_spoil = [address](const QByteArray &request, const QByteArray &answer) {
            return request.mid(3, 6) == "03" + address ? QByteArray() : answer;
        };
    }

    static _RCP_VAR_PRO entry(int number, int word)
    {
        _RCP_VAR_PRO entry;
        entry.devId = Session::DEVICE;
        entry.station = 1;
        entry.area = "D";
        entry.address = number;
        entry.count = 1;
        entry.bufWord = word;
        return entry;
    }

    RequestResult transfer(Session::Transfer direction)
    {
        RecipeProgress progress;
        return m_session->transferRecipe({entry(0, 0), entry(1, 1), entry(2, 2)}, direction,
                                         progress);
    }
};

// Fails if a good value isn't the one in the controller.
class RandomTraffic : public TruthTest {
protected:
    static QStringList polledTags()
    {
        return {"D0x4", "D4090x12", "M0x40", "M1525x20", "CV2200x4", "Y16x20", "TV5"};
    }

    int below(int limit)
    {
        return static_cast<int>(m_random() % static_cast<unsigned>(limit));
    }

    std::uint32_t anyValue(ElementKind kind)
    {
        return static_cast<std::uint32_t>(below(kind == ElementKind::Bit ? 2 : 0x10000));
    }

    // One answer in five is missing or cut off; writes are carried out.
    void spoilSomeAnswers()
    {
        m_spoil = [this](const QByteArray &, const QByteArray &answer) {
            const int choice = below(10);
            return choice == 0 ? QByteArray() : choice == 1 ? answer.left(7) : answer;
        };
    }

    Tag anyElement()
    {
        const std::vector<Tag> all = tags(polledTags());
        Tag tag = all[static_cast<std::size_t>(below(static_cast<int>(all.size())))];
        tag.elements.first += below(tag.count);
        tag.elements.count = tag.count = 1;
        return tag;
    }

    void doSomething()
    {
        const Tag tag = anyElement();
        switch (below(4)) {
        case 0:
            m_session->write(tag.elements, {anyValue(tag.kind)});
            break;
        case 1:
            if (tag.kind != ElementKind::Bit)
                m_session->readOnce(tag.elements);
            break;
        default:
            m_session->step();
        }
    }

    void checkGoodValues()
    {
        for (const QString &text : polledTags()) {
            Tag element = tag(text);
            const int end = element.elements.end();
            element.elements.count = element.count = 1;
            for (; element.elements.first < end; ++element.elements.first) {
                if (m_session->state(element).quality == Quality::Good) {
                    ++m_checked;
                    const auto &[station, area, first, count] = element.elements;
                    ASSERT_EQ(m_session->values(element),
                              Values{this->element(area, shownNumber(area, first))})
                        << elementName(area, first).toStdString();
                }
            }
        }
    }

    std::mt19937 m_random{1};
    int m_checked = 0;
};

} // namespace

TEST_F(TruthTest, WhileABitIsPendingItsNeighboursAre)
{
    poll({"M0x16"});
    setElement("M", 8, 1);
    step();
    // Three requests in a row delay the polling, so it comes between the fourth and its answer.
    for (int i = 0; i < 3; ++i)
        write("M0", {1});
    std::vector<Quality> seen;
    Values shown;
    m_session->setObserver([&](const Exchange &exchange) {
        if (exchange.request.var.reqTag == 4) {
            seen.push_back(quality("M8"));
            shown = m_session->values(tag("M8"));
        }
    });
    write("M0", {0});
    EXPECT_EQ(seen, std::vector<Quality>{Quality::Unread});
    EXPECT_EQ(shown, Values{1}) << "the last confirmed value, not what the driver shows";
}

TEST_F(TruthTest, AcknowledgedBitReleasesItsBlockButOnlyReadingMakesItGood)
{
    poll({"M0x16"});
    step();
    setElement("M", 5, 1);
    EXPECT_TRUE(write("M0", {1}).isDone());
    EXPECT_EQ(m_session->values(tag("M5")), Values{0});
    EXPECT_EQ(quality("M0"), Quality::Unread);
    EXPECT_EQ(quality("M5"), Quality::Unread);
    step();
    EXPECT_EQ(quality("M0x16"), Quality::Good);
    EXPECT_EQ(m_session->values(tag("M5")), Values{1});
}

TEST_F(TruthTest, BitWriteLeavesOtherBlocksGood)
{
    poll({"M0x48"});
    step(3);
    write("M16", {1});
    EXPECT_EQ(quality("M15"), Quality::Good);
    EXPECT_EQ(quality("M16x16"), Quality::Unread);
    EXPECT_EQ(quality("M32"), Quality::Good);
}

TEST_F(TruthTest, BlocksOfOutputsAreCountedInOctal)
{
    poll({"Y0x32"});
    step(2);
    write("Y17", {1}); // the last of the first block
    EXPECT_EQ(quality("Y0"), Quality::Unread);
    EXPECT_EQ(quality("Y20"), Quality::Good);
}

TEST_F(TruthTest, AcknowledgedCounterWriteSpoilsTheNextCounter)
{
    setElement("CV2", 201, 7);
    poll({"CV2200x3"});
    step(3);
    EXPECT_TRUE(write("CV2200", {5}).isDone());
    EXPECT_EQ(m_session->values(tag("CV2201")), Values{7}) << "not what the driver makes of it";
    EXPECT_EQ(quality("CV2201"), Quality::Unread);
    EXPECT_EQ(quality("CV2202"), Quality::Good);
    step(3);
    EXPECT_EQ(quality("CV2200x3"), Quality::Good);
    EXPECT_EQ(m_session->values(tag("CV2201")), Values{7});
}

TEST_F(TruthTest, WriteThatIsGivenUpLeavesItsElementsPendingUntilTheyAreRead)
{
    poll({"D0", "M0x16"});
    step(2);
    m_spoil = [](const QByteArray &request, const QByteArray &answer) {
        return isWrite(request) ? QByteArray() : answer;
    };
    EXPECT_EQ(write("D0", {5}).outcome, Outcome::NoAnswer);
    EXPECT_EQ(quality("D0"), Quality::Unread);
    EXPECT_EQ(write("M3", {1}).outcome, Outcome::NoAnswer);
    EXPECT_EQ(quality("M15"), Quality::Unread);
    step(2);
    EXPECT_EQ(quality("D0"), Quality::Good);
    EXPECT_EQ(m_session->values(tag("D0")), Values{5}) << "carried out without an answer";
}

TEST_F(TruthTest, WriteThatIsRefusedLeavesItsElementsPending)
{
    poll({"D0"});
    step();
    m_spoil = [](const QByteArray &request, const QByteArray &answer) {
        return isWrite(request) ? QByteArray(":0190026D\r\n") : answer;
    };
    EXPECT_EQ(write("D0", {5}).outcome, Outcome::Refused);
    EXPECT_EQ(quality("D0"), Quality::Unread);
}

TEST_F(TruthTest, WriteOnALostLineLeavesItsElementsPending)
{
    poll({"D0", "D9"});
    step(2);
    m_spoil = [this](const QByteArray &, const QByteArray &) {
        m_device.close();
        return QByteArray();
    };
    EXPECT_EQ(write("D0", {5}).outcome, Outcome::Unknown);
    EXPECT_EQ(quality("D0"), Quality::Unread);
}

TEST_F(TruthTest, ElementOfAWriteThatIsNotSentIsPending)
{
    poll({"M0x16"});
    step();
    m_device.close();
    EXPECT_EQ(write("M3", {1}).outcome, Outcome::NotSent);
    EXPECT_EQ(m_session->values(tag("M3")), Values{0}) << "not what the driver shows";
    EXPECT_EQ(quality("M3"), Quality::Unread);
}

TEST_F(TruthTest, NothingIsGoodAfterARestart)
{
    poll({"D0", "M0"});
    step(2);
    EXPECT_EQ(quality("D0"), Quality::Good);
    m_session->restart();
    EXPECT_EQ(quality("D0"), Quality::Unread);
    EXPECT_EQ(quality("M0"), Quality::Unread);
}

TEST_F(TruthTest, OneShotReadThatIsGivenUpMakesItsElementsStale)
{
    poll({"D100"});
    m_session->readOnce({1, "D", 0, 8});
    EXPECT_EQ(quality("D0x8"), Quality::Good);
    silenceReadsOfD(0);
    EXPECT_EQ(m_session->readOnce({1, "D", 0, 8}).outcome, Outcome::NoAnswer);
    EXPECT_EQ(quality("D7"), Quality::Stale);
    m_spoil = {};
    EXPECT_TRUE(m_session->readOnce({1, "D", 0, 8}).isDone());
    EXPECT_EQ(quality("D0x8"), Quality::Good);
}

TEST_F(TruthTest, OneShotReadAfterOneThatWasGivenUpIsSent)
{
    poll({"D100"});
    silenceReadsOfD(0);
    EXPECT_EQ(m_session->readOnce({1, "D", 0, 1}).outcome, Outcome::NoAnswer);
    EXPECT_TRUE(m_session->readOnce({1, "D", 8, 1}).isDone());
}

TEST_F(TruthTest, BlockThatIsGivenUpMakesAllItsBitsStale)
{
    poll({"M3"});
    step();
    EXPECT_EQ(quality("M0x16"), Quality::Good);
    m_spoil = silence;
    step(3);
    EXPECT_EQ(quality("M0"), Quality::Stale);
    EXPECT_EQ(quality("M15"), Quality::Stale);
}

TEST_F(TruthTest, AnswersThatAreOutOfStepLeaveNothingGood)
{
    poll({"D0", "D100x2", "D200"});
    for (int i = 0; i < 3; ++i)
        step();
    EXPECT_EQ(quality("D0"), Quality::Good);
    m_spoil = [](const QByteArray &, const QByteArray &) {
        return QByteArray(":01030400000000F8\r\n"); // two words, whatever was asked for
    };
    step(); // D0
    EXPECT_EQ(quality("D0"), Quality::Unread);
    EXPECT_EQ(quality("D100x2"), Quality::Unread);
    EXPECT_EQ(quality("D200"), Quality::Unread);
}

TEST_F(TruthTest, AnswerThatNobodyWaitedForLeavesNothingGood)
{
    poll({"D0", "D100"});
    step();
    step();
    m_device.arrive(0, ":0103020007F3\r\n");
    m_device.waitForReadyRead(0);
    step(); // D0, and good for itself
    EXPECT_EQ(quality("D0"), Quality::Good);
    EXPECT_EQ(quality("D100"), Quality::Unread);
}

TEST_F(TruthTest, StationThatGivesUpTwiceInARowIsStaleAsAWhole)
{
    poll({"D0", "D100", "D200"});
    for (int i = 0; i < 3; ++i)
        step();
    m_spoil = silence;
    for (int i = 0; i < 3; ++i)
        step();
    EXPECT_EQ(quality("D0"), Quality::Stale);
    EXPECT_EQ(quality("D100"), Quality::Good); // as far as the host knows
    step();
    EXPECT_EQ(quality("D100"), Quality::Stale);
    EXPECT_EQ(quality("D200"), Quality::Stale);
    m_spoil = nullptr;
    step();
    EXPECT_EQ(quality("D200"), Quality::Good);
    EXPECT_EQ(quality("D0"), Quality::Stale);
}

TEST_F(TruthTest, DownloadedElementsArePendingUntilTheyAreRead)
{
    poll({"D0x4"});
    step();
    EXPECT_TRUE(transfer(Session::Transfer::Download).isDone());
    EXPECT_EQ(quality("D2"), Quality::Unread);
    EXPECT_EQ(quality("D3"), Quality::Good);
    step();
    EXPECT_EQ(quality("D0x4"), Quality::Good);
}

TEST_F(TruthTest, DownloadThatIsGivenUpTouchesNoLaterEntry)
{
    poll({"D0x4"});
    step();
    m_spoil = [](const QByteArray &request, const QByteArray &answer) {
        return request.mid(3, 6) == "101001" ? QByteArray() : answer;
    };
    EXPECT_EQ(transfer(Session::Transfer::Download).outcome, Outcome::NoAnswer);
    EXPECT_EQ(quality("D0"), Quality::Unread);
    EXPECT_EQ(quality("D1"), Quality::Unread);
    EXPECT_EQ(quality("D2"), Quality::Good);
}

TEST_F(TruthTest, UploadThatIsGivenUpMakesItsEntryStale)
{
    poll({"D100"});
    silenceReadsOfD(1);
    EXPECT_EQ(transfer(Session::Transfer::Upload).outcome, Outcome::NoAnswer);
    EXPECT_EQ(quality("D0"), Quality::Good);
    EXPECT_EQ(quality("D1"), Quality::Stale);
    EXPECT_EQ(quality("D2"), Quality::Unread);
}

TEST_F(TruthTest, ReadAcrossABorderDoesNotTouchWhatLiesBehindIt)
{
    setElement("M", 1537, 1);
    poll({"M1536x2"});
    step();
    EXPECT_EQ(quality("M1537"), Quality::Good);
    m_session->poll({{1, "M", 1520, 16}}); // as another host would: the driver reads 32 bits
    step();
    EXPECT_EQ(m_session->values(tag("M1537")), Values{1}) << "not C1, as the driver has it now";
    EXPECT_EQ(quality("M1537"), Quality::Good);
    EXPECT_EQ(quality("M1520x16"), Quality::Good);
}

TEST_F(TruthTest, WritesGoOutEvenWhenNothingIsPolled)
{
    for (std::uint32_t i = 1; i < 6; ++i) {
        EXPECT_TRUE(write("D0", {i}).isDone());
        EXPECT_TRUE(write("M1", {i % 2}).isDone());
        EXPECT_EQ(element("D", 0), i);
    }
    m_session->restart();
    EXPECT_TRUE(m_session->readOnce({1, "D", 0, 1}).isDone());
}

TEST_F(RandomTraffic, NeverMakesAWrongValueGood)
{
    for (const QString &text : polledTags()) {
        const Tag all = tag(text);
        for (int n = all.elements.first; n < all.elements.end(); ++n)
            setElement(all.elements.area, shownNumber(all.elements.area, n), anyValue(all.kind));
    }
    poll(polledTags());
    spoilSomeAnswers();
    for (int i = 0; i < 1000 && !HasFatalFailure(); ++i) {
        doSomething();
        checkGoodValues();
    }
    EXPECT_GT(m_checked, 20000);
}
