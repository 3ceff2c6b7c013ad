#include "kmr/log/log_writer.h"

#include <QFile>
#include <QFileInfo>

#include <utility>

namespace kmr {

namespace {

constexpr qint64 SYNC_MILLISECONDS = 900; // with the time for syncing: a second

// Creates "line-20261122-043000.csv", or with "-2", "-3", ... if that name is used, also by another
// program that begins a file at the same moment.
QString createFile(const QString &path, const QDateTime &begin)
{
    const QFileInfo info(path);
    const QString stem =
        path.left(path.size() - info.suffix().size() - 1) + '-' + begin.toString("yyyyMMdd-HHmmss");
    QString name = stem + '.' + info.suffix();
    for (int i = 2; !QFile(name).open(QIODevice::NewOnly) && QFileInfo::exists(name); ++i)
        name = QString("%1-%2.%3").arg(stem).arg(i).arg(info.suffix());
    return name;
}

} // namespace

LogWriter::LogWriter(QString path, std::vector<Tag> tags, LogRotation rotation,
                     const QDateTime &begin)
    : m_path(std::move(path)), m_tags(std::move(tags)), m_rotation(rotation)
{
    this->begin(begin);
}

void LogWriter::begin(const QDateTime &time)
{
    const bool isRotated = m_rotation.bytes > 0 || m_rotation.isDaily;
    m_name = isRotated ? createFile(m_path, time) : m_path;
    m_file = openLogFile(m_name, m_tags);
    ++m_files;
    m_begin = time;
    m_synced = time;
}

bool LogWriter::isFull(const QDateTime &time) const
{
    return (m_rotation.bytes > 0 && m_file->size() >= m_rotation.bytes) ||
           (m_rotation.isDaily && time.toLocalTime().date() != m_begin.toLocalTime().date());
}

void LogWriter::append(const LogRow &row)
{
    if (isFull(row.time)) {
        sync();
        begin(row.time);
    }
    m_file->append(row);
    ++m_rows;
    m_isSynced = false;
    syncWhenDue(row.time);
}

void LogWriter::syncWhenDue(const QDateTime &time)
{
    if (m_isSynced || m_synced.msecsTo(time) < SYNC_MILLISECONDS)
        return;
    sync();
    m_synced = time;
}

QString LogWriter::summary() const
{
    const QString text = QString("%1 rows in ").arg(m_rows);
    return m_files == 1 ? text + m_name
                        : text + QString("%1 files, the last one %2").arg(m_files).arg(m_name);
}

void LogWriter::sync()
{
    m_file->sync();
    m_isSynced = true;
}

} // namespace kmr
