// A minimal controller, and the ways in which its replies go wrong on the line.
#pragma once

#include "tests/properties/call.h"

#include <map>
#include <string>

class Controller {
public:
    // The reply to the frame text `request` ("" if nothing was sent), changed according to `call`.
    std::string reply(const std::string &request, const Call &call);

    // Changes the registers that were not written since.
    void move(unsigned salt);

private:
    std::string rightReply(const std::string &request);
    unsigned wordAt(unsigned address) const;
    bool bitAt(unsigned address) const;

    unsigned values = 0; // salt of the values
    std::map<unsigned, unsigned> writtenWords;
    std::map<unsigned, bool> writtenBits;
};
