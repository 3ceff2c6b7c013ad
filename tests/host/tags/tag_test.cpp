#include "host/tags/tag.h"

#include "host/error.h"
#include "tests/host/library.h"

#include <gtest/gtest.h>

using namespace kmr;

namespace {

// The text of the error, or an empty one if the tag is good.
std::string faultOf(const QString &text)
{
    try {
        tagOf(text);
    } catch (const Error &error) {
        EXPECT_EQ(error.kind(), ErrorKind::Usage);
        return error.what();
    }
    return {};
}

} // namespace

TEST(Tag, NamesElements)
{
    const struct {
        const char *text;
        ElementKind kind;
        ElementRange elements;
    } ROWS[] = {
        {"D100", ElementKind::Word, {1, "D", 100, 1}},
        {"TV7", ElementKind::Word, {1, "TV", 7, 1}},
        {"2#M0x16", ElementKind::Bit, {2, "M", 0, 16}},
        {"X17", ElementKind::Bit, {1, "X", 15, 1}}, // octal
        {"Y23410x8", ElementKind::Bit, {1, "Y", 9992, 8}},
        {"X0x3", ElementKind::Bit, {1, "X", 0, 3}},           // a capital and a small one
        {"CV2200", ElementKind::Counter, {1, "CV2", 200, 1}}, // the longest area that fits
        {"CV2255", ElementKind::Counter, {1, "CV2", 255, 1}},
        {"CV21", ElementKind::Word, {1, "CV", 21, 1}},
        {"CV2", ElementKind::Word, {1, "CV", 2, 1}},
        {"CV199", ElementKind::Word, {1, "CV", 199, 1}},
        {"C2200", ElementKind::Bit, {1, "C", 2200, 1}},
        {"T5", ElementKind::Bit, {1, "T", 5, 1}},
        {"TV5.3", ElementKind::WordBit, {1, "TV", 5, 1}},
        {"TV5.15x2", ElementKind::WordBit, {1, "TV", 5, 2}},
        {"TV5.0x16", ElementKind::WordBit, {1, "TV", 5, 1}},
        {"TV5.14..6.1", ElementKind::WordBit, {1, "TV", 5, 2}},
        {"D100.14..101.1", ElementKind::WordBit, {1, "D", 100, 2}},
        {"CV7.0x17", ElementKind::WordBit, {1, "CV", 7, 2}},
        {"D100/int64", ElementKind::Word, {1, "D", 100, 4}},
        {"D100..107", ElementKind::Word, {1, "D", 100, 8}}, // the end as the panel shows it
        {"X0..17", ElementKind::Bit, {1, "X", 0, 16}},
        {"3#CV2200..210", ElementKind::Counter, {3, "CV2", 200, 11}},
        {"TV5..7", ElementKind::Word, {1, "TV", 5, 3}},
        {"D100/float32", ElementKind::Word, {1, "D", 100, 2}}, // of 32 bits: two words
        {"D100x4/int32", ElementKind::Word, {1, "D", 100, 4}},
        {"D4094/float32", ElementKind::Word, {1, "D", 4094, 2}},
        {"CV2200/int32", ElementKind::Counter, {1, "CV2", 200, 1}},
        {"99#D1", ElementKind::Word, {99, "D", 1, 1}},
        {"M65536", ElementKind::Bit, {1, "M", 65536, 1}}, // the last ones
        {"D11999", ElementKind::Word, {1, "D", 11999, 1}},
        {"X23400x16", ElementKind::Bit, {1, "X", 9984, 16}},
        {"TV2247", ElementKind::Word, {1, "TV", 2247, 1}}, // beside the counters
        {"TV2304", ElementKind::Word, {1, "TV", 2304, 1}},
    };
    for (const auto &row : ROWS) {
        const Tag found = tagOf(row.text);
        EXPECT_EQ(found.kind, row.kind) << row.text;
        EXPECT_EQ(found.elements, row.elements) << row.text;
    }
    EXPECT_EQ(tagOf("2#M0x16").count, 16);
    EXPECT_EQ(tagOf("TV5.14..6.1").count, 4);
    EXPECT_EQ(tagOf("TV5.3").firstBit, 3);
    EXPECT_EQ(tagOf("D100.14..101.1").count, 4);
    EXPECT_EQ(tagOf("D100.14..101.1").firstBit, 14);
}

TEST(Tag, InputsAndBitsOfWordsCannotBeWritten)
{
    EXPECT_FALSE(tagOf("X0").isWritable);
    EXPECT_FALSE(tagOf("TV5.3").isWritable);
    EXPECT_FALSE(tagOf("D5.3").isWritable);
    EXPECT_TRUE(tagOf("Y0").isWritable);
}

