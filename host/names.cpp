#include "host/names.h"

#include "host/csv.h"
#include "host/error.h"
#include "host/tag.h"

#include <QRegularExpression>

#include <cmath>

namespace kmr {

namespace {

constexpr int MAX_FIELDS = 5;

// The text of what is wrong, or an empty one.
QString readLine(const QString &line, Name &name)
{
    static const QRegularExpression VALID("^\\p{L}[\\p{L}\\p{Nd}._-]*$");
    const QStringList fields = splitCsv(line);
    name.name = fields.value(0);
    name.tag = fields.value(1);
    name.unit = fields.value(2);
    name.comment = fields.value(4);
    if (fields.size() > MAX_FIELDS)
        return QString("has %1 fields, expected name,tag,unit,scale,comment (a field with commas "
                       "needs quotes)")
            .arg(fields.size());
    if (!VALID.match(name.name).hasMatch())
        return QString("bad name \"%1\": expected a letter, then letters, digits and . _ -")
            .arg(name.name);
    if (name.tag.isEmpty())
        return QString("%1 has no tag").arg(name.name);
    const QString scale = fields.value(3);
    bool isNumber = true;
    name.scale = scale.isEmpty() ? 1 : scale.toDouble(&isNumber);
    if (!isNumber || name.scale == 0 || !std::isfinite(name.scale))
        return QString("bad scale \"%1\" of %2: expected a number other than 0, for example 0.1")
            .arg(scale, name.name);
    return {};
}

} // namespace

NameTable NameTable::parse(const QString &text, const QString &file, QStringList &faults)
{
    NameTable table;
    int number = 0;
    for (const QString &raw : text.split('\n')) {
        ++number;
        const QString line = raw.trimmed();
        if (line.isEmpty() || line.startsWith('#') || line.startsWith("name,tag"))
            continue;
        Name name;
        name.line = number;
        QString fault = readLine(line, name);
        const Name *const other = table.find(name.name);
        if (fault.isEmpty() && other != nullptr)
            fault = QString("%1 is already named in line %2").arg(name.name).arg(other->line);
        if (!fault.isEmpty()) {
            faults.append(QString("%1:%2: %3").arg(file).arg(number).arg(fault));
            continue;
        }
        table.m_index[name.name] = table.m_names.size();
        table.m_names.push_back(name);
    }
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
