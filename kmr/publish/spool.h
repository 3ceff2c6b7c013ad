// Messages on disk, in a database of SQLite, so that they outlast a power cut.
//
//   table messages
//   number      the order in which they must arrive
//   time        milliseconds since 1970 UTC
//   topic       as the broker gets it, as the columns below
//   payload
//   retained    0 or 1
//   correlation empty but in answers to requests
//
// For one thread. Only one program at a time can open the file.
#pragma once

#include "kmr/publish/message.h"

#include <QString>
#include <sqlite3.h>

#include <memory>
#include <vector>

namespace kmr {

struct SpoolLimits {
    qint64 bytes = 64000000;            // of all messages together
    qint64 milliseconds = 7 * 86400000; // that a message may wait
};

class Spool {
public:
    // Opens or makes the file. Throws Error (Usage) when it is not a spool, can't be written or
    // another program has it open.
    Spool(QString path, SpoolLimits limits);
    ~Spool();

    // Keeps all or none; they survive a power cut from then on. In the order of their numbers.
    // Throws Error (Output), for example when the disk is full.
    void append(const std::vector<Message> &messages);

    // The first ones after this number, no more than `most`.
    std::vector<Message> readAfter(std::uint64_t number, std::size_t most);

    // Removes these. Throws Error (Output).
    void remove(const std::vector<std::uint64_t> &numbers);

    // What was removed because it was too much or too old: how many, and the last number.
    struct Dropped {
        std::uint64_t count = 0;
        std::uint64_t upTo = 0;
    };

    // Removes the oldest beyond the limits. `now`: milliseconds since 1970 UTC. Throws Error
    // (Output).
    Dropped dropExcess(qint64 now);

    // The highest number that was ever in it, 0 at first.
    std::uint64_t lastNumber();

    std::uint64_t count() const
    {
        return m_count;
    }
    std::uint64_t bytes() const
    {
        return static_cast<std::uint64_t>(m_bytes);
    }

private:
    using Database = std::unique_ptr<sqlite3, decltype(&sqlite3_close)>;
    using Statement = std::unique_ptr<sqlite3_stmt, decltype(&sqlite3_finalize)>;

    Statement prepare(const char *text);
    void execute(const char *text);
    void step(sqlite3_stmt *statement);
    void insert(const Message &message);
    void removeOldest(std::uint64_t upTo);
    void measure();
    [[noreturn]] void fail();

    const QString m_path;
    const SpoolLimits m_limits;
    Database m_database;
    Statement m_insert{nullptr, sqlite3_finalize};
    Statement m_read{nullptr, sqlite3_finalize};
    Statement m_remove{nullptr, sqlite3_finalize};
    std::uint64_t m_count = 0;
    qint64 m_bytes = 0;
};

} // namespace kmr
