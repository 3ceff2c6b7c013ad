#include "host/project/recipe_file.h"

#include "host/error.h"
#include "tests/host/library.h"

#include <gtest/gtest.h>

using namespace kmr;

namespace {

std::vector<RecipeItem> parse(const QString &text, RecipeValues values = RecipeValues::Needed)
{
    return parseRecipe(text, "f", TagReader(library(), 1), values);
}

std::string faultOf(const QString &file)
{
    try {
        parse(file);
    } catch (const Error &error) {
        return error.what();
    }
    return "none";
}

} // namespace

TEST(RecipeFile, IsReadWithHeadingCommentsAndQuotes)
{
    const auto items =
        parse("# mixer\ntag,value\r\nD100,250\n\nD110x3,\"1,2,3\"\nCV2200, 7\nM0x2,1 0\n");
    ASSERT_EQ(items.size(), 4U);
    EXPECT_EQ(items[1].values, (Values{1, 2, 3}));
    EXPECT_EQ(formatRecipe(items), "tag,value\nD100,250\nD110x3,1 2 3\nCV2200,7\nM0x2,1 0\n");
}

TEST(RecipeFile, TextKeepsItsCommasAndBlanks)
{
    const auto items = parse("D100x4/text,\"a, b \"\n");
    EXPECT_EQ(items[0].values, (Values{0x2C61, 0x6220, 0x0020, 0}));
    EXPECT_EQ(formatRecipe(items), "tag,value\nD100x4/text,\"a, b \"\n");
    EXPECT_EQ(parse("D100x2/text,\"   \"\n")[0].values, (Values{0x2020, 0x0020}));
}

TEST(RecipeFile, NewValuesLeaveAllElseAsItIs)
{
    const QString text = "# flour, for the night\r\n\r\n tag,value,\r\n\t# salt\r\n D100 , 250\r\n"
                         "D110x3,1,2,3\r\n\"D120x2/text\",\"a, b\"\r\nCV2200\r\nD130";
    auto items = parse(text, RecipeValues::Ignored);
    ASSERT_EQ(items.size(), 5U);
    items[0].values = {7};
    items[1].values = {4, 5, 6};
    items[2].values = {0x2C63, 0}; // "c,"
    items[3].values = {70000};
    items[4].values = {8};
    EXPECT_EQ(withValues(text, items),
              "# flour, for the night\r\n\r\n tag,value,\r\n\t# salt\r\n D100 ,7\r\n"
              "D110x3,4 5 6\r\n\"D120x2/text\",\"c,\"\r\nCV2200,70000\r\nD130,8");
}

TEST(RecipeFile, ColumnAfterTheValuesIsRefusedForAnUploadAsForADownload)
{
    for (const char *line :
         {"D100,250,flour", "D100,,flour", "D100/float32,21,5", "D110x3,1 2 3,flour",
          "D110x5,1 2 3,flour", "D110x2,1,,2", "D120x2/text,ab,flour"}) {
        EXPECT_THROW(parse(line), Error) << line;
        EXPECT_THROW(parse(line, RecipeValues::Ignored), Error) << line;
    }
    EXPECT_EQ(parse("D100,250,,\n", RecipeValues::Ignored).size(), 1U); // from a spreadsheet
}

TEST(RecipeFile, EveryBadLineIsNamedWithItsNumber)
{
    try {
        parse("D100,1\nQ1,2\nD101\nX0,1\n");
        FAIL() << "it was accepted";
    } catch (const Error &error) {
        EXPECT_EQ(error.kind(), ErrorKind::Usage);
        const std::string text = error.what();
        EXPECT_EQ(text.find("f:1:"), std::string::npos) << text;
        EXPECT_NE(text.find("f:2: bad tag \"Q1\""), std::string::npos) << text;
        EXPECT_NE(text.find("f:3: D101 has no value"), std::string::npos) << text;
        EXPECT_NE(text.find("f:4: X0 can't be part"), std::string::npos) << text;
    }
}

TEST(RecipeFile, ElementThatStandsTwiceIsNamedWithBothLines)
{
    EXPECT_EQ(faultOf("tag,value\nD100x3,1 2 3\n\nD101,5\n"),
              "f:4: D101 appears twice, first in line 2");
    const std::string both = faultOf("D100,bad\nD99x3,1 2 3\n");
    EXPECT_NE(both.find("f:1: bad value"), std::string::npos) << both;
    EXPECT_NE(both.find("f:2: D100 appears twice, first in line 1"), std::string::npos) << both;
    EXPECT_EQ(faultOf("D100x2,1 2\nD102,3\n2#D100,4\nTV100,5\nCV2201,6\nCV101,7\n"), "none");
    EXPECT_THROW(parse("D100\n1#D100\n", RecipeValues::Ignored), Error);
}

TEST(RecipeFile, TagsOfANewRecipeNameEachElementOnce)
{
    EXPECT_EQ(recipeOf({tagOf("D100x3"), tagOf("D103")}).size(), 2U);
    try {
        recipeOf({tagOf("D100x3"), tagOf("D102")});
        FAIL() << "it was accepted";
    } catch (const Error &error) {
        EXPECT_EQ(error.kind(), ErrorKind::Usage);
        EXPECT_STREQ(error.what(), "D102 appears twice, first in D100x3");
    }
    EXPECT_THROW(recipeOf({tagOf("TV5.3")}), Error);
}

TEST(RecipeFile, TextWithoutItsFieldHasNoValueAndAnEmptyOneIsEmpty)
{
    EXPECT_EQ(faultOf("D300x4/text\n"), "f:1: D300x4/text has no value");
    const auto items = parse("D300x2/text,\n");
    EXPECT_EQ(items[0].values, (Values{0, 0}));
    EXPECT_EQ(formatRecipe(items), "tag,value\nD300x2/text,\n");
}

TEST(RecipeFile, TextWithCommasNeedsQuotes)
{
    EXPECT_EQ(
        faultOf("D300x4/text,ab, cd\n"),
        "f:1: D300x4/text has 2 values, expected one text (a field with commas needs quotes)");
    EXPECT_EQ(faultOf("D300x4/text,\"ab, cd\"\n"), "none");
    EXPECT_EQ(faultOf("D300x4,1,2,3, 4\n"), "none");
}

TEST(RecipeFile, FloatThatIsNoNumberComesBackAsItWas)
{
    const std::vector<RecipeItem> items = {{tagOf("D100/float32"), {0xFFFF, 0xFFFF}},
                                           {tagOf("D102/bcd"), {0x000A}}};
    const QString file = formatRecipe(items);
    EXPECT_EQ(file, "tag,value\nD100/float32,0xFFFFFFFF\nD102/bcd,0x000A\n");
    const auto read = parse(file);
    EXPECT_EQ(read[0].values, items[0].values);
    EXPECT_EQ(read[1].values, items[1].values);
}

TEST(RecipeFile, ValuesMayBeMissingForAnUpload)
{
    EXPECT_EQ(parse("D100\nD101,\n", RecipeValues::Ignored).size(), 2U);
    EXPECT_THROW(parse("# nothing\n", RecipeValues::Ignored), Error);
}

TEST(RecipeFile, WithOnlyBadLinesIsNotCalledEmptyAsWell)
{
    try {
        parse("X0,1\n");
        FAIL() << "it was accepted";
    } catch (const Error &error) {
        EXPECT_STREQ(error.what(), "f:1: X0 can't be part of a recipe: it can only be read");
    }
}
