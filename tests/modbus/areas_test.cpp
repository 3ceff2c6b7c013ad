#include "modbus/areas.h"

#include "ostrel_kmr.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>

using namespace modbus;

namespace {

// Elements with consecutive addresses.
struct Row {
    const char *area;
    Table table;
    int first; // linear
    int last;
    int firstAddress;
    int lastAddress;
};

constexpr Row ROWS[] = {
    {"X", Table::Bits, 0, 9999, 0x0400, 0x2B0F},
    {"Y", Table::Bits, 0, 9999, 0x0500, 0x2C0F},
    {"M", Table::Bits, 0, 1535, 0x0800, 0x0DFF},
    {"M", Table::Bits, 1536, 22015, 0xB000, 0xFFFF},
    {"M", Table::Bits, 22016, 65536, 0x0000, 0xAA00},
    {"S", Table::Bits, 0, 9999, 0x0000, 0x270F},
    {"T", Table::Bits, 0, 9999, 0x0600, 0x2D0F},
    {"C", Table::Bits, 0, 9999, 0x0E00, 0x350F},
    {"TV", Table::Registers, 0, 9999, 0x0600, 0x2D0F},
    {"CV", Table::Registers, 0, 199, 0x0E00, 0x0EC7},
    {"CV2", Table::Registers, 200, 255, 0x0EC8, 0x0EFF},
    {"D", Table::Registers, 0, 4095, 0x1000, 0x1FFF},
    {"D", Table::Registers, 4096, 11999, 0x9000, 0xAEDF},
};

bool exists(const QString &area, int number)
{
    return std::any_of(std::begin(ROWS), std::end(ROWS), [&](const Row &row) {
        return area == row.area && number >= row.first && number <= row.last;
    });
}

bool isValidToDriver(const Row &row, int number)
{
    qint32 parsed = 0;
    const QString digits = QString::number(number < 0 ? number : shownNumber(row.area, number));
    return intf_checkAddrValidity(row.area, digits, &parsed, 1, row.table == Table::Bits ? 0 : 1) ==
           0;
}

// What the driver polls to see one element.
FRAME_PRO driversRequest(const Row &row, int number)
{
    qint32 result = 0;
    intf_initProperty(nullptr, nullptr, nullptr, &result, "1#0#0#1#8", nullptr);
    KEY_ADDRESS key;
    key.station = 1;
    key.area = row.area;
    key.address = shownNumber(row.area, number);
    key.elemKind = row.table == Table::Bits ? -1 : 0;
    key.count = 1;
    FRAME_PRO frame;
    EXPECT_EQ(intf_addrMerge({key}), 1);
    EXPECT_EQ(intf_getSendFrame(&frame), 1);
    intf_initProperty(nullptr, nullptr, nullptr, &result, "", nullptr);
    return frame;
}

} // namespace

TEST(Areas, ElementsLieAtTheirAddress)
{
    for (const Row &row : ROWS) {
        for (const auto &[number, address] :
             {std::pair(row.first, row.firstAddress), std::pair(row.last, row.lastAddress)}) {
            const std::optional<Place> place = placeOf(row.area, number);
            ASSERT_TRUE(place) << row.area << number;
            EXPECT_EQ(place->address, address) << row.area << number;
            EXPECT_EQ(place->table, row.table) << row.area;
        }
        for (const int number : {row.first - 1, row.last + 1})
            EXPECT_EQ(placeOf(row.area, number).has_value(), exists(row.area, number)) << row.area;
        EXPECT_EQ(isBitArea(row.area), row.table == Table::Bits) << row.area;
    }
    EXPECT_FALSE(placeOf("SM", 0));
    EXPECT_FALSE(placeOf("d", 0));
}

TEST(Areas, ElementsAreWhereTheDriverAsksForThem)
{
    for (const Row &row : ROWS) {
        for (const int number : {row.first - 1, row.last + 1})
            EXPECT_EQ(isValidToDriver(row, number), exists(row.area, number)) << row.area;
        for (const auto &[number, address] :
             {std::pair(row.first, row.firstAddress), std::pair(row.last, row.lastAddress)}) {
            ASSERT_TRUE(isValidToDriver(row, number)) << row.area << number;
            const bool isBit = row.table == Table::Bits;
            const int offset = isBit ? number % 16 : 0; // bits are asked for in whole blocks
            const FRAME_PRO frame = driversRequest(row, number);
            EXPECT_EQ(QByteArray(frame.frame + 3, 2), isBit ? "02" : "03") << row.area;
            EXPECT_EQ(QByteArray(frame.frame + 5, 4).toInt(nullptr, 16) + offset, address)
                << row.area << number;
            EXPECT_EQ(frame.replyDataLen, isCounterArea(row.area) ? 8 : 4) << row.area;
        }
    }
}

