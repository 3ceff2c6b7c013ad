// Requests and their frames as the model understands them; see model_driver.h.
#pragma once

#include <string>

namespace model {

// The target of a request. `data` holds the leading bytes; all bytes after them are 0, and it
// never ends in a zero byte (see trimmed), so that equal values compare equal.
struct Variable {
    int reqTag = 0;
    int station = 0;
    std::string area;
    int address = 0;
    int count = 0;
    std::string data;

    // Byte `i` of the value, 0 after the end.
    unsigned char byte(size_t i) const;
};

bool operator==(const Variable &a, const Variable &b);

// Station, area, address and count agree, whatever tag and value are.
bool sameTarget(const Variable &a, const Variable &b);

// `data` without the zero bytes at its end.
std::string trimmed(std::string data);

struct Frame {
    std::string text; // ':' to CR LF; empty for a request that is too long for a frame
    int replyLen = 0;
    int replyDataPos = 7;
    int replyDataLen = 0;
    int frameSpare = 0;
    Variable var;
};

bool operator==(const Frame &a, const Frame &b);

// The last `digits` upper-case hexadecimal digits of `value`, a negative one in two's complement.
std::string hex(long long value, int digits);

// The two LRC digits of the digits between ':' and LRC.
std::string lrc(const std::string &digits);

// The Modbus address of an element; -1 for an area that is not read that way.
int wordOnWire(const std::string &area, int address);
int bitOnWire(const std::string &area, int address);

// The read request for `var`; a counter block's `count` above 1 is halved in `var` itself.
Frame readFrame(Variable &var);

Frame writeFrame(const Variable &var);

} // namespace model
