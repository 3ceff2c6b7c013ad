// The register catalogue and the series of addresses that the editor copies.
#include "driver/address.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

namespace {

using Texts = std::vector<std::string>;
using Numbers = std::vector<qint32>;

const qint32 INT_LEAST = std::numeric_limits<qint32>::min();
const qint32 INT_MOST = std::numeric_limits<qint32>::max();

template <typename List> Texts plain(const List &texts)
{
    Texts all;
    for (const QString &text : texts)
        all.push_back(text.toStdString());
    return all;
}

// --- Catalogue -----------------------------------------------------------------------------------

struct CatalogueRow {
    const char *area;
    Texts texts;
};

std::ostream &operator<<(std::ostream &out, const CatalogueRow &row)
{
    return out << row.area;
}

class Catalogue : public testing::TestWithParam<CatalogueRow> {};

TEST_P(Catalogue, DescribesTheAreaInFiveTexts)
{
    QStringList out;
    EXPECT_EQ(intf_getRegDiscription(GetParam().area, out), 1);
    EXPECT_EQ(plain(out), GetParam().texts);
}

const CatalogueRow CATALOGUE[] = {
    {"X", {"ooooo", "0", "23417", "0", "0"}}, {"Y", {"ooooo", "0", "23417", "0", "1"}},
    {"M", {"ddddd", "0", "65536", "0", "1"}}, {"S", {"dddd", "0", "9999", "0", "1"}},
    {"T", {"dddd", "0", "9999", "0", "1"}},   {"C", {"dddd", "0", "9999", "0", "1"}},
    {"TV", {"dddd", "0", "9999", "1", "1"}},  {"CV", {"ddd", "0", "199", "1", "1"}},
    {"CV2", {"ddd", "200", "255", "1", "1"}}, {"D", {"ddddd", "0", "11999", "1", "1"}},
};

INSTANTIATE_TEST_SUITE_P(Areas, Catalogue, testing::ValuesIn(CATALOGUE),
                         [](const auto &row) { return std::string(row.param.area); });

TEST(RegDiscription, OfANameOutsideTheCatalogueAppendsNothing)
{
    for (const char *area : {"TV_bit", "SM", "Q", "d", ""}) {
        QStringList out;
        EXPECT_EQ(intf_getRegDiscription(area, out), 0) << area;
        EXPECT_TRUE(out.isEmpty()) << area;
    }
}

TEST(RegDiscription, AppendsBehindWhatTheListHolds)
{
    QStringList out("mine");
    intf_getRegDiscription("CV", out);
    EXPECT_EQ(plain(out), (Texts{"mine", "ddd", "0", "199", "1", "1"}));
}

TEST(RegListByType, ZeroListsTheBitAreasAndReturnsZero)
{
    QStringList out;
    EXPECT_EQ(intf_getRegListByType(0, out), 0);
    EXPECT_EQ(plain(out), (Texts{"X", "Y", "M", "S", "T", "C"}));
}

TEST(RegListByType, OneListsTheWordAreasAndReturnsOne)
{
    QStringList out;
    EXPECT_EQ(intf_getRegListByType(1, out), 1);
    EXPECT_EQ(plain(out), (Texts{"TV", "CV", "CV2", "D"}));
}

TEST(RegListByType, AnyOtherTypeAppendsNothing)
{
    for (const qint32 type : {-1, 2, INT_MOST, INT_LEAST}) {
        QStringList out("mine");
        EXPECT_EQ(intf_getRegListByType(type, out), 0) << type;
        EXPECT_EQ(plain(out), Texts{"mine"}) << type;
    }
}

TEST(RegListByType, AppendsBehindWhatTheListHolds)
{
    QStringList out("mine");
    intf_getRegListByType(1, out);
    EXPECT_EQ(plain(out), (Texts{"mine", "TV", "CV", "CV2", "D"}));
}

// --- Series --------------------------------------------------------------------------------------

struct SeriesRow {
    const char *name;
    const char *area;
    qint32 start;
    qint32 n;
    qint32 step;
    qint32 result;
    Texts texts;
    Numbers numbers;
};

std::ostream &operator<<(std::ostream &out, const SeriesRow &row)
{
    return out << row.name;
}

class Series : public testing::TestWithParam<SeriesRow> {};

TEST_P(Series, GivesTextsAndNumbers)
{
    const SeriesRow &row = GetParam();
    QVector<QString> texts;
    QVector<qint32> numbers;
    EXPECT_EQ(intf_multiCopy(row.area, row.start, row.n, row.step, &texts, &numbers), row.result);
    EXPECT_EQ(plain(texts), row.texts);
    EXPECT_EQ(Numbers(numbers.begin(), numbers.end()), row.numbers);
}

std::string rowName(const testing::TestParamInfo<SeriesRow> &row)
{
    return row.param.name;
}

const SeriesRow STEPS[] = {
    {"AsGiven", "D", 0, 3, 10, 1, {"0", "10", "20"}, {0, 10, 20}},
    {"One", "D", 7, 2, 1, 1, {"7", "8"}, {7, 8}},
    {"MinusOneIsOne", "D", 0, 2, -1, 1, {"0", "1"}, {0, 1}},
    {"ZeroIsOne", "D", 0, 2, 0, 1, {"0", "1"}, {0, 1}},
    {"MinusThreeIsOne", "D", 0, 2, -3, 1, {"0", "1"}, {0, 1}},
    {"LeastIsOne", "D", 0, 2, INT_LEAST, 1, {"0", "1"}, {0, 1}},
    {"MinusTwoIsTwoForD", "D", 0, 3, -2, 1, {"0", "2", "4"}, {0, 2, 4}},
    {"MinusTwoIsTwoForTv", "TV", 0, 2, -2, 1, {"0", "2"}, {0, 2}},
    {"MinusTwoIsTwoForCv", "CV", 0, 2, -2, 1, {"0", "2"}, {0, 2}},
    {"MinusTwoIsTwoForTvBit", "TV_bit", 0, 2, -2, 1, {"0.0", "0.2"}, {0, 2}},
    {"MinusTwoIsOneForCv2", "CV2", 0, 3, -2, 1, {"0", "1", "2"}, {0, 1, 2}},
    {"MinusTwoIsOneForX", "X", 0, 2, -2, 1, {"0", "1"}, {0, 1}},
    {"MinusTwoIsOneForY", "Y", 0, 2, -2, 1, {"0", "1"}, {0, 1}},
    {"MinusTwoIsOneForM", "M", 0, 2, -2, 1, {"0", "1"}, {0, 1}},
    {"MinusTwoIsOneForS", "S", 0, 2, -2, 1, {"0", "1"}, {0, 1}},
    {"MinusTwoIsOneForT", "T", 0, 2, -2, 1, {"0", "1"}, {0, 1}},
    {"MinusTwoIsOneForC", "C", 0, 2, -2, 1, {"0", "1"}, {0, 1}},
};

INSTANTIATE_TEST_SUITE_P(Steps, Series, testing::ValuesIn(STEPS), rowName);

const SeriesRow ENDS[] = {
    {"D", "D", 11998, 3, 1, 2, {"11998", "11999", "11999"}, {11998, 11999, 11999}},
    {"DUpToTheEnd", "D", 11998, 2, 1, 1, {"11998", "11999"}, {11998, 11999}},
    {"DGoesOnBehindTheEnd",
     "D",
     11999,
     3,
     1,
     2,
     {"11999", "11999", "11999"},
     {11999, 11999, 11999}},
    {"Cv2", "CV2", 255, 2, 1, 2, {"255", "255"}, {255, 255}},
    {"Cv2HasNoLowerEnd", "CV2", 0, 1, 1, 1, {"0"}, {0}},
    {"Cv", "CV", 199, 2, 1, 2, {"199", "199"}, {199, 199}},
    {"Tv", "TV", 9999, 2, 1, 2, {"9999", "9999"}, {9999, 9999}},
    {"S", "S", 9999, 2, 1, 2, {"9999", "9999"}, {9999, 9999}},
    {"T", "T", 9999, 2, 1, 2, {"9999", "9999"}, {9999, 9999}},
    {"C", "C", 9999, 2, 1, 2, {"9999", "9999"}, {9999, 9999}},
    {"M", "M", 65535, 3, 1, 2, {"65535", "65536", "65536"}, {65535, 65536, 65536}},
    {"X", "X", 23417, 2, 1, 2, {"23417", "23417"}, {23417, 23417}},
    {"Y", "Y", 23416, 2, 1, 1, {"23416", "23417"}, {23416, 23417}},
    {"TvBit", "TV_bit", 1048575, 2, 1, 2, {"65535.15", "65536.15"}, {1048575, 1048575}},
    {"SumBeyond32Bits", "D", 1, 3, INT_MOST, 2, {"1", "11999", "11999"}, {1, 11999, 11999}},
    {"OctalSumBeyond32Bits", "X", 1, 3, INT_MOST, 2, {"1", "23417", "23417"}, {1, 23417, 23417}},
    {"BitSumBeyond32Bits",
     "TV_bit",
     1,
     3,
     INT_MOST,
     2,
     {"0.1", "65536.15", "65536.15"},
     {1, 1048575, 1048575}},
    {"MostStart", "X", INT_MOST, 1, 1, 2, {"23417"}, {23417}},
};

INSTANTIATE_TEST_SUITE_P(Ends, Series, testing::ValuesIn(ENDS), rowName);

const SeriesRow OCTAL[] = {
    {"SkipsEightAndNine",
     "X",
     0,
     10,
     1,
     1,
     {"0", "1", "2", "3", "4", "5", "6", "7", "10", "11"},
     {0, 1, 2, 3, 4, 5, 6, 7, 10, 11}},
    {"CorrectionsAddUp", "Y", 0, 4, 8, 1, {"0", "10", "20", "30"}, {0, 10, 20, 30}},
    {"StepOfNine", "X", 0, 2, 9, 1, {"0", "10"}, {0, 10}},
    {"StartOnAnEight", "X", 8, 2, 1, 1, {"10", "11"}, {10, 11}},
    {"TensDigitIsNotCorrected", "X", 70, 3, 5, 1, {"70", "75", "80"}, {70, 75, 80}},
    {"CarryIntoTheTensDigit", "X", 77, 2, 1, 1, {"77", "80"}, {77, 80}},
    {"CorrectedBehindTheEnd",
     "X",
     23410,
     9,
     1,
     2,
     {"23410", "23411", "23412", "23413", "23414", "23415", "23416", "23417", "23417"},
     {23410, 23411, 23412, 23413, 23414, 23415, 23416, 23417, 23417}},
};

INSTANTIATE_TEST_SUITE_P(Octal, Series, testing::ValuesIn(OCTAL), rowName);

const SeriesRow WORD_DOT_BIT[] = {
    {"FromWordToWord", "TV_bit", 33, 2, 15, 1, {"2.1", "3.0"}, {33, 48}},
    {"OneAndTwoDigitBits", "TV_bit", 9, 2, 1, 1, {"0.9", "0.10"}, {9, 10}},
    {"HighestBit", "TV_bit", 15, 2, 1, 1, {"0.15", "1.0"}, {15, 16}},
    {"BeyondTheCheckedRange", "TV_bit", 160000, 1, 1, 1, {"10000.0"}, {160000}},
};

INSTANTIATE_TEST_SUITE_P(WordDotBit, Series, testing::ValuesIn(WORD_DOT_BIT), rowName);

// Decimal and word.bit texts are unsigned, numbers are not; octal digits carry their sign.
const SeriesRow NEGATIVE[] = {
    {"Decimal", "D", -1, 2, 1, 1, {"4294967295", "0"}, {-1, 0}},
    {"Octal", "X", -1, 2, 1, 1, {"-1", "0"}, {-1, 0}},
    {"OctalEight", "X", -8, 1, 1, 1, {"-8"}, {-8}},
    {"DecimalLeast", "M", INT_LEAST, 1, 1, 1, {"2147483648"}, {INT_LEAST}},
    {"WordDotBit", "TV_bit", -33, 1, 1, 1, {"4294967294.4294967295"}, {-33}},
};

INSTANTIATE_TEST_SUITE_P(Negative, Series, testing::ValuesIn(NEGATIVE), rowName);

const SeriesRow NOTHING[] = {
    {"UnknownArea", "SM", 0, 3, 1, 0, {}, {}},
    {"LowerCaseArea", "d", 0, 3, 1, 0, {}, {}},
    {"NoArea", "", 0, 3, 1, 0, {}, {}},
    {"DecimalNoEntries", "D", 12345, 0, 1, 1, {}, {}},
    {"DecimalNegativeN", "D", 12345, -1, 1, 1, {}, {}},
    {"OctalNoEntries", "X", 99999, 0, 1, 1, {}, {}},
    {"OctalNegativeN", "X", 99999, INT_LEAST, 1, 1, {}, {}},
    {"WordDotBitNoEntries", "TV_bit", INT_MOST, 0, 1, 1, {}, {}},
    {"WordDotBitNegativeN", "TV_bit", INT_MOST, -7, 1, 1, {}, {}},
};

INSTANTIATE_TEST_SUITE_P(Nothing, Series, testing::ValuesIn(NOTHING), rowName);

TEST(MultiCopy, AppendsBehindWhatTheVectorsHold)
{
    QVector<QString> texts(1, "mine");
    QVector<qint32> numbers(1, 42);
    EXPECT_EQ(intf_multiCopy("TV_bit", 16, 1, 1, &texts, &numbers), 1);
    EXPECT_EQ(intf_multiCopy("X", 17, 1, 1, &texts, &numbers), 1);
    EXPECT_EQ(intf_multiCopy("D", 5, 1, 1, &texts, &numbers), 1);
    EXPECT_EQ(plain(texts), (Texts{"mine", "1.0", "17", "5"}));
    EXPECT_EQ(numbers, (QVector<qint32>{42, 16, 17, 5}));
}

TEST(MultiCopy, WithANullVectorFillsTheOther)
{
    QVector<QString> texts;
    QVector<qint32> numbers;
    EXPECT_EQ(intf_multiCopy("D", 11999, 2, 1, nullptr, &numbers), 2);
    EXPECT_EQ(intf_multiCopy("X", 7, 2, 1, &texts, nullptr), 1);
    EXPECT_EQ(intf_multiCopy("TV_bit", 7, 2, 1, nullptr, nullptr), 1);
    EXPECT_EQ(numbers, (QVector<qint32>{11999, 11999}));
    EXPECT_EQ(plain(texts), (Texts{"7", "10"}));
}

TEST(MultiCpDec, ReplacesWhatIsAboveTheMaximum)
{
    QVector<QString> texts;
    QVector<qint32> numbers;
    EXPECT_EQ(multiCp_dec(4, 4, 3, texts, numbers, 10, "end"), 2);
    EXPECT_EQ(plain(texts), (Texts{"4", "7", "10", "end"}));
    EXPECT_EQ(numbers, (QVector<qint32>{4, 7, 10, 10}));
}

TEST(MultiCpDec, TakesAStepAsGiven)
{
    QVector<QString> texts;
    QVector<qint32> numbers;
    EXPECT_EQ(multiCp_dec(4, 3, -2, texts, numbers, 10, "end"), 1);
    EXPECT_EQ(plain(texts), (Texts{"4", "2", "0"}));
    EXPECT_EQ(numbers, (QVector<qint32>{4, 2, 0}));
}

} // namespace
