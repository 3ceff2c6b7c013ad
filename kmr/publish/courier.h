// The thread that talks to the broker: connects, and again after each loss; sends what the outbox
// has; passes on what it receives.
#pragma once

#include "kmr/publish/convention.h"
#include "kmr/publish/outbox.h"

#include <QString>

#include <atomic>
#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace kmr {

// A descriptor that one thread makes readable for another.
class WakeUp {
public:
    WakeUp();
    ~WakeUp();
    WakeUp(const WakeUp &) = delete;
    WakeUp &operator=(const WakeUp &) = delete;

    void wake() const;
    void clear() const;
    int descriptor() const
    {
        return m_descriptor;
    }

private:
    const int m_descriptor;
};

class Courier {
public:
    // Called by the courier's thread.
    struct Events {
        std::function<void()> connected;                      // and the birth was sent
        std::function<void(std::vector<Incoming>)> requested; // see Convention::Commands
        std::function<void(std::size_t)> dropped;    // so many messages, which the broker refuses
        std::function<void(const QString &)> report; // takes a line for a person
    };

    // `wakeUp` is woken after each push to the outbox.
    Courier(BrokerSettings settings, std::shared_ptr<Convention> convention,
            std::shared_ptr<Outbox> outbox, std::shared_ptr<WakeUp> wakeUp, Events events);
    ~Courier();
    Courier(const Courier &) = delete;
    Courier &operator=(const Courier &) = delete;

    // Sends what waits if that is possible soon, says offline, and ends. A thread that hangs in
    // connecting is left alone.
    void end();

private:
    struct State; // shared with the thread, which may outlive this

    std::shared_ptr<State> m_state;
    bool m_hasEnded = false;
};

} // namespace kmr
