// A log in an SQLite database: a table `samples` with a row for each tag and time. Readers may
// use it at the same time.
#include "host/error.h"
#include "host/line/line_trace.h"
#include "kmr/log/log_file.h"

#include <QFileInfo>
#include <sqlite3.h>

namespace kmr {

namespace {

const char *const SCHEMA = "PRAGMA journal_mode = WAL;"
                           "PRAGMA synchronous = FULL;"
                           "CREATE TABLE IF NOT EXISTS samples("
                           " time TEXT NOT NULL,"
                           " tag TEXT NOT NULL,"
                           " value NUMERIC," // null: not read
                           " unit TEXT,"
                           " quality TEXT NOT NULL);"
                           "CREATE INDEX IF NOT EXISTS samples_by_tag ON samples(tag, time);";
constexpr int BUSY_MILLISECONDS = 5000; // for which another program may lock it

using Database = std::unique_ptr<sqlite3, decltype(&sqlite3_close)>;
using Statement = std::unique_ptr<sqlite3_stmt, decltype(&sqlite3_finalize)>;

sqlite3 *open(const QString &path)
{
    sqlite3 *database = nullptr;
    sqlite3_open(path.toUtf8().constData(), &database);
    return database;
}

class SqliteLog : public LogFile {
public:
    SqliteLog(const QString &path, const std::vector<Tag> &tags)
        : m_path(path), m_tags(tags), m_database(open(path), sqlite3_close),
          m_insert(nullptr, sqlite3_finalize)
    {
        sqlite3_busy_timeout(m_database.get(), BUSY_MILLISECONDS);
        sqlite3_stmt *insert = nullptr;
        if (sqlite3_exec(m_database.get(), SCHEMA, nullptr, nullptr, nullptr) != SQLITE_OK ||
            sqlite3_prepare_v2(m_database.get(), "INSERT INTO samples VALUES(?, ?, ?, ?, ?)", -1,
                               &insert, nullptr) != SQLITE_OK) {
            throw Error(
                ErrorKind::Usage,
                QString("cannot log to %1: %2").arg(path, sqlite3_errmsg(m_database.get())));
        }
        m_insert.reset(insert);
    }
    ~SqliteLog() override
    {
        m_insert.reset(); // before its database
    }

    void append(const LogRow &row) override
    {
        if (sqlite3_get_autocommit(m_database.get()) != 0)
            execute("BEGIN");
        execute("SAVEPOINT one_row");
        for (std::size_t i = 0; i < m_tags.size(); ++i)
            insert(timeText(row.time), m_tags[i], row.cells[i]);
        execute("RELEASE one_row");
    }

    void sync() override
    {
        if (sqlite3_get_autocommit(m_database.get()) == 0)
            execute("COMMIT");
    }

    qint64 size() const override
    {
        return QFileInfo(m_path).size() + QFileInfo(m_path + "-wal").size();
    }

private:
    void insert(const QString &time, const Tag &tag, const LogCell &cell)
    {
        bind(1, time);
        bind(2, tag.text);
        bind(3, cell.values);
        bind(4, tag.unit);
        bind(5, qualityText(cell));
        const int result = sqlite3_step(m_insert.get());
        sqlite3_reset(m_insert.get());
        if (result != SQLITE_DONE)
            fail();
    }

    // Null for an empty text.
    void bind(int column, const QString &text)
    {
        const QByteArray bytes = text.toUtf8();
        if (bytes.isEmpty())
            sqlite3_bind_null(m_insert.get(), column);
        else
            sqlite3_bind_text(m_insert.get(), column, bytes.constData(),
                              static_cast<int>(bytes.size()), SQLITE_TRANSIENT);
    }

    void execute(const char *statement)
    {
        if (sqlite3_exec(m_database.get(), statement, nullptr, nullptr, nullptr) != SQLITE_OK)
            fail();
    }

    [[noreturn]] void fail()
    {
        const QString cause = sqlite3_errmsg(m_database.get());
        sqlite3_exec(m_database.get(), "ROLLBACK", nullptr, nullptr, nullptr);
        throw Error(ErrorKind::Output,
                    QString("cannot write %1: %2 (rows older than a second are complete)")
                        .arg(m_path, cause));
    }

    const QString m_path;
    const std::vector<Tag> m_tags;
    Database m_database;
    Statement m_insert;
};

} // namespace

std::unique_ptr<LogFile> openSqliteLog(const QString &path, const std::vector<Tag> &tags)
{
    return std::make_unique<SqliteLog>(path, tags);
}

} // namespace kmr