TEST(Tag, StationIsTheReadersIfNoneIsNamed)
{
    EXPECT_EQ(TagReader(library(), 12).read("D1").elements.station, 12);
    EXPECT_EQ(TagReader(library(), 12).read("3#D1").elements.station, 3);
}

TEST(Tag, WhatIsWrongIsNamed)
{
    static const char *const ROWS[][2] = {
        {"CV220", "CV2 reaches from 200 to 255"}, // each area that it may mean
        {"CV220", "CV reaches from 0 to 199 (the counters are CV2200 to CV2255)"},
        {"CV200", "(the counters are CV2200 to CV2255)"},
        {"M65537", "M reaches from 0 to 65536"},
        {"D11999x2", "out of range"},
        {"D0..12000", "\"12000\" is not an address in D at or after 0"},
        {"X18", "octal digits"},
        {"X0..18", "\"18\" is not an address in X at or after 0"},
        {"X23420", "X reaches from 0 to 23417 in octal digits"},
        {"Y23420", "Y reaches from 0 to 23417 in octal digits"},
        {"X23400x17", "out of range"}, // which the driver computes in decimal
        {"TV2248", "TV2248 to TV2303 are at the addresses of the counters: use CV2200"},
        {"TV2247x2", "use CV2200 to CV2255"},
        {"TV2303.15", "use CV2200"},
        {"D1a", "\"1a\" is not an address in D"},
        {"D-1", "\"-1\" is not an address in D"},
        {"D+1", "\"+1\" is not an address in D"},
        {"D100.16", "\"100.16\" is not a bit of a word"},
        {"D100.03", "is not a bit of a word"},
        {"D11999.15x2", "D reaches from 0 to 11999"},
        {"D100..101.1", "\"101.1\" is not an address in D at or after 100"},
        {"CV2200.1", "is not an address in CV2"},
        {"TV5.16", "is not a bit of a word"},
        {"TV5.03", "is not a bit of a word"},
        {"D107..100", "\"100\" is not an address in D at or after 107"},
        {"D1a..5", "\"1a\" is not an address in D"}, // the beginning is what is wrong
        {"D12000..11999", "D reaches from 0 to 11999"},
        {"0#D1", "a station is 1 to 99"},
        {"100#D1", "a station is 1 to 99"},
        {"D1x0", "a count is 1 to 65537"},
        {"D1x99999999", "a count is 1 to 65537"},
        {"D100x3/int32", "values of 32 bits take two words each, but 3 are named"},
        {"D100x6/int64", "values of 64 bits take four words each, but 6 are named"},
        {"D4095/float32", "the value at D4095"},
        {"D4093/uint64", "the value at D4093"},
        {"D1/double", "\"double\" is not a type"},
        {"D1/flot32", "did you mean \"float32\"?"},
        {"D1/", "\"\" is not a type"},
        {"M0/hex", "bits have no type"},
        {"M0/int32", "bits have no type"},
        {"TV5.3/hex", "bits have no type"},
        {"CV2200/int16", "a counter has 32 bits"},
        {"CV2200/uint16", "a counter has 32 bits"},
        {"CV2200/text", "a counter has 32 bits"},
        {"CV2200/float64", "a counter has 32 bits"},
        {"Q5", "X, Y, M, S, T, C, TV, CV, CV2, D"},
        {"2#d100x2/hex", "expected an area in capitals"},
        {"2#d100x2/hex", ", did you mean 2#D100x2/hex?"},
        {"100", "expected an area in capitals"},
        {"D", "expected an area in capitals"},
        {"", "a tag is [STATION#]AREA"},
        {"D 100", "a tag is [STATION#]AREA"},
        {"D0..7x8", "is not an address in D"},
    };
    for (const auto &[text, fault] : ROWS) {
        const std::string found = faultOf(text);
        EXPECT_NE(found.find(fault), std::string::npos) << text << ": " << found;
    }
    for (const char *text : {"#D100", "D100x", "Dx5"})
        EXPECT_NE(faultOf(text), "") << text;
    EXPECT_EQ(faultOf("M65537").find("octal"), std::string::npos);
}

TEST(TagCheck, BitsOfWordsAreAsFarAsTheirWordsReach)
{
    const TagReader reader(library(), 1);
    EXPECT_EQ(reader.check("D11999.15").result, 0);
    EXPECT_EQ(reader.check("D11999.15x2").result, 2);
    EXPECT_EQ(reader.check("D100.16").result, 4);
}