TEST(Areas, BordersLieWhereTheNextAddressDoesNotFollow)
{
    EXPECT_EQ(nextBorder("D", 4095), 4096);
    EXPECT_EQ(nextBorder("D", 4096), INT_MAX);
    EXPECT_EQ(nextBorder("M", 0), 1536);
    EXPECT_EQ(nextBorder("M", 1536), 22016);
    EXPECT_EQ(nextBorder("M", 22016), INT_MAX);
    EXPECT_EQ(nextBorder("TV", 0), INT_MAX);
    EXPECT_EQ(nextBorder("CV2", 0), INT_MAX);
}

TEST(Areas, CounterRegistersHaveFourBytes)
{
    EXPECT_EQ(registerBytes(0x0EC7), 2);
    EXPECT_EQ(registerBytes(0x0EC8), 4);
    EXPECT_EQ(registerBytes(0x0EFF), 4);
    EXPECT_EQ(registerBytes(0x0F00), 2);
    EXPECT_TRUE(isCounterArea("CV2"));
    EXPECT_FALSE(isCounterArea("CV"));
}

TEST(Areas, HighestValueIsThatOfTheElementsSize)
{
    EXPECT_EQ(highestValue({Table::Bits, 0x0EC8}), 1U);
    EXPECT_EQ(highestValue({Table::Registers, 0x0EC7}), 0xFFFFU);
    EXPECT_EQ(highestValue({Table::Registers, 0x0EC8}), 0xFFFFFFFFU);
}

TEST(Areas, CountersHideWordsOfTvAlone)
{
    ASSERT_TRUE(hiddenByCounters("TV"));
    EXPECT_EQ(hiddenByCounters("TV")->first, 2248);
    EXPECT_EQ(hiddenByCounters("TV")->last, 2303);
    for (const char *area : {"CV", "CV2", "D", "M", "C", "Q"})
        EXPECT_FALSE(hiddenByCounters(area)) << area;
}

TEST(Areas, WindowThatBeginsClosestBelowComesFirst)
{
    EXPECT_EQ(elementsAt(Table::Registers, 0x1000, 1), (QStringList{"D0", "TV2560"}));
    EXPECT_EQ(elementsAt(Table::Bits, 0x0400, 1), (QStringList{"X0", "S1024", "M23040"}));
    EXPECT_EQ(elementAt(Table::Registers, 0x1000), "D0");
    EXPECT_EQ(elementAt(Table::Bits, 0x040F), "X17");
    EXPECT_EQ(elementAt(Table::Registers, 0x3000), "");
}

TEST(Areas, NamesOfARunEndWithItsWindow)
{
    EXPECT_EQ(elementsAt(Table::Registers, 0x1FF0, 16),
              (QStringList{"D4080 to D4095", "TV6640 to TV6655"}));
    EXPECT_EQ(elementsAt(Table::Registers, 0x1FF0, 17),
              (QStringList{"D4080 and on", "TV6640 to TV6656"}));
    // No word has the address of a counter.
    EXPECT_EQ(elementsAt(Table::Registers, 0x0EC7, 2),
              (QStringList{"CV199 and on", "TV2247 and on"}));
    EXPECT_EQ(elementsAt(Table::Registers, 0x0EC8, 1), QStringList{"CV2200"});
}

TEST(Areas, OctalAreasAreShownByTheirDigits)
{
    EXPECT_EQ(shownNumber("X", 15), 17);
    EXPECT_EQ(shownNumber("Y", 9999), 23417);
    EXPECT_EQ(shownNumber("M", 15), 15);
    EXPECT_EQ(linearNumber("X", 17), 15);
    EXPECT_EQ(linearNumber("Y", 80), -1);
    EXPECT_EQ(linearNumber("X", 18), -1);
    EXPECT_EQ(linearNumber("M", 18), 18);
    EXPECT_EQ(elementName("Y", 8), "Y10");
}
