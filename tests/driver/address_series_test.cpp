// The register catalogue and the series of addresses that the editor copies.
#include "driver/address.h"

#include "driver_fixture.h"

#include <climits>

namespace {

std::string textOf(const QString &text)
{
    return text.toStdString();
}

std::string textOf(qint32 number)
{
    return std::to_string(number);
}

// With a blank between two.
template <typename List> std::string joined(const List &list)
{
    std::string all;
    for (const auto &entry : list)
        all += (all.empty() ? "" : " ") + textOf(entry);
    return all;
}

struct SeriesRow {
    const char *area;
    qint32 start;
    qint32 n;
    qint32 step;
    qint32 result;
    std::string texts;
    std::string numbers; // empty: they show the same as the texts
};

template <size_t SIZE> void expectSeries(const SeriesRow (&rows)[SIZE])
{
    for (const SeriesRow &row : rows) {
        SCOPED_TRACE(testing::Message() << row.area << row.start << " by " << row.step);
        QVector<QString> texts;
        QVector<qint32> numbers;
        EXPECT_EQ(intf_multiCopy(row.area, row.start, row.n, row.step, &texts, &numbers),
                  row.result);
        EXPECT_EQ(joined(texts), row.texts);
        EXPECT_EQ(joined(numbers), row.numbers.empty() ? row.texts : row.numbers);
    }
}

} // namespace

// --- Catalogue -----------------------------------------------------------------------------------

TEST(RegDiscription, OfACatalogueAreaIsFiveTexts)
{
    const std::pair<const char *, const char *> rows[] = {
        {"X", "ooooo 0 23417 0 0"}, {"Y", "ooooo 0 23417 0 1"}, {"M", "ddddd 0 65536 0 1"},
        {"S", "dddd 0 9999 0 1"},   {"T", "dddd 0 9999 0 1"},   {"C", "dddd 0 9999 0 1"},
        {"TV", "dddd 0 9999 1 1"},  {"CV", "ddd 0 199 1 1"},    {"CV2", "ddd 200 255 1 1"},
        {"D", "ddddd 0 11999 1 1"}};
    for (const auto &[area, texts] : rows) {
        QStringList out("mine");
        EXPECT_EQ(intf_getRegDiscription(area, out), 1) << area;
        EXPECT_EQ(joined(out), std::string("mine ") + texts) << area;
        EXPECT_EQ(out.size(), 6) << area;
    }
}

TEST(RegDiscription, OfAnyOtherNameAppendsNothing)
{
    for (const char *area : {"TV_bit", "SM", "Q", "d", ""}) {
        QStringList out;
        EXPECT_EQ(intf_getRegDiscription(area, out), 0) << area;
        EXPECT_TRUE(out.isEmpty()) << area;
    }
}

TEST(RegListByType, AppendsTheBitAreasForZeroAndTheWordAreasForOneAndReturnsTheType)
{
    QStringList out("mine");
    EXPECT_EQ(intf_getRegListByType(0, out), 0);
    EXPECT_EQ(joined(out), "mine X Y M S T C");
    EXPECT_EQ(intf_getRegListByType(1, out), 1);
    EXPECT_EQ(joined(out), "mine X Y M S T C TV CV CV2 D");
}

TEST(RegListByType, AnyOtherTypeAppendsNothing)
{
    for (const qint32 type : {-1, 2, INT_MAX, INT_MIN}) {
        QStringList out("mine");
        EXPECT_EQ(intf_getRegListByType(type, out), 0) << type;
        EXPECT_EQ(joined(out), "mine") << type;
    }
}

// --- Series --------------------------------------------------------------------------------------

TEST(Series, StepsAsAskedAndByOneForAnyStepBelowOne)
{
    expectSeries({{"D", 0, 3, 10, 1, "0 10 20", ""},
                  {"D", 7, 2, 1, 1, "7 8", ""},
                  {"D", 0, 2, -1, 1, "0 1", ""},
                  {"D", 0, 2, 0, 1, "0 1", ""},
                  {"D", 0, 2, -3, 1, "0 1", ""},
                  {"D", 0, 2, INT_MIN, 1, "0 1", ""}});
}

TEST(Series, StepOfMinusTwoIsTwoForWordsAndTheirBits)
{
    for (const char *area : WORD_AREAS)
        expectSeries({{area, 0, 3, -2, 1, "0 2 4", ""}});
    expectSeries({{"TV_bit", 0, 2, -2, 1, "0.0 0.2", "0 2"}});
    for (const char *area : {"CV2", "X", "Y", "M", "S", "T", "C"})
        expectSeries({{area, 0, 3, -2, 1, "0 1 2", ""}});
}

TEST(Series, AddressesBehindTheAreaAreItsLast)
{
    expectSeries({{"D", 11998, 3, 1, 2, "11998 11999 11999", ""},
                  {"D", 11998, 2, 1, 1, "11998 11999", ""},
                  {"D", 11999, 3, 1, 2, "11999 11999 11999", ""},
                  {"CV2", 255, 2, 1, 2, "255 255", ""},
                  {"CV2", 0, 1, 1, 1, "0", ""}, // there is no lower end
                  {"CV", 199, 2, 1, 2, "199 199", ""},
                  {"M", 65535, 3, 1, 2, "65535 65536 65536", ""},
                  {"X", 23417, 2, 1, 2, "23417 23417", ""},
                  {"Y", 23416, 2, 1, 1, "23416 23417", ""}});
    for (const char *area : {"TV", "S", "T", "C"})
        expectSeries({{area, 9999, 2, 1, 2, "9999 9999", ""}});
}

