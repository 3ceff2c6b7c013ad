// Writes the rows of 'kmr log' to a file, or to one after another.
#pragma once

#include "kmr/log/log_file.h"

#include <chrono>
#include <cstdint>

namespace kmr {

// When to go on with a new file. Its name then holds the time at which it begins:
// "line-20261122-043000.csv".
struct LogRotation {
    qint64 bytes = 0;     // once a file has so many; 0: never
    bool isDaily = false; // at midnight, local time
};

class LogWriter {
public:
    // Opens the first file. `begin`: the time now. Throws as openLogFile() does.
    LogWriter(QString path, std::vector<Tag> tags, LogRotation rotation, const QDateTime &begin);

    // Rows in the order of their times. Throws Error (Output).
    void append(const LogRow &row);

    // What was appended a second ago survives a power cut. To be called often. Throws Error
    // (Output).
    void syncWhenDue(const QDateTime &time);

    // What was appended survives a power cut. Throws Error (Output).
    void sync();

    std::uint64_t rows() const
    {
        return m_rows;
    }

    // The file that is written now.
    const QString &file() const
    {
        return m_name;
    }

private:
    void begin(const QDateTime &time);
    bool isFull(const QDateTime &time) const;

    const QString m_path;
    const std::vector<Tag> m_tags;
    const LogRotation m_rotation;
    QString m_name;
    QDateTime m_begin;  // of the file
    QDateTime m_synced; // when it was
    bool m_isSynced = true;
    std::unique_ptr<LogFile> m_file;
    std::uint64_t m_rows = 0;
};

} // namespace kmr
