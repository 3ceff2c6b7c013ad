#include "host/project/name_table.h"

#include "host/error.h"
#include "host/project/csv.h"
#include "host/tags/tag.h"

#include <QRegularExpression>

#include <cmath>

namespace kmr {

namespace {

constexpr int MAX_FIELDS = 5;

// Throws Error (Usage) that says what is wrong.
Name readLine(const QString &line)
{
    static const QRegularExpression VALID("^\\p{L}[\\p{L}\\p{Nd}._-]*$");
    const QStringList fields = splitCsv(line);
    if (fields.size() > MAX_FIELDS)
        throw Error(ErrorKind::Usage, QString("has %1 fields, expected name,tag,unit,scale,comment "
                                              "(a field with commas needs quotes)")
                                          .arg(fields.size()));
    Name name;
    name.name = fields.value(0);
    name.tag = fields.value(1);
    name.unit = fields.value(2);
    name.comment = fields.value(4);
    if (!VALID.match(name.name).hasMatch())
        throw Error(ErrorKind::Usage,
                    QString("bad name \"%1\": expected a letter, then letters, digits and . _ -")
                        .arg(name.name));
    if (name.tag.isEmpty())
        throw Error(ErrorKind::Usage, QString("%1 has no tag").arg(name.name));
    const QString scale = fields.value(3);
    bool isNumber = true;
    name.scale = scale.isEmpty() ? 1 : scale.toDouble(&isNumber);
    if (!isNumber || name.scale == 0 || !std::isfinite(name.scale))
        throw Error(
            ErrorKind::Usage,
            QString("bad scale \"%1\" of %2: expected a number other than 0, for example 0.1")
                .arg(scale, name.name));
    return name;
}

} // namespace

NameTable NameTable::parse(const QString &text, const QString &file, QStringList &faults)
{
    NameTable table;
    table.m_file = file;
    faults += readLines(text, file, "name,tag", [&table](const QString &line, int number) {
        Name name = readLine(line);
        name.line = number;
        const Name *const other = table.find(name.name);
        if (other != nullptr)
            throw Error(ErrorKind::Usage,
                        QString("%1 is already named in line %2").arg(name.name).arg(other->line));
        table.m_index[name.name] = table.m_names.size();
        table.m_names.push_back(name);
    });
    return table;
}

const Name *NameTable::find(const QString &name) const
{
    const auto found = m_index.find(name);
    return found == m_index.end() ? nullptr : &m_names[found->second];
}

QStringList checkNames(const NameTable &names, const QString &file, const TagReader &reader)
{
    TagReader named = reader;
    named.setNames(names);
    QStringList faults;
    for (const Name &name : names.names()) {
        const QString place = QString("%1:%2: ").arg(file).arg(name.line);
        try {
            named.read(name.name);
        } catch (const Error &error) {
            faults.append(place + name.name + ": " + error.text());
        }
        try {
            reader.read(name.name);
            faults.append(place + name.name + " can't be a name, it is a tag itself");
        } catch (const Error &) { // as it should be
        }
    }
    return faults;
}

} // namespace kmr
