// A host whose behaviour is written in bytes: they choose exported calls, their arguments, the
// replies of the controller and what the callback does. Used by the fuzzer, which invents the
// bytes, and by same_trace, which draws them by lot.
//
// What the interface asks of a host is kept: buffers are as large as it says, a callback makes only
// the calls that it may. Everything else is arbitrary.
//
// Elements are bounded, both in a session and in a call: the store is
// searched from the front, so a run of a billion elements ends, but not in our lifetime.
#pragma once

#include "byte_source.h"
#include "digest.h"

#include <memory>

class Session {
public:
    explicit Session(ByteSource &bytes);
    ~Session();
    Session(const Session &) = delete;
    Session &operator=(const Session &) = delete;

    // Makes calls until the bytes are used up or `most` calls are made; returns their number.
    int run(int most);

    // Of all results, outputs and reports.
    std::uint64_t hash() const;

private:
    class Host;
    std::unique_ptr<Host> m_host;
};
