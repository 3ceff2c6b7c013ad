// The store's entries and the reports of their changes.
#include "driver/datastore.h"

#include "driver_fixture.h"

#include <climits>

namespace {

class Entries : public DriverTest {
protected:
    static int indexOf(int station, const char *area, int index)
    {
        return getIndexOfDataArea(station, area, index, driver.dataAreas);
    }
};

class Change : public DriverTest {
protected:
    // A single element changed: a word, a counter, or a bit by its linear address.
    static void elementChanges(const char *area, int address)
    {
        _OnlyOneDataTypeDataChange(1, area, address, 0, 0, 0);
    }

    static void blockChanges(const char *area, int block, int oldBits, int newBits)
    {
        _OnlyOneDataTypeDataChange(1, area, block, oldBits, newBits, 1);
    }
};

using WordChange = DriverTest;

} // namespace

TEST_F(Entries, StationAreaAndIndexAreTheKeyOfAnEntryThatIsMadeOnce)
{
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(indexOf(1, "D", 5), 0);
        EXPECT_EQ(indexOf(2, "D", 5), 1);
        EXPECT_EQ(indexOf(1, "d", 5), 2);
        EXPECT_EQ(indexOf(1, "D", -5), 3);
        EXPECT_EQ(indexOf(1, "TV", 5), 4);
    }
    EXPECT_EQ(driver.dataAreas.size(), 5);
}

TEST_F(Entries, NewEntryIsZeroButForItsKey)
{
    indexOf(3, "CV2", 200);
    const _DATA_ &entry = driver.dataAreas.at(0);
    EXPECT_EQ(entry.station, 3);
    EXPECT_EQ(entry.area, "CV2");
    EXPECT_EQ(entry.index, 200);
    EXPECT_EQ(entry.commFailed + entry.writePending, 0);
    EXPECT_EQ(Bytes(entry.readValue, entry.readValue + 4), Bytes({0, 0, 0, 0}));
    EXPECT_EQ(Bytes(entry.writtenValue, entry.writtenValue + 4), Bytes({0, 0, 0, 0}));
}

TEST_F(Entries, AnyListCanBeSearched)
{
    QList<_DATA_> areas = QList<_DATA_>()
                          << watchedWord("D", 4) << watchedWord("D", 5) << watchedWord("D", 5);
    EXPECT_EQ(getIndexOfDataArea(1, "D", 4, areas), 0);
    EXPECT_EQ(getIndexOfDataArea(1, "D", 5, areas), 1); // the first of equal keys
    EXPECT_EQ(getIndexOfDataArea(2, "D", 5, areas), 3);
    EXPECT_EQ(getIndexOfDataArea(1, "TV", 5, areas), 4);
    EXPECT_EQ(areas.at(3).station, 2);
    EXPECT_EQ(areas.at(4).area, "TV");
    EXPECT_EQ(areas.at(4).index, 5);
    EXPECT_TRUE(driver.dataAreas.isEmpty());
}

// --- Changes of single elements ------------------------------------------------------------------

TEST_F(Change, OfAWatchedElementIsReportedWithTheDevicesNumber)
{
    configure("-42#0#0#3#8");
    driver.dataAreas << watchedWord("D", 5) << watchedBits("M", 0, 3);
    elementChanges("D", 5);
    elementChanges("M", 0);
    blockChanges("M", 0, 0, 2);
    EXPECT_EQ(told(), "-42/1#D:5 -42/1#M:0 -42/1#M:1");
}

TEST_F(Change, OfAnotherStationIsAnotherElement)
{
    driver.dataAreas << watchedWord("D", 5);
    _OnlyOneDataTypeDataChange(2, "D", 5, 0, 0, 0);
    EXPECT_TRUE(reports().empty());
    driver.dataAreas[1].wordMonitor = 1;
    _OnlyOneDataTypeDataChange(2, "D", 5, 0, 0, 0);
    EXPECT_EQ(told(), "1/2#D:5");
}

