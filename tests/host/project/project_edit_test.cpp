#include "host/project/project_edit.h"

#include <gtest/gtest.h>

namespace kmr {

namespace {

const char *const WITH_COMMENTS = "# the mixer\n"
                                  "station = 3 # the small one\n"
                                  "tags = [\n"
                                  "    # pressures – all of them\n"
                                  "    \"D1\", # inlet\n"
                                  "    \"D2\", \"D3\",\n"
                                  "    \"D4\" # outlet\n"
                                  "]\n"
                                  "\n"
                                  "# for the broker\n"
                                  "[publish]\n"
                                  "broker = \"mqtt://b\"\n";

QString edited(const QString &text, const QStringList &tags)
{
    return editProject(text, "/p/kmr.toml", tags, "/p/kmr.toml");
}

// WITH_COMMENTS with other lines in its list.
QString expected(const QString &lines)
{
    QString text = WITH_COMMENTS;
    const int begin = static_cast<int>(text.indexOf("    \"D1\""));
    const int end = static_cast<int>(text.indexOf("]\n"));
    return text.replace(begin, end - begin, lines);
}

} // namespace

TEST(ProjectEdit, WhatIsUnchangedStaysAsItIs)
{
    EXPECT_EQ(edited(WITH_COMMENTS, {"D1", "D2", "D3", "D4"}), WITH_COMMENTS);
}

TEST(ProjectEdit, ATagsCommentGoesWithIt)
{
    EXPECT_EQ(edited(WITH_COMMENTS, {"D2", "D4"}), expected("    \"D2\", \n    \"D4\" # outlet\n"));
    EXPECT_EQ(edited(WITH_COMMENTS, {}), expected("    \n"));
}

TEST(ProjectEdit, AnotherFormatStandsInTheSamePlace)
{
    EXPECT_EQ(edited(WITH_COMMENTS, {"D1/hex", "D2", "D3", "D4/hex", "D5"}),
              expected("    \"D1/hex\", # inlet\n    \"D2\", \"D3\",\n    \"D4/hex\", # outlet\n"
                       "    \"D5\",\n"));
}

TEST(ProjectEdit, TagsAreInsertedAndMoved)
{
    EXPECT_EQ(edited(WITH_COMMENTS, {"D0", "D1", "D3", "D2", "D4"}),
              expected("    \"D0\",\n    \"D1\", # inlet\n    \"D3\",\n    \"D2\", \n"
                       "    \"D4\" # outlet\n"));
}

TEST(ProjectEdit, AListOfOneLineIsWrittenAnew)
{
    EXPECT_EQ(edited("tags = [\"D1\"] # all\nstation = 2\n", {"D1", "D2"}),
              "tags = [\n    \"D1\",\n    \"D2\",\n] # all\nstation = 2\n");
    EXPECT_EQ(edited("tags = \"D1\"", {"D2"}), "tags = [\n    \"D2\",\n]");
    EXPECT_EQ(edited("tags = [\"D1\",\n  \"D2\"]\n", {"D1", "D3", "D4"}),
              "tags = [\"D1\",\n  \"D3\",\n    \"D4\",\n]\n");
}

TEST(ProjectEdit, AListWithACommentBeforeACommaIsWrittenAnew)
{
    EXPECT_EQ(edited("tags = [\n  \"D1\" # inlet\n  , \"D2\"\n] # all\n", {"D2"}),
              "tags = [\n    \"D2\",\n] # all\n");
    EXPECT_EQ(edited("tags = [\n  \"D1\" # inlet\n  ,\n]\n", {"D1", "D2"}),
              "tags = [\n    \"D1\",\n    \"D2\",\n]\n");
}

TEST(ProjectEdit, ATextOfSeveralLinesIsReplacedByAList)
{
    EXPECT_EQ(edited("tags = \"\"\"\nD1\"\"\"\n", {"D2"}), "tags = [\n    \"D2\",\n]\n");
}

TEST(ProjectEdit, AMissingListIsAddedBeforeTheSections)
{
    EXPECT_EQ(edited("station = 2\n\n# broker\n[publish]\na = 1\n", {"D1"}),
              "station = 2\n\ntags = [\n    \"D1\",\n]\n\n# broker\n[publish]\na = 1\n");
    EXPECT_EQ(edited("station = 2", {"D1"}), "station = 2\ntags = [\n    \"D1\",\n]\n");
}

TEST(ProjectEdit, InAnotherFolderItsPathsStayRight)
{
    EXPECT_EQ(editProject("driver = \"lib/driver.so\" # ours\n", "/p/kmr.toml", {}, "/q/kmr.toml"),
              "driver = \"/p/lib/driver.so\" # ours\n");
    EXPECT_EQ(editProject("driver = \"lib/driver.so\"\n", "/p/kmr.toml", {}, "/p/lib/kmr.toml"),
              "driver = \"driver.so\"\n");
    EXPECT_EQ(editProject("[publish]\nca = \"ca.pem\"\nspool = \"/s/k\"\nbroker = \"mqtt://b\"\n",
                          "/p/kmr.toml", {}, "/q/kmr.toml"),
              "[publish]\nca = \"/p/ca.pem\"\nspool = \"/s/k\"\nbroker = \"mqtt://b\"\n");
}

} // namespace kmr
