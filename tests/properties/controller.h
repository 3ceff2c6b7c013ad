// A controller as small as can be, and the ways in which its replies go wrong on the line.
#pragma once

#include "tests/properties/call.h"

#include <map>
#include <string>

class Controller {
public:
    // The reply to the frame text `request` ("" when nothing was sent), spoilt as `call` says.
    std::string reply(const std::string &request, const Call &call);

    // Changes what the registers hold that nobody wrote since.
    void move(unsigned salt);

private:
    std::string rightReply(const std::string &request);
    unsigned wordAt(unsigned address) const;
    bool bitAt(unsigned address) const;

    unsigned values = 0; // salt of the values
    std::map<unsigned, unsigned> writtenWords;
    std::map<unsigned, bool> writtenBits;
};
