// Writes the rows of 'kmr log' to a file, or to several files in turn.
#pragma once

#include "kmr/log/log_file.h"

#include <chrono>
#include <cstdint>

namespace kmr {

// When to begin a new file. Its name then has the time at which it begins:
// "line-20261122-043000.csv".
struct LogRotation {
    qint64 bytes = 0;     // when a file has so many bytes; 0: never
    bool isDaily = false; // at midnight, local time
};

class LogWriter {
public:
    // Opens the first file. `begin`: the present time. Throws the same as openLogFile().
    LogWriter(QString path, std::vector<Tag> tags, LogRotation rotation, const QDateTime &begin);

    // Appends a row; rows must come in the order of their times. Throws Error (Output).
    void append(const LogRow &row);

    // Makes rows safe against a power failure after at most a second. To be called often. Throws
    // Error (Output).
    void syncWhenDue(const QDateTime &time);

    // Makes all appended rows safe against a power failure. Throws Error (Output).
    void sync();

    // "7 rows in line.csv", "9 rows in 2 files, the last one line-20261122-043000.csv".
    QString summary() const;

private:
    void begin(const QDateTime &time);
    bool isFull(const QDateTime &time) const;

    const QString m_path;
    const std::vector<Tag> m_tags;
    const LogRotation m_rotation;
    QString m_name;
    QDateTime m_begin;  // of the file
    QDateTime m_synced; // time of the last sync()
    bool m_isSynced = true;
    std::unique_ptr<LogFile> m_file;
    std::uint64_t m_rows = 0;
    int m_files = 0; // begun or continued
};

} // namespace kmr
