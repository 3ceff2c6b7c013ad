#include "kmr/log/log_writer.h"

#include "host/error.h"
#include "tests/host/library.h"
#include "tests/kmr/file_size_limit.h"

#include <QDir>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <sys/stat.h>

using namespace kmr;

namespace {

class LogWriterTest : public testing::Test {
protected:
    LogWriterTest()
    {
        m_tags = {tagOf("D100"), tagOf("X0x2")};
        m_tags[0].unit = "C";
    }

    QString path(const QString &name) const
    {
        return m_directory.filePath(name);
    }

    static QDateTime at(int seconds)
    {
        return QDateTime(QDate(2026, 11, 22), QTime(4, 30), Qt::UTC).addSecs(seconds);
    }

    static LogRow row(int seconds, const LogCell &first, const LogCell &second)
    {
        return {at(seconds), {first, second}};
    }

    LogWriter open(const QString &name, LogRotation rotation = {})
    {
        return LogWriter(path(name), m_tags, rotation, at(0));
    }

    QByteArray load(const QString &name)
    {
        QFile file(path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("no file");
    }

    void save(const QString &name, const QByteArray &text)
    {
        QFile file(path(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(text) == text.size());
    }

    QStringList files() const
    {
        return QDir(m_directory.path()).entryList(QDir::Files, QDir::Name);
    }

    // The result of a query, a line for each row.
    QByteArray query(const QString &name, const char *text)
    {
        sqlite3 *database = nullptr;
        sqlite3_open(path(name).toUtf8().constData(), &database);
        QByteArray answer;
        const auto add = [](void *answers, int columns, char **values, char **) {
            for (int i = 0; i < columns; ++i)
                *static_cast<QByteArray *>(answers) +=
                    QByteArray(values[i] ? values[i] : "null") + (i + 1 < columns ? " " : "\n");
            return 0;
        };
        sqlite3_exec(database, text, add, &answer, nullptr);
        sqlite3_close(database);
        return answer;
    }

    const QTemporaryDir m_directory;
    std::vector<Tag> m_tags;
};

const LogCell GOOD{Values{7}, Quality::Good};
const LogCell BITS{Values{1, 0}, Quality::Good};
const LogCell NOT_READ{{}, Quality::Good};
const LogCell STALE{{}, Quality::Stale};
const QByteArray HEADING = "time,D100 [C],D100 quality,X0x2,X0x2 quality\n";

} // namespace

TEST_F(LogWriterTest, CsvHasARowEachWithValuesAndQualities)
{
    LogWriter writer = open("line.csv");
    writer.append(row(0, GOOD, BITS));
    writer.append(row(1, NOT_READ, STALE));
    EXPECT_EQ(load("line.csv"), HEADING + "2026-11-22T04:30:00.000Z,7,good,1 0,good\n"
                                          "2026-11-22T04:30:01.000Z,,not read,,stale\n");
    EXPECT_EQ(writer.summary(), "2 rows in " + path("line.csv"));
}

TEST_F(LogWriterTest, CsvGoesOnAfterItsLastWholeRow)
{
    save("line.csv", HEADING + "first\nbroken of");
    open("line.csv").append(row(0, GOOD, BITS));
    EXPECT_EQ(load("line.csv"), HEADING + "first\n2026-11-22T04:30:00.000Z,7,good,1 0,good\n");
}

TEST_F(LogWriterTest, CsvWhoseHeadingIsBrokenOffBeginsAnew)
{
    save("line.csv", HEADING.left(20));
    open("line.csv");
    EXPECT_EQ(load("line.csv"), HEADING);
}

TEST_F(LogWriterTest, FileThatHoldsSomethingElseStaysAsItIs)
{
    for (const char *const name : {"line.csv", "line.sqlite"}) {
        save(name, "time,D7\n, and so on, for long enough");
        EXPECT_THROW(open(name), Error) << name;
        EXPECT_EQ(load(name), "time,D7\n, and so on, for long enough") << name;
    }
    EXPECT_THROW(open("line.txt"), Error);
    EXPECT_FALSE(QFile::exists(path("line.txt")));
}

TEST_F(LogWriterTest, CsvThatAnotherWriterHasOpenIsRefused)
{
    const LogWriter first = open("line.csv");
    EXPECT_THROW(open("line.csv"), Error);
}

TEST_F(LogWriterTest, PipeIsRefusedSinceItCannotBeReadAgain)
{
    ASSERT_EQ(mkfifo(path("pipe.csv").toLocal8Bit().constData(), 0600), 0);
    EXPECT_THROW(open("pipe.csv"), Error);
}

TEST_F(LogWriterTest, DatabaseOfAnotherProgramStaysAsItIs)
{
    for (const char *table : {"orders(id)", "samples(time, value)"}) {
        QFile::remove(path("app.db"));
        query("app.db", qPrintable(QString("CREATE TABLE %1").arg(table)));
        const QByteArray before = load("app.db");
        EXPECT_THROW(open("app.db"), Error) << table;
        EXPECT_EQ(load("app.db"), before) << table;
        EXPECT_EQ(files(), QStringList{"app.db"}) << table;
    }
}

TEST_F(LogWriterTest, RowThatDoesNotFitOnTheDiskIsLeftOut)
{
    LogWriter writer = open("line.csv");
    writer.append(row(0, GOOD, BITS));
    const QByteArray whole = load("line.csv");
    const FileSizeLimit limit(static_cast<rlim_t>(whole.size()) + 10);
    EXPECT_THROW(writer.append(row(1, GOOD, BITS)), Error);
    EXPECT_EQ(load("line.csv"), whole);
}

TEST_F(LogWriterTest, DatabaseHasARowForEachTag)
{
    {
        LogWriter writer = open("line.sqlite");
        writer.append(row(0, GOOD, BITS));
        writer.append(row(1, NOT_READ, STALE));
        writer.sync();
    }
    EXPECT_EQ(query("line.sqlite", "SELECT * FROM samples"),
              "2026-11-22T04:30:00.000Z D100 7 C good\n"
              "2026-11-22T04:30:00.000Z X0x2 1 0 null good\n"
              "2026-11-22T04:30:01.000Z D100 null C not read\n"
              "2026-11-22T04:30:01.000Z X0x2 null null stale\n");
    open("line.sqlite"); // goes on
    EXPECT_EQ(query("line.sqlite", "SELECT count(*) FROM samples"), "4\n");
}

TEST_F(LogWriterTest, DatabaseKeepsNumbersAsNumbersAndTextsAsTexts)
{
    const struct {
        const char *tag;
        const char *value;
        const char *stored;
    } rows[] = {
        {"D100", "7", "integer 7\n"},
        {"D100/float32", "21.5", "real 21.5\n"},
        {"D100/uint64", "18446744073709551615", "text 18446744073709551615\n"},
        {"D100/hex", "0x00FA", "text 0x00FA\n"},
        {"D100x2", "1 2", "text 1 2\n"},
        {"D100x2/text", "0042", "text 0042\n"},
        {"D100x2/text", "1e9", "text 1e9\n"},
        {"D100x2/text", "", "text \n"},
    };
    for (const auto &row : rows) {
        QFile::remove(path("line.sqlite"));
        m_tags = {tagOf(row.tag)};
        {
            LogWriter writer = open("line.sqlite");
            writer.append({at(0), {{parseValues(m_tags[0], row.value), Quality::Good}}});
            writer.sync();
        }
        EXPECT_EQ(query("line.sqlite", "SELECT typeof(value), value FROM samples"), row.stored);
    }
}

TEST_F(LogWriterTest, DatabaseOfAnEarlierVersionIsContinued)
{
    query("line.sqlite", "CREATE TABLE samples(time TEXT NOT NULL, tag TEXT NOT NULL,"
                         " value NUMERIC, unit TEXT, quality TEXT NOT NULL)");
    LogWriter writer = open("line.sqlite");
    writer.append(row(0, GOOD, BITS));
    writer.sync();
    EXPECT_EQ(query("line.sqlite", "SELECT value FROM samples"), "7\n1 0\n");
}

TEST_F(LogWriterTest, RowIsSafeASecondAfterItWasWritten)
{
    LogWriter writer = open("line.sqlite");
    writer.append(row(0, GOOD, BITS));
    EXPECT_EQ(query("line.sqlite", "SELECT count(*) FROM samples"), "0\n");
    writer.syncWhenDue(at(1));
    EXPECT_EQ(query("line.sqlite", "SELECT count(*) FROM samples"), "2\n");
}

TEST_F(LogWriterTest, FullFileIsFollowedByAnother)
{
    LogRotation rotation;
    rotation.bytes = HEADING.size() + 1;
    LogWriter writer = open("line.csv", rotation);
    for (const int second : {0, 1, 1})
        writer.append(row(second, GOOD, BITS));
    EXPECT_EQ(writer.summary(),
              "3 rows in 3 files, the last one " + path("line-20261122-043001-2.csv"));
    EXPECT_EQ(files(), (QStringList{"line-20261122-043000.csv", "line-20261122-043001-2.csv",
                                    "line-20261122-043001.csv"}));
}

TEST_F(LogWriterTest, EachDayHasAFile)
{
    LogRotation rotation;
    rotation.isDaily = true;
    LogWriter writer = open("line.csv", rotation);
    for (const int hours : {0, 1, 24, 25})
        writer.append(row(hours * 3600, GOOD, BITS));
    EXPECT_EQ(files(), (QStringList{"line-20261122-043000.csv", "line-20261123-043000.csv"}));
}
