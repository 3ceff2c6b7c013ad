// Writes the records of a command, one at a time, in the format that the user wants.
//
//   plain  the command's own lines
//   table  columns under a heading
//   csv    a heading and a line for each record (RFC 4180)
//   json   one document: {"schema": 1, "command": "read", "records": [...]}
//   jsonl  a line for each record: {"schema": 1, "command": "read", ...}
//
// docs/formats.md describes the fields. A field without content is null in JSON, else empty.
#pragma once

#include "host/tags/values.h"

#include <QDateTime>
#include <QString>
#include <QStringList>

#include <chrono>
#include <functional>
#include <variant>
#include <vector>

namespace kmr {

enum class Format { Plain, Table, Csv, Json, JsonLines };

// The content of a field: nothing, a text or number, or a tag's values.
using Field = std::variant<std::monostate, Value, std::vector<Value>>;

// The text, or no content if it is empty.
Field textField(const QString &text);

// A time in milliseconds, with three decimals.
Field millisecondsField(std::chrono::nanoseconds time);

class RecordWriter {
public:
    using Output = std::function<void(const QString &line)>;

    // `fields`: the names of the fields. `isStreamed`: the rows of a table are written at once, in
    // columns that fit the first row and widen as needed; else at the end, in columns that fit all.
    // Nothing is written before the first record, so that a command that fails earlier writes no
    // incomplete document.
    RecordWriter(Format format, QString command, QStringList fields, bool isStreamed,
                 Output output);

    // Adds a record; `fields` has one for each name. `plainLine` is written for Format::Plain,
    // unless it is empty.
    void add(const QString &plainLine, const std::vector<Field> &fields);

    // Completes the document or the table. To be called once, also without any record.
    void end();

private:
    void begin();
    void addTableRow(const QStringList &cells);
    void writeTableRows();
    QString jsonOf(const std::vector<Field> &fields, bool isLine) const;

    const Format m_format;
    const QString m_command;
    const QStringList m_names;
    const bool m_isStreamed;
    const Output m_output;
    QList<QStringList> m_rows; // of a table, not written yet
    std::vector<int> m_widths;
    bool m_hasBegun = false;   // heading or head of the document
    bool m_hasRecords = false; // of the document
};

} // namespace kmr
