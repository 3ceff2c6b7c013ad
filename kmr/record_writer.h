// What a command reports, one record at a time, in the format that the user wants.
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

// No content, a text or number, or a tag's values.
using Field = std::variant<std::monostate, Value, std::vector<Value>>;

// Text, or no content if it is empty.
Field textField(const QString &text);

// A time in milliseconds, with three decimals.
Field millisecondsField(std::chrono::nanoseconds time);

class RecordWriter {
public:
    using Output = std::function<void(const QString &line)>;

    // `fields`: their names. `isStreamed`: the rows of a table come at once, in columns that fit
    // the first one and widen as needed, else at the end in columns that fit all. Nothing is
    // written before the first record, so that what fails before leaves nothing half begun.
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
