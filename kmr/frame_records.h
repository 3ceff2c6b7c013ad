// Frames in records, as 'kmr decode', 'kmr trace' and 'kmr listen' write them.
#pragma once

#include "host/line/line_trace.h"
#include "kmr/record_writer.h"

#include <QString>
#include <QStringList>

#include <vector>

namespace kmr {

// One word or two: "request or answer". The direction may decide which.
QString kindName(FrameKind kind);
QString kindName(const TracedLine &line);

// The fields of a frame in records: their names, and their contents in the same order.
const QStringList &frameFieldNames();
std::vector<Field> frameFields(const QString &characters, const QString &kind,
                               const FrameText &frame);

// The same of a line of traffic, which has a time and a direction besides.
QStringList tracedFieldNames();
std::vector<Field> tracedFields(const TracedLine &line);

} // namespace kmr
