// A log in comma-separated values: a heading, then a line for each row.
#include "host/error.h"
#include "host/line/line_trace.h"
#include "host/project/csv.h"
#include "host/project/text_file.h"
#include "kmr/log/log_file.h"

#include <QFile>

#include <cerrno>
#include <sys/file.h>
#include <unistd.h>

namespace kmr {

namespace {

QString line(const QStringList &fields)
{
    QStringList texts;
    for (const QString &field : fields)
        texts.append(csvField(field));
    return texts.join(',') + '\n';
}

QString heading(const std::vector<Tag> &tags)
{
    QStringList fields{"time"};
    for (const Tag &tag : tags) {
        fields.append(tag.unit.isEmpty() ? tag.text : tag.text + " [" + tag.unit + ']');
        fields.append(tag.text + " quality");
    }
    return line(fields);
}

class CsvLog : public LogFile {
public:
    CsvLog(const QString &path, const std::vector<Tag> &tags) : m_file(path), m_tags(tags)
    {
        if (!m_file.open(QIODevice::ReadWrite | QIODevice::Unbuffered))
            throw Error(ErrorKind::Usage,
                        QString("cannot write %1: %2").arg(path, m_file.errorString()));
        if (m_file.isSequential()) // reading from a pipe would wait for ever
            throw Error(ErrorKind::Usage,
                        QString("cannot write %1: it is not a regular file").arg(path));
        lock();
        const QByteArray begin = heading(tags).toUtf8();
        const QByteArray found = m_file.read(begin.size());
        if (!begin.startsWith(found)) {
            throw Error(ErrorKind::Usage, QString("%1 is not a log of these tags: move it away "
                                                  "or name another file")
                                              .arg(path));
        }
        if (found.size() == begin.size()) {
            goOn();
        } else {
            m_file.resize(0);
            m_file.seek(0);
            write(begin);
        }
    }

    void append(const LogRow &row) override
    {
        QStringList fields{timeText(row.time)};
        for (std::size_t i = 0; i < m_tags.size(); ++i) {
            const LogCell &cell = row.cells[i];
            fields << (cell.isRead() ? formatValues(m_tags[i], *cell.values) : QString())
                   << qualityText(cell);
        }
        write(line(fields).toUtf8());
    }

    void sync() override
    {
        if (fdatasync(m_file.handle()) != 0)
            throw failure();
    }

    qint64 size() const override
    {
        return m_size;
    }

private:
    // Two programs would overwrite each other's rows.
    void lock()
    {
        if (flock(m_file.handle(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK)
            throw Error(
                ErrorKind::Usage,
                QString("another kmr log writes %1: name another file").arg(m_file.fileName()));
    }

    // Continues after the last whole line.
    void goOn()
    {
        m_size = m_file.size();
        while (m_size > 0) {
            m_file.seek(m_size - 1);
            if (m_file.read(1) == "\n")
                break;
            --m_size;
        }
        m_file.resize(m_size);
        m_file.seek(m_size);
    }

    void write(const QByteArray &bytes)
    {
        if (!writeAll(m_file, bytes)) {
            const Error error = failure();
            m_file.resize(m_size); // no part of a row that doesn't fit
            throw error;
        }
        m_size += bytes.size();
    }

    Error failure() const
    {
        return Error(ErrorKind::Output, QString("cannot write %1: %2 (the earlier rows "
                                                "are complete)")
                                            .arg(m_file.fileName(), m_file.errorString()));
    }

    QFile m_file;
    const std::vector<Tag> m_tags;
    qint64 m_size = 0;
};

} // namespace

std::unique_ptr<LogFile> openCsvLog(const QString &path, const std::vector<Tag> &tags)
{
    return std::make_unique<CsvLog>(path, tags);
}

} // namespace kmr
