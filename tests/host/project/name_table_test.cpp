#include "host/project/named_tag_reader.h"

#include "host/error.h"
#include "host/tags/values.h"
#include "tests/host/library.h"

#include <gtest/gtest.h>

using namespace kmr;

namespace {

NameTable goodNames(const QString &text)
{
    NameTable names = NameTable::parse(text, "names.csv");
    EXPECT_EQ(names.faults().size(), 0U);
    return names;
}

NamedTagReader readerOf(const QString &text)
{
    return {TagReader(library(), 1), goodNames(text)};
}

QStringList faultsOf(const QString &text)
{
    return checkNames(NameTable::parse(text, "names.csv"), TagReader(library(), 1));
}

// Of reading one tag with these names, or of the names themselves.
std::string faultOf(const QString &text, const QString &tag,
                    const NameTable::Headings &headings = {})
{
    try {
        NamedTagReader(TagReader(library(), 1), NameTable::parse(text, "names.csv", headings))
            .read(tag);
    } catch (const Error &error) {
        return error.what();
    }
    return "none";
}

} // namespace

TEST(Names, StandForTheirTag)
{
    const NamedTagReader reader =
        readerOf("name,tag,unit,scale,comment\nboiler.temp,2#D100/int16,C\n");
    const Tag tag = reader.read("boiler.temp");
    EXPECT_EQ(tag.elements, (ElementRange{2, "D", 100, 1}));
    EXPECT_EQ(tag.text, "boiler.temp");
    EXPECT_EQ(tag.unit, "C");
    EXPECT_EQ(reader.read("D7").elements, (ElementRange{1, "D", 7, 1}));
}

TEST(Names, ScaleMultipliesWhatIsShownAndDividesWhatIsWritten)
{
    const NamedTagReader reader = readerOf("t,D100/int16,C,0.1\nf,D0/float32,,10\nc,CV2200,,0.1\n");
    EXPECT_EQ(formatValues(reader.read("t"), {235}), "23.5");
    EXPECT_EQ(parseValues(reader.read("t"), "-0.1"), (Values{0xFFFF}));
    EXPECT_THROW(parseValues(reader.read("t"), "3276.8"), Error);
    EXPECT_EQ(formatValues(reader.read("f"), {0, 0x41AC}), "215");
    EXPECT_EQ(parseValues(reader.read("c"), "7.5"), (Values{75}));
    EXPECT_EQ(formatValues(reader.read("c"), {75}), "7.5");
}

TEST(Names, SecondLineOfANameIsRefusedAlsoWithTheSameTag)
{
    EXPECT_EQ(faultsOf("a,D1\na,D2\nb,D3\nb,D3\n"),
              (QStringList{"names.csv:2: a is already named in line 1",
                           "names.csv:4: b is already named in line 3"}));
}

TEST(Names, CheckAsksForTheTagOfAName)
{
    const NamedTagReader reader = readerOf("a,D12000\n");
    EXPECT_EQ(reader.check("a").address, "12000");
    EXPECT_EQ(reader.check("D7").address, "7");
    try {
        reader.read("Q1");
        FAIL() << "it was accepted";
    } catch (const Error &error) {
        EXPECT_TRUE(error.text().contains(" (and names.csv has no such name")) << error.what();
    }
}

TEST(Names, ScaledNumberThatIsNoneIsRefused)
{
    const NamedTagReader reader = readerOf("t,D100/int16,C,0.1\n");
    try {
        parseValues(reader.read("t"), "warm");
        FAIL() << "it was accepted";
    } catch (const Error &error) {
        EXPECT_STREQ(error.what(), "bad value \"warm\" for t: expected a number, for example 21.5");
    }
}

TEST(Names, ScaleLeavesABcdNumberWithoutDecimalDigitsAsItIs)
{
    const NamedTagReader reader = readerOf("b,D0/bcd,,0.1\n");
    EXPECT_EQ(formatValues(reader.read("b"), {0x1234}), "123.4");
    EXPECT_EQ(formatValues(reader.read("b"), {0x12A4}), "0x12A4");
}

TEST(Names, OnlyNumbersHaveAScale)
{
    EXPECT_EQ(faultsOf("a,CV2200,,0.1\n"), QStringList());
    for (const char *tag : {"D0x2/text", "D0/hex", "TV5.3"}) {
        EXPECT_EQ(faultsOf(QString("a,%1,,0.1\n").arg(tag)),
                  QStringList(QString("names.csv:1: a: bad tag \"a\": %1 has no numbers to "
                                      "scale")
                                  .arg(tag)));
    }
}

TEST(Names, ScaleIsAFiniteNumberOtherThanZero)
{
    for (const char *scale : {"0", "inf", "nan", "1e999"}) {
        EXPECT_EQ(faultsOf(QString("a,D1,,%1\n").arg(scale)),
                  QStringList(QString("names.csv:1: bad scale \"%1\" of a: expected a number other "
                                      "than 0, for example 0.1")
                                  .arg(scale)));
    }
}

