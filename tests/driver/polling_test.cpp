// Watch marks and the cutting of runs. The merge and one-shot reads have files of their own.
#include "driver/polling.h"

#include "driver_fixture.h"

#include <climits>

namespace {

class MonitorFlag : public DriverTest {
protected:
    // All marks of the store: "M:2=8" for bit 3 of block 2, "D:100=w1" for a word.
    static std::string marks()
    {
        std::string all;
        for (const _DATA_ &entry : std::as_const(driver.dataAreas)) {
            const QString bits = QString::number(entry.bitMonitor, 16);
            const QString word =
                entry.wordMonitor ? "w" + QString::number(entry.wordMonitor) : bits;
            all += (all.empty() ? "" : " ") + entry.area.toStdString() + ":" +
                   std::to_string(entry.index) + "=" + word.toStdString();
        }
        return all;
    }
};

using Piece = std::pair<qint32, qint32>; // address, count
using Pieces = std::vector<Piece>;

Pieces piecesOf(qint32 address, qint32 count, qint32 maxCount)
{
    KEY_ADDRESS whole = keyOf("D", address, count);
    QList<KEY_ADDRESS> out;
    groupingKey(whole, maxCount, out, 0);
    Pieces pieces;
    for (const KEY_ADDRESS &piece : std::as_const(out))
        pieces.emplace_back(piece.address, piece.count);
    return pieces;
}

} // namespace

TEST(SetBitValue, SetsOrClearsOneBitOf32)
{
    const struct {
        int value;
        quint8 bit;
        bool on;
        int result;
    } rows[] = {
        {0, 0, true, 1},
        {0x0F00, 3, true, 0x0F08},
        {0x0F08, 3, true, 0x0F08},
        {0x0F08, 3, false, 0x0F00},
        {0x0F00, 3, false, 0x0F00},
        {-1, 0, false, -2},
        {0, 31, true, INT_MIN},
        {-1, 31, false, INT_MAX},
        {0, 32, true, 0}, // there is no such bit
        {0x0F08, 255, true, 0x0F08},
        {-1, 32, false, -1},
        {-1, 35, false, -1},
    };
    for (const auto &row : rows)
        EXPECT_EQ(_setBitValue(row.value, row.bit, row.on), row.result)
            << row.value << " bit " << int(row.bit);
}

// --- _setDataAreaMonitorFlag ---------------------------------------------------------------------

TEST_F(MonitorFlag, MarksBitsInBlocksOfSixteenAndReturnsTheLastMark)
{
    const struct {
        const char *area;
        int address, count, result;
        const char *marks;
    } rows[] = {
        {"X", 17, 2, 1, "X:0=8000 X:1=1"}, // octal
        {"Y", 21, 1, 2, "Y:1=2"},
        {"X", 18, 1, 1, "X:0=1"}, // not an octal digit: counts as 0
        {"Y", -17, 2, 3, "Y:0=3"},
        {"X", INT_MIN, 3, 7, "X:0=7"},
        {"M", 15, 2, 1, "M:0=8000 M:1=1"},
        {"S", 35, 1, 8, "S:2=8"},
        {"SM", 35, 1, 8, "SM:2=8"},
        {"T", 35, 1, 8, "T:2=8"},
        {"C", 35, 1, 8, "C:2=8"},
        {"M", -17, 1, 0, "M:-1=0"}, // below 0 only multiples of 16 are marked
        {"M", -1, 2, 1, "M:0=1"},
        {"M", -16, 1, 1, "M:-1=1"},
        {"M", INT_MAX, 2, 1, "M:134217727=8000 M:-134217728=1"},
    };
    for (const auto &row : rows) {
        driver.dataAreas.clear();
        EXPECT_EQ(_setDataAreaMonitorFlag(1, row.area, row.address, row.count), row.result);
        EXPECT_EQ(marks(), row.marks) << row.area << row.address;
    }
}

TEST_F(MonitorFlag, MarksElementsOfAllOtherAreasOneByOne)
{
    for (const char *area : {"TV", "CV", "CV2", "D", "TV_bit", "Q", "x", ""}) {
        driver.dataAreas.clear();
        const std::string name = area;
        EXPECT_EQ(_setDataAreaMonitorFlag(1, area, 205, 2), 1) << area;
        EXPECT_EQ(marks(), name + ":205=w1 " + name + ":206=w1");
    }
    driver.dataAreas.clear();
    EXPECT_EQ(_setDataAreaMonitorFlag(1, "D", INT_MAX, 2), 1);
    EXPECT_EQ(marks(), "D:2147483647=w1 D:-2147483648=w1");
}

