// One-shot reads and the queue in which they wait.
#include "driver/polling.h"

#include "driver_fixture.h"

#include <array>
#include <limits>
#include <utility>

namespace {

const qint32 INT_LEAST = std::numeric_limits<qint32>::min();
const qint32 INT_MOST = std::numeric_limits<qint32>::max();

using Request = std::pair<qint32, qint32>; // address, count
using Requests = std::vector<Request>;

enum { BITS = -1, WORDS = 0 };

class ConditionRead : public DriverTest {
protected:
    static qint32 ask(const char *area, qint32 address, qint32 count, qint32 elemKind,
                      qint32 reqTag = 0)
    {
        KEY_ADDRESS key;
        key.station = 1;
        key.area = area;
        key.address = address;
        key.count = count;
        key.elemKind = elemKind;
        return intf_addConditionRead(key, reqTag);
    }

    static Requests queued()
    {
        Requests all;
        for (const VARIABLE &request : std::as_const(driver.pendingReads))
            all.emplace_back(request.address, request.count);
        return all;
    }

    static std::vector<qint32> tags()
    {
        std::vector<qint32> all;
        for (const VARIABLE &request : std::as_const(driver.pendingReads))
            all.push_back(request.reqTag);
        return all;
    }
};

// --- Pieces --------------------------------------------------------------------------------------

TEST_F(ConditionRead, QueuesTheRequest)
{
    EXPECT_EQ(ask("D", 100, 3, WORDS, 77), 1);
    ASSERT_EQ(driver.pendingReads.size(), 1);
    const VARIABLE &request = driver.pendingReads.at(0);
    EXPECT_EQ(request.reqTag, 77);
    EXPECT_EQ(request.station, 1);
    EXPECT_EQ(request.area, QString("D"));
    EXPECT_EQ(request.address, 100);
    EXPECT_EQ(request.count, 3);
}

TEST_F(ConditionRead, LeavesTheHostsRunAsItIs)
{
    static KEY_ADDRESS key; // static: its padding is defined too
    key.label = "label";
    key.hostWord1 = 1;
    key.hostWord2 = 2;
    key.station = 3;
    key.area = "M";
    key.hostText = "text";
    key.address = 40;
    key.elemKind = BITS;
    key.count = 70;
    key.data[1023] = 4;
    std::array<char, sizeof key> before;
    memcpy(before.data(), static_cast<const void *>(&key), sizeof key);
    intf_addConditionRead(key, 0);
    EXPECT_EQ(memcmp(before.data(), static_cast<const void *>(&key), sizeof key), 0);
}

TEST_F(ConditionRead, WordsAreCutByTheGroupLimit)
{
    EXPECT_EQ(ask("D", 100, 20, WORDS), 1);
    EXPECT_EQ(queued(), (Requests{{100, 8}, {108, 8}, {116, 4}}));
}

TEST_F(ConditionRead, ExactlyTheGroupLimitIsOnePiece)
{
    ask("D", 100, 8, WORDS);
    EXPECT_EQ(queued(), (Requests{{100, 8}}));
}

TEST_F(ConditionRead, BitsAreCutByEightTimesTheGroupLimit)
{
    ask("M", 0, 64, BITS);
    EXPECT_EQ(queued(), (Requests{{0, 4}}));
    ask("M", 160, 65, BITS);
    EXPECT_EQ(queued(), (Requests{{0, 4}, {10, 4}, {14, 1}}));
}

TEST_F(ConditionRead, ElementKindAloneChoosesTheLimit)
{
    ask("D", 100, 65, BITS);
    EXPECT_EQ(queued(), (Requests{{100, 64}, {164, 1}}));
    driver.pendingReads.clear();
    ask("M", 32, 20, WORDS);
    EXPECT_EQ(queued(), (Requests{{2, 1}, {2, 1}, {3, 1}}));
}

TEST_F(ConditionRead, AnyElementKindButMinusOneMeansWords)
{
    for (const qint32 elemKind : {0, 1, 2, -2}) {
        driver.pendingReads.clear();
        ask("D", 100, 9, elemKind);
        EXPECT_EQ(queued(), (Requests{{100, 8}, {108, 1}})) << elemKind;
    }
}

TEST_F(ConditionRead, EveryPieceCarriesTheTag)
{
    ask("D", 100, 20, WORDS, 5);
    EXPECT_EQ(tags(), (std::vector<qint32>{5, 5, 5}));
}

TEST_F(ConditionRead, LimitBelowOneCutsSingleElements)
{
    for (const char *property : {"1#0#0#3#0", "1#0#0#3#-2147483648"}) {
        configure(property);
        ask("D", 100, 2, WORDS);
        ask("Q", 100, 2, BITS);
        EXPECT_EQ(queued(), (Requests{{100, 1}, {101, 1}, {100, 1}, {101, 1}})) << property;
    }
}

// --- Bits are queued as 16-bit words -------------------------------------------------------------

TEST_F(ConditionRead, BitAreasAreQueuedAsWords)
{
    for (const char *area : {"X", "Y", "M", "S", "T", "C", "TV_bit"}) {
        driver.pendingReads.clear();
        ask(area, 40, 20, BITS);
        EXPECT_EQ(queued(), (Requests{{2, 2}})) << area;
        EXPECT_EQ(driver.pendingReads.at(0).area, QString(area));
    }
}

TEST_F(ConditionRead, OtherAreasAreQueuedAsTheyStand)
{
    for (const char *area : {"TV", "CV", "CV2", "D", "SM", "Q", "x"}) {
        driver.pendingReads.clear();
        ask(area, 40, 20, BITS);
        EXPECT_EQ(queued(), (Requests{{40, 20}})) << area;
    }
}

TEST_F(ConditionRead, WordCountIgnoresWhereInItsWordTheRunStarts)
{
    ask("M", 15, 2, BITS);
    ask("M", 47, 16, BITS);
    ask("M", 79, 17, BITS);
    EXPECT_EQ(queued(), (Requests{{0, 1}, {2, 1}, {4, 2}}));
}

TEST_F(ConditionRead, OctalDigitsAreTakenAsTheyStand)
{
    ask("X", 17, 1, BITS);
    EXPECT_EQ(queued(), (Requests{{1, 1}}));
}

TEST_F(ConditionRead, CountBelowOneFollowsTheFormula)
{
    ask("M", 40, 0, BITS);
    ask("M", 40, -16, BITS);
    ask("M", 40, -5, BITS);
    ask("M", 40, -20, BITS);
    ask("D", 40, 0, WORDS);
    EXPECT_EQ(queued(), (Requests{{2, 0}, {2, -1}, {2, 1}, {2, 0}, {40, 0}}));
}

TEST_F(ConditionRead, ExtremeNumbers)
{
    ask("M", INT_LEAST, INT_LEAST, BITS);
    ask("M", INT_MOST, 1, BITS);
    ask("D", INT_LEAST, INT_LEAST, WORDS);
    EXPECT_EQ(queued(),
              (Requests{{-134217728, -134217728}, {134217727, 1}, {INT_LEAST, INT_LEAST}}));
}

// --- Duplicates ----------------------------------------------------------------------------------

TEST_F(ConditionRead, QueuedBehindTheFrontIsRefreshedInPlace)
{
    ask("D", 1, 1, WORDS, 1);
    ask("D", 2, 1, WORDS, 2);
    ask("D", 3, 1, WORDS, 3);
    ask("D", 2, 1, WORDS, 9);
    EXPECT_EQ(queued(), (Requests{{1, 1}, {2, 1}, {3, 1}}));
    EXPECT_EQ(tags(), (std::vector<qint32>{1, 9, 3}));
}

TEST_F(ConditionRead, LastInTheQueueIsRefreshedToo)
{
    ask("D", 1, 1, WORDS, 1);
    ask("D", 2, 1, WORDS, 2);
    ask("D", 2, 1, WORDS, 9);
    EXPECT_EQ(tags(), (std::vector<qint32>{1, 9}));
}

TEST_F(ConditionRead, FrontIsNeverTouched)
{
    ask("D", 1, 1, WORDS, 1);
    ask("D", 1, 1, WORDS, 9);
    EXPECT_EQ(queued(), (Requests{{1, 1}, {1, 1}}));
    EXPECT_EQ(tags(), (std::vector<qint32>{1, 9}));
}

TEST_F(ConditionRead, NewestOfTwoEqualRequestsIsRefreshed)
{
    ask("D", 1, 1, WORDS, 1);
    ask("D", 1, 1, WORDS, 2);
    driver.pendingReads.append(driver.pendingReads.at(1));
    ask("D", 1, 1, WORDS, 9);
    EXPECT_EQ(tags(), (std::vector<qint32>{1, 2, 9}));
}

TEST_F(ConditionRead, AnyDifferenceInTheTargetMakesANewRequest)
{
    ask("D", 0, 1, WORDS);
    ask("D", 1, 1, WORDS);
    ask("D", 2, 1, WORDS);
    ask("D", 1, 2, WORDS);
    ask("d", 1, 1, WORDS);
    KEY_ADDRESS otherStation;
    otherStation.station = 2;
    otherStation.area = "D";
    otherStation.address = 1;
    otherStation.count = 1;
    intf_addConditionRead(otherStation, 0);
    EXPECT_EQ(driver.pendingReads.size(), 6);
}

TEST_F(ConditionRead, PiecesOfOneRunMayBeDuplicates)
{
    ask("D", 1, 1, WORDS);
    ask("M", 32, 20, WORDS); // pieces from 32, 40 and 48 on: words 2, 2 and 3
    EXPECT_EQ(queued(), (Requests{{1, 1}, {2, 1}, {3, 1}}));
}

// --- The full queue ------------------------------------------------------------------------------

class FullQueue : public ConditionRead {
protected:
    void SetUp() override
    {
        ConditionRead::SetUp();
        for (qint32 address = 0; address < 512; ++address)
            ask("D", address, 1, WORDS, 1);
    }
};

TEST_F(FullQueue, TakesThe513thRequest)
{
    ask("D", 1000, 1, WORDS, 2);
    EXPECT_EQ(driver.pendingReads.size(), 513);
    EXPECT_EQ(queued().at(511), Request(511, 1));
    EXPECT_EQ(queued().at(512), Request(1000, 1));
}

TEST_F(FullQueue, The514thReplacesTheLast)
{
    ask("D", 1000, 1, WORDS, 2);
    ask("D", 2000, 1, WORDS, 3);
    EXPECT_EQ(driver.pendingReads.size(), 513);
    EXPECT_EQ(queued().at(511), Request(511, 1));
    EXPECT_EQ(queued().at(512), Request(2000, 1));
    EXPECT_EQ(driver.lastVar.address, 2000);
}

TEST_F(FullQueue, StillRefreshesADuplicate)
{
    ask("D", 1000, 1, WORDS, 2);
    ask("D", 5, 1, WORDS, 9);
    EXPECT_EQ(tags().at(5), 9);
    EXPECT_EQ(queued().at(512), Request(1000, 1));
}

TEST_F(FullQueue, OverlongQueueIsOverwrittenAtItsLimit)
{
    ask("D", 1000, 1, WORDS, 2);
    driver.pendingReads.append(variable("D", 3000, 1));
    ask("D", 2000, 1, WORDS, 3);
    EXPECT_EQ(queued().at(512), Request(2000, 1));
    EXPECT_EQ(queued().at(513), Request(3000, 1));
}

// --- The end of the job --------------------------------------------------------------------------

TEST_F(ConditionRead, LastVarIsTheLastPiece)
{
    ask("D", 100, 20, WORDS, 6);
    EXPECT_EQ(driver.lastVar.reqTag, 6);
    EXPECT_EQ(driver.lastVar.station, 1);
    EXPECT_EQ(driver.lastVar.area, QString("D"));
    EXPECT_EQ(driver.lastVar.address, 116);
    EXPECT_EQ(driver.lastVar.count, 4);
}

TEST_F(ConditionRead, LastVarOfBitsIsInWords)
{
    ask("M", 40, 20, BITS, 6);
    EXPECT_EQ(driver.lastVar.address, 2);
    EXPECT_EQ(driver.lastVar.count, 2);
}

TEST_F(ConditionRead, LastVarIsSetByARefreshToo)
{
    ask("D", 1, 1, WORDS, 1);
    ask("D", 2, 1, WORDS, 2);
    ask("D", 3, 1, WORDS, 3);
    ask("D", 2, 1, WORDS, 9);
    EXPECT_EQ(driver.lastVar.address, 2);
    EXPECT_EQ(driver.lastVar.reqTag, 9);
}

TEST_F(ConditionRead, OtherQueuesStayAsTheyAre)
{
    driver.pendingWrites.append(variable("D", 1, 1));
    driver.cyclicReads.append(variable("D", 2, 1));
    ask("D", 1, 1, WORDS);
    EXPECT_EQ(driver.pendingWrites.size(), 1);
    EXPECT_EQ(driver.cyclicReads.size(), 1);
    EXPECT_TRUE(driver.frames.isEmpty());
}

} // namespace
