#include "host/project/csv.h"

#include "host/error.h"

namespace kmr {

QStringList splitCsv(const QString &line, QChar separator)
{
    QStringList fields;
    QString field;
    bool isQuoted = false;  // between two quotes
    bool wasQuoted = false; // the field began with one
    const auto finish = [&] {
        fields.append(wasQuoted ? field : field.trimmed());
        field.clear();
        wasQuoted = false;
    };
    for (int i = 0; i < line.size(); ++i) {
        if (isQuoted && line[i] == '"' && i + 1 < line.size() && line[i + 1] == '"') {
            field += line[++i];
        } else if (isQuoted) {
            if (line[i] == '"')
                isQuoted = false;
            else
                field += line[i];
        } else if (line[i] == '"' && field.trimmed().isEmpty()) {
            field.clear();
            isQuoted = wasQuoted = true;
        } else if (line[i] == separator) {
            finish();
        } else if (!wasQuoted) {
            field += line[i];
        } else if (!line[i].isSpace()) {
            throw Error(ErrorKind::Usage, QString("\"%1\" in quotes is followed by \"%2\": write "
                                                  "quotes inside a field twice")
                                              .arg(field, line.mid(i)));
        }
    }
    if (isQuoted)
        throw Error(ErrorKind::Usage, QString("the quote before \"%1\" is not closed").arg(field));
    finish();
    return fields;
}

QString csvField(const QString &text)
{
    const bool needsQuotes =
        text.contains(',') || text.contains('"') || text.contains('\n') || text.trimmed() != text;
    return needsQuotes ? '"' + QString(text).replace("\"", "\"\"") + '"' : text;
}

QStringList readLines(const QString &text, const QString &file, const QString &heading,
                      const std::function<void(const QString &line, int number)> &read)
{
    QStringList faults;
    int number = 0;
    for (const QString &raw : text.split('\n')) {
        ++number;
        const QString line = raw.trimmed();
        if (line.isEmpty() || line.startsWith('#') || line.startsWith(heading))
            continue;
        try {
            read(line, number);
        } catch (const Error &error) {
            faults.append(QString("%1:%2: %3").arg(file).arg(number).arg(error.text()));
        }
    }
    return faults;
}

} // namespace kmr
