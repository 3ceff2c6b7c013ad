#include "host/poll_plan.h"

#include <gtest/gtest.h>

#include <ostream>

using namespace kmr;
using Elements = kmr::Run; // GoogleTest has a Run of its own

namespace kmr {

void PrintTo(const Run &run, std::ostream *out)
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

std::vector<Elements> runs(const QStringList &texts, int groupLimit = 8)
{
    return readRuns(tags(texts), groupLimit);
}

bool holds(const Elements &outer, int station, const QString &area, int number)
{
    return outer.station == station && outer.area == area && number >= outer.first &&
           number < outer.end();
}

// Every element that one round of the driver's polling covers, by the frames that it really sends.
// Fails where a frame reaches over a border.
std::vector<Elements> polled(const std::vector<Elements> &plan, int groupLimit)
{
    const QByteArray property = "1#0#0#3#" + QByteArray::number(groupLimit);
    qint32 result = 0;
    library().initProperty(nullptr, nullptr, nullptr, &result, property.constData(), nullptr);
    const int blocks = library().addrMerge(toKeys(plan));
    std::vector<Elements> covered;
    for (int i = 0; i < blocks; ++i) {
        FRAME_PRO frame;
        EXPECT_EQ(library().getSendFrame(&frame), 1);
        Elements run = refreshedBy(frame);
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

} // namespace

TEST(ReadRuns, BitsAreCutAtMultiplesOfSixteen)
{
    EXPECT_EQ(runs({"M10x30"}),
              (std::vector<Elements>{{1, "M", 10, 6}, {1, "M", 16, 16}, {1, "M", 32, 8}}));
}

TEST(ReadRuns, BitsOfOneBlockAreOneRun)
{
    EXPECT_EQ(runs({"M14", "M1", "M9"}), (std::vector<Elements>{{1, "M", 1, 14}}));
}

TEST(ReadRuns, InputsAreCutInLinearNumbers)
{
    EXPECT_EQ(runs({"X16x4"}), (std::vector<Elements>{{1, "X", 14, 2}, {1, "X", 16, 2}}));
    const QList<KEY_ADDRESS> keys = toKeys(runs({"X16x4"}));
    EXPECT_EQ(keys[0].address, 16);
    EXPECT_EQ(keys[1].address, 20);
}

TEST(ReadRuns, WordsAreCutAtTheGroupLimit)
{
    EXPECT_EQ(runs({"D0x20"}),
              (std::vector<Elements>{{1, "D", 0, 8}, {1, "D", 8, 8}, {1, "D", 16, 4}}));
    EXPECT_EQ(runs({"D0x3"}, 2), (std::vector<Elements>{{1, "D", 0, 2}, {1, "D", 2, 1}}));
}

TEST(ReadRuns, DoublesAndNeighboursAreJoined)
{
    EXPECT_EQ(runs({"D2", "D1x2", "D0"}), (std::vector<Elements>{{1, "D", 0, 3}}));
}

TEST(ReadRuns, CountersGoOneByOne)
{
    EXPECT_EQ(runs({"CV2200x2"}), (std::vector<Elements>{{1, "CV2", 200, 1}, {1, "CV2", 201, 1}}));
}

TEST(ReadRuns, StationsAndAreasStayApart)
{
    EXPECT_EQ(runs({"2#D0", "D0", "TV0"}),
              (std::vector<Elements>{{1, "D", 0, 1}, {1, "TV", 0, 1}, {2, "D", 0, 1}}));
}

TEST(ReadRuns, BitOfAWordReadsTheWord)
{
    EXPECT_EQ(runs({"TV5.3"}), (std::vector<Elements>{{1, "TV", 5, 1}}));
}

TEST(ReadRuns, LastWordsBelowTheBorderAreAFullGroup)
{
    EXPECT_EQ(runs({"D4095x2"}), (std::vector<Elements>{{1, "D", 4088, 8}, {1, "D", 4096, 1}}));
    EXPECT_EQ(runs({"D4085x5"}), (std::vector<Elements>{{1, "D", 4085, 3}, {1, "D", 4088, 8}}));
    EXPECT_EQ(runs({"D4095"}, 3), (std::vector<Elements>{{1, "D", 4093, 3}}));
}

TEST(ReadRuns, LastBlockBelowTheBorderIsFullButForOneBit)
{
    EXPECT_EQ(runs({"M1535x2"}), (std::vector<Elements>{{1, "M", 1520, 15}, {1, "M", 1536, 1}}));
    EXPECT_EQ(runs({"M22015"}), (std::vector<Elements>{{1, "M", 22000, 15}}));
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
        for (const QStringList &texts : plans) {
            const std::vector<Elements> covered = polled(runs(texts, limit), limit);
            for (const Tag &tag : tags(texts)) {
                for (int n = tag.elements.first; n < tag.elements.end(); ++n) {
                    const bool isCovered =
                        std::any_of(covered.begin(), covered.end(), [&](const Elements &run) {
                            return holds(run, tag.elements.station, tag.elements.area, n);
                        });
                    EXPECT_TRUE(isCovered) << tag.text.toStdString() << " element " << n
                                           << " with group limit " << limit;
                }
            }
        }
    }
}

TEST(WriteRuns, BitsAndCountersGoOneByOneAndWordsInGroups)
{
    EXPECT_EQ(writeRuns(tags({"Y7x2"})[0], 8),
              (std::vector<Elements>{{1, "Y", 7, 1}, {1, "Y", 8, 1}}));
    EXPECT_EQ(writeRuns(tags({"CV2254x2"})[0], 8),
              (std::vector<Elements>{{1, "CV2", 254, 1}, {1, "CV2", 255, 1}}));
    EXPECT_EQ(writeRuns(tags({"D10x9"})[0], 8),
              (std::vector<Elements>{{1, "D", 10, 8}, {1, "D", 18, 1}}));
}

TEST(WriteRuns, NoRunCrossesABorder)
{
    EXPECT_EQ(writeRuns(tags({"D4094x4"})[0], 8),
              (std::vector<Elements>{{1, "D", 4094, 2}, {1, "D", 4096, 2}}));
}