TEST(Names, QuotesHoldCommasAndQuotes)
{
    const NameTable names = goodNames("a,D1,,,\"flow, \"\"hot\"\"\"\r\n# a comment\n\nb, D2 ,C\n"
                                      "c , \"D3\" ,,,5\" pipe\n");
    EXPECT_EQ(names.find("a")->comment, "flow, \"hot\"");
    EXPECT_EQ(names.find("b")->tag, "D2");
    EXPECT_EQ(names.find("b")->line, 4);
    EXPECT_EQ(names.find("c")->tag, "D3"); // blanks around quotes do not count
    EXPECT_EQ(names.find("c")->comment, "5\" pipe");
    EXPECT_EQ(names.find("d"), nullptr);
}

TEST(Names, TextBehindAClosingQuoteAndAMissingOneAreNamed)
{
    EXPECT_EQ(faultsOf("a,D1,,,\"hot\" water, tap\nb,D2,,,\"hot\n"),
              (QStringList{"names.csv:1: \"hot\" in quotes is followed by \"water, tap\": write "
                           "quotes inside a field twice",
                           "names.csv:2: the quote before \"hot\" is not closed"}));
}

TEST(Names, EveryBadLineIsNamedInTheOrderOfTheLines)
{
    const QStringList faults = faultsOf("a,D1\n1b,D2\nc\nd,D4,,zero\na,D5\ne,Q1\nD6,D7\n"
                                        "f,M0,,2\ng,D8,,,has,commas\n");
    ASSERT_EQ(faults.size(), 8) << faults.join('\n').toStdString();
    EXPECT_TRUE(faults[0].startsWith("names.csv:2: bad name \"1b\""));
    EXPECT_EQ(faults[1], "names.csv:3: c has no tag");
    EXPECT_TRUE(faults[2].startsWith("names.csv:4: bad scale \"zero\" of d"));
    EXPECT_EQ(faults[3], "names.csv:5: a is already named in line 1");
    EXPECT_TRUE(faults[4].startsWith("names.csv:6: e: bad tag \"Q1\""));
    EXPECT_EQ(faults[5], "names.csv:7: D6 can't be a name, it is a tag itself");
    EXPECT_TRUE(faults[6].startsWith("names.csv:8: f: "));
    EXPECT_EQ(faults[7], "names.csv:9: has 6 fields, expected name,tag,unit,scale,comment (a field "
                         "with \",\" needs quotes)");
}

TEST(Names, BadLineStopsOnlyWhoUsesItsName)
{
    const char *const text = "a,D1\nb,D2,,zero\nc,Q1\nd,D3\nd,D4\nD6,D7\n";
    EXPECT_EQ(faultOf(text, "a"), "none");
    EXPECT_EQ(faultOf(text, "b"), "names.csv:2: bad scale \"zero\" of b: expected a number other "
                                  "than 0, for example 0.1");
    EXPECT_NE(faultOf(text, "c").find("names.csv:3: c: bad tag \"Q1\""), std::string::npos);
    EXPECT_EQ(faultOf(text, "d"), "names.csv:4: d is named again in line 5");
    EXPECT_EQ(faultOf(text, "D6"), "names.csv:6: D6 can't be a name, it is a tag itself");
}

TEST(Names, HeadingNamesTheColumnsInAnyOrderAndCase)
{
    const NamedTagReader reader =
        readerOf("Tag;NAME;Word Order;Offset;scale;Texts;byte_order;\n"
                 "D100/int16;t;;-40;0,1;\"0=off;1=on, hot\";;;\nD0x2/text;u;;;;;high\n"
                 "D0/int32;w;high\n");
    EXPECT_EQ(formatValues(reader.read("t"), {401}), "0.1");
    EXPECT_EQ(formatValues(reader.read("t"), {1}), "on, hot");
    EXPECT_EQ(formatValues(reader.read("u"), {0x4142, 0x4300}), "ABC");
    EXPECT_EQ(formatValues(reader.read("w"), {0, 1}), "1");
    EXPECT_EQ(formatValues(readerOf("tag\tname\nD1\tx\n").read("x"), {7}), "7");
}

TEST(Names, LineOfASpreadsheetNamesTheSeparator)
{
    for (const char *text : {"sep=;\nname;unit;tag\npump;1,5 kW;D1\n",
                             "\"SEP=\t\"\r\nname\tunit\ttag\r\npump\t1,5 kW\tD1\r\n"})
        EXPECT_EQ(readerOf(text).read("pump").unit, "1,5 kW") << text;
    EXPECT_TRUE(faultsOf("sep=;\n").isEmpty());
    EXPECT_EQ(faultsOf("sep=;\nname;tag\npump;\n"), QStringList("names.csv:3: pump has no tag"));
}

