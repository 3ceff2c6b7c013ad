// Opens a lost line again, with pauses that grow until a request is answered: some gateways accept
// every connection and close it again.
#pragma once

#include "kmr/connection.h"

#include <chrono>
#include <functional>

namespace kmr {

class Reconnection {
public:
    explicit Reconnection(Connection &connection) : m_connection(connection) {}

    // A request was answered: the next pause is the shortest again.
    void noteAnswer()
    {
        m_pause = FIRST_PAUSE;
    }

    // Blocks until the line is open. Returns false if `isOver`, which is called every 50 ms,
    // returns true first.
    bool await(const std::function<bool()> &isOver);

private:
    // Half a second, doubled up to half a minute.
    static constexpr std::chrono::milliseconds FIRST_PAUSE{500};
    static constexpr std::chrono::milliseconds LONGEST_PAUSE{30000};

    Connection &m_connection;
    std::chrono::milliseconds m_pause = FIRST_PAUSE;
};

} // namespace kmr
