#include "host/project/text_file.h"

#include "host/error.h"
#include "host/project/write_all.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

namespace kmr {

namespace {

// A device or a pipe: takes what comes and must not be replaced by a file.
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

} // namespace

QString readTextFile(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw Error(ErrorKind::Usage, QString("cannot read %1: %2").arg(path, file.errorString()));
    return QString::fromUtf8(file.readAll());
}

void writeTextFile(const QString &path, const QString &text)
{
    if (isStream(path)) {
        QFile file(path);
        if (!openAndWrite(file, text))
            throw cannotWrite(ErrorKind::Output, path, file);
        return;
    }
    QSaveFile file(path);
    if (!openAndWrite(file, text) || !file.commit())
        throw cannotWrite(ErrorKind::Output, path, file);
}

void requireWritable(const QString &path)
{
    if (isStream(path))
        return; // opening it may already do something
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        throw cannotWrite(ErrorKind::Usage, path, file);
    file.cancelWriting();
}

} // namespace kmr
