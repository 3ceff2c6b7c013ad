#include "host/tags/values.h"

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

TEST(Values, AreReadInDecimalAndHexadecimal)
{
    EXPECT_EQ(parseValues(tag("D0x3"), "1, -1 0xABcd"), (Values{1, 0xFFFF, 0xABCD}));
    EXPECT_EQ(parseValues(tag("CV2200"), "-2"), (Values{0xFFFFFFFE}));
    EXPECT_EQ(parseValues(tag("M0x2"), "1,0"), (Values{1, 0}));
}

TEST(Values, LimitsDependOnTheElement)
{
    EXPECT_NO_THROW(parseValues(tag("D0"), "65535"));
    EXPECT_THROW(parseValues(tag("D0"), "65536"), Error);
    EXPECT_NO_THROW(parseValues(tag("D0"), "-32768"));
    EXPECT_THROW(parseValues(tag("D0"), "-32769"), Error);
    EXPECT_NO_THROW(parseValues(tag("CV2200"), "4294967295"));
    EXPECT_THROW(parseValues(tag("CV2200"), "4294967296"), Error);
    EXPECT_THROW(parseValues(tag("M0"), "2"), Error);
}

TEST(Values, NumberMustBeTheTagsCount)
{
    EXPECT_THROW(parseValues(tag("D0x2"), "1"), Error);
    EXPECT_THROW(parseValues(tag("D0"), "1 2"), Error);
    EXPECT_THROW(parseValues(tag("D0"), ""), Error);
    EXPECT_THROW(parseValues(tag("D0"), "x"), Error);
}

TEST(Values, AreShownInDecimal)
{
    EXPECT_EQ(formatValues(tag("D0x2"), {1, 65535}), "1 65535");
    EXPECT_EQ(formatValues(tag("CV2200"), {4294967295}), "4294967295");
}

TEST(TypedValues, OfThirtyTwoBitsLieLowWordFirst)
{
    EXPECT_EQ(parseValues(tag("D0x4/int32"), "-2 65536"), (Values{0xFFFE, 0xFFFF, 0, 1}));
    EXPECT_EQ(formatValues(tag("D0x4/int32"), {0xFFFE, 0xFFFF, 0, 1}), "-2 65536");
    EXPECT_EQ(parseValues(tag("D0/float32"), "21.5"), (Values{0, 0x41AC}));
    EXPECT_EQ(formatValues(tag("D0/uint32"), {0xFFFF, 0xFFFF}), "4294967295");
}

TEST(TypedValues, WordOrderTurnsThemRound)
{
    const Tag high = TagReader(library(), 1, WordOrder::HighFirst).read("D0/float32");
    EXPECT_EQ(parseValues(high, "21.5"), (Values{0x41AC, 0}));
    EXPECT_EQ(formatValues(high, {0x41AC, 0}), "21.5");
}

TEST(TypedValues, OfACounterTakeItsThirtyTwoBits)
{
    EXPECT_EQ(formatValues(tag("CV2200/int32"), {0xFFFFFFFF}), "-1");
    EXPECT_EQ(formatValues(tag("CV2200/hex"), {0x1234A}), "0x0001234A");
    EXPECT_EQ(parseValues(tag("CV2200/bcd"), "12345678"), (Values{0x12345678}));
}

TEST(TypedValues, OfWordsAreShownByTheirType)
{
    EXPECT_EQ(formatValues(tag("D0/int16"), {0xFFFF}), "-1");
    EXPECT_EQ(formatValues(tag("D0/uint16"), {0xFFFF}), "65535");
    EXPECT_EQ(formatValues(tag("D0x2/hex"), {0xAB, 0xFFFF}), "0x00AB 0xFFFF");
    EXPECT_EQ(formatValues(tag("D0/bcd"), {0x1234}), "1234");
    EXPECT_EQ(formatValues(tag("D0/bcd"), {0x12A4}), "0x12A4"); // no decimal digits
}

TEST(TypedValues, TextHasItsFirstCharacterInTheLowByte)
{
    EXPECT_EQ(parseValues(tag("D0x3/text"), "ABC"), (Values{0x4241, 0x0043, 0}));
    EXPECT_EQ(formatValues(tag("D0x3/text"), {0x4241, 0x0043, 0}), "ABC");
    EXPECT_EQ(formatValues(tag("D0x2/text"), {0x5C0A, 0x41}), "\\x0a\\\\A");
    EXPECT_EQ(parseValues(tag("D0x2/text"), "\\x0a\\\\A"), (Values{0x5C0A, 0x41}));
}

TEST(TypedValues, RangeIsTheTypes)
{
    const auto isRefused = [](const char *text, const char *value) {
        EXPECT_THROW(parseValues(tag(text), value), Error) << text << ' ' << value;
    };
    isRefused("D0/int16", "32768");
    isRefused("D0/uint16", "-1");
    isRefused("D0/int32", "2147483648");
    isRefused("D0/uint32", "4294967296");
    isRefused("D0/float32", "1e39");
    isRefused("D0/bcd", "10000");
    isRefused("D0/hex", "0x10000");
    isRefused("D0x2/text", "ABCDE");
    isRefused("D0x2/text", "\\y");
    isRefused("D0x4/float32", "1 2 3 4");
}