TEST_F(Change, OfAWordIsReportedByBit0OfItsWordMarkAlone)
{
    driver.dataAreas << watchedBits("D", 5, 0xFFFF);
    for (const qint32 mark : {0, 2}) {
        driver.dataAreas[0].wordMonitor = mark;
        elementChanges("D", 5);
        EXPECT_TRUE(reports().empty()) << mark;
    }
    driver.dataAreas[0].wordMonitor = 3;
    _OnlyOneDataTypeDataChange(1, "D", 5, 7, 7, 1); // values and form do not count
    EXPECT_EQ(told(), "D:5");
}

TEST_F(Change, OfABlockIsNotReportedByItsWordMark)
{
    driver.dataAreas << watchedWord("M", 0);
    elementChanges("M", 0);
    blockChanges("M", 0, 0, 1);
    EXPECT_TRUE(reports().empty());
}

TEST_F(Change, OfABitAreaIsReportedByBitAndOfAnyOtherByAddress)
{
    for (const char *area : {"X", "Y", "M", "S", "SM", "T", "C"}) {
        driver.dataAreas << watchedBits(area, 0, 0x0020);
        elementChanges(area, 5);
        EXPECT_EQ(told(), std::string(area) + ":5");
        reports().clear();
    }
    for (const char *area : {"TV", "CV", "CV2", "D", "TV_bit", "Q", "x", ""}) {
        driver.dataAreas << watchedWord(area, 37);
        elementChanges(area, 37);
        EXPECT_EQ(told(), std::string(area) + ":37");
        reports().clear();
    }
}

TEST_F(Change, OfAnUnwatchedBitIsNotReported)
{
    driver.dataAreas << watchedBits("M", 1, 0xFFFD);
    elementChanges("M", 17);
    EXPECT_TRUE(reports().empty());
    elementChanges("M", 31);
    EXPECT_EQ(told(), "M:31");
}

TEST_F(Change, OfAnUnwatchedElementLeavesAnEntryBehind)
{
    elementChanges("D", 5);
    elementChanges("M", 37);
    blockChanges("S", 7, 0, 0xFFFF);
    EXPECT_TRUE(reports().empty());
    ASSERT_EQ(driver.dataAreas.size(), 3);
    EXPECT_EQ(entryOf("D", 5).wordMonitor, 0);
    EXPECT_EQ(entryOf("M", 2).bitMonitor, 0);
    EXPECT_EQ(entryOf("S", 7).bitMonitor, 0);
}

TEST_F(Change, OfANegativeBitIsReportedAtAMultipleOf16Only)
{
    driver.dataAreas << watchedBits("M", 0, 0xFFFF) << watchedBits("M", -1, 0x0001);
    elementChanges("M", -1);
    elementChanges("M", -17);
    EXPECT_TRUE(reports().empty());
    elementChanges("M", -16);
    EXPECT_EQ(told(), "M:-16");
    EXPECT_EQ(driver.dataAreas.size(), 2);
}

// --- Changes of blocks ---------------------------------------------------------------------------

TEST_F(Change, OfABlockReportsItsWatchedChangedBitsLowestFirst)
{
    const struct {
        const char *area;
        int block, watched, oldBits, newBits;
        const char *told;
    } rows[] = {
        {"M", 3, 0xFFFF, 0x1234, 0x1234, ""},
        {"M", 3, 0xFFFF, 0x8001, 0x0080, "M:48 M:55 M:63"},
        {"M", 4, 0x0004, 0x0000, 0x0005, "M:66"},
        {"M", -1, 0x8001, 0x0000, 0xFFFF, "M:-16 M:-1"},
        {"M", 3, -1, 0, 0x70000, ""}, // no block has a 17th bit
        {"SM", 2, 0x0002, 0x0002, 0x0000, "SM:33"},
        {"X", 0, 0x8000, 0x0000, 0xFFFF, "X:17"}, // octal digits
        {"Y", 1, 0x0101, 0x0000, 0xFFFF, "Y:20 Y:30"},
    };
    for (const auto &row : rows) {
        reports().clear();
        driver.dataAreas = QList<_DATA_>() << watchedBits(row.area, row.block, row.watched);
        blockChanges(row.area, row.block, row.oldBits, row.newBits);
        EXPECT_EQ(told(), row.told) << row.area << row.block;
    }
}

