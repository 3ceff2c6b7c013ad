// Every start of every area with 1 to 20 elements: what is polled, what is on the line, what
// is stored and what is reported. Here the rules are written out for single runs: which
// Modbus address an element has, and which elements a read covers. With the sanitizers every 13th
// start only.
#include "tests/driver/loaded_driver.h"
#include "tests/properties/model_frames.h"

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

namespace {

enum Kind { BITS, WORDS, COUNTERS, BITS_OF_WORDS };

// An area and the addresses of its elements; from `upperFrom` on they begin at `upperBase`.
struct Area {
    const char *name;
    Kind kind;
    int lowest;
    int highest; // for "X" and "Y" in linear numbers
    int base;
    int upperFrom;
    int upperBase;

    bool isOctal() const
    {
        return *name == 'X' || *name == 'Y';
    }
    // The number that a host gives for an element.
    int shown(int linear) const
    {
        char digits[16];
        std::snprintf(digits, sizeof digits, "%o", static_cast<unsigned>(linear));
        return isOctal() ? std::stoi(digits) : linear;
    }
    int onWire(int linear) const
    {
        return linear < upperFrom ? base + linear : upperBase + linear;
    }
};

constexpr int NEVER = 1 << 30;

// What the controller holds: a word for each register, a bit for each input.
int wordAt(int modbusAddress)
{
    return static_cast<int>((static_cast<unsigned>(modbusAddress) * 40503 + 12345) & 0xFFFF);
}

int bitAt(int modbusAddress)
{
    return wordAt(modbusAddress) >> 7 & 1;
}

// What one exchange is to look like.
struct Exchange {
    std::string request; // between ':' and LRC
    std::string data;    // of the reply
};

class EveryRun : public FlowTest, public testing::WithParamInterface<Area> {
protected:
    // Polls `count` elements from `start` on once, and reads them: the elements in `expected` are
    // the values from `start` on, of `bytes` bytes each, 0 for bits.
    void expectPolled(const Area &area, int start, int count,
                      const std::vector<Exchange> &exchanges, const std::vector<int> &expected)
    {
        configure("1#0#0#3#8");
        name = QString::fromLatin1(area.name);
        if (list.isEmpty())
            list.append(KEY_ADDRESS());
        list[0].station = 1;
        list[0].area = name;
        list[0].address = area.shown(start);
        list[0].count = count;
        ASSERT_EQ(kmr->addrMerge(list), static_cast<int>(exchanges.size()));
        for (const Exchange &exchange : exchanges) {
            const std::string digits = exchange.request;
            ASSERT_EQ(nextFrame(), ":" + digits + model::lrc(digits));
            QByteArray reply(":01xx00");
            reply[3] = digits[2];
            reply[4] = digits[3];
            reply.append(exchange.data.c_str());
            reply.append("00\r\n");
            ASSERT_EQ(frame.replyLen, reply.size());
            ASSERT_EQ(kmr->dealRcvFrame(reply, text), 1);
        }
        ASSERT_EQ(values(area, start, static_cast<int>(expected.size())), expected);
        Reports wanted;
        for (int i = 0; i < count && i < static_cast<int>(expected.size()); ++i) {
            if (expected[static_cast<size_t>(i)] != 0)
                wanted.emplace_back(1, 1, area.name, area.shown(start + i));
        }
        ASSERT_EQ(takeReports(), wanted);
    }

    std::vector<int> values(const Area &area, int start, int number)
    {
        quint8 out[256];
        kmr->getData(1, name, area.shown(start), area.kind == COUNTERS ? 2 * number : number, out);
        std::vector<int> all;
        for (int i = 0; i < number; ++i) {
            if (area.kind == COUNTERS)
                all.push_back(out[4 * i] | out[4 * i + 1] << 8 | out[4 * i + 2] << 16 |
                              out[4 * i + 3] << 24);
            else
                all.push_back(area.kind == WORDS ? out[2 * i] | out[2 * i + 1] << 8 : out[i]);
        }
        return all;
    }

    // Words are read in blocks of 8, as they come.
    void expectWordsPolled(const Area &area, int start, int count)
    {
        std::vector<Exchange> exchanges;
        std::vector<int> expected;
        for (int done = 0; done < count; done += 8) {
            const int number = std::min(8, count - done);
            const int first = area.onWire(start + done);
            exchanges.push_back(
                {"0103" + model::hex(first, 4) + "000" + std::to_string(number), ""});
            for (int i = 0; i < number; ++i) {
                exchanges.back().data += model::hex(wordAt(first + i), 4);
                expected.push_back(wordAt(first + i));
            }
        }
        expectPolled(area, start, count, exchanges, expected);
    }

