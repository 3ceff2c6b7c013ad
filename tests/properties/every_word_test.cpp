// All 65,536 words both ways: from the host to the line and back to the host, and from the line to
// the host.
#include "tests/driver/loaded_driver.h"
#include "tests/properties/model_frames.h"

#include <string>

namespace {

std::string hex(unsigned word)
{
    return model::hex(word, 4);
}

std::string framed(const std::string &digits)
{
    return ":" + digits + model::lrc(digits);
}

class EveryWord : public FlowTest {
protected:
    // Calls `check` with every word.
    template <typename Check> static void forEveryWord(const Check &check)
    {
        for (unsigned word = 0; word <= 0xFFFF && !HasFailure(); ++word)
            check(word);
    }

    // Element 200 of a word area at Modbus address `wire`: written and acknowledged, then read
    // again as the word that differs in every bit.
    void expectBothWays(const char *area, const std::string &wire)
    {
        watch({{1, area, 200, 1}});
        forEveryWord([this, area, &wire](unsigned word) {
            const int value = static_cast<int>(word);
            writeWords(area, 200, {value});
            ASSERT_EQ(words(area, 200, 1), std::vector<int>{value});
            ASSERT_EQ(exchange(framed("0110" + wire + "0001")),
                      framed("0110" + wire + "000102" + hex(word)));
            ASSERT_EQ(words(area, 200, 1), std::vector<int>{value});
            ASSERT_EQ(exchange(framed("010302" + hex(word ^ 0xFFFFU))),
                      framed("0103" + wire + "0001"));
            ASSERT_EQ(words(area, 200, 1), std::vector<int>{value ^ 0xFFFF});
        });
    }
};

} // namespace

TEST_F(EveryWord, OfAWordArea)
{
    expectBothWays("TV", "06C8");
    expectBothWays("CV", "0EC8");
    expectBothWays("D", "10C8");
}

TEST_F(EveryWord, OfEitherHalfOfACounter)
{
    watch({{1, "CV2", 200, 1}});
    forEveryWord([this](unsigned word) {
        const int low = static_cast<int>(word);
        const int high = low ^ 0x5A5A;
        const std::string digits = hex(word ^ 0x5A5AU) + hex(word);
        writeWords("CV2", 200, {low, high});
        ASSERT_EQ(exchange(framed("01100EC80001")), framed("01100EC8000104" + digits));
        ASSERT_EQ(words("CV2", 200, 2), (std::vector<int>{low, high}));
        const std::string opposite = hex(word ^ 0xA5A5U) + hex(word ^ 0xFFFFU);
        ASSERT_EQ(exchange(framed("010304" + opposite)), framed("01030EC80001"));
        ASSERT_EQ(words("CV2", 200, 2), (std::vector<int>{low ^ 0xFFFF, high ^ 0xFFFF}));
    });
}

TEST_F(EveryWord, Of16Bits)
{
    watch({{1, "M", 32, 16}});
    forEveryWord([this](unsigned word) {
        std::vector<int> expected;
        for (int bit = 0; bit < 16; ++bit)
            expected.push_back(static_cast<int>(word >> bit & 1U));
        // 16 bits are read as 32, the low byte first.
        const std::string data = hex(word).substr(2) + hex(word).substr(0, 2) + "FFFF";
        ASSERT_EQ(exchange(framed("010204" + data)), framed("010208200020"));
        ASSERT_EQ(bits("M", 32, 16), expected);
    });
}
