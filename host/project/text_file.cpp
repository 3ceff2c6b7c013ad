#include "host/project/text_file.h"

#include "host/error.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <cstring>
#include <string>

namespace kmr {

namespace {

const char *const BYTE_ORDER_MARK = "\xEF\xBB\xBF";

bool hasByteOrderMark(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) && file.read(3) == BYTE_ORDER_MARK;
}

// A device or a pipe: must not be replaced by a file.
bool isStream(const QString &path)
{
    const QFileInfo file(path);
    return file.exists() && !file.isFile() && !file.isDir();
}

bool openAndWrite(QFileDevice &file, const QString &text)
{
    return file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) && writeAll(file, text.toUtf8());
}

Error cannotWrite(ErrorKind kind, const QString &path, const QFileDevice &file)
{
    return Error(kind, QString("cannot write %1: %2").arg(path, file.errorString()));
}

QString fromUtf16(const QByteArray &bytes)
{
    std::u16string text(static_cast<std::size_t>(bytes.size() / 2), u'\0');
    std::memcpy(text.data(), bytes.constData(), 2 * text.size());
    return QString::fromUtf16(text.data(), static_cast<int>(text.size()));
}

void requireUtf8(const QString &path, const QByteArray &bytes)
{
    if (bytes.startsWith("\xFF\xFE") || bytes.startsWith("\xFE\xFF"))
        throw Error(ErrorKind::Usage,
                    QString("%1 is in UTF-16, expected UTF-8: save it as UTF-8").arg(path));
    int number = 0;
    for (const QByteArray &line : bytes.split('\n')) {
        ++number;
        const QString text = QString::fromUtf8(line);
        if (text.toUtf8() != (number == 1 && line.startsWith(BYTE_ORDER_MARK) ? line.mid(3) : line))
            throw Error(ErrorKind::Usage,
                        QString("%1:%2: not in UTF-8, maybe in Latin-1: \"%3\"; save it as UTF-8")
                            .arg(path)
                            .arg(number)
                            .arg(QString::fromLatin1(line).trimmed()));
    }
}

} // namespace

QString readTextFile(const QString &path, TextEncoding encoding)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw Error(ErrorKind::Usage, QString("cannot read %1: %2").arg(path, file.errorString()));
    const QByteArray bytes = file.readAll();
    switch (encoding) {
    case TextEncoding::Latin1:
        return QString::fromLatin1(bytes);
    case TextEncoding::Utf16:
        return fromUtf16(bytes);
    case TextEncoding::Utf8:
        break;
    }
    requireUtf8(path, bytes);
    return QString::fromUtf8(bytes);
}

void writeTextFile(const QString &path, const QString &text)
{
    if (isStream(path)) {
        QFile file(path);
        if (!openAndWrite(file, text))
            throw cannotWrite(ErrorKind::Output, path, file);
        return;
    }
    const QString mark = hasByteOrderMark(path) ? QString(QChar::ByteOrderMark) : QString();
    QSaveFile file(path);
    if (!openAndWrite(file, mark + text) || !file.commit())
        throw cannotWrite(ErrorKind::Output, path, file);
}

void requireWritable(const QString &path)
{
    if (isStream(path))
        return; // opening it may have an effect
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        throw cannotWrite(ErrorKind::Usage, path, file);
    file.cancelWriting();
}

bool writeAll(QFileDevice &file, const QByteArray &bytes)
{
    qint64 written = 0;
    while (written < bytes.size()) {
        const qint64 count = file.write(bytes.constData() + written, bytes.size() - written);
        if (count <= 0)
            return false;
        written += count;
    }
    return true;
}

} // namespace kmr
