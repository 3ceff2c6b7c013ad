#include "host/project/name_table.h"

#include "host/error.h"
#include "host/tags/values.h"
#include "tests/host/library.h"

#include <gtest/gtest.h>

using namespace kmr;

namespace {

NameTable goodNames(const QString &text)
{
    QStringList faults;
    NameTable names = NameTable::parse(text, "names.csv", faults);
    EXPECT_EQ(faults.join('\n').toStdString(), "");
    return names;
}

NamedTagReader readerOf(const QString &text)
{
    return {TagReader(library(), 1), goodNames(text)};
}

QStringList faultsOf(const QString &text)
{
    QStringList faults;
    const NameTable names = NameTable::parse(text, "names.csv", faults);
    return faults + checkNames(names, "names.csv", TagReader(library(), 1));
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
        EXPECT_TRUE(error.text().endsWith(" (and names.csv has no such name)")) << error.what();
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
                  QStringList(QString("names.csv:1: a: bad tag \"a\": %1 has no numbers that could "
                                      "be scaled")
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

TEST(Names, EveryBadLineIsNamedWithItsNumber)
{
    const QStringList faults = faultsOf("a,D1\n1b,D2\nc\nd,D4,,zero\na,D5\ne,Q1\nD6,D7\n"
                                        "f,M0,,2\ng,D8,,,has,commas\n");
    ASSERT_EQ(faults.size(), 8) << faults.join('\n').toStdString();
    EXPECT_TRUE(faults[0].startsWith("names.csv:2: bad name \"1b\""));
    EXPECT_EQ(faults[1], "names.csv:3: c has no tag");
    EXPECT_TRUE(faults[2].startsWith("names.csv:4: bad scale \"zero\" of d"));
    EXPECT_EQ(faults[3], "names.csv:5: a is already named in line 1");
    EXPECT_TRUE(faults[4].startsWith("names.csv:9: has 6 fields"));
    EXPECT_TRUE(faults[5].startsWith("names.csv:6: e: bad tag \"Q1\""));
    EXPECT_EQ(faults[6], "names.csv:7: D6 can't be a name, it is a tag itself");
    EXPECT_TRUE(faults[7].startsWith("names.csv:8: f: "));
}
