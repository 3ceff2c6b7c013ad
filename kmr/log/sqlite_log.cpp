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
                           " value," // as it is, without a type; null: not read
                           " unit TEXT,"
                           " quality TEXT NOT NULL);"
                           "CREATE INDEX IF NOT EXISTS samples_by_tag ON samples(tag, time);";
// 1 for an empty database and for a log. An earlier kmr gave the value a type.
const char *const IS_LOG = "SELECT count(*) = 0 OR"
                           " (SELECT group_concat(name) FROM pragma_table_info('samples'))"
                           " = 'time,tag,value,unit,quality' FROM sqlite_master";
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
        requireLog(); // before anything is changed
        if (sqlite3_exec(m_database.get(), SCHEMA, nullptr, nullptr, nullptr) != SQLITE_OK)
            refuse(sqlite3_errmsg(m_database.get()));
        m_insert = prepare("INSERT INTO samples VALUES(?, ?, ?, ?, ?)");
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
    void requireLog()
    {
        const Statement query = prepare(IS_LOG);
        if (sqlite3_step(query.get()) != SQLITE_ROW)
            refuse(sqlite3_errmsg(m_database.get()));
        if (sqlite3_column_int(query.get(), 0) == 0)
            refuse("it is a database of another program; name another file");
    }

    Statement prepare(const char *text)
    {
        sqlite3_stmt *statement = nullptr;
        if (sqlite3_prepare_v2(m_database.get(), text, -1, &statement, nullptr) != SQLITE_OK)
            refuse(sqlite3_errmsg(m_database.get()));
        return Statement(statement, sqlite3_finalize);
    }

    [[noreturn]] void refuse(const QString &why) const
    {
        throw Error(ErrorKind::Usage, QString("cannot log to %1: %2").arg(m_path, why));
    }

    void insert(const QString &time, const Tag &tag, const LogCell &cell)
    {
        bind(1, time);
        bind(2, tag.text);
        bindValues(tag, cell);
        if (tag.unit.isEmpty())
            sqlite3_bind_null(m_insert.get(), 4);
        else
            bind(4, tag.unit);
        bind(5, qualityText(cell));
        const int result = sqlite3_step(m_insert.get());
        sqlite3_reset(m_insert.get());
        if (result != SQLITE_DONE)
            fail();
    }

    // Null if it was not read, a number for one number. Several values are a text, and so are
    // numbers that SQLite doesn't hold exactly.
    void bindValues(const Tag &tag, const LogCell &cell)
    {
        if (!cell.isRead()) {
            sqlite3_bind_null(m_insert.get(), 3);
            return;
        }
        const std::vector<Value> values = interpret(tag, *cell.values);
        const auto *whole = std::get_if<std::int64_t>(&values.front());
        const auto *number = std::get_if<double>(&values.front());
        if (values.size() == 1 && whole != nullptr)
            sqlite3_bind_int64(m_insert.get(), 3, *whole);
        else if (values.size() == 1 && number != nullptr)
            sqlite3_bind_double(m_insert.get(), 3, *number);
        else
            bind(3, formatValues(tag, *cell.values));
    }

    void bind(int column, const QString &text)
    {
        const QByteArray bytes = text.toUtf8();
        sqlite3_bind_text(m_insert.get(), column, bytes.constData(), static_cast<int>(bytes.size()),
                          SQLITE_TRANSIENT);
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