TEST(Names, SayWhatOthersMayWriteAndWhichChangesAreSmall)
{
    const NameTable names = goodNames("name;tag;writable;deadband\na;D1;yes;0,5\nb;D2;No\nc;D3\n");
    EXPECT_TRUE(names.find("a")->isWritable);
    EXPECT_EQ(names.find("a")->deadband, "0.5");
    EXPECT_FALSE(names.find("b")->isWritable);
    EXPECT_FALSE(names.find("c")->isWritable);
    EXPECT_EQ(faultsOf("name,tag,writable,deadband\na,D1,maybe\nb,D2,yes,-1\n"),
              (QStringList{"names.csv:2: bad writable \"maybe\" of a: expected yes or no",
                           "names.csv:3: bad deadband \"-1\" of b: expected 0 or more"}));
}

TEST(Names, WrongHeadingsAreNamedWithTheKnownOnes)
{
    EXPECT_EQ(
        faultOf("# plant\nname,tag,offst,Kommentar\n", "a"),
        "names.csv:2: unknown heading \"offst\", did you mean \"offset\"?; \"Kommentar\", did you "
        "mean \"comment\"?; the headings are name, tag, unit, scale, offset, texts, word-order, "
        "byte-order, writable, deadband, comment");
    EXPECT_EQ(faultOf("name,unit\n", "a"), "names.csv:1: the heading has no tag");
    EXPECT_EQ(faultOf("name,tag,Tag\n", "a"), "names.csv:1: the heading has tag twice");
}

TEST(Names, HeadingsOfOtherListsAreMappedAndOtherColumnsIgnored)
{
    const NameTable::Headings headings = {{"name", "symbol"}, {"tag", "Adresse"}};
    const char *const text = "Nr;Symbol;Adresse 1;Adresse\n1;a;D7;D8\n";
    EXPECT_EQ(NameTable::parse(text, "plant.csv", headings).find("a")->tag, "D8");
    EXPECT_EQ(
        faultOf(text, "a", {{"name", "Symbol"}, {"tag", "Adress"}}),
        "names.csv:1: no column \"Adress\", did you mean \"Adresse\"?; the file's columns are "
        "Nr, Symbol, Adresse 1, Adresse");
}

TEST(Names, TakeAStationACountAndAType)
{
    const NamedTagReader reader = readerOf("Ventil [auf],M0\nt,D100/int16,C,0.1\nt/int16x2,D7\n");
    EXPECT_EQ(reader.read("2#Ventil [auf]x3").elements, (ElementRange{2, "M", 0, 3}));
    EXPECT_EQ(formatValues(reader.read("tx2"), {1, 2}), "0.1 0.2");
    const Tag typed = reader.read("2#tx2/int32");
    EXPECT_EQ(typed.elements, (ElementRange{2, "D", 100, 2}));
    EXPECT_EQ(withUnit(typed, {7, 0}), "7"); // neither scale nor unit
    EXPECT_EQ(typed.text, "2#tx2/int32");
    EXPECT_EQ(reader.read("t/int16x2").elements.first, 7); // a whole name takes precedence
    EXPECT_EQ(reader.check("tx9").count, 9);
    EXPECT_NE(faultOf("t,D1\n", "t/flat32").find("is not a type"), std::string::npos);
    EXPECT_NE(faultOf("t,D1\n", "100#t").find("a station is 1 to 99"), std::string::npos);
}

TEST(Names, TextsAreOfWholeNumbersAndDiffer)
{
    static const char *const ROWS[][2] = {
        {"a,D1,0=x;1=x", "1=x appears twice"}, {"a,D1,0=x;0=y", "0=y appears twice"},
        {"a,D1,open", "expected for example"}, {"a,D1,0=", "expected for example"},
        {"a,D1,1=0", "must not look like"},    {"a,M0,2=x", "\"2\" for its texts"},
        {"a,D0/float32,1=x", "no whole"},      {"a,D0/hex,1=x", "no whole"},
    };
    for (const auto &[line, fault] : ROWS)
        EXPECT_NE(faultOf(QString("name,tag,texts\n") + line, "a").find(fault), std::string::npos)
            << line << ": " << faultOf(QString("name,tag,texts\n") + line, "a");
    EXPECT_EQ(faultOf("name,tag,word-order\na,D1,hgh\n", "a"),
              "names.csv:2: bad word-order \"hgh\" of a: expected low or high");
}

TEST(Names, UnknownNameIsNamedWithTheOneThatIsLikeIt)
{
    EXPECT_NE(faultOf("boiler.temp,D1\n", "boiler.tmp")
                  .find(" (and names.csv has no such name, did you mean \"boiler.temp\"?)"),
              std::string::npos);
}
