#include "kmr/simulation/memory_file.h"

#include "host/error.h"

#include <gtest/gtest.h>

namespace kmr {
namespace {

// Of the one station of a plant.
simulator::Memory parseMemory(const QString &text)
{
    Plant plant({1});
    loadMemory(text, "plant.csv", plant);
    return plant.memory(1);
}

QString formatMemory(const simulator::Memory &memory)
{
    Plant plant({1});
    plant.memory(1) = memory;
    return kmr::formatMemory(plant);
}

QString faultOf(const QString &text)
{
    try {
        parseMemory(text);
    } catch (const Error &error) {
        EXPECT_EQ(error.kind(), ErrorKind::Usage);
        return error.text();
    }
    return "none";
}

} // namespace

TEST(MemoryFile, LinesNameElementsAndTheirValues)
{
    const simulator::Memory memory = parseMemory("# plant\ntag,value\n\nM5,1\nX17,1\nD4096,250\r\n"
                                                 "CV2200,4294967295\nCV21,65535\n");
    EXPECT_TRUE(memory.bit(0x0805));
    EXPECT_TRUE(memory.bit(0x040F));
    EXPECT_EQ(memory.value(0x9000), 250U);
    EXPECT_EQ(memory.value(0x0EC8), 4294967295U);
    EXPECT_EQ(memory.value(0x0E15), 65535U);
}

TEST(MemoryFile, AnEmptyFileIsAnEmptyMemory)
{
    EXPECT_EQ(parseMemory(""), simulator::Memory());
    EXPECT_EQ(formatMemory(simulator::Memory()), "tag,value\n");
}

TEST(MemoryFile, EachPlaceIsWrittenOnceUnderItsNearestName)
{
    simulator::Memory memory;
    memory.setBit(0x0005, true);
    memory.setBit(0x040F, true);
    memory.setBit(0x0805, true);
    memory.setBit(0xB000, true);
    memory.setValue(0x0E15, 65535);
    memory.setValue(0x0EC8, 70000);
    memory.setValue(0x1064, 250);
    memory.setValue(0x9000, 7);
    EXPECT_EQ(formatMemory(memory), "tag,value\nS5,1\nX17,1\nM5,1\nM1536,1\n"
                                    "CV21,65535\nCV2200,70000\nD100,250\nD4096,7\n");
}

TEST(MemoryFile, PlacesOfNoAreaGoByTheirModbusAddress)
{
    simulator::Memory memory;
    memory.setBit(0xAA01, true);
    memory.setValue(0x3000, 5);
    const QString text = formatMemory(memory);
    EXPECT_EQ(text, "tag,value\nbit43521,1\nregister12288,5\n");
    EXPECT_EQ(parseMemory(text), memory);
}

TEST(MemoryFile, EveryPlaceReadsBack)
{
    simulator::Memory memory;
    for (int address = 0; address < simulator::Memory::SIZE; ++address) {
        memory.setBit(static_cast<std::uint16_t>(address), true);
        memory.setValue(static_cast<std::uint16_t>(address), 1 + static_cast<unsigned>(address));
    }
    EXPECT_EQ(parseMemory(formatMemory(memory)), memory);
}

TEST(MemoryFile, EveryBadLineIsNamedWithItsNumber)
{
    EXPECT_EQ(faultOf("D100,1\nQ1,1\nX8,1\nM1,2\nD1,65536\nD2\n"),
              "plant.csv:2: \"Q1\" is not an element of the controller: expected one, for example "
              "D100, X17 (octal) or CV2200\n"
              "plant.csv:3: \"X8\" is not an element of the controller: expected one, for example "
              "D100, X17 (octal) or CV2200\n"
              "plant.csv:4: bad value \"2\" for M1: expected 0 to 1\n"
              "plant.csv:5: bad value \"65536\" for D1: expected 0 to 65535\n"
              "plant.csv:6: bad value \"\" for D2: expected 0 to 65535");
}

TEST(MemoryFile, NoPlaceStandsInTwoLines)
{
    EXPECT_EQ(faultOf("tag,value\nD1,5\nX0,1\n\nD1,5\nS1024,0\n"),
              "plant.csv:5: D1 is already in line 2\n"
              "plant.csv:6: S1024 is the same element as X0 in line 3");
}

TEST(MemoryFile, StationsBeyondTheLowestAreNamed)
{
    Plant plant({5, 2});
    loadMemory("D1,5\n5#D1,6\n2#D2,7\n", "plant.csv", plant);
    EXPECT_EQ(kmr::formatMemory(plant), "tag,value\nD1,5\nD2,7\n5#D1,6\n");
    EXPECT_TRUE(faultOf("2#D1,5\n").endsWith("station 2 is not simulated, only 1: see --station"));
}

TEST(MemoryFile, ValuesAreWholeNumbersOfTheElementsSize)
{
    EXPECT_TRUE(faultOf("CV2200,4294967296").endsWith("expected 0 to 4294967295"));
    EXPECT_TRUE(faultOf("D1,-1").contains("bad value \"-1\""));
    EXPECT_TRUE(faultOf("D1,1.5").contains("bad value \"1.5\""));
    EXPECT_TRUE(faultOf("D1,1,2").contains("bad value \"1,2\""));
    EXPECT_TRUE(faultOf("register65536,1").contains("is not an element"));
    for (const char *name : {"CV2256", "CV1200", "D", "5", "D-1"})
        EXPECT_TRUE(faultOf(QString("%1,1").arg(name)).contains("is not an element")) << name;
}

} // namespace kmr
