#include "view/recording.h"

#include "host/error.h"
#include "host/project/csv.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QFileInfo>

#include <sqlite3.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <memory>

namespace kmr {

namespace {

const char *const QUALITY = " quality";
constexpr int PROGRESS_INSTRUCTIONS = 100000; // of SQLite
constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();

struct Recordings {
    Q_DECLARE_TR_FUNCTIONS(Recordings)
};

[[noreturn]] void refuse(const QString &path, const QString &why)
{
    throw Error(
        ErrorKind::Usage,
        Recordings::tr("%1 is not a recording: %2; expected what 'kmr log' writes").arg(path, why));
}

// Seconds since 1970, or nothing.
std::optional<double> timeOf(const QString &text)
{
    const QDateTime time = QDateTime::fromString(text, Qt::ISODateWithMs);
    return time.isValid() ? std::make_optional(static_cast<double>(time.toMSecsSinceEpoch()) / 1000)
                          : std::nullopt;
}

// The first of a cell's values as a number; not a number for a text.
double numberOf(const QString &values, bool isHexadecimal)
{
    const QString first = values.section(' ', 0, 0);
    bool isNumber = false;
    const double number = isHexadecimal ? static_cast<double>(first.toULongLong(&isNumber, 16))
                                        : first.toDouble(&isNumber);
    return isNumber ? number : NOT_A_NUMBER;
}

class Reader {
public:
    explicit Reader(Recording &recording) : m_recording(recording) {}

    // The tag's number.
    int tag(const QString &name, const QString &unit)
    {
        const auto found = m_ids.find(name);
        if (found != m_ids.end())
            return found->second;
        const int id = static_cast<int>(m_recording.tags.size()) + 1;
        m_recording.tags.push_back({id, name, unit, true});
        return m_ids[name] = id;
    }

    void add(int id, double time, const QString &values, const QString &quality)
    {
        if (quality == "not read")
            return;
        const bool isHexadecimal = values.startsWith("0x");
        const double number = quality == "good" ? numberOf(values, isHexadecimal) : NOT_A_NUMBER;
        m_recording.history.add(id, time, isHexadecimal ? NOT_A_NUMBER : number);
        m_hexadecimal.add(id, time, isHexadecimal ? number : NOT_A_NUMBER);
        RecordedTag &tag = m_recording.tags[static_cast<std::size_t>(id) - 1];
        tag.isBit = tag.isBit && (std::isnan(number) || number == 0 || number == 1);
    }

    // Hexadecimal cells are numbers only in a column of nothing else. Among decimal numbers they
    // are the bits of what is not a number.
    void finish()
    {
        for (const RecordedTag &tag : m_recording.tags) {
            if (!m_recording.history.series(tag.id).samples().empty())
                continue;
            for (const Sample &sample : m_hexadecimal.series(tag.id).samples())
                m_recording.history.add(tag.id, sample.time, sample.value);
        }
    }

private:
    Recording &m_recording;
    History m_hexadecimal; // by the same ids
    std::map<QString, int> m_ids;
};

// None of a line that is not CSV.
QStringList fieldsOf(const QString &line)
{
    try {
        return splitCsv(line);
    } catch (const Error &) {
        return {};
    }
}

void readCsv(const QString &path, Reader &reader, const ReadProgress &progress)
{
    const QString text = readTextFile(path);
    const QStringList lines = text.split('\n', Qt::SkipEmptyParts);
    const QStringList heading = lines.isEmpty() ? QStringList() : fieldsOf(lines.front());
    if (heading.size() < 3 || heading.size() % 2 == 0 || heading.front() != "time")
        refuse(path, Recordings::tr("its heading is not time,TAG,TAG quality,..."));
    std::vector<int> ids;
    for (int i = 1; i < heading.size(); i += 2) {
        if (!heading[i + 1].endsWith(QUALITY))
            refuse(path, Recordings::tr("column %1 is not a quality").arg(i + 2));
        const QString name = heading[i + 1].chopped(static_cast<int>(qstrlen(QUALITY)));
        const QString unit = heading[i].mid(name.size() + 2);
        ids.push_back(reader.tag(name, unit.chopped(unit.isEmpty() ? 0 : 1)));
    }
    for (int i = 1; i < lines.size(); ++i) {
        if (!goesOn(progress, i, lines.size()))
            return;
        const QStringList fields = fieldsOf(lines[i]);
        const std::optional<double> time = timeOf(fields.value(0));
        if (!time || fields.size() != heading.size()) {
            if (i + 1 == lines.size())
                return; // a power cut broke it off
            refuse(path, Recordings::tr("line %1 is not a row").arg(i + 1));
        }
        for (std::size_t tag = 0; tag < ids.size(); ++tag) {
            const int column = static_cast<int>(2 * tag) + 1;
            reader.add(ids[tag], *time, fields[column], fields[column + 1]);
        }
    }
}

// For sqlite3_progress_handler(): not 0 interrupts.
int isToStop(void *progress)
{
    return (*static_cast<const ReadProgress *>(progress))(-1) ? 0 : 1;
}

void readSqlite(const QString &path, Reader &reader, ReadProgress progress)
{
    sqlite3 *opened = nullptr;
    sqlite3_open_v2(path.toUtf8().constData(), &opened, SQLITE_OPEN_READONLY, nullptr);
    const std::unique_ptr<sqlite3, decltype(&sqlite3_close)> database(opened, sqlite3_close);
    if (progress)
        sqlite3_progress_handler(opened, PROGRESS_INSTRUCTIONS, isToStop, &progress);
    sqlite3_stmt *prepared = nullptr;
    if (sqlite3_prepare_v2(opened,
                           "SELECT time, tag, value, unit, quality FROM samples ORDER BY time", -1,
                           &prepared, nullptr) != SQLITE_OK)
        refuse(path, sqlite3_errmsg(opened));
    const std::unique_ptr<sqlite3_stmt, decltype(&sqlite3_finalize)> rows(prepared,
                                                                          sqlite3_finalize);
    const auto text = [&](int column) {
        return QString::fromUtf8(
            reinterpret_cast<const char *>(sqlite3_column_text(prepared, column)));
    };
    int result = SQLITE_ROW;
    while ((result = sqlite3_step(prepared)) == SQLITE_ROW) {
        if (const auto time = timeOf(text(0)))
            reader.add(reader.tag(text(1), text(3)), *time, text(2), text(4));
    }
    if (result != SQLITE_DONE && result != SQLITE_INTERRUPT)
        refuse(path, sqlite3_errmsg(opened));
}

} // namespace

void readRecording(const QString &path, Recording &recording, const ReadProgress &progress)
{
    Reader reader(recording);
    if (path.endsWith(".csv", Qt::CaseInsensitive))
        readCsv(path, reader, progress);
    else
        readSqlite(path, reader, progress);
    reader.finish();
    if (recording.tags.empty())
        refuse(path, Recordings::tr("it has no row"));
}

} // namespace kmr
