#include "kmr/publish/spool.h"

#include "host/error.h"

#include <utility>

namespace kmr {

namespace {

// FULL: a commit is on disk when it returns. EXCLUSIVE: two programs would send each other's
// messages. The sequence of AUTOINCREMENT keeps the last number when the table is empty.
const char *const SCHEMA = "PRAGMA locking_mode = EXCLUSIVE;"
                           "PRAGMA journal_mode = WAL;"
                           "PRAGMA synchronous = FULL;"
                           "CREATE TABLE IF NOT EXISTS messages("
                           " number INTEGER PRIMARY KEY AUTOINCREMENT,"
                           " time INTEGER NOT NULL,"
                           " topic BLOB NOT NULL,"
                           " payload BLOB NOT NULL,"
                           " retained INTEGER NOT NULL,"
                           " correlation BLOB NOT NULL);";
constexpr qint64 ROW_BYTES = 32; // beside topic, payload and correlation

// What a row takes, also as SQL.
qint64 bytesOf(const Message &message)
{
    return ROW_BYTES + message.topic.size() + message.payload.size() + message.correlation.size();
}
const char *const SQL_BYTES = "32 + length(topic) + length(payload) + length(correlation)";

sqlite3 *open(const QString &path)
{
    sqlite3 *database = nullptr;
    sqlite3_open(path.toUtf8().constData(), &database);
    return database;
}

void bindBytes(sqlite3_stmt *statement, int column, const QByteArray &bytes)
{
    sqlite3_bind_blob(statement, column, bytes.isEmpty() ? "" : bytes.constData(),
                      static_cast<int>(bytes.size()), SQLITE_TRANSIENT);
}

QByteArray bytesAt(sqlite3_stmt *statement, int column)
{
    const void *const bytes = sqlite3_column_blob(statement, column);
    return {static_cast<const char *>(bytes), sqlite3_column_bytes(statement, column)};
}

} // namespace

Spool::Spool(QString path, SpoolLimits limits)
    : m_path(std::move(path)), m_limits(limits), m_database(open(m_path), sqlite3_close)
{
    const int result = sqlite3_exec(m_database.get(), SCHEMA, nullptr, nullptr, nullptr);
    if (result == SQLITE_BUSY)
        throw Error(ErrorKind::Usage, QString("%1 is used by another program, maybe another kmr "
                                              "publish: name another file with --spool")
                                          .arg(m_path));
    try {
        if (result != SQLITE_OK)
            fail();
        m_insert = prepare("INSERT INTO messages VALUES(?, ?, ?, ?, ?, ?)");
        m_read = prepare("SELECT * FROM messages WHERE number > ? ORDER BY number LIMIT ?");
        m_remove = prepare(
            (std::string("DELETE FROM messages WHERE number = ? RETURNING ") + SQL_BYTES).c_str());
        measure();
    } catch (const Error &error) {
        throw Error(ErrorKind::Usage, error.text());
    }
}

Spool::~Spool()
{
    m_insert.reset(); // before their database
    m_read.reset();
    m_remove.reset();
}

void Spool::append(const std::vector<Message> &messages)
{
    qint64 bytes = 0;
    execute("BEGIN");
    for (const Message &message : messages) {
        insert(message);
        bytes += bytesOf(message);
    }
    execute("COMMIT");
    m_count += messages.size();
    m_bytes += bytes;
}

std::vector<Message> Spool::readAfter(std::uint64_t number, std::size_t most)
{
    std::vector<Message> messages;
    sqlite3_stmt *const read = m_read.get();
    sqlite3_bind_int64(read, 1, static_cast<sqlite3_int64>(number));
    sqlite3_bind_int64(read, 2, static_cast<sqlite3_int64>(most));
    while (sqlite3_step(read) == SQLITE_ROW) {
        messages.push_back({static_cast<std::uint64_t>(sqlite3_column_int64(read, 0)),
                            sqlite3_column_int64(read, 1), bytesAt(read, 2), bytesAt(read, 3),
                            sqlite3_column_int(read, 4) != 0, bytesAt(read, 5)});
    }
    if (sqlite3_reset(read) != SQLITE_OK)
        fail();
    return messages;
}

void Spool::remove(const std::vector<std::uint64_t> &numbers)
{
    qint64 bytes = 0;
    std::uint64_t count = 0;
    execute("BEGIN");
    for (const std::uint64_t number : numbers) {
        sqlite3_bind_int64(m_remove.get(), 1, static_cast<sqlite3_int64>(number));
        if (sqlite3_step(m_remove.get()) == SQLITE_ROW) {
            bytes += sqlite3_column_int64(m_remove.get(), 0);
            ++count;
        }
        if (sqlite3_reset(m_remove.get()) != SQLITE_OK)
            fail();
    }
    execute("COMMIT");
    m_count -= count;
    m_bytes -= bytes;
}

Spool::Dropped Spool::dropExcess(qint64 now)
{
    Dropped dropped;
    qint64 bytes = 0;
    const Statement find = prepare(
        (std::string("SELECT number, time, ") + SQL_BYTES + " FROM messages ORDER BY number")
            .c_str());
    while (sqlite3_step(find.get()) == SQLITE_ROW) {
        const bool isOld = sqlite3_column_int64(find.get(), 1) < now - m_limits.milliseconds;
        if (m_bytes - bytes <= m_limits.bytes && !isOld)
            break;
        bytes += sqlite3_column_int64(find.get(), 2);
        dropped.upTo = static_cast<std::uint64_t>(sqlite3_column_int64(find.get(), 0));
        ++dropped.count;
    }
    sqlite3_reset(find.get());
    if (dropped.count > 0)
        removeOldest(dropped.upTo);
    m_count -= dropped.count;
    m_bytes -= bytes;
    return dropped;
}

void Spool::removeOldest(std::uint64_t upTo)
{
    const Statement remove = prepare("DELETE FROM messages WHERE number <= ?");
    sqlite3_bind_int64(remove.get(), 1, static_cast<sqlite3_int64>(upTo));
    step(remove.get());
}

std::uint64_t Spool::lastNumber()
{
    const Statement last = prepare("SELECT seq FROM sqlite_sequence WHERE name = 'messages'");
    if (sqlite3_step(last.get()) != SQLITE_ROW)
        return 0;
    return static_cast<std::uint64_t>(sqlite3_column_int64(last.get(), 0));
}

void Spool::measure()
{
    const Statement sum = prepare(
        (std::string("SELECT count(*), ifnull(sum(") + SQL_BYTES + "), 0) FROM messages").c_str());
    if (sqlite3_step(sum.get()) != SQLITE_ROW)
        fail();
    m_count = static_cast<std::uint64_t>(sqlite3_column_int64(sum.get(), 0));
    m_bytes = sqlite3_column_int64(sum.get(), 1);
}

void Spool::insert(const Message &message)
{
    sqlite3_stmt *const insert = m_insert.get();
    sqlite3_bind_int64(insert, 1, static_cast<sqlite3_int64>(message.number));
    sqlite3_bind_int64(insert, 2, message.time);
    bindBytes(insert, 3, message.topic);
    bindBytes(insert, 4, message.payload);
    sqlite3_bind_int(insert, 5, message.isRetained ? 1 : 0);
    bindBytes(insert, 6, message.correlation);
    step(insert);
}

Spool::Statement Spool::prepare(const char *text)
{
    sqlite3_stmt *statement = nullptr;
    if (sqlite3_prepare_v2(m_database.get(), text, -1, &statement, nullptr) != SQLITE_OK)
        fail();
    return {statement, sqlite3_finalize};
}

void Spool::execute(const char *text)
{
    if (sqlite3_exec(m_database.get(), text, nullptr, nullptr, nullptr) != SQLITE_OK)
        fail();
}

void Spool::step(sqlite3_stmt *statement)
{
    const int result = sqlite3_step(statement);
    sqlite3_reset(statement);
    if (result != SQLITE_DONE)
        fail();
}

void Spool::fail()
{
    const QString cause = sqlite3_errmsg(m_database.get());
    sqlite3_exec(m_database.get(), "ROLLBACK", nullptr, nullptr, nullptr);
    throw Error(ErrorKind::Output, QString("cannot spool to %1: %2").arg(m_path, cause));
}

} // namespace kmr
