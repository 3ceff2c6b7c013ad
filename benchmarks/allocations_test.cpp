// The driver's allocations: a fixed number for an exchange, none for each of its elements, and none
// that stay.
#include "benchmarks/exchanges.h"

#include <gtest/gtest.h>

#include <malloc.h>

using namespace bench;

extern "C" void *__libc_malloc(size_t size) noexcept;
extern "C" void *__libc_realloc(void *block, size_t size) noexcept;
extern "C" void *__libc_calloc(size_t count, size_t size) noexcept;

namespace {

long allocations = 0;

template <typename Operation> long allocationsOf(Operation operation)
{
    const long before = allocations;
    operation();
    return allocations - before;
}

// Bytes of the heap that are in use.
size_t bytesInUse()
{
    return mallinfo2().uordblks;
}

} // namespace

// operator new, Qt and the driver all end here.
extern "C" void *malloc(size_t size) noexcept
{
    ++allocations;
    return __libc_malloc(size);
}

extern "C" void *realloc(void *block, size_t size) noexcept
{
    ++allocations;
    return __libc_realloc(block, size);
}

extern "C" void *calloc(size_t count, size_t size) noexcept
{
    ++allocations;
    return __libc_calloc(count, size);
}

namespace {

const int MANY = 5000;

// In Qt 5, whose lists keep each record in a block of its own, a frame and a request.
const long IN_EXCHANGE = QT_VERSION_MAJOR == 5 ? 2 : 0;

// Allocations of one exchange that reads `words` words in a store of `areas`. The first exchanges,
// which may grow lists, are not counted.
long allocationsOfRead(int areas, int words, bool changes)
{
    openStore(areas, {{1, "D", 0, words}});
    ReadLoop loop(1, changes);
    for (int i = 0; i < 10; ++i)
        loop.exchange();
    return allocationsOf([&] { loop.exchange(); });
}

// Allocations of one exchange that uploads `words` words of a recipe, to a host with or without a
// callback.
long allocationsOfUpload(int words, bool heard)
{
    openStore(100, {{1, "D", 0, 8}});
    intf().setAddrValueChangeCallBack(heard ? countReport : nullptr);
    _RCP_VAR_PRO entry;
    entry.devId = entry.station = 1;
    entry.area = QStringLiteral("D");
    entry.count = words;
    const QVector<_RCP_VAR_PRO> list(1000, entry);
    intf().setRcpAddress(&list);
    requestUpload(true);
    ReadLoop loop(1, false);
    for (int i = 0; i < 10; ++i)
        loop.exchange();
    const long made = allocationsOf([&] { loop.exchange(); });
    requestUpload(false);
    intf().setRcpAddress(nullptr);
    intf().setAddrValueChangeCallBack(countReport);
    return made;
}

// The growth of the heap by `operation`, repeated many times, without its first calls.
template <typename Operation> long growthOf(Operation operation)
{
    for (int i = 0; i < MANY; ++i)
        operation();
    const size_t before = bytesInUse();
    for (int i = 0; i < MANY; ++i)
        operation();
    return static_cast<long>(bytesInUse() - before);
}

TEST(Allocations, AreCounted)
{
    QByteArray text;
    EXPECT_EQ(allocationsOf([&] { text = QByteArray(100, 'x'); }), 1);
}

TEST(Allocations, ReadOfEightWordsMakesAsManyAsReadOfOne)
{
    EXPECT_EQ(allocationsOfRead(100, 8, false), allocationsOfRead(100, 1, false));
}

TEST(Allocations, LargeStoreMakesNoMoreThanSmallOne)
{
    EXPECT_EQ(allocationsOfRead(2000, 8, false), allocationsOfRead(8, 8, false));
}

TEST(Allocations, ChangedValuesMakeNoMoreThanUnchangedOnes)
{
    EXPECT_EQ(allocationsOfRead(100, 8, true), allocationsOfRead(100, 8, false));
}

TEST(Allocations, UploadMakesOneMoreThanReadAndOnlyWhereItIsHeard)
{
    EXPECT_EQ(allocationsOfUpload(8, false), allocationsOfUpload(1, false));
    EXPECT_EQ(allocationsOfUpload(8, true), allocationsOfUpload(1, true));
    EXPECT_EQ(allocationsOfUpload(8, true), allocationsOfUpload(8, false) + 1);
}

TEST(Allocations, EveryExchangeMakesTheSameFew)
{
    const auto plan = pollPlan(IN_TURN, 100);
    openStore(100, plan);
    ReadLoop loop(plan.size(), true);
    for (int i = 0; i < 100; ++i)
        loop.exchange(); // until lists have their final size
    for (int i = 0; i < MANY; ++i)
        ASSERT_EQ(allocationsOf([&] { loop.exchange(); }), IN_EXCHANGE) << "exchange " << i;
}

TEST(Allocations, ReadingValuesMakesNone)
{
    openStore(100, pollPlan(FIRST, 100));
    const QString area = QStringLiteral("D");
    quint8 values[200];
    EXPECT_EQ(allocationsOf([&] { intf().getData(1, area, 0, 100, values); }), 0);
}

TEST(Allocations, ReadsLeaveMemoryFlat)
{
    const auto plan = pollPlan(IN_TURN, 100);
    openStore(100, plan);
    checkReads(plan);
    ReadLoop loop(plan.size(), true);
    EXPECT_EQ(growthOf([&] { loop.exchange(); }), 0);
}

TEST(Allocations, WritesLeaveMemoryFlat)
{
    checkWrites(WRITE_8_WORDS);
    WriteLoop loop(WRITE_8_WORDS);
    EXPECT_EQ(growthOf([&] { loop.exchangeFour(); }), 0);
}

TEST(Allocations, ValuesSetWithoutTrafficLeaveMemoryFlat)
{
    openLink();
    const QString area = QStringLiteral("D");
    quint8 values[] = {1, 0, 2, 0, 3, 0, 4, 0};
    qint32 address = 0;
    EXPECT_EQ(growthOf([&] {
                  intf().setData(1, area, address, 4, values, 0);
                  address = (address + 4) % 4000; // more targets than the queue holds
              }),
              0);
}

TEST(Allocations, GivenUpRequestsLeaveMemoryFlat)
{
    openStore(100, pollPlan(IN_TURN, 100));
    QByteArray silence;
    FRAME_PRO frame;
    QString errorInfo;
    EXPECT_EQ(growthOf([&] {
                  intf().getSendFrame(&frame);
                  intf().dealRcvFrame(silence, errorInfo);
              }),
              0);
}

} // namespace
