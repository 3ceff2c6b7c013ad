// Lines of comma-separated values (RFC 4180), without line breaks inside a field.
#pragma once

#include <QString>
#include <QStringList>

namespace kmr {

// The fields of one line, trimmed unless they are quoted. A quote that is not closed ends with the
// line.
QStringList splitCsv(const QString &line);

// The field, in quotes where it needs them.
QString csvField(const QString &text);

} // namespace kmr