TEST_F(MonitorFlag, CountBelowOneChangesNothing)
{
    for (const qint32 count : {0, -1, INT_MIN}) {
        for (const char *area : {"D", "M", "X"})
            EXPECT_EQ(_setDataAreaMonitorFlag(1, area, 5, count), 0) << area << count;
    }
    EXPECT_TRUE(driver.dataAreas.isEmpty());
}

TEST_F(MonitorFlag, MarksAccumulateInTheFirstEntryOfTheKey)
{
    _DATA_ entry = watchedBits("D", 5, 0);
    entry.wordMonitor = 4;
    driver.dataAreas << watchedBits("M", 0, 0x0002) << entry << entry;
    EXPECT_EQ(_setDataAreaMonitorFlag(1, "M", 4, 2), 0x0032);
    for (int round = 0; round < 2; ++round)
        EXPECT_EQ(_setDataAreaMonitorFlag(1, "D", 5, 1), 5);
    EXPECT_EQ(driver.dataAreas.at(2).wordMonitor, 4);
    _setDataAreaMonitorFlag(2, "D", 5, 1);
    ASSERT_EQ(driver.dataAreas.size(), 4);
    EXPECT_EQ(driver.dataAreas.at(3).station, 2);
}

// --- groupingKey ---------------------------------------------------------------------------------

TEST(GroupingKey, LastPieceTakesTheRest)
{
    EXPECT_EQ(piecesOf(100, 7, 8), (Pieces{{100, 7}}));
    EXPECT_EQ(piecesOf(100, 8, 8), (Pieces{{100, 8}}));
    EXPECT_EQ(piecesOf(100, 9, 8), (Pieces{{100, 8}, {108, 1}}));
    EXPECT_EQ(piecesOf(100, 16, 8), (Pieces{{100, 8}, {108, 8}}));
    EXPECT_EQ(piecesOf(0, INT_MAX, 2000000000), (Pieces{{0, 2000000000}, {2000000000, 147483647}}));
    EXPECT_EQ(piecesOf(INT_MAX - 7, 9, 8).front(), Piece(INT_MAX - 7, 8));
}

TEST(GroupingKey, CountBelowOneIsPassedOn)
{
    for (const qint32 count : {0, -3, INT_MIN})
        EXPECT_EQ(piecesOf(100, count, 8), (Pieces{{100, count}}));
    EXPECT_EQ(piecesOf(100, 0, 0), (Pieces{{100, 0}}));
}

TEST(GroupingKey, LimitBelowOneCutsSingleElements)
{
    for (const qint32 limit : {0, -5, INT_MIN})
        EXPECT_EQ(piecesOf(100, 2, limit), (Pieces{{100, 1}, {101, 1}}));
    EXPECT_EQ(piecesOf(100, 1, 0), (Pieces{{100, 1}}));
}

TEST(GroupingKey, PiecesCarryEverythingElseAlongAndGoBehindWhatTheListHolds)
{
    KEY_ADDRESS whole = keyOf("D", 100, 3);
    whole.label = "label";
    whole.hostWord1 = 11;
    whole.hostWord2 = 12;
    whole.hostText = "text";
    whole.elemKind = 6;
    whole.data[0] = 0x12;
    whole.data[1023] = 0x34;
    QList<KEY_ADDRESS> out;
    for (const qint32 copyData : {0, 1})
        groupingKey(whole, 2, out, copyData);
    ASSERT_EQ(out.size(), 4);
    EXPECT_EQ(out.at(3).address, 102);
    for (const KEY_ADDRESS &piece : std::as_const(out)) {
        EXPECT_EQ(piece.label + piece.hostText + piece.area, QString("labeltextD"));
        EXPECT_EQ(piece.hostWord1 * 100 + piece.hostWord2, 1112);
        EXPECT_EQ(piece.station * 10 + piece.elemKind, 16);
        EXPECT_EQ(piece.data[0], 0x12);
        EXPECT_EQ(piece.data[1023], 0x34);
    }
    EXPECT_EQ(whole.address, 100); // the run stays as it is
    EXPECT_EQ(whole.count, 3);
}
