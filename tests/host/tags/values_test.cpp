#include "host/tags/values.h"

#include "host/error.h"
#include "host/tags/number_bits.h"
#include "tests/host/library.h"

#include <gtest/gtest.h>

using namespace kmr;

namespace {

std::string faultOf(const Tag &tag, const QString &text)
{
    try {
        parseValues(tag, text);
    } catch (const Error &error) {
        return error.what();
    }
    return "none";
}

} // namespace

TEST(Values, AreReadByTheirType)
{
    const struct {
        const char *tag;
        const char *text;
        Values values;
    } ROWS[] = {
        {"D0x3", "1, -1 0xABcd", {1, 0xFFFF, 0xABCD}},
        {"D0x2", "65535 -32768", {0xFFFF, 0x8000}},
        {"M0x2", "1,0", {1, 0}},
        {"CV2200x2", "-2 4294967295", {0xFFFFFFFE, 0xFFFFFFFF}},
        {"D0x4/int32", "-2 65536", {0xFFFE, 0xFFFF, 0, 1}}, // the low word first
        {"D0/float32", "21.5", {0, 0x41AC}},
        {"D0x4/float32", "inf -inf", {0, 0x7F80, 0, 0xFF80}},
        {"D0/float32", "-0", {0, 0x8000}},
        {"D0/bcd", "9999", {0x9999}},
        {"CV2200/bcd", "99999999", {0x99999999}},
        {"CV2200/hex", "0xFFFFFFFF", {0xFFFFFFFF}},
        {"CV2200/float32", "0xFFC00001", {0xFFC00001}},
        {"M0x3", "0x1 on OFF", {1, 1, 0}},
        {"D0x2", "0b101 0B1111111111111111", {5, 0xFFFF}},
        {"D0/int64", "-2", {0xFFFE, 0xFFFF, 0xFFFF, 0xFFFF}},
        {"D0/uint64", "18446744073709551614", {0xFFFE, 0xFFFF, 0xFFFF, 0xFFFF}},
        {"D0/uint64", "0x0001000200030004", {4, 3, 2, 1}},
        {"D0/float64", "-2.5", {0, 0, 0, 0xC004}},
        {"D0x3/text", "ABC", {0x4241, 0x0043, 0}}, // the first character in the low byte
        {"D0x2/text", "\\x0a\\\\A", {0x5C0A, 0x41}},
        {"D0/text", "\u00e9", {0x00E9}},
    };
    for (const auto &row : ROWS)
        EXPECT_EQ(parseValues(tagOf(row.tag), QString::fromUtf8(row.text)), row.values) << row.text;
}

TEST(Values, AreShownByTheirType)
{
    const struct {
        const char *tag;
        Values values;
        const char *text;
    } ROWS[] = {
        {"D0x2", {1, 65535}, "1 65535"},
        {"CV2200", {4294967295}, "4294967295"},
        {"CV2200/int32", {0xFFFFFFFF}, "-1"},
        {"CV2200/hex", {0x1234A}, "0x0001234A"},
        {"D0/int16", {0xFFFF}, "-1"},
        {"D0/uint16", {0xFFFF}, "65535"},
        {"D0x4/int32", {0xFFFE, 0xFFFF, 0, 1}, "-2 65536"},
        {"D0/uint32", {0xFFFF, 0xFFFF}, "4294967295"},
        {"D0x8/int64", {0xFFFE, 0xFFFF, 0xFFFF, 0xFFFF, 4, 3, 2, 1}, "-2 281483566841860"},
        {"D0/uint64", {0xFFFE, 0xFFFF, 0xFFFF, 0xFFFF}, "18446744073709551614"},
        {"D0/float64", {0x999A, 0x9999, 0x9999, 0x3FB9}, "0.1"},
        {"D0/float64", {1, 0, 0, 0x7FF8}, "0x7FF8000000000001"}, // no number
        {"D0x4/float32", {0, 0x7F80, 0, 0xFF80}, "inf -inf"},
        {"D0/float32", {0, 0x8000}, "-0"},
        {"D0x2/hex", {0xAB, 0xFFFF}, "0x00AB 0xFFFF"},
        {"D0/bcd", {0x1234}, "1234"},
        {"D0/bcd", {0x12A4}, "0x12A4"}, // no decimal digits
        {"D0x3/text", {0x4241, 0x0043, 0}, "ABC"},
        {"D0x2/text", {0x5C0A, 0x41}, "\\x0a\\\\A"},
        {"D0x3/text", {0x1F7E, 0x807F, 0xE99F}, "~\\x1f\\x7f\\x80\\x9f\u00e9"},
    };
    for (const auto &row : ROWS)
        EXPECT_EQ(formatValues(tagOf(row.tag), row.values), QString::fromUtf8(row.text)) << row.tag;
}

