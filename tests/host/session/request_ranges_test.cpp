#include "host/session/request_ranges.h"

#include "host/error.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>
#include <random>
#include <set>

using namespace kmr;

namespace kmr {

void PrintTo(const ElementRange &run, std::ostream *out)
{
    *out << run.station << '#' << run.area.toStdString() << ' ' << run.first << 'x' << run.count;
}

} // namespace kmr

namespace {

const DriverFunctions &library()
{
    static const DriverLibrary LOADED(DRIVER_LIBRARY);
    return LOADED.functions();
}

std::vector<Tag> tags(const QStringList &texts)
{
    std::vector<Tag> list;
    for (const QString &text : texts)
        list.push_back(TagReader(library(), 1).read(text));
    return list;
}

std::vector<ElementRange> runs(const QStringList &texts, int groupLimit = 8)
{
    return readRanges(tags(texts), groupLimit);
}

bool holds(const ElementRange &outer, int station, const QString &area, int number)
{
    return outer.station == station && outer.area == area && number >= outer.first &&
           number < outer.end();
}

// Every element in one round of the driver's polling, from the frames that it sends.
// Fails if a frame crosses a border.
std::vector<ElementRange> polled(const std::vector<ElementRange> &plan, int groupLimit)
{
    const QByteArray property = "1#0#0#3#" + QByteArray::number(groupLimit);
    qint32 result = 0;
    library().initProperty(nullptr, nullptr, nullptr, &result, property.constData(), nullptr);
    const int blocks = library().addrMerge(toKeys(plan));
    std::vector<ElementRange> covered;
    for (int i = 0; i < blocks; ++i) {
        FRAME_PRO frame;
        EXPECT_EQ(library().getSendFrame(&frame), 1);
        ElementRange run = refreshedBy(frame);
        const int read = isBitArea(run.area)       ? frame.replyDataLen * 4
                         : isCounterArea(run.area) ? frame.replyDataLen / 8
                                                   : frame.replyDataLen / 4;
        EXPECT_EQ(run.count, read) << "a frame reaches over a border";
        covered.push_back(run);
        QByteArray reply = ":010300FC\r\n";
        QString errorInfo;
        EXPECT_EQ(library().dealRcvFrame(reply, errorInfo), 1);
    }
    return covered;
}

// The places in `covered` of the runs that hold a word or bit.
std::vector<std::size_t> holders(const std::vector<ElementRange> &covered, const ElementRange &of,
                                 int number)
{
    std::vector<std::size_t> places;
    for (std::size_t i = 0; i < covered.size(); ++i) {
        if (holds(covered[i], of.station, of.area, number))
            places.push_back(i);
    }
    return places;
}

std::string refusalOf(const QStringList &texts, int groupLimit)
{
    try {
        runs(texts, groupLimit);
    } catch (const Error &error) {
        return error.what();
    }
    return "none";
}

// Up to twelve tags among `count` words of D, so that most have neighbours. No 32-bit values
// overlap.
QStringList randomTags(std::mt19937 &random, int first, int count)
{
    const auto below = [&random](int limit) {
        return static_cast<int>(random() % static_cast<unsigned>(limit));
    };
    QStringList texts;
    std::set<int> taken;
    for (int tags = 1 + below(12); tags > 0; --tags) {
        const int number = first + below(count);
        const int words = 2 * (1 + below(6));
        // No value may be on both sides of the border.
        bool isValid = number >= 4096 || number + words <= 4096 || number % 2 == 0;
        for (int word = number; word < number + words; ++word)
            isValid = isValid && taken.count(word) == 0;
        if (isValid && below(2) == 0) {
            texts.append(QString("D%1x%2/float32").arg(number).arg(words));
            for (int word = number; word < number + words; ++word)
                taken.insert(word);
        } else {
            texts.append(QString("D%1x%2").arg(number).arg(1 + below(3)));
        }
    }
    return texts;
}

// Checks, with the frames that the driver sends, that each element is read, and all words of
// a value by the same requests.
void expectWhole(const QStringList &texts, int groupLimit)
{
    SCOPED_TRACE(texts.join(' ').toStdString() + ", group limit " + std::to_string(groupLimit));
    const std::vector<ElementRange> covered = polled(runs(texts, groupLimit), groupLimit);
    for (const Tag &tag : tags(texts)) {
        const ElementRange &elements = tag.elements;
        for (int number = elements.first; number < elements.end(); ++number)
            EXPECT_FALSE(holders(covered, elements, number).empty()) << number;
        const int words = elementsPerNumber(tag);
        for (int number = elements.first; number < elements.end(); ++number) {
            const int low = number - (number - elements.first) % words;
            EXPECT_EQ(holders(covered, elements, low), holders(covered, elements, number)) << low;
        }
    }
}

} // namespace

TEST(ReadRuns, BitsOfTwoNeighbouringBlocksAreOneRun)
{
    EXPECT_EQ(runs({"M10x40"}), (std::vector<ElementRange>{{1, "M", 10, 22}, {1, "M", 32, 18}}));
    EXPECT_EQ(runs({"M15", "M32"}), (std::vector<ElementRange>{{1, "M", 15, 1}, {1, "M", 32, 1}}));
}

