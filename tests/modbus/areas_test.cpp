#include "modbus/areas.h"

#include "ostrel_kmr.h"

#include <gtest/gtest.h>

#include <climits>

using namespace modbus;

namespace {

struct Element {
    const char *area;
    int number; // linear
    Table table;
    int address; // -1: there is no such element
};

class AreaElement : public testing::TestWithParam<Element> {};

std::string nameOf(const testing::TestParamInfo<Element> &info)
{
    return info.param.area + std::string(info.param.number < 0 ? "Below" : "") +
           std::to_string(std::abs(info.param.number));
}

bool isWordArea(const QString &area)
{
    return !isBitArea(area);
}

// What the driver polls to see one element.
FRAME_PRO driversRequest(const Element &element)
{
    qint32 result = 0;
    intf_initProperty(nullptr, nullptr, nullptr, &result, "1#0#0#1#8", nullptr);
    KEY_ADDRESS key;
    key.station = 1;
    key.area = element.area;
    key.address = shownNumber(element.area, element.number);
    key.elemKind = element.table == Table::Bits ? -1 : 0;
    key.count = 1;
    FRAME_PRO frame;
    EXPECT_EQ(intf_addrMerge({key}), 1);
    EXPECT_EQ(intf_getSendFrame(&frame), 1);
    intf_initProperty(nullptr, nullptr, nullptr, &result, "", nullptr);
    return frame;
}

} // namespace

TEST_P(AreaElement, LiesAtItsAddress)
{
    const auto [area, number, table, address] = GetParam();
    const std::optional<Place> place = placeOf(area, number);
    ASSERT_EQ(place.has_value(), address >= 0);
    if (!place)
        return;
    EXPECT_EQ(place->table, table);
    EXPECT_EQ(place->address, address);
    EXPECT_EQ(isBitArea(area), table == Table::Bits);
}

TEST_P(AreaElement, IsWhereTheDriverAsksForIt)
{
    const auto [area, number, table, address] = GetParam();
    qint32 parsed = 0;
    const QString digits = QString::number(number < 0 ? number : shownNumber(area, number));
    const bool isValid =
        intf_checkAddrValidity(area, digits, &parsed, 1, isWordArea(area) ? 1 : 0) == 0;
    ASSERT_EQ(isValid, address >= 0);
    if (!isValid)
        return;
    const FRAME_PRO frame = driversRequest(GetParam());
    // Bits are asked for in whole blocks.
    const int offset = table == Table::Bits ? number % 16 : 0;
    EXPECT_EQ(QByteArray(frame.frame + 3, 2), table == Table::Bits ? "02" : "03");
    EXPECT_EQ(QByteArray(frame.frame + 5, 4).toInt(nullptr, 16) + offset, address);
    if (table == Table::Registers) {
        EXPECT_EQ(frame.replyDataLen, 2 * (isCounterArea(area) ? 4 : 2));
    }
}

// The first and the last element of each window, and those beside them.
INSTANTIATE_TEST_SUITE_P(
    Modbus, AreaElement,
    testing::Values(
        Element{"X", -1, Table::Bits, -1}, Element{"X", 0, Table::Bits, 0x0400},
        Element{"X", 15, Table::Bits, 0x040F}, Element{"X", 9999, Table::Bits, 0x2B0F},
        Element{"X", 10000, Table::Bits, -1}, Element{"Y", -1, Table::Bits, -1},
        Element{"Y", 0, Table::Bits, 0x0500}, Element{"Y", 9999, Table::Bits, 0x2C0F},
        Element{"Y", 10000, Table::Bits, -1}, Element{"M", -1, Table::Bits, -1},
        Element{"M", 0, Table::Bits, 0x0800}, Element{"M", 1535, Table::Bits, 0x0DFF},
        Element{"M", 1536, Table::Bits, 0xB000}, Element{"M", 22015, Table::Bits, 0xFFFF},
        Element{"M", 22016, Table::Bits, 0x0000}, Element{"M", 65536, Table::Bits, 0xAA00},
        Element{"M", 65537, Table::Bits, -1}, Element{"S", -1, Table::Bits, -1},
        Element{"S", 0, Table::Bits, 0x0000}, Element{"S", 9999, Table::Bits, 0x270F},
        Element{"S", 10000, Table::Bits, -1}, Element{"T", -1, Table::Bits, -1},
        Element{"T", 0, Table::Bits, 0x0600}, Element{"T", 9999, Table::Bits, 0x2D0F},
        Element{"T", 10000, Table::Bits, -1}, Element{"C", -1, Table::Bits, -1},
        Element{"C", 0, Table::Bits, 0x0E00}, Element{"C", 9999, Table::Bits, 0x350F},
        Element{"C", 10000, Table::Bits, -1}, Element{"TV", -1, Table::Registers, -1},
        Element{"TV", 0, Table::Registers, 0x0600}, Element{"TV", 2248, Table::Registers, 0x0EC8},
        Element{"TV", 9999, Table::Registers, 0x2D0F}, Element{"TV", 10000, Table::Registers, -1},
        Element{"CV", -1, Table::Registers, -1}, Element{"CV", 0, Table::Registers, 0x0E00},
        Element{"CV", 199, Table::Registers, 0x0EC7}, Element{"CV", 200, Table::Registers, -1},
        Element{"CV2", 199, Table::Registers, -1}, Element{"CV2", 200, Table::Registers, 0x0EC8},
        Element{"CV2", 255, Table::Registers, 0x0EFF}, Element{"CV2", 256, Table::Registers, -1},
        Element{"D", -1, Table::Registers, -1}, Element{"D", 0, Table::Registers, 0x1000},
        Element{"D", 4095, Table::Registers, 0x1FFF}, Element{"D", 4096, Table::Registers, 0x9000},
        Element{"D", 11999, Table::Registers, 0xAEDF}, Element{"D", 12000, Table::Registers, -1},
        Element{"SM", 0, Table::Registers, -1}, Element{"d", 0, Table::Registers, -1}),
    nameOf);

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
    // No word lies where the counters do.
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