TEST(Values, OutsideTheRangeOfTheirTypeOrOfAnotherNumberAreRefused)
{
    static const char *const ROWS[][2] = {
        {"D0", "65536"},
        {"D0", "-32769"},
        {"CV2200", "4294967296"},
        {"CV2200", "-2147483649"},
        {"M0", "2"},
        {"M0", "-1"},
        {"D0/int16", "32768"},
        {"D0/int16", "-32769"},
        {"D0/uint16", "-1"},
        {"D0/uint16", "65536"},
        {"D0/int32", "2147483648"},
        {"D0/uint32", "4294967296"},
        {"D0/int64", "9223372036854775808"},
        {"D0/int64", "-9223372036854775809"},
        {"D0/uint64", "18446744073709551616"},
        {"D0/uint64", "-1"},
        {"D0/float64", "1e309"},
        {"D0", "on"},
        {"D0/float32", "1e39"},
        {"D0/bcd", "10000"},
        {"CV2200/bcd", "100000000"},
        {"D0/bcd", "-1"},
        {"D0/hex", "0x10000"},
        {"CV2200/hex", "0x100000000"},
        {"D0", "0b10000000000000000"},
        {"D0", "0b2"},
        {"D0x2/text", "ABCDE"},
        {"D0x2/text", "\\y"},
        {"D0x4/float32", "1 2 3 4"},
        {"D0x2", "1"},
        {"D0", "1 2"},
        {"D0", ""},
        {"D0", "x"},
        {"D0x2", ",1,2"},
        {"D0x2", "1 2,"},
    };
    for (const auto &[name, text] : ROWS)
        EXPECT_NE(faultOf(tagOf(name), text), "none") << name << ' ' << text;
    EXPECT_EQ(faultOf(tagOf("CV2200/bcd"), "100000000"),
              "bad value \"100000000\" for CV2200/bcd: expected 0 to 99999999");
    EXPECT_EQ(faultOf(tagOf("D0x2"), "1, ,2"),
              "D0x2: a value is missing before or after a comma: \"1, ,2\"");
    EXPECT_EQ(faultOf(tagOf("M0"), "0x2"), "bad value \"0x2\" for M0: expected 0x0 to 0x1");
    EXPECT_EQ(faultOf(tagOf("D0"), "0x"), "bad value \"0x\" for D0: expected 0x0 to 0xFFFF");
    EXPECT_NE(faultOf(tagOf("D0x2/text"), QString::fromUtf8("\u20ac"))
                  .find("expected characters of Latin-1 only"),
              std::string::npos);
}

TEST(TypedValues, WordOrderTurnsThemRound)
{
    const Tag high = TagReader(library(), 1, WordOrder::HighFirst).read("D0/float32");
    EXPECT_EQ(parseValues(high, "21.5"), (Values{0x41AC, 0}));
    EXPECT_EQ(formatValues(high, {0x41AC, 0}), "21.5");
    const Tag longer = TagReader(library(), 1, WordOrder::HighFirst).read("D0/int64");
    EXPECT_EQ(parseValues(longer, "0x0001000200030004"), (Values{1, 2, 3, 4}));
    EXPECT_EQ(formatValues(longer, {0, 0, 1, 2}), "65538");
}

TEST(TypedValues, ByteOrderTurnsTheCharactersOfAWordRound)
{
    const Tag high =
        TagReader(library(), 1, WordOrder::LowFirst, ByteOrder::HighFirst).read("D0x2/text");
    EXPECT_EQ(parseValues(high, "ABC"), (Values{0x4142, 0x4300}));
    EXPECT_EQ(formatValues(high, {0x4142, 0x4300}), "ABC");
}

