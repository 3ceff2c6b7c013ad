#include "host/tags/tag.h"

#include "host/error.h"

#include <gtest/gtest.h>

using namespace kmr;

namespace {

const DriverFunctions &library()
{
    static const DriverLibrary LOADED(DRIVER_LIBRARY);
    return LOADED.functions();
}

Tag tag(const QString &text)
{
    return TagReader(library(), 1).read(text);
}

ElementRange elements(const QString &text)
{
    return tag(text).elements;
}

// The text of the error, or an empty one when the tag is fine.
std::string faultOf(const QString &text)
{
    try {
        tag(text);
    } catch (const Error &error) {
        EXPECT_EQ(error.kind(), ErrorKind::Usage);
        return error.what();
    }
    return {};
}

bool names(const std::string &text, const char *part)
{
    return text.find(part) != std::string::npos;
}

} // namespace

TEST(Tag, NamesAWord)
{
    EXPECT_EQ(elements("D100"), (ElementRange{1, "D", 100, 1}));
    EXPECT_EQ(tag("D100").kind, ElementKind::Word);
    EXPECT_EQ(tag("TV7").kind, ElementKind::Word);
}

TEST(Tag, NamesStationAndCount)
{
    EXPECT_EQ(elements("2#M0x16"), (ElementRange{2, "M", 0, 16}));
    EXPECT_EQ(tag("2#M0x16").count, 16);
    EXPECT_EQ(tag("2#M0x16").kind, ElementKind::Bit);
}

TEST(Tag, OctalNumbersBecomeLinearOnes)
{
    EXPECT_EQ(elements("X17"), (ElementRange{1, "X", 15, 1}));
    EXPECT_EQ(elements("Y23410x8"), (ElementRange{1, "Y", 9992, 8}));
}

TEST(Tag, CapitalXIsAnAreaAndTheSmallOneCounts)
{
    EXPECT_EQ(elements("X0x3"), (ElementRange{1, "X", 0, 3}));
}

TEST(Tag, LongestAreaNameWithAValidAddressCounts)
{
    EXPECT_EQ(elements("CV2200"), (ElementRange{1, "CV2", 200, 1}));
    EXPECT_EQ(elements("CV2255"), (ElementRange{1, "CV2", 255, 1}));
    EXPECT_EQ(elements("CV21"), (ElementRange{1, "CV", 21, 1}));
    EXPECT_EQ(elements("CV2"), (ElementRange{1, "CV", 2, 1}));
    EXPECT_EQ(elements("CV199"), (ElementRange{1, "CV", 199, 1}));
    EXPECT_EQ(elements("C2200"), (ElementRange{1, "C", 2200, 1}));
    EXPECT_EQ(elements("T5"), (ElementRange{1, "T", 5, 1}));
    EXPECT_EQ(tag("CV2200").kind, ElementKind::Counter);
}

TEST(Tag, AddressThatFitsNoAreaNamesThoseItMightMean)
{
    const std::string fault = faultOf("CV220");
    EXPECT_TRUE(names(fault, "CV2 reaches from 200 to 255")) << fault;
    EXPECT_TRUE(names(fault, "CV reaches from 0 to 199")) << fault;
}

TEST(Tag, BitOfAWordReadsItsWordAndCannotBeWritten)
{
    const Tag bit = tag("TV5.3");
    EXPECT_EQ(bit.kind, ElementKind::WordBit);
    EXPECT_EQ(bit.elements, (ElementRange{1, "TV", 5, 1}));
    EXPECT_EQ(bit.firstBit, 3);
    EXPECT_FALSE(bit.isWritable);
    EXPECT_EQ(elements("TV5.15x2"), (ElementRange{1, "TV", 5, 2}));
    EXPECT_EQ(elements("TV5.0x16"), (ElementRange{1, "TV", 5, 1}));
}

TEST(Tag, InputsCannotBeWritten)
{
    EXPECT_FALSE(tag("X0").isWritable);
    EXPECT_TRUE(tag("Y0").isWritable);
}

TEST(Tag, DriverDecidesWhatIsInRange)
{
    EXPECT_EQ(faultOf("M65536"), "");
    EXPECT_TRUE(names(faultOf("M65537"), "M reaches from 0 to 65536"));
    EXPECT_EQ(faultOf("D11999"), "");
    EXPECT_TRUE(names(faultOf("D11999x2"), "out of range"));
    EXPECT_TRUE(names(faultOf("X18"), "octal digits"));
    EXPECT_TRUE(names(faultOf("X23420"), "X reaches from 0 to 23417"));
}

TEST(Tag, OctalRunMayNotLeaveItsAreaInLinearNumbers)
{
    EXPECT_EQ(faultOf("X23400x16"), "");
    EXPECT_TRUE(names(faultOf("X23400x17"), "out of range"));
}

TEST(Tag, WordsAtTheCountersPlaceAreRefused)
{
    EXPECT_EQ(faultOf("TV2247"), "");
    EXPECT_TRUE(names(faultOf("TV2248"), "use CV2200"));
    EXPECT_TRUE(names(faultOf("CV200"), "(the counters are CV2200 to CV2255)"));
    EXPECT_TRUE(names(faultOf("TV2247x2"), "use CV2200"));
    EXPECT_TRUE(names(faultOf("TV2303.15"), "use CV2200"));
    EXPECT_EQ(faultOf("TV2304"), "");
}

