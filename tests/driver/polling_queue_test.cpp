// The queues of requests, and one-shot reads, which wait in one of them.
#include "driver/polling.h"

#include "driver_fixture.h"

#include <array>
#include <climits>

namespace {

enum { BITS = -1, WORDS = 0 };

class ConditionRead : public DriverTest {
protected:
    static qint32 ask(const char *area, qint32 address, qint32 count, qint32 elemKind,
                      qint32 reqTag = 0)
    {
        KEY_ADDRESS key = keyOf(area, address, count);
        key.elemKind = elemKind;
        return intf_addConditionRead(key, reqTag);
    }

    static std::string queued()
    {
        return targetsOf(driver.pendingReads);
    }

    static std::vector<qint32> tags()
    {
        std::vector<qint32> all;
        for (const VARIABLE &request : std::as_const(driver.pendingReads))
            all.push_back(request.reqTag);
        return all;
    }
};

// A queue of one-word requests of D from address 0 on.
QList<VARIABLE> queueOf(int requests)
{
    QList<VARIABLE> queue;
    for (int address = 0; address < requests; ++address)
        queue << variable("D", address, 1);
    return queue;
}

// A request with a tag that distinguishes it from those queued.
VARIABLE tagged(const char *area, qint32 address, qint32 count)
{
    VARIABLE request = variable(area, address, count);
    request.reqTag = 9;
    return request;
}

} // namespace

// --- Queues --------------------------------------------------------------------------------------

TEST(QueueRequest, ReplacesTheNewestQueuedRequestOfTheSameTargetButNeverTheFront)
{
    QList<VARIABLE> queue = queueOf(3);
    queueRequest(queue, tagged("D", 1, 1));
    queueRequest(queue, tagged("D", 2, 1));
    EXPECT_EQ(queue.size(), 3);
    EXPECT_EQ(queue.at(0).reqTag, 0);
    EXPECT_EQ(queue.at(1).reqTag, 9);
    EXPECT_EQ(queue.at(2).reqTag, 9);
    queueRequest(queue, variable("D", 0, 1));
    queue << variable("D", 0, 1);
    queueRequest(queue, tagged("D", 0, 1));
    EXPECT_EQ(queue.size(), 5);
    EXPECT_EQ(queue.at(3).reqTag, 0);
    EXPECT_EQ(queue.at(4).reqTag, 9);
}

TEST(QueueRequest, AppendsAnyOtherTarget)
{
    QList<VARIABLE> queue = queueOf(2);
    VARIABLE otherStation = variable("D", 1, 1);
    otherStation.station = 2;
    for (const VARIABLE &other :
         {variable("D", 1, 2), variable("d", 1, 1), variable("D", 2, 1), otherStation})
        queueRequest(queue, other);
    EXPECT_EQ(queue.size(), 6);
}

TEST(QueueRequest, HoldsAtMost513AndThenReplacesTheLast)
{
    QList<VARIABLE> queue = queueOf(512);
    queueRequest(queue, tagged("D", 600, 1));
    EXPECT_EQ(queue.size(), 513);
    EXPECT_EQ(queue.at(512).address, 600);
    queueRequest(queue, tagged("D", 300, 1));
    EXPECT_EQ(queue.at(300).reqTag, 9);
    EXPECT_EQ(queue.at(512).address, 600);
    queueRequest(queue, tagged("D", 700, 1));
    EXPECT_EQ(queue.size(), 513);
    EXPECT_EQ(queue.at(511).address, 511);
    EXPECT_EQ(queue.at(512).address, 700);
    queue << variable("D", 800, 1); // longer than it can become
    queueRequest(queue, tagged("D", 900, 1));
    EXPECT_EQ(queue.at(512).address, 900);
    EXPECT_EQ(queue.at(513).address, 800);
}

// --- Pieces --------------------------------------------------------------------------------------