TEST(TypedValues, HexadecimalDigitsAreTheBitsOfEveryTypeUpToItsWidth)
{
    for (const char *type : {"", "/int16", "/uint16", "/hex", "/bcd"}) {
        EXPECT_EQ(parseValues(tagOf(QString("D0") + type), "0xFFFA"), (Values{0xFFFA})) << type;
        EXPECT_THROW(parseValues(tagOf(QString("D0") + type), "0x10000"), Error) << type;
    }
    for (const char *type : {"/int32", "/uint32", "/float32"}) {
        EXPECT_EQ(parseValues(tagOf(QString("D0") + type), "0xFFC00001"), (Values{0x0001, 0xFFC0}));
        EXPECT_THROW(parseValues(tagOf(QString("D0") + type), "0x100000000"), Error) << type;
    }
}

TEST(TypedValues, FloatThatIsNoNumberKeepsItsBits)
{
    for (const std::uint32_t bits : {0x7FC00000U, 0xFFC00000U, 0xFFFFFFFFU, 0x7F800001U}) {
        const Values values = {bits & 0xFFFF, bits >> 16};
        const QString text = formatValues(tagOf("D0/float32"), values);
        EXPECT_EQ(text, QString("0x%1").arg(QString::number(bits, 16).toUpper()));
        EXPECT_EQ(parseValues(tagOf("D0/float32"), text), values);
    }
}

TEST(ScaledValues, AreRefusedAsTypedWithTheScaledLimits)
{
    Tag scaled = tagOf("D0/int16");
    scaled.scaling = Scaling("0.1");
    EXPECT_EQ(faultOf(scaled, "5000"),
              "bad value \"5000\" for D0/int16: expected -3276.8 to 3276.7");
    scaled.scaling = Scaling("-2");
    EXPECT_EQ(faultOf(scaled, "70000"),
              "bad value \"70000\" for D0/int16: expected -65534 to 65536");
    Tag number = tagOf("D0/float32");
    number.scaling = Scaling("10");
    EXPECT_EQ(faultOf(number, "1e40"), "bad value \"1e40\" for D0/float32: expected a number from "
                                       "-3.4e+39 to 3.4e+39, for example 21.5");
}

TEST(ScaledValues, BitsAreNotScaled)
{
    Tag scaled = tagOf("D0/float32");
    scaled.scaling = Scaling("0.1");
    EXPECT_EQ(formatValues(scaled, {0, 0xFFC0}), "0xFFC00000");
    EXPECT_EQ(parseValues(scaled, "0xFFC00000"), (Values{0, 0xFFC0}));
    EXPECT_EQ(parseValues(scaled, "-inf"), (Values{0, 0xFF80}));
    EXPECT_EQ(formatValues(scaled, {0, 0xFF80}), "-inf");
}

TEST(TypedValues, BcdWithOtherDigitsIsWrittenAsItIsShown)
{
    EXPECT_EQ(parseValues(tagOf("D0/bcd"), formatValues(tagOf("D0/bcd"), {0x000A})),
              (Values{0x000A}));
}

TEST(ScaledValues, AreTheNearestThatTheElementsHold)
{
    const struct {
        const char *tag;
        const char *scale;
        const char *text;
        Values values;
    } ROWS[] = {
        {"D0", "0.1", "0.3", {3}}, // 0.3 / 0.1 is less than 3
        {"D0", "0.1", "21.59", {216}},
        {"D0/int16", "0.1", "-0.1", {0xFFFF}},
        {"D0/float32", "10", "215", {0, 0x41AC}},
        // 10 + 11 / 2^20, which eight digits do not tell from its neighbour
        {"D0/float32", "10", "100.000104904", {0x000B, 0x4120}},
        {"CV2200", "0.1", "7.5", {75}},
        {"CV2200", "0.1", "429496729.5", {0xFFFFFFFF}},
        {"CV2200/bcd", "0.01", "123.45", {0x12345}},
    };
    for (const auto &row : ROWS) {
        Tag scaled = tagOf(row.tag);
        scaled.scaling = Scaling(row.scale);
        EXPECT_EQ(parseValues(scaled, row.text), row.values) << row.tag << ' ' << row.text;
    }
    Tag counter = tagOf("CV2200");
    counter.scaling = Scaling("0.1");
    EXPECT_EQ(formatValues(counter, {0xFFFFFFFF}), "429496729.5");
}

