#include "tests/properties/model_address.h"

#include <cstdio>
#include <limits>
#include <map>
#include <set>

namespace model {
namespace {

// Lowest start and highest element that the checks accept.
const std::map<std::string, std::pair<int, int>> ranges = {
    {"X", {0, 23417}}, {"Y", {0, 23417}},       {"M", {0, 65536}},  {"S", {0, 9999}},
    {"T", {0, 9999}},  {"C", {0, 9999}},        {"TV", {0, 9999}},  {"CV", {0, 199}},
    {"D", {0, 11999}}, {"TV_bit", {0, 159999}}, {"CV2", {200, 255}}};

bool inInt(long long value)
{
    return value >= std::numeric_limits<int>::min() && value <= std::numeric_limits<int>::max();
}

// "word.bit", the bit written without a leading zero, as word x 16 + bit; the lowest number where
// that leaves 32 bits.
std::optional<int> wordAndBit(const std::string &text)
{
    static const std::set<std::string> bits = {"0", "1", "2",  "3",  "4",  "5",  "6",  "7",
                                               "8", "9", "10", "11", "12", "13", "14", "15"};
    const size_t dot = text.find('.');
    if (dot == std::string::npos || bits.count(text.substr(dot + 1)) == 0)
        return {};
    const std::optional<int> word = decimal(text.substr(0, dot));
    if (!word)
        return {};
    const long long value = *word * 16LL + std::stoi(text.substr(dot + 1));
    return inInt(value) ? static_cast<int>(value) : std::numeric_limits<int>::min();
}

// The part of the checks that both functions share: syntax and range.
CheckedAddress checkText(const std::string &area, const std::string &text, int count)
{
    if (text.find_first_of("+-") != std::string::npos)
        return {4, {}};
    const auto range = ranges.find(area);
    if (range == ranges.end())
        return {3, {}};
    const std::optional<int> value = area == "TV_bit" ? wordAndBit(text) : decimal(text);
    if (!value)
        return {4, {}};
    const bool octal = area == "X" || area == "Y";
    const bool inside =
        *value >= range->second.first && *value + (count - 1LL) <= range->second.second;
    const bool digitsFit =
        !octal || std::to_string(*value).find_first_of("89") == std::string::npos;
    return {inside && digitsFit ? 0 : 2, value};
}

std::string unsignedText(long long value)
{
    return std::to_string(static_cast<unsigned>(value));
}

int stepOf(const std::string &area, int step)
{
    static const std::set<std::string> single = {"CV2", "X", "Y", "M", "S", "T", "C"};
    if (step == -2)
        return single.count(area) ? 1 : 2;
    return step < 1 ? 1 : step;
}

} // namespace

std::optional<int> decimal(const std::string &text)
{
    const char *const blanks = " \t\n\v\f\r";
    const size_t begin = text.find_first_not_of(blanks);
    if (begin == std::string::npos)
        return {};
    std::string digits = text.substr(begin, text.find_last_not_of(blanks) - begin + 1);
    const bool negative = digits[0] == '-';
    if (negative || digits[0] == '+')
        digits.erase(0, 1);
    if (digits.empty() || digits.find_first_not_of("0123456789") != std::string::npos)
        return {};
    const size_t significant = digits.find_first_not_of('0');
    digits.erase(0, significant == std::string::npos ? digits.size() - 1 : significant);
    if (digits.size() > 10)
        return {};
    const long long value = negative ? -std::stoll(digits) : std::stoll(digits);
    return inInt(value) ? std::optional<int>(static_cast<int>(value)) : std::nullopt;
}

int fromOctalDigits(int shown)
{
    const std::string digits = std::to_string(shown);
    if (digits.find_first_not_of("01234567") != std::string::npos)
        return 0;
    return std::stoi(digits, nullptr, 8);
}

int toOctalDigits(int linear)
{
    char digits[16];
    std::snprintf(digits, sizeof digits, "%o", static_cast<unsigned>(linear));
    return decimal(digits).value_or(0);
}

int linearAddress(const std::string &area, int address)
{
    return area == "X" || area == "Y" ? fromOctalDigits(address) : address;
}

bool holdsBits(const std::string &area)
{
    static const std::set<std::string> areas = {"X", "Y", "M", "S", "T", "C", "TV_bit"};
    return areas.count(area) > 0;
}

bool holdsWords(const std::string &area)
{
    static const std::set<std::string> areas = {"TV", "CV", "D"};
    return areas.count(area) > 0;
}

bool reportedByBits(const std::string &area)
{
    static const std::set<std::string> areas = {"X", "Y", "M", "S", "SM", "T", "C"};
    return areas.count(area) > 0;
}

CheckedAddress checkAddrValidity(const std::string &area, const std::string &text, int count,
                                 bool wantWord)
{
    if (ranges.count(area) && wantWord == holdsBits(area))
        return {1, {}};
    return checkText(area, text, count);
}

CheckedAddress checkAddr(const std::string &area, const std::string &text, int dataType, int count)
{
    if (ranges.count(area) && (dataType != -1) == holdsBits(area))
        return {1, {}};
    const bool signFree = text.find_first_of("+-") == std::string::npos;
    if (area == "CV2" && signFree && std::set<int>{1, 3, 5, 6, 9}.count(dataType) == 0)
        return {5, {}};
    return checkText(area, text, count);
}

Series multiCopy(const std::string &area, int start, int n, int step)
{
    const auto range = ranges.find(area);
    if (range == ranges.end())
        return {};
    const bool wordBits = area == "TV_bit"; // has an end of its own here
    const int end = wordBits ? 1048575 : range->second.second;
    const std::string endText = wordBits ? "65536.15" : std::to_string(end);
    const bool octal = area == "X" || area == "Y";
    Series series;
    series.code = 1;
    long long correction = 0;
    for (int i = 0; i < n; ++i) {
        long long value = start + static_cast<long long>(i) * stepOf(area, step) + correction;
        while (octal && value % 10 > 7) { // 8 and 9 are skipped up to the next 0
            ++value;
            ++correction;
        }
        const bool inside = value <= end;
        const std::string text = wordBits
                                     ? unsignedText(value / 16) + "." + unsignedText(value % 16)
                                     : unsignedText(value);
        series.texts.push_back(inside ? text : endText);
        series.numbers.push_back(inside ? static_cast<int>(value) : end);
        if (!inside)
            series.code = 2;
    }
    return series;
}

} // namespace model