TEST(TypedValues, TextOfOtherCharactersThanLatin1IsRefused)
{
    try {
        parseValues(tag("D0x2/text"), QString::fromUtf8("€"));
        FAIL() << "it was accepted";
    } catch (const Error &error) {
        EXPECT_NE(std::string(error.what()).find("expected characters of Latin-1 only"),
                  std::string::npos)
            << error.what();
    }
    EXPECT_EQ(parseValues(tag("D0/text"), QString::fromUtf8("é")), (Values{0x00E9}));
}

TEST(TypedValues, TextShowsControlCharactersBeyondAsciiByTheirCodes)
{
    EXPECT_EQ(formatValues(tag("D0x3/text"), {0x1F7E, 0x807F, 0xE99F}),
              QString::fromUtf8("~\\x1f\\x7f\\x80\\x9fé"));
}

TEST(TypedValues, HexadecimalCounterTakesItsWholeRange)
{
    EXPECT_EQ(parseValues(tag("CV2200/hex"), "0xFFFFFFFF"), (Values{0xFFFFFFFF}));
    EXPECT_THROW(parseValues(tag("CV2200/hex"), "0x100000000"), Error);
}

TEST(TypedValues, HexadecimalDigitsAreTheBitsOfEveryTypeUpToItsWidth)
{
    for (const char *type : {"", "/int16", "/uint16", "/hex", "/bcd"}) {
        EXPECT_EQ(parseValues(tag(QString("D0") + type), "0xFFFA"), (Values{0xFFFA})) << type;
        EXPECT_THROW(parseValues(tag(QString("D0") + type), "0x10000"), Error) << type;
    }
    for (const char *type : {"/int32", "/uint32", "/float32"}) {
        EXPECT_EQ(parseValues(tag(QString("D0") + type), "0xFFC00001"), (Values{0x0001, 0xFFC0}));
        EXPECT_THROW(parseValues(tag(QString("D0") + type), "0x100000000"), Error) << type;
    }
    EXPECT_EQ(parseValues(tag("CV2200/float32"), "0xFFC00001"), (Values{0xFFC00001}));
    EXPECT_EQ(parseValues(tag("M0"), "0x1"), (Values{1}));
    EXPECT_EQ(faultOf(tag("M0"), "0x2"), "bad value \"0x2\" for M0: expected 0x0 to 0x1");
    EXPECT_EQ(faultOf(tag("D0"), "0x"), "bad value \"0x\" for D0: expected 0x0 to 0xFFFF");
}

TEST(TypedValues, FloatThatIsNoNumberKeepsItsBits)
{
    for (const std::uint32_t bits : {0x7FC00000U, 0xFFC00000U, 0xFFFFFFFFU, 0x7F800001U}) {
        const Values values = {bits & 0xFFFF, bits >> 16};
        const QString text = formatValues(tag("D0/float32"), values);
        EXPECT_EQ(text, QString("0x%1").arg(QString::number(bits, 16).toUpper()));
        EXPECT_EQ(parseValues(tag("D0/float32"), text), values);
    }
}

TEST(TypedValues, InfiniteFloatsAndZeroKeepTheirSigns)
{
    EXPECT_EQ(formatValues(tag("D0x4/float32"), {0, 0x7F80, 0, 0xFF80}), "inf -inf");
    EXPECT_EQ(parseValues(tag("D0x4/float32"), "inf -inf"), (Values{0, 0x7F80, 0, 0xFF80}));
    EXPECT_EQ(formatValues(tag("D0/float32"), {0, 0x8000}), "-0");
    EXPECT_EQ(parseValues(tag("D0/float32"), "-0"), (Values{0, 0x8000}));
}

TEST(ScaledValues, AreRefusedAsTypedWithTheScaledLimits)
{
    Tag scaled = tag("D0/int16");
    scaled.scale = 0.1;
    EXPECT_EQ(faultOf(scaled, "5000"),
              "bad value \"5000\" for D0/int16: expected -3276.8 to 3276.7");
    scaled.scale = -2;
    EXPECT_EQ(faultOf(scaled, "70000"),
              "bad value \"70000\" for D0/int16: expected -65534 to 65536");
    Tag number = tag("D0/float32");
    number.scale = 10;
    EXPECT_EQ(faultOf(number, "1e40"), "bad value \"1e40\" for D0/float32: expected a number from "
                                       "-3.4e+39 to 3.4e+39, for example 21.5");
}

TEST(ScaledValues, BitsAreNotScaled)
{
    Tag scaled = tag("D0/float32");
    scaled.scale = 0.1;
    EXPECT_EQ(formatValues(scaled, {0, 0xFFC0}), "0xFFC00000");
    EXPECT_EQ(parseValues(scaled, "0xFFC00000"), (Values{0, 0xFFC0}));
    EXPECT_EQ(parseValues(scaled, "-inf"), (Values{0, 0xFF80}));
    EXPECT_EQ(formatValues(scaled, {0, 0xFF80}), "-inf");
}

TEST(TypedValues, BcdWithOtherDigitsIsWrittenAsItIsShown)
{
    EXPECT_EQ(parseValues(tag("D0/bcd"), "9999"), (Values{0x9999}));
    EXPECT_EQ(parseValues(tag("D0/bcd"), formatValues(tag("D0/bcd"), {0x000A})), (Values{0x000A}));
}