TEST(ScaledValues, AreExactAndComeBackAsTheyAreShown)
{
    const struct {
        const char *tag;
        const char *scale;
        const char *offset;
        const char *text;
        Values values;
    } ROWS[] = {
        {"D0/int16", "0.1", "-40", "0.1", {401}}, // 401 * 0.1 - 40 is more in doubles
        {"D0/int16", "0.1", "-40", "-40.1", {0xFFFF}},
        {"D0", "-0.5", "1e3", "999.5", {1}},
        {"D0/float32", "0.1", "-40", "-37.85", {0, 0x41AC}},
        {"D0/float64", "0.1", "0.2", "0.21", {0x999A, 0x9999, 0x9999, 0x3FB9}},
        {"D0/int64", "0.001", "0", "9007199254740993.001", {0x3E9, 0, 0, 0x7D00}},
        {"CV2200", "0.001", "1000000000", "1004294967.295", {0xFFFFFFFF}},
    };
    for (const auto &row : ROWS) {
        Tag tag = tagOf(row.tag);
        tag.scaling = Scaling(row.scale, row.offset);
        EXPECT_EQ(formatValues(tag, row.values), row.text);
        EXPECT_EQ(parseValues(tag, row.text), row.values) << row.text;
    }
}

TEST(ValueTexts, StandForTheirNumbersInBothDirections)
{
    Tag valve = tagOf("D0/int16");
    valve.texts = {{0, "closed"}, {1, "open"}, {-1, "not ready"}};
    EXPECT_EQ(formatValues(valve, {0xFFFF}), "not ready");
    EXPECT_EQ(formatValues(valve, {7}), "7");
    EXPECT_EQ(parseValues(valve, "Not Ready"), (Values{0xFFFF}));
    EXPECT_EQ(parseValues(valve, "1"), (Values{1}));
    EXPECT_EQ(faultOf(valve, "opn"), "bad value \"opn\" for D0/int16: expected closed, open, not "
                                     "ready, or -32768 to 32767, did you mean \"open\"?");
    Tag valves = tagOf("D0x3/int16");
    valves.texts = valve.texts;
    EXPECT_EQ(formatValues(valves, {1, 0xFFFF, 7}), "open \"not ready\" 7");
    EXPECT_EQ(parseValues(valves, "open \"not ready\" 7"), (Values{1, 0xFFFF, 7}));
    EXPECT_NE(faultOf(valves, "open,,\"not ready\",7"), "none");
}

TEST(Units, StandAfterNumbersAndAreTakenBack)
{
    Tag tag = tagOf("D0x2");
    tag.unit = "m / s";
    tag.texts = {{0, "off"}};
    EXPECT_EQ(withUnit(tag, {1, 2}), "1 2 m / s");
    EXPECT_EQ(withUnit(tag, {0, 0}), "off off");
    EXPECT_EQ(parseValues(tag, "1 off m / s"), (Values{1, 0}));
}

TEST(NumberFormats, ShowTheHeldBitsWhateverTheTypeAndTheScalingSay)
{
    const struct {
        const char *tag;
        Values values;
        const char *unsignedText, *signedText, *hexText, *binaryText;
    } ROWS[] = {
        {"D0x2",
         {0xFFFE, 7},
         "65534 7",
         "-2 7",
         "0xFFFE 0x0007",
         "0b1111111111111110 0b0000000000000111"},
        {"D0/float32",
         {0, 0x8000},
         "2147483648",
         "-2147483648",
         "0x80000000",
         "0b10000000000000000000000000000000"},
        {"CV2200",
         {0xFFFFFFFF},
         "4294967295",
         "-1",
         "0xFFFFFFFF",
         "0b11111111111111111111111111111111"},
        {"M0x2", {0, 1}, "0 1", "0 1", "0 1", "0 1"},
    };
    for (const auto &row : ROWS) {
        Tag tag = tagOf(row.tag);
        tag.scaling.emplace("0.1");
        NumberFormat format = NumberFormat::AsTag;
        for (const char *text : {row.unsignedText, row.signedText, row.hexText, row.binaryText}) {
            format = nextFormat(format);
            EXPECT_EQ(formatNumbers(tag, row.values, format), text) << row.tag;
        }
        EXPECT_EQ(nextFormat(format), NumberFormat::AsTag);
    }
    EXPECT_EQ(formatNumbers(tagOf("D0x2"), {1, 2}, NumberFormat::AsTag), "1 2");
}
