// What a command tells, one record at a time, in the format that the user wants.
//
//   plain  the command's own lines
//   table  columns under a heading
//   csv    a heading and a line for each record (RFC 4180)
//   json   one document: {"schema": 1, "command": "read", "records": [...]}
//   jsonl  a line for each record: {"schema": 1, "command": "read", ...}
//
// docs/formats.md describes the fields. A field without content is null in JSON, else empty.
#pragma once

#include "host/values.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <optional>
#include <variant>
#include <vector>

namespace kmr {

enum class Format { Plain, Table, Csv, Json, JsonLines };

// The format called "table", "csv", "json", "jsonl" or "plain".
std::optional<Format> formatOf(const QString &name);

// No content, text, or a tag's values.
using Field = std::variant<std::monostate, QString, std::vector<Value>>;

class RecordWriter {
public:
    using Output = std::function<void(const QString &line)>;

    // `fields`: their names. `isStreamed`: the rows of a table come at once, in columns that widen
    // as needed, else at the end in columns that fit. Nothing is written before the first record,
    // so that what fails before leaves nothing half begun.
    RecordWriter(Format format, QString command, QStringList fields, bool isStreamed,
                 Output output);

    // One record; `fields` as many as there are names. `plainLine` is written for Plain, where it
    // isn't empty.
    void add(const QString &plainLine, const std::vector<Field> &fields);

    // Completes the document or the table. To be called once, also without any record.
    void end();

private:
    void begin();
    void addTableRow(const QStringList &cells);
    void writeRow(const QStringList &cells);
    QString jsonOf(const std::vector<Field> &fields, bool isLine) const;

    const Format m_format;
    const QString m_command;
    const QStringList m_names;
    const bool m_isStreamed;
    const Output m_output;
    QList<QStringList> m_rows; // of a table that isn't streamed
    std::vector<int> m_widths;
    bool m_hasBegun = false;   // heading or head of the document
    bool m_hasRecords = false; // of the document
};

} // namespace kmr
