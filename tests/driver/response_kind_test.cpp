// What a reply counts as, by its function code.
#include "driver/response.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

int kindOf(const char *text)
{
    return check_rcv_data(reinterpret_cast<const quint8 *>(text),
                          static_cast<qint32>(strlen(text)));
}

} // namespace

TEST(ReplyKind, FourCharactersAreBad)
{
    const quint8 text[] = ":0103";
    EXPECT_EQ(check_rcv_data(text, 4), 0);
    EXPECT_EQ(check_rcv_data(text, 5), 1);
}

TEST(ReplyKind, SilenceIsBad)
{
    EXPECT_EQ(kindOf(""), 0);
    EXPECT_EQ(check_rcv_data(nullptr, 0), 0);
    EXPECT_EQ(check_rcv_data(nullptr, 20), 0);
}

TEST(ReplyKind, NegativeLengthIsBad)
{
    const quint8 text[] = ":0103";
    EXPECT_EQ(check_rcv_data(text, -1), 0);
}

TEST(ReplyKind, Function05And10AcknowledgeAWrite)
{
    EXPECT_EQ(kindOf(":0105"), 2);
    EXPECT_EQ(kindOf(":0110"), 2);
    EXPECT_EQ(kindOf("\xFF\xFF\xFF"
                     "10garbage"),
              2);
}

TEST(ReplyKind, FourCharactersOfAnAcknowledgementAreBad)
{
    EXPECT_EQ(kindOf(":011"), 0);
    const quint8 text[] = ":0110";
    EXPECT_EQ(check_rcv_data(text, 4), 0);
}

TEST(ReplyKind, OtherFunctionsBelow80AreData)
{
    EXPECT_EQ(kindOf(":0102"), 1);
    EXPECT_EQ(kindOf(":0103"), 1);
    EXPECT_EQ(kindOf(":0106"), 1);
    EXPECT_EQ(kindOf(":010F"), 1);
    EXPECT_EQ(kindOf(":0100"), 1);
    EXPECT_EQ(kindOf(":0115"), 1);
    EXPECT_EQ(kindOf(":0111"), 1);
    EXPECT_EQ(kindOf(":0120"), 1);
    EXPECT_EQ(kindOf(":017F"), 1);
}

TEST(ReplyKind, FunctionsFrom80OnAreBad)
{
    EXPECT_EQ(kindOf(":0180"), 0);
    EXPECT_EQ(kindOf(":0183"), 0);
    EXPECT_EQ(kindOf(":0190"), 0);
    EXPECT_EQ(kindOf(":0185"), 0);
}

TEST(ReplyKind, CharacterAboveSevenInTheFunctionIsBad)
{
    EXPECT_EQ(kindOf(":01:3"), 0);
    EXPECT_EQ(kindOf(":01A3"), 0);
    EXPECT_EQ(kindOf(":01a3"), 0);
    EXPECT_EQ(kindOf(":01\x80"
                     "3"),
              0);
    EXPECT_EQ(kindOf(":01\xFF"
                     "3"),
              0);
}

TEST(ReplyKind, CharacterBelowZeroInTheFunctionIsData)
{
    EXPECT_EQ(kindOf(":01 3"), 1);
    EXPECT_EQ(kindOf(":01\r\n"), 1);
}
