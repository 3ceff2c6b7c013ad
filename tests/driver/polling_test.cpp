// Watch marks and one-shot reads. The merge has a file of its own.
#include "driver/polling.h"

#include "driver_fixture.h"

#include <limits>
#include <utility>

namespace {

const int INT_LEAST = std::numeric_limits<int>::min();
const int INT_MOST = std::numeric_limits<int>::max();

// --- _setBitValue --------------------------------------------------------------------------------

TEST(SetBitValue, SetsAndClearsOneBit)
{
    EXPECT_EQ(_setBitValue(0, 0, true), 1);
    EXPECT_EQ(_setBitValue(0x0F00, 3, true), 0x0F08);
    EXPECT_EQ(_setBitValue(0x0F08, 3, false), 0x0F00);
    EXPECT_EQ(_setBitValue(-1, 0, false), -2);
}

TEST(SetBitValue, LeavesABitThatIsRight)
{
    EXPECT_EQ(_setBitValue(0x0F08, 3, true), 0x0F08);
    EXPECT_EQ(_setBitValue(0x0F00, 3, false), 0x0F00);
}

TEST(SetBitValue, ReachesBit31)
{
    EXPECT_EQ(_setBitValue(0, 31, true), INT_LEAST);
    EXPECT_EQ(_setBitValue(-1, 31, false), INT_MOST);
}

TEST(SetBitValue, IgnoresBitsFrom32On)
{
    EXPECT_EQ(_setBitValue(0, 32, true), 0);
    EXPECT_EQ(_setBitValue(0x0F08, 255, true), 0x0F08);
    EXPECT_EQ(_setBitValue(-1, 32, false), -1);
    EXPECT_EQ(_setBitValue(-1, 35, false), -1);
}

// --- _setDataAreaMonitorFlag ---------------------------------------------------------------------

class MonitorFlag : public DriverTest {};

TEST_F(MonitorFlag, OctalRunGoesOnInTheNextEntry)
{
    EXPECT_EQ(_setDataAreaMonitorFlag(1, "X", 17, 2), 1);
    EXPECT_EQ(driver.dataAreas.size(), 2);
    EXPECT_EQ(entryOf("X", 0).bitMonitor, 0x8000);
    EXPECT_EQ(entryOf("X", 1).bitMonitor, 0x0001);
}

TEST_F(MonitorFlag, YIsOctalToo)
{
    EXPECT_EQ(_setDataAreaMonitorFlag(1, "Y", 21, 1), 2);
    EXPECT_EQ(entryOf("Y", 1).bitMonitor, 0x0002);
}

TEST_F(MonitorFlag, OctalAddressWithAnEightOrASignCountsAsZero)
{
    _setDataAreaMonitorFlag(1, "X", 18, 1);
    EXPECT_EQ(entryOf("X", 0).bitMonitor, 0x0001);
    _setDataAreaMonitorFlag(1, "Y", -17, 2);
    EXPECT_EQ(entryOf("Y", 0).bitMonitor, 0x0003);
    _setDataAreaMonitorFlag(1, "X", INT_LEAST, 3);
    EXPECT_EQ(entryOf("X", 0).bitMonitor, 0x0007);
    EXPECT_EQ(driver.dataAreas.size(), 2);
}

TEST_F(MonitorFlag, DecimalRunGoesOnInTheNextEntry)
{
    EXPECT_EQ(_setDataAreaMonitorFlag(1, "M", 15, 2), 1);
    EXPECT_EQ(entryOf("M", 0).bitMonitor, 0x8000);
    EXPECT_EQ(entryOf("M", 1).bitMonitor, 0x0001);
}

TEST_F(MonitorFlag, BitAreasAreMarkedInBlocksOfSixteen)
{
    for (const char *area : {"M", "S", "SM", "T", "C"}) {
        EXPECT_EQ(_setDataAreaMonitorFlag(1, area, 35, 1), 0x0008) << area;
        EXPECT_EQ(entryOf(area, 2).bitMonitor, 0x0008) << area;
        EXPECT_EQ(entryOf(area, 2).wordMonitor, 0) << area;
    }
}

TEST_F(MonitorFlag, WordAreasAreMarkedOneByOne)
{
    EXPECT_EQ(_setDataAreaMonitorFlag(1, "D", 100, 3), 1);
    EXPECT_EQ(driver.dataAreas.size(), 3);
    for (const qint32 index : {100, 101, 102}) {
        EXPECT_EQ(entryOf("D", index).wordMonitor, 1) << index;
        EXPECT_EQ(entryOf("D", index).bitMonitor, 0) << index;
    }
}

TEST_F(MonitorFlag, EveryOtherNameIsMarkedAsWords)
{
    for (const char *area : {"TV", "CV", "CV2", "TV_bit", "Q", "x", ""}) {
        EXPECT_EQ(_setDataAreaMonitorFlag(1, area, 205, 1), 1) << area;
        EXPECT_EQ(entryOf(area, 205).wordMonitor, 1) << area;
    }
}

TEST_F(MonitorFlag, CountBelowOneChangesNothing)
{
    EXPECT_EQ(_setDataAreaMonitorFlag(1, "D", 5, 0), 0);
    EXPECT_EQ(_setDataAreaMonitorFlag(1, "D", 5, -1), 0);
    EXPECT_EQ(_setDataAreaMonitorFlag(1, "M", 5, 0), 0);
    EXPECT_EQ(_setDataAreaMonitorFlag(1, "X", 5, INT_LEAST), 0);
    EXPECT_TRUE(driver.dataAreas.isEmpty());
}

TEST_F(MonitorFlag, RunGivenTwiceCreatesNoSecondEntry)
{
    for (int round = 0; round < 2; ++round) {
        _setDataAreaMonitorFlag(1, "D", 100, 2);
        _setDataAreaMonitorFlag(1, "X", 17, 2);
    }
    EXPECT_EQ(driver.dataAreas.size(), 4);
    EXPECT_EQ(entryOf("X", 0).bitMonitor, 0x8000);
}

TEST_F(MonitorFlag, MarksAccumulate)
{
    _setDataAreaMonitorFlag(1, "M", 1, 1);
    EXPECT_EQ(_setDataAreaMonitorFlag(1, "M", 4, 2), 0x0032);
    driver.dataAreas[0].wordMonitor = 4;
    driver.dataAreas[0].area = "D";
    EXPECT_EQ(_setDataAreaMonitorFlag(1, "D", 0, 1), 5);
}

TEST_F(MonitorFlag, KeyIsStationAreaAndIndex)
{
    _setDataAreaMonitorFlag(1, "D", 5, 1);
    _setDataAreaMonitorFlag(2, "D", 5, 1);
    _setDataAreaMonitorFlag(1, "d", 5, 1);
    _setDataAreaMonitorFlag(1, "D", 6, 1);
    EXPECT_EQ(driver.dataAreas.size(), 4);
    EXPECT_EQ(driver.dataAreas.at(1).station, 2);
    EXPECT_EQ(driver.dataAreas.at(2).area, QString("d"));
    EXPECT_EQ(driver.dataAreas.at(3).index, 6);
}

TEST_F(MonitorFlag, MarksTheFirstOfTwoEqualEntries)
{
    _DATA_ entry;
    entry.station = 1;
    entry.area = "D";
    entry.index = 5;
    driver.dataAreas << entry << entry;
    _setDataAreaMonitorFlag(1, "D", 5, 1);
    EXPECT_EQ(driver.dataAreas.at(0).wordMonitor, 1);
    EXPECT_EQ(driver.dataAreas.at(1).wordMonitor, 0);
}

TEST_F(MonitorFlag, NewEntryIsZeroApartFromItsMark)
{
    _setDataAreaMonitorFlag(1, "D", 5, 1);
    const _DATA_ entry = entryOf("D", 5);
    EXPECT_EQ(entry.commFailed, 0);
    EXPECT_EQ(entry.writePending, 0);
    EXPECT_EQ(entry.dataSpare, 0);
    for (int byte = 0; byte < 4; ++byte) {
        EXPECT_EQ(entry.readValue[byte], 0);
        EXPECT_EQ(entry.writtenValue[byte], 0);
    }
}

TEST_F(MonitorFlag, NegativeBitCreatesItsEntryWithoutAMark)
{
    EXPECT_EQ(_setDataAreaMonitorFlag(1, "M", -17, 1), 0);
    EXPECT_EQ(entryOf("M", -1).bitMonitor, 0);
    EXPECT_EQ(_setDataAreaMonitorFlag(1, "M", -1, 2), 1);
    EXPECT_EQ(entryOf("M", 0).bitMonitor, 0x0001);
    EXPECT_EQ(driver.dataAreas.size(), 2);
}

TEST_F(MonitorFlag, NegativeMultipleOfSixteenIsItsEntrysFirstBit)
{
    EXPECT_EQ(_setDataAreaMonitorFlag(1, "M", -16, 1), 1);
    EXPECT_EQ(entryOf("M", -1).bitMonitor, 0x0001);
}

TEST_F(MonitorFlag, LastAddressesOf32Bits)
{
    EXPECT_EQ(_setDataAreaMonitorFlag(1, "M", INT_MOST, 2), 1);
    EXPECT_EQ(entryOf("M", 134217727).bitMonitor, 0x8000);
    EXPECT_EQ(_setDataAreaMonitorFlag(1, "D", INT_MOST, 2), 1);
    EXPECT_EQ(entryOf("D", INT_MOST).wordMonitor, 1);
    EXPECT_EQ(driver.dataAreas.size(), 4);
}

// --- groupingKey ---------------------------------------------------------------------------------

using Piece = std::pair<qint32, qint32>; // address, count
using Pieces = std::vector<Piece>;

KEY_ADDRESS key(const char *area, qint32 address, qint32 count, qint32 elemKind = 0)
{
    KEY_ADDRESS all;
    all.station = 1;
    all.area = area;
    all.address = address;
    all.count = count;
    all.elemKind = elemKind;
    return all;
}

Pieces piecesOf(qint32 address, qint32 count, qint32 maxCount)
{
    KEY_ADDRESS whole = key("D", address, count);
    QList<KEY_ADDRESS> out;
    groupingKey(whole, maxCount, out, 0);
    Pieces pieces;
    for (const KEY_ADDRESS &piece : std::as_const(out))
        pieces.emplace_back(piece.address, piece.count);
    return pieces;
}

TEST(GroupingKey, RunUpToTheLimitIsOnePiece)
{
    EXPECT_EQ(piecesOf(100, 7, 8), (Pieces{{100, 7}}));
    EXPECT_EQ(piecesOf(100, 8, 8), (Pieces{{100, 8}}));
}

TEST(GroupingKey, LastPieceTakesTheRest)
{
    EXPECT_EQ(piecesOf(100, 9, 8), (Pieces{{100, 8}, {108, 1}}));
    EXPECT_EQ(piecesOf(100, 20, 8), (Pieces{{100, 8}, {108, 8}, {116, 4}}));
}

TEST(GroupingKey, MultipleOfTheLimitLeavesNoRest)
{
    EXPECT_EQ(piecesOf(100, 16, 8), (Pieces{{100, 8}, {108, 8}}));
}

TEST(GroupingKey, CountBelowOneIsPassedOn)
{
    EXPECT_EQ(piecesOf(100, 0, 8), (Pieces{{100, 0}}));
    EXPECT_EQ(piecesOf(100, -3, 8), (Pieces{{100, -3}}));
    EXPECT_EQ(piecesOf(100, INT_LEAST, 8), (Pieces{{100, INT_LEAST}}));
    EXPECT_EQ(piecesOf(100, 0, 0), (Pieces{{100, 0}}));
}

TEST(GroupingKey, LimitBelowOneCutsSingleElements)
{
    EXPECT_EQ(piecesOf(100, 2, 0), (Pieces{{100, 1}, {101, 1}}));
    EXPECT_EQ(piecesOf(100, 2, -5), (Pieces{{100, 1}, {101, 1}}));
    EXPECT_EQ(piecesOf(100, 2, INT_LEAST), (Pieces{{100, 1}, {101, 1}}));
    EXPECT_EQ(piecesOf(100, 1, 0), (Pieces{{100, 1}}));
}

TEST(GroupingKey, LargestRun)
{
    EXPECT_EQ(piecesOf(0, INT_MOST, 2000000000),
              (Pieces{{0, 2000000000}, {2000000000, 147483647}}));
    EXPECT_EQ(piecesOf(INT_MOST - 7, 9, 8).front(), Piece(INT_MOST - 7, 8));
}

TEST(GroupingKey, PiecesGoBehindWhatTheListHolds)
{
    KEY_ADDRESS whole = key("D", 100, 3);
    QList<KEY_ADDRESS> out;
    out.append(key("M", 1, 1));
    groupingKey(whole, 2, out, 0);
    ASSERT_EQ(out.size(), 3);
    EXPECT_EQ(out.at(0).area, QString("M"));
    EXPECT_EQ(out.at(2).address, 102);
}

TEST(GroupingKey, PiecesCarryEverythingElseAlong)
{
    KEY_ADDRESS whole = key("D", 100, 3, 6);
    whole.label = "label";
    whole.hostWord1 = 11;
    whole.hostWord2 = 12;
    whole.hostText = "text";
    QList<KEY_ADDRESS> out;
    groupingKey(whole, 2, out, 0);
    ASSERT_EQ(out.size(), 2);
    for (const KEY_ADDRESS &piece : std::as_const(out)) {
        EXPECT_EQ(piece.label + piece.hostText + piece.area, QString("labeltextD"));
        EXPECT_EQ(piece.hostWord1 * 100 + piece.hostWord2, 1112);
        EXPECT_EQ(piece.station * 10 + piece.elemKind, 16);
    }
}

TEST(GroupingKey, PiecesHoldTheKeysDataFromItsStart)
{
    for (const qint32 copyData : {0, 1}) {
        KEY_ADDRESS whole = key("D", 100, 3);
        whole.data[0] = 0x12;
        whole.data[1023] = 0x34;
        QList<KEY_ADDRESS> out;
        groupingKey(whole, 2, out, copyData);
        ASSERT_EQ(out.size(), 2);
        EXPECT_EQ(out.at(1).data[0], 0x12);
        EXPECT_EQ(out.at(1).data[1023], 0x34);
    }
}

TEST(GroupingKey, KeyStaysAsItIs)
{
    KEY_ADDRESS whole = key("D", 100, 20);
    QList<KEY_ADDRESS> out;
    groupingKey(whole, 8, out, 1);
    EXPECT_EQ(whole.address, 100);
    EXPECT_EQ(whole.count, 20);
}

} // namespace