TEST(ReadRuns, BitsAreCutAtEachBlockWhereTheDriverWouldCutTwoOfThem)
{
    EXPECT_EQ(runs({"M10x30"}, 3),
              (std::vector<ElementRange>{{1, "M", 10, 6}, {1, "M", 16, 16}, {1, "M", 32, 8}}));
    EXPECT_EQ(runs({"M10x30"}, 4), (std::vector<ElementRange>{{1, "M", 10, 22}, {1, "M", 32, 8}}));
    EXPECT_EQ(runs({"M0x16"}, 1), (std::vector<ElementRange>{{1, "M", 0, 8}, {1, "M", 8, 8}}));
}

TEST(ReadRuns, BitsOfOneBlockAreOneRun)
{
    EXPECT_EQ(runs({"M14", "M1", "M9"}), (std::vector<ElementRange>{{1, "M", 1, 14}}));
}

TEST(ReadRuns, InputsAreCutInLinearNumbers)
{
    EXPECT_EQ(runs({"X16x4", "X40"}),
              (std::vector<ElementRange>{{1, "X", 14, 4}, {1, "X", 32, 1}}));
    const QList<KEY_ADDRESS> keys = toKeys(runs({"X16x4", "X40"}));
    EXPECT_EQ(keys[0].address, 16);
    EXPECT_EQ(keys[0].count, 4);
    EXPECT_EQ(keys[1].address, 40);
}

TEST(ReadRuns, WordsAreCutAtTheGroupLimit)
{
    EXPECT_EQ(runs({"D0x20"}),
              (std::vector<ElementRange>{{1, "D", 0, 8}, {1, "D", 8, 8}, {1, "D", 16, 4}}));
    EXPECT_EQ(runs({"D0x3"}, 2), (std::vector<ElementRange>{{1, "D", 0, 2}, {1, "D", 2, 1}}));
}

TEST(ReadRuns, DoublesAndNeighboursAreJoined)
{
    EXPECT_EQ(runs({"D2", "D1x2", "D0"}), (std::vector<ElementRange>{{1, "D", 0, 3}}));
}

TEST(ReadRuns, CountersGoOneByOne)
{
    EXPECT_EQ(runs({"CV2200x2"}),
              (std::vector<ElementRange>{{1, "CV2", 200, 1}, {1, "CV2", 201, 1}}));
}

TEST(ReadRuns, StationsAndAreasStayApart)
{
    EXPECT_EQ(runs({"2#D0", "D0", "TV0"}),
              (std::vector<ElementRange>{{1, "D", 0, 1}, {1, "TV", 0, 1}, {2, "D", 0, 1}}));
}

TEST(ReadRuns, BitOfAWordReadsTheWord)
{
    EXPECT_EQ(runs({"TV5.3"}), (std::vector<ElementRange>{{1, "TV", 5, 1}}));
}

TEST(ReadRuns, BothWordsOfAValueComeInOneRequest)
{
    EXPECT_EQ(runs({"D100x7", "D107/float32"}),
              (std::vector<ElementRange>{{1, "D", 100, 7}, {1, "D", 107, 2}}));
    EXPECT_EQ(runs({"D100x8/int32"}, 5),
              (std::vector<ElementRange>{{1, "D", 100, 4}, {1, "D", 104, 4}}));
    EXPECT_EQ(runs({"TV0x3", "TV3/uint32", "TV5"}, 4),
              (std::vector<ElementRange>{{1, "TV", 0, 3}, {1, "TV", 3, 3}}));
}

TEST(ReadRuns, ValuesThatOverlapComeInOneRequest)
{
    EXPECT_EQ(runs({"D100x6", "D105/int32", "D106/int32"}),
              (std::vector<ElementRange>{{1, "D", 100, 8}}));
    EXPECT_EQ(runs({"D100x6", "D105/int32", "D106/int32"}, 6),
              (std::vector<ElementRange>{{1, "D", 100, 5}, {1, "D", 105, 3}}));
}

TEST(ReadRuns, ValuesThatNoRequestCanHoldAreRefused)
{
    EXPECT_EQ(refusalOf({"D0", "D100/float32"}, 1),
              "the values of 32 or 64 bits in D100 to D101 need a request of 2 words, but the "
              "group limit "
              "is 1: raise it");
    QStringList overlapping;
    for (int number = 100; number < 108; ++number)
        overlapping.append(QString("D%1/int32").arg(number));
    EXPECT_EQ(refusalOf(overlapping, 8), "the values of 32 or 64 bits in D100 to D108 need a "
                                         "request of 9 words, but the group limit "
                                         "is 8: name fewer values that overlap");
    EXPECT_EQ(refusalOf({"CV2200/float32", "D0"}, 1), "none");
}