    // A run of bits is one read of 16 or 32 bits from a multiple of 16 on; bits after it are 0.
    void expectBitsPolled(const Area &area, int start, int count)
    {
        const int first = start - start % 16;
        const int number = count > 1 && start % 16 + count > 15 ? 32 : 16;
        const int wire = area.onWire(first);
        Exchange exchange = {
            "0102" + model::hex(wire & 0xFFFF, 4) + (number == 32 ? "0020" : "0010"), ""};
        for (int i = 0; i < number; i += 8) {
            int byte = 0;
            for (int k = 0; k < 8; ++k)
                byte += bitAt(wire + i + k) << k;
            exchange.data += model::hex(byte, 2);
        }
        std::vector<int> expected;
        for (int bit = start; bit < start + count; ++bit)
            expected.push_back(bit < first + number ? bitAt(wire + bit - first) : 0);
        expectPolled(area, start, count, {exchange}, expected);
    }

    // Counters are also read in blocks of 8, but only half of each block, at least one.
    void expectCountersPolled(const Area &area, int start, int count)
    {
        std::vector<Exchange> exchanges;
        std::vector<int> expected(static_cast<size_t>(count), 0);
        for (int done = 0; done < count; done += 8) {
            const int number = std::max(1, std::min(8, count - done) / 2);
            const int first = area.onWire(start + done);
            exchanges.push_back(
                {"0103" + model::hex(first, 4) + "000" + std::to_string(number), ""});
            for (int i = first; i < first + number; ++i) {
                exchanges.back().data +=
                    model::hex(wordAt(i + 0x8000), 4) + model::hex(wordAt(i), 4);
                expected[static_cast<size_t>(done + i - first)] =
                    static_cast<int>(static_cast<unsigned>(wordAt(i + 0x8000)) << 16 |
                                     static_cast<unsigned>(wordAt(i)));
            }
        }
        expectPolled(area, start, count, exchanges, expected);
    }

    // The words that hold the bits are polled, in blocks of 8, but their requests end after the
    // station: "TV_bit" can't be read.
    void expectWordsOfBitsPlanned(const Area &area, int start, int count)
    {
        configure("1#0#0#1#8");
        list = {keyOf({1, area.name, start, count})};
        int word = start / 16;
        for (int block = kmr->addrMerge(list); block > 0; --block) {
            ASSERT_EQ(nextFrame(), ":01FF");
            ASSERT_EQ(frame.var.address, word);
            word += frame.var.count;
            ASSERT_TRUE(block == 1 || frame.var.count == 8);
            ASSERT_EQ(answer(""), 2);
        }
        ASSERT_EQ(word, (start + count - 1) / 16 + 1);
    }

    void expectRun(const Area &area, int start, int count)
    {
        switch (area.kind) {
        case BITS:
            return expectBitsPolled(area, start, count);
        case WORDS:
            return expectWordsPolled(area, start, count);
        case COUNTERS:
            return expectCountersPolled(area, start, count);
        case BITS_OF_WORDS:
            return expectWordsOfBitsPlanned(area, start, count);
        }
    }

    QString name;
    QString text;
    QList<KEY_ADDRESS> list;
};

const Area AREAS[] = {
    {"X", BITS, 0, 9999, 0x0400, NEVER, 0},
    {"Y", BITS, 0, 9999, 0x0500, NEVER, 0},
    {"M", BITS, 0, 65536, 0x0800, 1536, 0xAA00},
    {"S", BITS, 0, 9999, 0x0000, NEVER, 0},
    {"T", BITS, 0, 9999, 0x0600, NEVER, 0},
    {"C", BITS, 0, 9999, 0x0E00, NEVER, 0},
    {"TV", WORDS, 0, 9999, 0x0600, NEVER, 0},
    {"CV", WORDS, 0, 199, 0x0E00, NEVER, 0},
    {"CV2", COUNTERS, 200, 255, 0x0E00, NEVER, 0},
    {"D", WORDS, 0, 11999, 0x1000, 4096, 0x8000},
    {"TV_bit", BITS_OF_WORDS, 0, 159999, 0, NEVER, 0},
};

} // namespace

TEST_P(EveryRun, IsPolledStoredAndReported)
{
    const Area &area = GetParam();
    for (int start = area.lowest; start <= area.highest; start += KMR_STARTS_STEP) {
        for (int count = 1; count <= 20; ++count) {
            expectRun(area, start, count);
            if (HasFailure())
                FAIL() << area.name << " from " << start << ", " << count << " elements";
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Of, EveryRun, testing::ValuesIn(AREAS),
                         [](const auto &area) { return std::string(area.param.name); });
