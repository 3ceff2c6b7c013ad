#include "host/commands/text_file.h"

#include "host/error.h"

#include <QFile>
#include <QSaveFile>

namespace kmr {

QString readTextFile(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw Error(ExitCode::Usage, QString("cannot read %1: %2").arg(path, file.errorString()));
    return QString::fromUtf8(file.readAll());
}

void writeTextFile(const QString &path, const QString &text)
{
    QSaveFile file(path);
    const QByteArray bytes = text.toUtf8();
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit()) {
        throw Error(ExitCode::ItemFailed,
                    QString("cannot write %1: %2").arg(path, file.errorString()));
    }
}

void requireWritable(const QString &path)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        throw Error(ExitCode::Usage, QString("cannot write %1: %2").arg(path, file.errorString()));
    file.cancelWriting();
}

} // namespace kmr
