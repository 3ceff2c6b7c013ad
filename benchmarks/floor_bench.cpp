// The floor: what a read of 8 words costs when nothing else is done. One request is encoded, its
// reply checked and decoded; nothing is allocated, looked up or remembered.
#include "benchmarks/panel.h"

#include <benchmark/benchmark.h>

#include <array>
#include <cstdint>
#include <string_view>

namespace {

constexpr int WORDS = 8;
constexpr size_t REQUEST_CHARS = 17;
constexpr size_t REPLY_CHARS = 43;
constexpr std::uint8_t NO_DIGIT = 0xFF;

constexpr std::array<std::uint8_t, 256> DIGIT_VALUES = [] {
    std::array<std::uint8_t, 256> values{};
    for (std::uint8_t &value : values)
        value = NO_DIGIT;
    for (std::uint8_t digit = 0; digit < 16; ++digit)
        values[static_cast<std::uint8_t>("0123456789ABCDEF"[digit])] = digit;
    return values;
}();

char *putByte(char *out, unsigned byte)
{
    *out++ = "0123456789ABCDEF"[byte >> 4 & 0x0F];
    *out++ = "0123456789ABCDEF"[byte & 0x0F];
    return out;
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

// False for anything but the good reply to a read of 8 words.
bool decodeReply(std::string_view reply, unsigned station, std::uint16_t *values)
{
    if (reply.size() != REPLY_CHARS || reply.front() != ':' || reply.substr(41) != "\r\n")
        return false;
    std::array<std::uint8_t, 3 + 2 * WORDS + 1> message;
    unsigned sum = 0;
    unsigned faults = 0;
    for (size_t i = 0; i < message.size(); ++i) {
        const std::uint8_t high = DIGIT_VALUES[static_cast<std::uint8_t>(reply[1 + 2 * i])];
        const std::uint8_t low = DIGIT_VALUES[static_cast<std::uint8_t>(reply[2 + 2 * i])];
        faults |= (high | low) & 0xF0u;
        message[i] = static_cast<std::uint8_t>(high << 4 | low);
        sum += message[i];
    }
    if (faults != 0 || (sum & 0xFF) != 0 || message[0] != station || message[1] != 3 ||
        message[2] != 2 * WORDS)
        return false;
    for (size_t i = 0; i < WORDS; ++i)
        values[i] = static_cast<std::uint16_t>(message[3 + 2 * i] << 8 | message[4 + 2 * i]);
    return true;
}

void floorOfExchange(benchmark::State &state)
{
    const std::string reply = bench::received(bench::READ_8_REPLY).toStdString();
    char request[REQUEST_CHARS];
    std::uint16_t values[WORDS] = {};
    unsigned address = 0x1000;
    encodeRead(1, address, WORDS, request);
    bench::require(std::string_view(request, REQUEST_CHARS) == ":010310000008E4\r\n",
                   "the request");
    bench::require(decodeReply(reply, 1, values), "the reply is good");
    bench::require(std::vector<int>(values, values + WORDS) == bench::READ_8_VALUES, "the values");
    bench::require(!decodeReply(reply, 2, values), "a reply of another station is not");
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
