#include "tests/properties/controller.h"

#include "tests/properties/model_frames.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdio>

using model::hex;

namespace {

unsigned number(const std::string &text, size_t position, size_t length)
{
    unsigned value = 0;
    if (position < text.size())
        std::sscanf(text.substr(position, length).c_str(), "%x", &value);
    return value;
}

std::string framed(const std::string &digits)
{
    return ":" + digits + model::lrc(digits) + "\r\n";
}

std::string bytesOf(unsigned salt, size_t number)
{
    std::string bytes;
    for (size_t i = 0; i < number; ++i)
        bytes += static_cast<char>(valueByte(salt * 4 + 3, static_cast<int>(i)));
    return bytes;
}

} // namespace

void Controller::move(unsigned salt)
{
    values = salt;
    writtenWords.clear();
    writtenBits.clear();
}

unsigned Controller::wordAt(unsigned address) const
{
    const auto written = writtenWords.find(address);
    if (written != writtenWords.end())
        return written->second;
    const int i = static_cast<int>(address & 0xFFFFU) * 2;
    return valueByte(values, i) * 256U + valueByte(values, i + 1);
}

bool Controller::bitAt(unsigned address) const
{
    const auto written = writtenBits.find(address);
    if (written != writtenBits.end())
        return written->second;
    return (valueByte(values, static_cast<int>(address)) & 1U) != 0;
}

std::string Controller::rightReply(const std::string &request)
{
    const std::string station = request.substr(1, 2);
    const std::string function = request.size() > 15 ? request.substr(3, 2) : "";
    const unsigned address = number(request, 5, 4);
    const unsigned quantity = number(request, 9, 4);
    std::string data;
    if (function == "03") {
        for (unsigned i = 0; i < std::min(quantity, 250U); ++i) {
            const bool counter = address + i >= 0x0EC8 && address + i <= 0x0EFF;
            data += hex(wordAt(address + i), 4);
            if (counter)
                data += hex(wordAt(0x10000U + address + i), 4);
        }
    } else if (function == "02") {
        for (unsigned i = 0; i < std::min(quantity, 2000U); i += 8) {
            unsigned byte = 0;
            for (unsigned k = 0; k < 8; ++k)
                byte |= static_cast<unsigned>(bitAt(address + i + k)) << k;
            data += hex(byte, 2);
        }
    } else if (function == "05") {
        writtenBits[address] = quantity == 0xFF00;
        return request;
    } else if (function == "10") {
        for (unsigned i = 0; 15 + 4 * i + 8 <= request.size(); ++i)
            writtenWords[address + i] = number(request, 15 + 4 * i, 4);
        return framed(station + function + request.substr(5, 8));
    } else {
        return framed(station + "8101");
    }
    return framed(station + function + hex(static_cast<unsigned>(data.size() / 2) & 0xFFU, 2) +
                  data);
}

std::string Controller::reply(const std::string &request, const Call &call)
{
    static const std::array<const char *, 12> functions = {"05", "10", "03", "02", "01",    "06",
                                                           "7F", "80", "1",  ":5", "0\xB0", "5 "};
    std::string text = request.empty() ? ":0103020102F7\r\n" : rightReply(request);
    const size_t place = call.salt % text.size();
    switch (static_cast<ReplyKind>(call.option)) {
    case ReplyKind::Empty:
        return {};
    case ReplyKind::Truncated:
        return text.substr(0, place);
    case ReplyKind::Exception:
        return framed(text.substr(1, 2) + "8" + text.substr(4, 1) + "02");
    case ReplyKind::Garbage:
        return bytesOf(call.salt, call.salt % 41);
    case ReplyKind::LowerCase:
        std::transform(text.begin(), text.end(), text.begin(),
                       [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
        return text;
    case ReplyKind::OtherFunction:
        return text.replace(3, 2, functions[call.salt % functions.size()]);
    case ReplyKind::HighByte:
        text[place] = static_cast<char>(128 + call.salt / 64 % 128);
        return text;
    case ReplyKind::OddDigits: {
        static const std::string digits = "0A9f:;<=>?@G/ `z\x7F\x80\xFF";
        for (size_t i = 7; i + 4 < text.size(); ++i)
            text[i] = digits[valueByte(call.salt * 4 + 3, static_cast<int>(i)) % digits.size()];
        return text;
    }
    case ReplyKind::Right:
    case ReplyKind::COUNT:
        break;
    }
    return text;
}
