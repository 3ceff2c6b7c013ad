#include "host/tags/area_map.h"

#include "host/session/poll_cycle.h"

#include <gtest/gtest.h>

namespace kmr {
namespace {

const DriverFunctions &library()
{
    static const DriverLibrary LOADED(DRIVER_LIBRARY);
    return LOADED.functions();
}

// Has the driver ask for one element, and names what lies where it asks.
QStringList namesWhereDriverAsks(const QString &text)
{
    const std::vector<Tag> tags = {TagReader(library(), 1).read(text)};
    const PlanBlock block = makePlan(library(), toRawKeys(tags), tags, 8).blocks.at(0);
    const ModbusTable table =
        block.frame.mid(3, 2) == "02" ? ModbusTable::Bits : ModbusTable::Registers;
    const int address = block.frame.mid(5, 4).toInt(nullptr, 16);
    return elementsAt(table, address + tags[0].elements.first - block.refreshed.first, 1);
}

} // namespace

TEST(AreaMap, ElementsLieWhereTheDriverAsksForThem)
{
    for (const char *corner :
         {"X0",  "X23417", "Y0",     "Y23417", "M0", "M1535", "M1536", "M22015", "M22016", "M65536",
          "S0",  "S9999",  "T0",     "T9999",  "C0", "C9999", "TV0",   "TV2247", "TV2304", "TV9999",
          "CV0", "CV199",  "CV2200", "CV2255", "D0", "D4095", "D4096", "D11999"}) {
        const QStringList names = namesWhereDriverAsks(corner);
        EXPECT_TRUE(names.contains(corner)) << corner << ' ' << names.join(' ').toStdString();
    }
}

TEST(AreaMap, WindowThatBeginsClosestBelowComesFirst)
{
    EXPECT_EQ(elementsAt(ModbusTable::Registers, 0x1000, 1), (QStringList{"D0", "TV2560"}));
    EXPECT_EQ(elementsAt(ModbusTable::Registers, 0x0EC8, 1), QStringList{"CV2200"});
    EXPECT_EQ(elementsAt(ModbusTable::Bits, 0x0400, 1), (QStringList{"X0", "S1024", "M23040"}));
}

} // namespace kmr