TEST_F(Change, OctalDigitsBeyond32BitsAreReportedAs0)
{
    driver.dataAreas << watchedBits("X", INT_MAX / 16, 0x8000) << watchedBits("X", -1, 0x0001);
    elementChanges("X", INT_MAX);
    blockChanges("X", -1, 0, 1);
    EXPECT_EQ(told(), "X:0 X:0");
}

TEST_F(Change, AnyOtherWholeBlockThanOneMeansASingleBit)
{
    driver.dataAreas << watchedBits("M", 0, 0x0020);
    _OnlyOneDataTypeDataChange(1, "M", 5, 0, 0, 2);
    _OnlyOneDataTypeDataChange(1, "M", 5, 0, 0, -1);
    EXPECT_EQ(reports().size(), 2u);
}

TEST_F(Change, TvBitSharesItsEntryWithABlockOfTheSameNumber)
{
    driver.dataAreas << watchedWord("TV_bit", 17);
    elementChanges("TV_bit", 17);
    EXPECT_EQ(driver.dataAreas.size(), 1);
    EXPECT_EQ(told(), "TV_bit:17");
    quint8 bit = 1;
    intf_setData(1, "TV_bit", 17 * 16, 1, &bit, 0);
    EXPECT_EQ(entryOf("TV_bit", 17).writePending, 1);
}

TEST_F(Change, WithoutACallbackIsNotReported)
{
    intf_setAddrValueChangeCallBack(nullptr);
    driver.dataAreas << watchedWord("D", 5) << watchedBits("M", 0, 0xFFFF);
    elementChanges("D", 5);
    elementChanges("M", 5);
    blockChanges("M", 0, 0, 0xFFFF);
    EXPECT_EQ(driver.dataAreas.size(), 2);
}

// --- Changes of words with their bits and double words -------------------------------------------

TEST_F(WordChange, IsReportedForItsWatchedBitsItselfAndTheDoubleWordsThatHoldIt)
{
    const struct {
        int address, wordMonitor, bitMonitor, oldWord, newWord, noBits;
        const char *told;
    } rows[] = {
        {5, 7, 0xFFFF, 3, 3, 0, ""},
        {5, 0, 0x8003, 0x0002, 0x8007, 0, "D_bit:80 D_bit:95"},
        {5, 0, -1, 0, 0x70000, 0, ""}, // no word has a 17th bit
        {5, 1, 0xFFFF, 0, 1, 1, "D:5"},
        {5, 7, 0x0001, 0, 1, 0, "D_bit:80 D:5 D_double:5 D_double:4"},
        {5, 2, 0, 0, 1, 0, "D_double:5"},
        {5, 4, 0, 0, 1, 0, "D_double:4"},
        {0, 6, 0, 0, 1, 0, "D_double:0"}, // none starts below address 0
        {1, 4, 0, 0, 1, 0, "D_double:0"},
        {-1, 7, 0, 0, 1, 0, "D:-1"},
    };
    for (const auto &row : rows) {
        reports().clear();
        driver.dataAreas = QList<_DATA_>() << watchedBits("D", row.address, row.bitMonitor);
        driver.dataAreas[0].wordMonitor = row.wordMonitor;
        int oldWord = row.oldWord;
        int newWord = row.newWord;
        _wordDataChange(&oldWord, &newWord, 1, "D", row.address, row.noBits);
        EXPECT_EQ(told(), row.told) << row.address << " marked " << row.wordMonitor;
    }
}

TEST_F(WordChange, IsReportedWithTheDevicesNumberAndNotForNullWords)
{
    driver.devId = 7;
    driver.dataAreas << watchedBits("D", 5, 0x0001);
    driver.dataAreas[0].wordMonitor = 7;
    int oldWord = 0;
    int newWord = 1;
    _wordDataChange(nullptr, &newWord, 1, "D", 5, 0);
    _wordDataChange(&oldWord, nullptr, 1, "D", 5, 0);
    _wordDataChange(&oldWord, &oldWord, 1, "D", 6, 0); // leaves an entry
    EXPECT_EQ(told(), "");
    EXPECT_EQ(driver.dataAreas.size(), 2);
    _wordDataChange(&oldWord, &newWord, 1, "D", 5, 0);
    EXPECT_EQ(told(), "7/1#D_bit:80 7/1#D:5 7/1#D_double:5 7/1#D_double:4");
}
