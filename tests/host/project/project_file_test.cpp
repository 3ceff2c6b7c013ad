#include "host/project/project_file.h"

#include "host/error.h"

#include <gtest/gtest.h>

using namespace kmr;

namespace {

std::vector<ConfigEntry> parse(const QString &text)
{
    return parseConfig(text, "kmr.toml", {"link", "station", "tags", "publish.broker"}, {"tags"});
}

std::string faultOf(const QString &text)
{
    try {
        parse(text);
    } catch (const Error &error) {
        EXPECT_EQ(error.kind(), ErrorKind::Usage);
        return error.what();
    }
    return {};
}

} // namespace

TEST(Config, EntriesHaveTheirValueAndLine)
{
    const auto entries = parse("# mixer\nstation = 2\ntags = [\"D100\", \"X0..17\"]\n");
    ASSERT_EQ(entries.size(), 2U);
    EXPECT_EQ(entries[0].key, "station");
    EXPECT_EQ(entries[0].values, QStringList("2"));
    EXPECT_EQ(entries[0].line, 2);
    EXPECT_EQ(entries[1].values, (QStringList{"D100", "X0..17"}));
}

TEST(Config, KeysOfASectionHaveItsName)
{
    const auto entries = parse("link = \"a\"\n[publish]\nbroker = \"b\"\nbroken = 1\n");
    ASSERT_EQ(entries.size(), 3U);
    EXPECT_EQ(entries[1].key, "publish.broker");
    EXPECT_EQ(entries[1].values, QStringList("b"));
    EXPECT_EQ(entries[1].line, 3);
    EXPECT_NE(entries[2].fault, "");
    EXPECT_NE(parse("[station]\nx = 1\n")[0].fault, "");
}

TEST(Config, EveryBadKeyIsNamedInTheOrderOfLines)
{
    const auto entries = parse("speed = 9600\nstation = [1]\nlink = 1979-05-27\n");
    ASSERT_EQ(entries.size(), 3U);
    EXPECT_EQ(entries[0].fault, "unknown key \"speed\"; the keys are link, station, tags, "
                                "publish.broker");
    EXPECT_EQ(entries[1].fault, "station: expected one text or number");
    EXPECT_EQ(entries[2].fault, "link: expected one text or number");
    EXPECT_EQ(entries[2].line, 3);
}

TEST(Config, GoodEntriesHaveNoFault)
{
    const auto entries = parse("station = 2\nlink = 1979-05-27\n");
    ASSERT_EQ(entries.size(), 2U);
    EXPECT_EQ(entries[0].fault, "");
}

TEST(Config, WhatIsNoTomlIsNamedWithItsLine)
{
    EXPECT_EQ(faultOf("station = 1\nlink = tcp\n").rfind("kmr.toml:2: ", 0), 0U);
}

TEST(Config, NumbersAndTruthValuesAreReadAsTheyAreWritten)
{
    const auto entries = parse("link = true\nstation = 1.5\ntags = [false, 7]\n");
    ASSERT_EQ(entries.size(), 3U);
    EXPECT_EQ(entries[0].values, QStringList("true"));
    EXPECT_EQ(entries[1].values, QStringList("1.5"));
    EXPECT_EQ(entries[2].values, (QStringList{"false", "7"}));
}

TEST(Config, ListWithWhatIsNoTextIsRefused)
{
    const auto entries = parse("tags = [\"D100\", 1979-05-27]\n");
    ASSERT_EQ(entries.size(), 1U);
    EXPECT_EQ(entries[0].fault, "tags: expected text or a list of texts");
}
