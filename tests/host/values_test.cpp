#include "host/values.h"

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
    EXPECT_EQ(formatValues({1, 65535, 4294967295}), "1 65535 4294967295");
}