TEST(ReadRuns, LastWordsBelowTheBorderAreAFullGroupWhereOthersFollow)
{
    EXPECT_EQ(runs({"D4095x2"}), (std::vector<ElementRange>{{1, "D", 4088, 8}, {1, "D", 4096, 1}}));
    EXPECT_EQ(runs({"D4085x5", "D4096"}),
              (std::vector<ElementRange>{{1, "D", 4085, 3}, {1, "D", 4088, 8}, {1, "D", 4096, 1}}));
    EXPECT_EQ(runs({"D4095", "D4097"}, 3),
              (std::vector<ElementRange>{{1, "D", 4093, 3}, {1, "D", 4097, 1}}));
    EXPECT_EQ(runs({"D4095", "D4098"}, 3),
              (std::vector<ElementRange>{{1, "D", 4095, 1}, {1, "D", 4098, 1}}));
}

TEST(ReadRuns, ValueThatReachesIntoTheLastGroupMakesTheOneBehindTheBorderLonger)
{
    EXPECT_EQ(runs({"D4087/float32", "D4095x2"}),
              (std::vector<ElementRange>{{1, "D", 4087, 2}, {1, "D", 4089, 7}, {1, "D", 4096, 2}}));
}

TEST(ReadRuns, NoRequestHoldsHalfOfAValue)
{
    std::mt19937 random(20261121);
    for (int round = 0; round < 200; ++round) {
        for (int limit = 2; limit <= 8; ++limit)
            expectWhole(randomTags(random, 100, 30), limit);
        for (int limit = 3; limit <= 8; ++limit) // two words are too few for some at the border
            expectWhole(randomTags(random, 4081, 30), limit);
    }
}

TEST(ReadRuns, LastBlockBelowTheBorderIsFullButForOneBit)
{
    EXPECT_EQ(runs({"M1535x2"}),
              (std::vector<ElementRange>{{1, "M", 1520, 15}, {1, "M", 1536, 1}}));
    EXPECT_EQ(runs({"M22015"}), (std::vector<ElementRange>{{1, "M", 22000, 15}}));
    EXPECT_EQ(runs({"M1519", "M1535", "M1536"}),
              (std::vector<ElementRange>{{1, "M", 1519, 17}, {1, "M", 1536, 1}}));
}

TEST(ReadRuns, DriverRefreshesEveryElementAndCrossesNoBorder)
{
    const QList<QStringList> plans = {{"D4090x12"},
                                      {"D4081", "D4087", "D4094", "D4097"},
                                      {"D4095", "D4096"},
                                      {"M1519", "M1535", "M1536"},
                                      {"M1500x70"},
                                      {"M1534", "M1540"},
                                      {"M22010x10"},
                                      {"M0x100"},
                                      {"M15", "M16", "M31x3"},
                                      {"X0x64"},
                                      {"X7", "X10", "X17", "X20", "X77", "X100"},
                                      {"Y15x20", "Y70x12"},
                                      {"T250x10", "C254x3", "S1020x9"},
                                      {"TV2247", "TV2304", "CV190x10", "CV2200x3"},
                                      {"D0", "D7", "D8", "D100x17", "2#D0x3"}};
    for (int limit = 1; limit <= 8; ++limit) {
        for (const QStringList &texts : plans)
            expectWhole(texts, limit);
    }
    for (int limit = 4; limit <= 8; ++limit)
        expectWhole({"D100x12/int64", "D111", "D4088x8/float64", "D4096/uint64"}, limit);
}

TEST(WriteRuns, BitsAndCountersGoOneByOneAndWordsInGroups)
{
    EXPECT_EQ(writeRanges(tags({"Y7x2"}), 8),
              (std::vector<ElementRange>{{1, "Y", 7, 1}, {1, "Y", 8, 1}}));
    EXPECT_EQ(writeRanges(tags({"CV2254x2"}), 8),
              (std::vector<ElementRange>{{1, "CV2", 254, 1}, {1, "CV2", 255, 1}}));
    EXPECT_EQ(writeRanges(tags({"D10x9"}), 8),
              (std::vector<ElementRange>{{1, "D", 10, 8}, {1, "D", 18, 1}}));
}

TEST(WriteRuns, NoRunCrossesABorder)
{
    EXPECT_EQ(writeRanges(tags({"D4094x4"}), 8),
              (std::vector<ElementRange>{{1, "D", 4094, 2}, {1, "D", 4096, 2}}));
}

TEST(WriteRuns, AllWordsOfAValueGoInOneRequest)
{
    EXPECT_EQ(writeRanges(tags({"D10x8/float32"}), 5),
              (std::vector<ElementRange>{{1, "D", 10, 4}, {1, "D", 14, 4}}));
    EXPECT_EQ(writeRanges(tags({"D4090x8/int32"}), 5),
              (std::vector<ElementRange>{{1, "D", 4090, 4}, {1, "D", 4094, 2}, {1, "D", 4096, 2}}));
    EXPECT_EQ(writeRanges(tags({"D10x8/int64"}), 7),
              (std::vector<ElementRange>{{1, "D", 10, 4}, {1, "D", 14, 4}}));
    EXPECT_THROW(writeRanges(tags({"D10/uint32"}), 1), Error);
    EXPECT_EQ(writeRanges(tags({"CV2200/float32"}), 1),
              (std::vector<ElementRange>{{1, "CV2", 200, 1}}));
}