TEST_F(ConditionRead, QueuesTheRequestAndTouchesNoOtherList)
{
    driver.pendingWrites.append(variable("D", 1, 1));
    driver.cyclicReads.append(variable("D", 2, 1));
    EXPECT_EQ(ask("D", 100, 3, WORDS, 77), 1);
    EXPECT_EQ(queued(), "D:100x3");
    EXPECT_EQ(tags(), (std::vector<qint32>{77}));
    EXPECT_EQ(driver.pendingWrites.size(), 1);
    EXPECT_EQ(driver.cyclicReads.size(), 1);
    EXPECT_TRUE(driver.frames.isEmpty());
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

TEST_F(ConditionRead, WordsAreCutByTheGroupLimitAndEveryPieceCarriesTheTag)
{
    ask("D", 100, 8, WORDS);
    EXPECT_EQ(queued(), "D:100x8");
    driver.pendingReads.clear();
    EXPECT_EQ(ask("D", 100, 20, WORDS, 5), 1);
    EXPECT_EQ(queued(), "D:100x8 D:108x8 D:116x4");
    EXPECT_EQ(tags(), (std::vector<qint32>{5, 5, 5}));
}

TEST_F(ConditionRead, BitsAreCutByEightTimesTheGroupLimit)
{
    ask("M", 0, 64, BITS);
    EXPECT_EQ(queued(), "M:0x4");
    ask("M", 160, 65, BITS);
    EXPECT_EQ(queued(), "M:0x4 M:10x4 M:14x1");
}

TEST_F(ConditionRead, ElementKindAloneChoosesTheLimitAndOnlyMinusOneMeansBits)
{
    ask("D", 100, 65, BITS);
    EXPECT_EQ(queued(), "D:100x64 D:164x1");
    driver.pendingReads.clear();
    ask("M", 32, 20, WORDS);
    EXPECT_EQ(queued(), "M:2x1 M:2x1 M:3x1");
    for (const qint32 elemKind : {0, 1, 2, -2}) {
        driver.pendingReads.clear();
        ask("D", 100, 9, elemKind);
        EXPECT_EQ(queued(), "D:100x8 D:108x1") << elemKind;
    }
}

TEST_F(ConditionRead, LimitBelowOneCutsSingleElements)
{
    for (const char *property : {"1#0#0#3#0", "1#0#0#3#-2147483648"}) {
        configure(property);
        ask("D", 100, 2, WORDS);
        ask("Q", 100, 2, BITS);
        EXPECT_EQ(queued(), "D:100x1 D:101x1 Q:100x1 Q:101x1") << property;
    }
}

// --- Bits are queued as 16-bit words -------------------------------------------------------------

TEST_F(ConditionRead, OnlyBitAreasAreQueuedAsWords)
{
    for (const char *area : BIT_AREAS) {
        driver.pendingReads.clear();
        ask(area, 40, 20, BITS);
        EXPECT_EQ(queued(), std::string(area) + ":2x2") << area;
    }
    for (const char *area : {"TV", "CV", "CV2", "D", "SM", "Q", "x"}) {
        driver.pendingReads.clear();
        ask(area, 40, 20, BITS);
        EXPECT_EQ(queued(), std::string(area) + ":40x20") << area;
    }
}

TEST_F(ConditionRead, WordCountIgnoresWhereInItsWordTheRunStarts)
{
    ask("M", 15, 2, BITS);
    ask("M", 47, 16, BITS);
    ask("M", 79, 17, BITS);
    ask("X", 17, 1, BITS); // octal digits as they are
    EXPECT_EQ(queued(), "M:0x1 M:2x1 M:4x2 X:1x1");
}

TEST_F(ConditionRead, CountBelowOneFollowsTheFormula)
{
    ask("M", 40, 0, BITS);
    ask("M", 40, -16, BITS);
    ask("M", 40, -5, BITS);
    ask("M", 40, -20, BITS);
    ask("D", 40, 0, WORDS);
    EXPECT_EQ(queued(), "M:2x0 M:2x-1 M:2x1 M:2x0 D:40x0");
}

TEST_F(ConditionRead, ExtremeNumbers)
{
    ask("M", INT_MIN, INT_MIN, BITS);
    ask("M", INT_MAX, 1, BITS);
    ask("D", INT_MIN, INT_MIN, WORDS);
    EXPECT_EQ(queued(), "M:-134217728x-134217728 M:134217727x1 D:-2147483648x-2147483648");
}

TEST_F(ConditionRead, DuplicateIsRefreshedInPlaceAndIsTheEndOfTheJob)
{
    for (const qint32 address : {1, 2, 3})
        ask("D", address, 1, WORDS, address);
    ask("D", 2, 1, WORDS, 9);
    EXPECT_EQ(tags(), (std::vector<qint32>{1, 9, 3}));
    EXPECT_EQ(driver.lastVar.address, 2);
    EXPECT_EQ(driver.lastVar.reqTag, 9);
    ask("M", 64, 20, WORDS); // pieces from 64, 72 and 80 on: words 4, 4 and 5
    EXPECT_EQ(queued(), "D:1x1 D:2x1 D:3x1 M:4x1 M:5x1");
}

TEST_F(ConditionRead, LastVarIsTheLastPieceBitsInWords)
{
    ask("D", 100, 20, WORDS, 6);
    EXPECT_EQ(driver.lastVar.reqTag, 6);
    EXPECT_EQ(targetOf(driver.lastVar), "1#D:116x4");
    ask("M", 40, 20, BITS, 6);
    EXPECT_EQ(targetOf(driver.lastVar), "1#M:2x2");
}
