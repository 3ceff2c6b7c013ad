#include "host/project/name_table.h"

#include "host/error.h"
#include "host/project/csv.h"
#include "host/tags/nearest.h"

#include <QRegularExpression>

#include <cmath>

namespace kmr {

namespace {

const QStringList USUAL_COLUMNS = {"name", "tag", "unit", "scale", "comment"};

Error usage(const QString &text)
{
    return Error(ErrorKind::Usage, text);
}

// The lines of the file that are neither empty nor comments.
struct Line {
    int number = 0;
    QString text;
};

std::vector<Line> linesOf(const QString &text)
{
    std::vector<Line> lines;
    int number = 0;
    for (const QString &raw : text.split('\n')) {
        ++number;
        const QString line = QString(raw).remove('\r');
        const QString trimmed = line.trimmed();
        if (!trimmed.isEmpty() && !trimmed.startsWith('#'))
            lines.push_back({number, line});
    }
    return lines;
}

// The separator of the file's fields, and their columns.
struct Layout {
    QChar separator = ',';
    QStringList columns; // an empty one is ignored
    bool hasHeading = false;
};

QChar separatorOf(const std::vector<Line> &lines)
{
    static const QRegularExpression SEPARATOR("^(?:[^,;\\t\"]|\"[^\"]*\")*([,;\\t])");
    for (const Line &line : lines) {
        const QRegularExpressionMatch match = SEPARATOR.match(line.text);
        if (match.hasMatch())
            return match.captured(1).front();
    }
    return ',';
}

// Each tag has a digit; no column name has one.
bool isHeading(const QString &line, QChar separator)
{
    static const QRegularExpression DIGIT("[0-9]");
    try {
        const QStringList fields = splitCsv(line, separator);
        return fields.size() > 1 && !fields[1].contains(DIGIT);
    } catch (const Error &) {
        return false; // reported when the line is read
    }
}

QString columnOf(const QString &heading)
{
    QString column = heading.toLower();
    return column.replace(' ', '-').replace('_', '-');
}

QStringList knownColumns(const QStringList &headings)
{
    QStringList columns;
    QStringList unknown;
    for (const QString &heading : headings) {
        const QString column = columnOf(heading);
        if (!column.isEmpty() && !nameColumns().contains(column))
            unknown.append('"' + heading + '"' + didYouMean(column, nameColumns()));
        columns.append(column);
    }
    if (!unknown.isEmpty())
        throw usage(QString("unknown heading %1; the headings are %2")
                        .arg(unknown.join("; "), nameColumns().join(", ")));
    return columns;
}

QStringList namedColumns(const QStringList &headings, const NameTable::Headings &wanted)
{
    QStringList columns;
    for (int i = 0; i < headings.size(); ++i)
        columns.append(QString());
    for (const auto &[column, heading] : wanted) {
        int index = -1;
        for (int i = 0; i < headings.size(); ++i) {
            if (headings[i].compare(heading, Qt::CaseInsensitive) == 0)
                index = i;
        }
        if (index < 0)
            throw usage(QString("no column \"%1\"%2; the file's columns are %3")
                            .arg(heading, didYouMean(heading, headings), headings.join(", ")));
        columns[index] = column;
    }
    return columns;
}

// Takes the line away by which spreadsheets name the separator: sep=;
std::optional<QChar> takeSeparator(std::vector<Line> &lines)
{
    static const QRegularExpression NAMED("^\"?sep=([,;\\t])\"?$",
                                          QRegularExpression::CaseInsensitiveOption);
    if (lines.empty())
        return std::nullopt;
    const QRegularExpressionMatch match = NAMED.match(lines.front().text);
    if (!match.hasMatch())
        return std::nullopt;
    lines.erase(lines.begin());
    return match.captured(1).front();
}

Layout layoutOf(std::vector<Line> &lines, const NameTable::Headings &headings)
{
    const std::optional<QChar> separator = takeSeparator(lines);
    Layout layout{separator ? *separator : separatorOf(lines), USUAL_COLUMNS, false};
    if (lines.empty())
        return layout;
    const QString &first = lines.front().text;
    layout.hasHeading = !headings.empty() || isHeading(first, layout.separator);
    if (!layout.hasHeading)
        return layout;
    const QStringList fields = splitCsv(first, layout.separator);
    layout.columns = headings.empty() ? knownColumns(fields) : namedColumns(fields, headings);
    for (const QString &column : nameColumns()) {
        const auto count = layout.columns.count(column);
        const bool isNeeded = column == "name" || column == "tag";
        if (count > 1)
            throw usage(QString("the heading has %1 twice").arg(column));
        if (count == 0 && isNeeded)
            throw usage(QString("the heading has no %1").arg(column));
    }
    return layout;
}

// The fields of a line by their column.
using Fields = std::map<QString, QString>;

Fields fieldsOf(const QString &line, const Layout &layout)
{
    const QStringList texts = splitCsv(line, layout.separator);
    Fields fields;
    for (int i = 0; i < texts.size(); ++i) {
        if (i < layout.columns.size())
            fields[layout.columns[i]] = texts[i];
        else if (!texts[i].isEmpty())
            throw usage(QString("has %1 fields, expected %2 (a field with \"%3\" needs quotes)")
                            .arg(texts.size())
                            .arg(layout.columns.join(layout.separator), layout.separator));
    }
    return fields;
}

void checkName(const QString &name)
{
    static const QRegularExpression VALID("^[\\p{L}_][^=,;\"\\p{C}]*$");
    if (!VALID.match(name).hasMatch())
        throw usage(QString("bad name \"%1\": expected a letter or _, then anything but = , ; and "
                            "double quotes")
                        .arg(name));
}

// An empty text, or a decimal number.
QString readDecimal(const Name &name, const char *column, QString text, const Layout &layout)
{
    if (layout.separator != ',')
        text.replace(',', '.');
    const bool isFinite = isDecimal(text) && std::isfinite(text.toDouble());
    const bool mayBeZero = column != std::string("scale");
    if (text.isEmpty() || (isFinite && (mayBeZero || Scaling(text).shown("1") != "0")))
        return text;
    throw usage(QString("bad %1 \"%2\" of %3: expected a number%4")
                    .arg(column, text, name.name,
                         mayBeZero ? ", for example -40" : " other than 0, for example 0.1"));
}

// Empty for an empty text.
template <typename Order>
std::optional<Order> readOrder(const Name &name, const char *column, const QString &text)
{
    if (text.isEmpty())
        return std::nullopt;
    if (text.compare("low", Qt::CaseInsensitive) == 0)
        return Order::LowFirst;
    if (text.compare("high", Qt::CaseInsensitive) == 0)
        return Order::HighFirst;
    throw usage(QString("bad %1 \"%2\" of %3: expected low or high").arg(column, text, name.name));
}

Error badTexts(const Name &name, const QString &text, const QString &why)
{
    return usage(QString("bad texts \"%1\" of %2: %3").arg(text, name.name, why));
}

bool readYes(const Name &name, const char *column, const QString &text)
{
    if (text.isEmpty() || text.compare("no", Qt::CaseInsensitive) == 0)
        return false;
    if (text.compare("yes", Qt::CaseInsensitive) == 0)
        return true;
    throw usage(QString("bad %1 \"%2\" of %3: expected yes or no").arg(column, text, name.name));
}

// A text that looks like a number could mean two values in a write.
std::vector<ValueText> readTexts(const Name &name, const QString &field)
{
    std::vector<ValueText> texts;
    for (const QString &part : field.split(';', Qt::SkipEmptyParts)) {
        ValueText text;
        bool isNumber = false;
        text.number = part.section('=', 0, 0).trimmed().toLongLong(&isNumber);
        text.text = part.section('=', 1).trimmed();
        if (!isNumber || text.text.isEmpty())
            throw badTexts(name, field, "expected for example 0=closed;1=open");
        if (isDecimal(text.text) || text.text.startsWith("0x", Qt::CaseInsensitive) ||
            text.text.contains('"'))
            throw badTexts(name, field,
                           QString("%1 must not look like a number or have quotes").arg(text.text));
        for (const ValueText &other : texts) {
            if (other.number == text.number ||
                other.text.compare(text.text, Qt::CaseInsensitive) == 0)
                throw badTexts(name, field, QString("%1 appears twice").arg(part.trimmed()));
        }
        texts.push_back(text);
    }
    return texts;
}

// Fills `name` up to the first bad field. Throws Error (Usage) that says what is wrong.
void readFields(Fields &fields, const Layout &layout, Name &name)
{
    name.name = fields["name"];
    name.tag = fields["tag"];
    name.unit = fields["unit"];
    name.comment = fields["comment"];
    checkName(name.name);
    if (name.tag.isEmpty())
        throw usage(QString("%1 has no tag").arg(name.name));
    name.scale = readDecimal(name, "scale", fields["scale"], layout);
    name.offset = readDecimal(name, "offset", fields["offset"], layout);
    name.texts = readTexts(name, fields["texts"]);
    name.wordOrder = readOrder<WordOrder>(name, "word-order", fields["word-order"]);
    name.byteOrder = readOrder<ByteOrder>(name, "byte-order", fields["byte-order"]);
    name.isWritable = readYes(name, "writable", fields["writable"]);
    name.deadband = readDecimal(name, "deadband", fields["deadband"], layout);
    if (name.deadband.startsWith('-'))
        throw usage(
            QString("bad deadband \"%1\" of %2: expected 0 or more").arg(name.deadband, name.name));
}

} // namespace

QStringList nameColumns()
{
    return {"name",       "tag",        "unit",     "scale",    "offset", "texts",
            "word-order", "byte-order", "writable", "deadband", "comment"};
}

QString valueTextsOf(const Name &name)
{
    QStringList texts;
    for (const ValueText &text : name.texts)
        texts.append(QString("%1=%2").arg(text.number).arg(text.text));
    return texts.join(';');
}

NameTable NameTable::parse(const QString &text, const QString &file, const Headings &headings)
{
    NameTable table;
    table.m_file = file;
    std::vector<Line> lines = linesOf(text);
    Layout layout;
    try {
        layout = layoutOf(lines, headings);
    } catch (const Error &error) {
        throw usage(QString("%1:%2: %3").arg(file).arg(lines.front().number).arg(error.text()));
    }
    for (auto line = lines.begin() + (layout.hasHeading ? 1 : 0); line != lines.end(); ++line) {
        Name name;
        name.line = line->number;
        try {
            Fields fields = fieldsOf(line->text, layout);
            readFields(fields, layout, name);
        } catch (const Error &error) {
            name.fault = error.text();
        }
        table.add(name);
    }
    return table;
}

void NameTable::add(Name name)
{
    const auto known = m_index.find(name.name);
    if (known != m_index.end() && name.fault.isEmpty()) {
        Name &other = m_names[known->second];
        name.fault = QString("%1 is already named in line %2").arg(name.name).arg(other.line);
        if (other.fault.isEmpty())
            other.fault = QString("%1 is named again in line %2").arg(name.name).arg(name.line);
    }
    if (!name.fault.isEmpty())
        m_faults.push_back({name.line, name.fault});
    if (name.name.isEmpty() || known != m_index.end())
        return;
    m_index[name.name] = m_names.size();
    m_names.push_back(std::move(name));
}

const Name *NameTable::find(const QString &name) const
{
    const auto found = m_index.find(name);
    return found == m_index.end() ? nullptr : &m_names[found->second];
}

} // namespace kmr
