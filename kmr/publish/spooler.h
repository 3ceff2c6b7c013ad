// The thread that keeps on disk what waits for the broker, so that neither the polling nor the
// network ever waits for a disk.
#pragma once

#include "kmr/publish/outbox.h"
#include "kmr/publish/spool.h"

#include <QString>

#include <atomic>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

namespace kmr {

class Spooler {
public:
    // Between two looks at the outbox. What waits at both is stored: after twice this at the
    // latest.
    static constexpr std::chrono::milliseconds PERIOD{250};

    // Begins. Both must outlive it. `report` takes lines for a person, from its thread.
    Spooler(Spool &spool, Outbox &outbox, std::function<void(const QString &)> report);
    // As end().
    ~Spooler();
    Spooler(const Spooler &) = delete;
    Spooler &operator=(const Spooler &) = delete;

    // Stores all that still waits, and ends. Nothing may be pushed any more.
    void end();

    // Any thread: messages on disk, their bytes, and messages that were dropped.
    std::uint64_t stored() const
    {
        return m_stored;
    }
    std::uint64_t storedBytes() const
    {
        return m_storedBytes;
    }
    std::uint64_t dropped() const
    {
        return m_dropped + m_outbox.dropped();
    }

private:
    // Messages dropped for one reason.
    struct Drops {
        const char *why;
        std::uint64_t unreported = 0; // since the last line about them
        std::chrono::steady_clock::time_point nextReport{};
    };

    void run();
    bool isEnding(std::chrono::milliseconds wait);
    void work(std::uint64_t upTo);
    void removeDelivered();
    void loadMore();
    void reportDropped(Drops &drops, std::uint64_t count);
    void noteFailure(const QString &text);

    Spool &m_spool;
    Outbox &m_outbox;
    const std::function<void(const QString &)> m_report;
    std::vector<std::uint64_t> m_toRemove;
    bool m_isFailing = false;
    Drops m_fromSpool{"the spool is at its limit of size or age"};
    Drops m_fromMemory{"the memory is full"};
    std::uint64_t m_seenInMemory = 0; // m_outbox.dropped() at the last look
    std::atomic<std::uint64_t> m_stored{0};
    std::atomic<std::uint64_t> m_storedBytes{0};
    std::atomic<std::uint64_t> m_dropped{0}; // from the spool
    std::mutex m_mutex;
    std::condition_variable m_change;
    bool m_isEnding = false;
    std::thread m_thread; // the last member: it uses the others
};

} // namespace kmr
