#include "kmr/record_writer.h"

#include "host/project/csv.h"
#include "kmr/json_value.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace kmr {

namespace {

constexpr int SCHEMA = 1;

Json fieldJson(const Field &field)
{
    if (const auto *value = std::get_if<Value>(&field))
        return toJson(*value);
    const auto *values = std::get_if<std::vector<Value>>(&field);
    return values == nullptr ? Json() : toJson(*values);
}

QString cellOf(const Field &field)
{
    if (const auto *value = std::get_if<Value>(&field))
        return toText(*value);
    QStringList texts;
    if (const auto *values = std::get_if<std::vector<Value>>(&field)) {
        for (const Value &value : *values)
            texts.append(toText(value));
    }
    return texts.join(' ');
}

QStringList cellsOf(const std::vector<Field> &fields)
{
    QStringList cells;
    for (const Field &field : fields)
        cells.append(cellOf(field));
    return cells;
}

QString csvLine(const QStringList &cells)
{
    QStringList fields;
    for (const QString &cell : cells)
        fields.append(csvField(cell));
    return fields.join(',');
}

QStringList inCapitals(const QStringList &names)
{
    QStringList capitals;
    for (const QString &name : names)
        capitals.append(name.toUpper());
    return capitals;
}

} // namespace

Field textField(const QString &text)
{
    return text.isEmpty() ? Field() : Field(text);
}

Field millisecondsField(std::chrono::nanoseconds time)
{
    return std::round(static_cast<double>(time.count()) / 1e3) / 1e3;
}

RecordWriter::RecordWriter(Format format, QString command, QStringList fields, bool isStreamed,
                           Output output)
    : m_format(format), m_command(std::move(command)), m_names(std::move(fields)),
      m_isStreamed(isStreamed), m_output(std::move(output)),
      m_widths(static_cast<std::size_t>(m_names.size()))
{
}

void RecordWriter::begin()
{
    if (std::exchange(m_hasBegun, true))
        return;
    if (m_format == Format::Csv)
        m_output(csvLine(m_names));
    else if (m_format == Format::Table)
        addTableRow(inCapitals(m_names));
    else if (m_format == Format::Json)
        m_output(QString("{\"schema\": %1, \"command\": \"%2\", \"records\": [")
                     .arg(SCHEMA)
                     .arg(m_command));
}

void RecordWriter::add(const QString &plainLine, const std::vector<Field> &fields)
{
    begin();
    switch (m_format) {
    case Format::Plain:
        if (!plainLine.isEmpty())
            m_output(plainLine);
        break;
    case Format::Table:
        addTableRow(cellsOf(fields));
        if (m_isStreamed)
            writeTableRows();
        break;
    case Format::Csv:
        m_output(csvLine(cellsOf(fields)));
        break;
    case Format::Json:
        // The comma comes first, so that each record can be written at once.
        m_output((std::exchange(m_hasRecords, true) ? "," : " ") + jsonOf(fields, false));
        break;
    case Format::JsonLines:
        m_output(jsonOf(fields, true));
        break;
    }
}

void RecordWriter::end()
{
    begin();
    writeTableRows();
    if (m_format == Format::Json)
        m_output("]}");
}

void RecordWriter::addTableRow(const QStringList &cells)
{
    for (std::size_t i = 0; i < m_widths.size(); ++i)
        m_widths[i] = std::max(m_widths[i], static_cast<int>(cells[static_cast<int>(i)].size()));
    m_rows.append(cells);
}

void RecordWriter::writeTableRows()
{
    for (const QStringList &cells : std::exchange(m_rows, {})) {
        QString line;
        for (std::size_t i = 0; i < m_widths.size(); ++i)
            line += cells[static_cast<int>(i)].leftJustified(m_widths[i] + 2);
        while (line.endsWith(' '))
            line.chop(1);
        m_output(line);
    }
}

QString RecordWriter::jsonOf(const std::vector<Field> &fields, bool isLine) const
{
    Json record = Json::object();
    if (isLine) {
        record["schema"] = SCHEMA;
        record["command"] = m_command.toStdString();
    }
    for (std::size_t i = 0; i < fields.size(); ++i)
        record[m_names[static_cast<int>(i)].toStdString()] = fieldJson(fields[i]);
    return QString::fromStdString(record.dump());
}

} // namespace kmr