TEST(Tag, ResultsOfTheDriverBecomeSentences)
{
    EXPECT_TRUE(names(faultOf("D1a"), "\"1a\" is no address in D"));
    EXPECT_TRUE(names(faultOf("D-1"), "\"-1\" is no address in D"));
    EXPECT_TRUE(names(faultOf("D100.3"), "is no address in D"));
    EXPECT_TRUE(names(faultOf("TV5.16"), "is no bit of a word"));
    EXPECT_TRUE(names(faultOf("TV5.03"), "is no bit of a word"));
}

TEST(Tag, WhatIsNoTagIsExplained)
{
    for (const char *text : {"", "D", "d100", "100", "Q5", "D 100", "#D100", "D100x", "Dx5"})
        EXPECT_FALSE(faultOf(text).empty()) << text;
    EXPECT_TRUE(names(faultOf("Q5"), "X, Y, M, S, T, C, TV, CV, CV2, D"));
}

TEST(Tag, StationsThatDoNotFitTwoDigitsAreRefused)
{
    EXPECT_EQ(faultOf("99#D1"), "");
    EXPECT_TRUE(names(faultOf("0#D1"), "1 to 99"));
    EXPECT_TRUE(names(faultOf("100#D1"), "1 to 99"));
}

TEST(Tag, CountIsAtLeastOne)
{
    EXPECT_TRUE(names(faultOf("D1x0"), "a count is"));
    EXPECT_FALSE(faultOf("D1x99999999").empty());
}

TEST(Tag, StationIsTheReadersWhereNoneIsNamed)
{
    EXPECT_EQ(TagReader(library(), 12).read("D1").elements.station, 12);
    EXPECT_EQ(TagReader(library(), 12).read("3#D1").elements.station, 3);
}

TEST(Tag, EndIsNamedAsThePanelShowsIt)
{
    EXPECT_EQ(elements("D100..107"), (ElementRange{1, "D", 100, 8}));
    EXPECT_EQ(elements("X0..17"), (ElementRange{1, "X", 0, 16}));
    EXPECT_EQ(elements("3#CV2200..210"), (ElementRange{3, "CV2", 200, 11}));
    EXPECT_EQ(tag("TV5.14..6.1").count, 4);
    EXPECT_TRUE(names(faultOf("D107..100"), "\"100\" is no address in D at or behind 107"));
    EXPECT_FALSE(faultOf("X0..18").empty());
    EXPECT_FALSE(faultOf("D0..12000").empty());
    EXPECT_FALSE(faultOf("D0..7x8").empty());
}

TEST(Tag, TypeOfThirtyTwoBitsTakesTwoWordsOrOneCounter)
{
    EXPECT_EQ(elements("D100/float32"), (ElementRange{1, "D", 100, 2}));
    EXPECT_EQ(elements("D100x4/int32"), (ElementRange{1, "D", 100, 4}));
    EXPECT_EQ(elements("CV2200/int32"), (ElementRange{1, "CV2", 200, 1}));
    EXPECT_TRUE(names(faultOf("D100x3/int32"), "two words each, but 3 are named"));
}

TEST(Tag, TypesThatDoNotFitAreRefused)
{
    EXPECT_TRUE(names(faultOf("D1/double"), "\"double\" is no type"));
    EXPECT_FALSE(faultOf("D1/").empty());
    EXPECT_TRUE(names(faultOf("M0/hex"), "bits have no type"));
    EXPECT_TRUE(names(faultOf("TV5.3/hex"), "bits have no type"));
    EXPECT_TRUE(names(faultOf("CV2200/int16"), "a counter has 32 bits"));
}

TEST(Tag, ValueOfThirtyTwoBitsMayNotLieAcrossABorder)
{
    EXPECT_EQ(faultOf("D4094/float32"), "");
    EXPECT_TRUE(names(faultOf("D4095/float32"), "the value at D4095"));
}

TEST(Tag, EndOfAWordRunIsAWord)
{
    EXPECT_EQ(elements("TV5..7"), (ElementRange{1, "TV", 5, 3}));
    EXPECT_EQ(tag("TV5..7").kind, ElementKind::Word);
}

TEST(Tag, WrongBeginningOfARunIsWhatIsNamed)
{
    EXPECT_EQ(faultOf("D1a..5"), "bad tag \"D1a..5\": \"1a\" is no address in D");
    EXPECT_TRUE(names(faultOf("D12000..11999"), "D reaches from 0 to 11999"));
}

TEST(Tag, OctalAreasSayThatTheirLimitsAreOctal)
{
    EXPECT_TRUE(names(faultOf("X23420"), "X reaches from 0 to 23417 in octal digits"));
    EXPECT_TRUE(names(faultOf("Y23420"), "Y reaches from 0 to 23417 in octal digits"));
    EXPECT_FALSE(names(faultOf("M65537"), "octal"));
}

TEST(Tag, SignBelongsToNoAddress)
{
    EXPECT_EQ(faultOf("D+1"), "bad tag \"D+1\": \"+1\" is no address in D");
}

TEST(Tag, TypesOfSixteenBitsAndTextFitNoCounter)
{
    for (const char *text : {"CV2200/int16", "CV2200/uint16", "CV2200/text"})
        EXPECT_TRUE(names(faultOf(text), "a counter has 32 bits")) << text;
}

TEST(Tag, BitsHaveNoTypeOfThirtyTwoBitsEither)
{
    EXPECT_EQ(faultOf("M0/int32"), "bad tag \"M0/int32\": bits have no type");
}
