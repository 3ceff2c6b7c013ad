#include "kmr/log/log_file.h"

#include "host/error.h"

namespace kmr {

QString qualityText(const LogCell &cell)
{
    switch (cell.quality) {
    case Quality::Good:
        return cell.isRead() ? "good" : "not read";
    case Quality::Stale:
        return "stale";
    case Quality::Unread:
        break;
    }
    return "pending";
}

std::unique_ptr<LogFile> openLogFile(const QString &path, const std::vector<Tag> &tags)
{
    requireLogName(path);
    return path.endsWith(".csv") ? openCsvLog(path, tags) : openSqliteLog(path, tags);
}

void requireLogName(const QString &path)
{
    for (const char *const ending : {".csv", ".sqlite", ".sqlite3", ".db"}) {
        if (path.endsWith(ending))
            return;
    }
    throw Error(ErrorKind::Usage,
                QString("\"%1\" has no known format: its name must end in .csv, .sqlite, "
                        ".sqlite3 or .db")
                    .arg(path));
}

} // namespace kmr
