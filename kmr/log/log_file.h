// A file that 'kmr log' appends rows to: comma-separated values, or a database of SQLite.
#pragma once

#include "host/session/quality.h"
#include "host/tags/tag.h"

#include <QDateTime>
#include <QString>
#include <QStringList>

#include <memory>
#include <vector>

namespace kmr {

struct LogCell {
    QString values; // as kmr shows them; empty: not read since the row before
    Quality quality = Quality::Unread;

    bool isRead() const
    {
        return !values.isEmpty();
    }
};

struct LogRow {
    QDateTime time;
    std::vector<LogCell> cells; // one for each tag
};

// "good", "stale" or "pending", and "not read" of what is good but was not read since the row
// before.
QString qualityText(const LogCell &cell);

class LogFile {
public:
    virtual ~LogFile() = default;

    // Appends a row whole or not at all. Throws Error (Output).
    virtual void append(const LogRow &row) = 0;

    // What was appended survives a power cut from now on. Throws Error (Output).
    virtual void sync() = 0;

    // Bytes in it.
    virtual qint64 size() const = 0;
};

// Makes the file, or goes on with one that holds the same tags; a row that a power cut broke off is
// removed. The name's ending says which kind: .csv, or .sqlite, .sqlite3 and .db. Throws Error
// (Usage) for another ending and for a file that holds something else.
std::unique_ptr<LogFile> openLogFile(const QString &path, const std::vector<Tag> &tags);

// The two kinds.
std::unique_ptr<LogFile> openCsvLog(const QString &path, const std::vector<Tag> &tags);
std::unique_ptr<LogFile> openSqliteLog(const QString &path, const std::vector<Tag> &tags);

} // namespace kmr
