// The floor: the time of a read of 8 words and nothing else. One request is encoded, its reply
// checked and decoded; nothing is allocated, looked up or stored.
#include "benchmarks/panel.h"

#include <benchmark/benchmark.h>

#include <array>
#include <cstdint>
#include <string_view>
#include <utility>

namespace {

constexpr int WORDS = 8;
constexpr size_t REQUEST_CHARS = 17;
constexpr size_t REPLY_CHARS = 43;
constexpr char DIGITS[] = "0123456789ABCDEF";

// -1 for a character that is not a digit, so that a pair or a sum of pairs with it is negative.
constexpr std::array<std::int16_t, 256> DIGIT_VALUES = [] {
    std::array<std::int16_t, 256> values{};
    for (std::int16_t &value : values)
        value = -1;
    for (std::int16_t digit = 0; digit < 16; ++digit)
        values[static_cast<std::uint8_t>(DIGITS[digit])] = digit;
    return values;
}();

char *putByte(char *out, unsigned byte)
{
    *out++ = DIGITS[byte >> 4 & 0x0F];
    *out++ = DIGITS[byte & 0x0F];
    return out;
}

int byteAt(const char *text)
{
    return DIGIT_VALUES[static_cast<std::uint8_t>(text[0])] * 16 |
           DIGIT_VALUES[static_cast<std::uint8_t>(text[1])];
}

void encodeRead(unsigned station, unsigned address, unsigned count, char *out)
{
    const unsigned message[] = {station, 3, address >> 8, address & 0xFF, count >> 8, count & 0xFF};
    unsigned sum = 0;
    *out++ = ':';
    for (unsigned byte : message) {
        sum += byte;
        out = putByte(out, byte);
    }
    out = putByte(out, 0x100 - (sum & 0xFF));
    *out++ = '\r';
    *out = '\n';
}

// True only for a good reply to a read of 8 words.
bool decodeReply(std::string_view reply, int station, std::uint16_t *values)
{
    const char *const text = reply.data();
    if (reply.size() != REPLY_CHARS || text[0] != ':' || text[41] != '\r' || text[42] != '\n' ||
        byteAt(text + 1) != station || byteAt(text + 3) != 3 || byteAt(text + 5) != 2 * WORDS)
        return false;
    const int lrc = byteAt(text + 39);
    int sum = station + 3 + 2 * WORDS + lrc;
    int all = lrc; // negative when one of them is
    for (int i = 0; i < WORDS; ++i) {
        const int high = byteAt(text + 7 + 4 * i);
        const int low = byteAt(text + 9 + 4 * i);
        values[i] = static_cast<std::uint16_t>(high << 8 | low);
        sum += high + low;
        all |= high | low;
    }
    return all >= 0 && (sum & 0xFF) == 0;
}

void floorOfExchange(benchmark::State &state)
{
    const std::string reply = bench::received(bench::READ_8_REPLY).toStdString();
    std::string damaged = reply;
    char request[REQUEST_CHARS];
    std::uint16_t values[WORDS] = {};
    unsigned address = 0x1000;
    encodeRead(1, address, WORDS, request);
    bench::require(std::string_view(request, REQUEST_CHARS) == ":010310000008E4\r\n",
                   "the request");
    bench::require(decodeReply(reply, 1, values), "the reply is good");
    bench::require(std::vector<int>(values, values + WORDS) == bench::READ_8_VALUES, "the values");
    bench::require(!decodeReply(reply, 2, values), "a reply of another station is not");
    for (char &character : damaged) {
        const char good = std::exchange(character, 'G');
        bench::require(!decodeReply(damaged, 1, values), "a damaged reply is not");
        character = good;
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(address);
        encodeRead(1, address, WORDS, request);
        benchmark::DoNotOptimize(request);
        benchmark::DoNotOptimize(reply.data());
        benchmark::ClobberMemory();
        benchmark::DoNotOptimize(decodeReply(reply, 1, values));
        benchmark::DoNotOptimize(values);
    }
}
BENCHMARK(floorOfExchange)->Name("peer/floor");

} // namespace
