// A file to which 'kmr log' appends rows: comma-separated values, or an SQLite database.
#pragma once

#include "host/session/quality.h"
#include "host/tags/values.h"

#include <QDateTime>
#include <QString>

#include <memory>
#include <optional>
#include <vector>

namespace kmr {

struct LogCell {
    std::optional<Values> values; // none: not read since the previous row
    Quality quality = Quality::Unread;

    bool isRead() const
    {
        return values.has_value();
    }
};

struct LogRow {
    QDateTime time;
    std::vector<LogCell> cells; // one for each tag
};

// "good", "stale" or "pending", or "not read" for a good value that was not read since the previous
// row.
QString qualityText(const LogCell &cell);

class LogFile {
public:
    virtual ~LogFile() = default;

    // Appends a row, completely or not at all. Throws Error (Output).
    virtual void append(const LogRow &row) = 0;

    // Makes all appended rows safe against a power failure. Throws Error (Output).
    virtual void sync() = 0;

    // The size in bytes.
    virtual qint64 size() const = 0;
};

// Creates the file, or continues one with the same tags; a row that a power failure left incomplete
// is removed. The name's ending decides on the kind: .csv, or .sqlite, .sqlite3 and .db. Throws
// Error (Usage) for another ending, for a file with other content, which stays as it is, and for a
// .csv file that another program is logging to.
std::unique_ptr<LogFile> openLogFile(const QString &path, const std::vector<Tag> &tags);

// An early check of the name: throws Error (Usage) for another ending.
void requireLogName(const QString &path);

// The two kinds of openLogFile().
std::unique_ptr<LogFile> openCsvLog(const QString &path, const std::vector<Tag> &tags);
std::unique_ptr<LogFile> openSqliteLog(const QString &path, const std::vector<Tag> &tags);

} // namespace kmr
