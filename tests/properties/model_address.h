// Addresses as the model understands them: conversions, the editor's checks and series.
// Part of the model of the driver (model_driver.h); uses nothing of driver/ and no Qt.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace model {

// The number that `text` shows in decimal digits, blanks around and a sign in front allowed;
// nothing when it is not a number or leaves 32 bits.
std::optional<int> decimal(const std::string &text);

// The number whose octal digits are the decimal digits of `shown` (17 is 15); 0 when `shown` is
// negative or has a digit 8 or 9.
int fromOctalDigits(int shown);

// The reverse (15 is 17); 0 when the digits leave 32 bits.
int toOctalDigits(int linear);

// The true bit or word number of an address: "X" and "Y" are shown in octal, all others as they
// are.
int linearAddress(const std::string &area, int address);

// The classes of areas. They differ from one purpose to the next: "TV_bit" holds bits for reading
// and writing but is watched and reported like a word; "SM" is the other way round.
bool holdsBits(const std::string &area);
bool holdsWords(const std::string &area); // of 16 bits
bool reportedByBits(const std::string &area);

// The result of an address check: the result code and the number written out, if any.
struct CheckedAddress {
    int code = 0;
    std::optional<int> address;
};

CheckedAddress checkAddrValidity(const std::string &area, const std::string &text, int count,
                                 bool wantWord);
CheckedAddress checkAddr(const std::string &area, const std::string &text, int dataType, int count);

struct Series {
    int code = 0;
    std::vector<std::string> texts;
    std::vector<int> numbers;
};

Series multiCopy(const std::string &area, int start, int n, int step);

} // namespace model
