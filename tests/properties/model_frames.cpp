#include "tests/properties/model_frames.h"

#include "tests/properties/model_address.h"

#include <cctype>
#include <cstdio>
#include <map>
#include <tuple>

namespace model {
namespace {

// Decimal, zeros in front, the last `width` characters: 12 is "12", 123 is "23", -1 is "-1".
std::string decimalField(int value, size_t width)
{
    const std::string padded = std::string(width, '0') + std::to_string(value);
    return padded.substr(padded.size() - width);
}

std::string wordDigits(const Variable &var, int word)
{
    const size_t first = 2 * static_cast<size_t>(word);
    return hex(var.byte(first), 2) + hex(var.byte(first + 1), 2);
}

std::string finished(const std::string &digits)
{
    if (1 + digits.size() > 1020)
        return {};
    return ":" + digits + lrc(digits) + "\r\n";
}

} // namespace

std::string hex(long long value, int digits)
{
    char text[32];
    std::snprintf(text, sizeof text, "%0*llX", digits,
                  static_cast<unsigned long long>(value) & ((1ULL << (4 * digits)) - 1));
    return text;
}

unsigned char Variable::byte(size_t i) const
{
    return i < data.size() ? static_cast<unsigned char>(data[i]) : 0;
}

bool sameTarget(const Variable &a, const Variable &b)
{
    return std::tie(a.station, a.area, a.address, a.count) ==
           std::tie(b.station, b.area, b.address, b.count);
}

bool operator==(const Variable &a, const Variable &b)
{
    return sameTarget(a, b) && a.reqTag == b.reqTag && a.data == b.data;
}

std::string trimmed(std::string data)
{
    const size_t last = data.find_last_not_of('\0');
    data.resize(last == std::string::npos ? 0 : last + 1);
    return data;
}

bool operator==(const Frame &a, const Frame &b)
{
    return std::tie(a.text, a.replyLen, a.replyDataPos, a.replyDataLen, a.frameSpare, a.var) ==
           std::tie(b.text, b.replyLen, b.replyDataPos, b.replyDataLen, b.frameSpare, b.var);
}

std::string lrc(const std::string &digits)
{
    int remaining = 0; // what must be added to the bytes to reach a multiple of 256
    for (size_t i = 0; i < digits.size(); i += 2) {
        std::string pair = digits.substr(i, 2);
        const bool isNegative = pair.size() == 2 && pair.front() == '-';
        if (isNegative)
            pair.erase(0, 1);
        unsigned byte = 0;
        bool isHex = true;
        for (const char c : pair)
            isHex = isHex && std::isxdigit(static_cast<unsigned char>(c)) != 0;
        if (isHex && std::sscanf(pair.c_str(), "%x", &byte) == 1)
            remaining += isNegative ? static_cast<int>(byte) : -static_cast<int>(byte);
    }
    return hex(remaining, 2);
}

int wordOnWire(const std::string &area, int address)
{
    static const std::map<std::string, int> bases = {
        {"TV", 0x0600}, {"CV", 0x0E00}, {"CV2", 0x0E00}, {"D", 0x1000}};
    const auto base = bases.find(area);
    if (base == bases.end())
        return -1;
    const bool upperHalf = area == "D" && address >= 4096;
    return static_cast<int>((upperHalf ? 0x8000LL : base->second) + address) & 0xFFFF;
}

int bitOnWire(const std::string &area, int address)
{
    static const std::map<std::string, int> bases = {{"S", 0x0000}, {"X", 0x0400}, {"Y", 0x0500},
                                                     {"T", 0x0600}, {"M", 0x0800}, {"C", 0x0E00}};
    const auto base = bases.find(area);
    if (base == bases.end())
        return -1;
    const int linear = linearAddress(area, address);
    const bool upperPart = area == "M" && linear >= 1536;
    return static_cast<int>((upperPart ? 0xAA00LL : base->second) + linear) & 0xFFFF;
}

Frame readFrame(Variable &var)
{
    std::string digits = decimalField(var.station, 2);
    Frame frame;
    if (wordOnWire(var.area, var.address) >= 0) {
        const bool counters = var.area == "CV2";
        if (counters && var.count > 1)
            var.count /= 2;
        digits += "03" + hex(wordOnWire(var.area, var.address), 4) + decimalField(var.count, 4);
        frame.replyDataLen = var.count * (counters ? 8 : 4);
    } else if (bitOnWire(var.area, var.address) >= 0) {
        const int behindBoundary = linearAddress(var.area, var.address) % 16;
        const bool two = var.count > 1 && behindBoundary + var.count > 15;
        const int first = bitOnWire(var.area, var.address) - behindBoundary;
        digits += "02" + hex(first, 4) + (two ? "0020" : "0010");
        frame.replyDataLen = two ? 8 : 4;
    }
    frame.text = finished(digits);
    frame.replyLen = frame.replyDataLen + 11;
    frame.var = var;
    return frame;
}

Frame writeFrame(const Variable &var)
{
    std::string digits = decimalField(var.station, 2);
    if (wordOnWire(var.area, var.address) >= 0) {
        const bool counters = var.area == "CV2";
        digits += "10" + hex(wordOnWire(var.area, var.address), 4) +
                  hex(counters ? var.count / 2 : var.count, 4) + hex(2LL * var.count, 2);
        if (counters && var.count > 1) // the high word first, and never more than two words
            digits += wordDigits(var, var.count - 1);
        for (int word = 0; word < (counters ? std::min(var.count, 1) : var.count); ++word)
            digits += wordDigits(var, word);
    } else if (var.area != "X" && bitOnWire(var.area, var.address) >= 0) {
        digits +=
            "05" + hex(bitOnWire(var.area, var.address), 4) + (var.byte(0) == 1 ? "FF00" : "0000");
    }
    Frame frame;
    frame.text = finished(digits);
    frame.replyLen = 4 * var.count + 13;
    frame.replyDataLen = 4;
    frame.var = var;
    return frame;
}

} // namespace model