// The text of the end does not match its number.
TEST(Series, WordBitsBehindTheEndAreReplacedToo)
{
    expectSeries({{"TV_bit", 1048575, 2, 1, 2, "65535.15 65536.15", "1048575 1048575"}});
}

TEST(Series, SumsAreTakenIn64Bits)
{
    expectSeries({{"D", 1, 3, INT_MAX, 2, "1 11999 11999", ""},
                  {"X", 1, 3, INT_MAX, 2, "1 23417 23417", ""},
                  {"X", INT_MAX, 1, 1, 2, "23417", ""},
                  {"TV_bit", 1, 3, INT_MAX, 2, "0.1 65536.15 65536.15", "1 1048575 1048575"}});
}

// Only the last digit carries: a tens digit that becomes 8 stays.
TEST(Series, OfOctalAddressesSkipsEightAndNine)
{
    expectSeries({{"X", 0, 10, 1, 1, "0 1 2 3 4 5 6 7 10 11", ""},
                  {"Y", 0, 4, 8, 1, "0 10 20 30", ""},
                  {"X", 0, 2, 9, 1, "0 10", ""},
                  {"X", 8, 2, 1, 1, "10 11", ""},
                  {"X", 70, 3, 5, 1, "70 75 80", ""},
                  {"X", 77, 2, 1, 1, "77 80", ""},
                  {"X", 23416, 3, 1, 2, "23416 23417 23417", ""}});
}

TEST(Series, OfWordBitsShowsWordAndBit)
{
    expectSeries({{"TV_bit", 33, 2, 15, 1, "2.1 3.0", "33 48"},
                  {"TV_bit", 9, 2, 1, 1, "0.9 0.10", "9 10"},
                  {"TV_bit", 15, 2, 1, 1, "0.15 1.0", "15 16"},
                  {"TV_bit", 160000, 1, 1, 1, "10000.0", "160000"}});
}

// Decimal and word.bit texts are unsigned, numbers are not; octal digits have their sign.
TEST(Series, MayStartBelowZero)
{
    expectSeries({{"D", -1, 2, 1, 1, "4294967295 0", "-1 0"},
                  {"X", -1, 2, 1, 1, "-1 0", ""},
                  {"X", -8, 1, 1, 1, "-8", ""},
                  {"M", INT_MIN, 1, 1, 1, "2147483648", "-2147483648"},
                  {"TV_bit", -33, 1, 1, 1, "4294967294.4294967295", "-33"}});
}

TEST(Series, OfNoElementsOrOfAnUnknownAreaIsEmpty)
{
    for (const char *area : {"SM", "d", ""})
        expectSeries({{area, 0, 3, 1, 0, "", ""}});
    for (const char *area : {"D", "X", "TV_bit"}) {
        expectSeries({{area, INT_MAX, 0, 1, 1, "", ""},
                      {area, INT_MAX, -1, 1, 1, "", ""},
                      {area, INT_MAX, INT_MIN, 1, 1, "", ""}});
    }
}

TEST(Series, IsAppendedToWhatTheVectorsHold)
{
    QVector<QString> texts(1, "mine");
    QVector<qint32> numbers(1, 42);
    EXPECT_EQ(intf_multiCopy("TV_bit", 16, 1, 1, &texts, &numbers), 1);
    EXPECT_EQ(intf_multiCopy("X", 17, 1, 1, &texts, &numbers), 1);
    EXPECT_EQ(intf_multiCopy("D", 5, 1, 1, &texts, &numbers), 1);
    EXPECT_EQ(joined(texts), "mine 1.0 17 5");
    EXPECT_EQ(joined(numbers), "42 16 17 5");
}

TEST(Series, WithANullVectorFillsTheOther)
{
    QVector<QString> texts;
    QVector<qint32> numbers;
    EXPECT_EQ(intf_multiCopy("D", 11999, 2, 1, nullptr, &numbers), 2);
    EXPECT_EQ(intf_multiCopy("X", 7, 2, 1, &texts, nullptr), 1);
    EXPECT_EQ(intf_multiCopy("TV_bit", 7, 2, 1, nullptr, nullptr), 1);
    EXPECT_EQ(joined(numbers), "11999 11999");
    EXPECT_EQ(joined(texts), "7 10");
}

TEST(MultiCpDec, TakesAStepAsGivenAndReplacesWhatIsAboveTheMaximum)
{
    QVector<QString> texts;
    QVector<qint32> numbers;
    EXPECT_EQ(multiCp_dec(4, 4, 3, texts, numbers, 10, "end"), 2);
    EXPECT_EQ(multiCp_dec(4, 3, -2, texts, numbers, 10, "end"), 1);
    EXPECT_EQ(joined(texts), "4 7 10 end 4 2 0");
    EXPECT_EQ(joined(numbers), "4 7 10 10 4 2 0");
}
