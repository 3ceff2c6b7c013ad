// Records of frames, for 'kmr decode', 'kmr trace' and 'kmr listen'.
#pragma once

#include "host/line/line_trace.h"
#include "kmr/record_writer.h"

#include <QString>
#include <QStringList>

#include <vector>

namespace kmr {

// The kind in words: "request or answer". For a traced line the direction may decide.
QString kindName(FrameKind kind);
QString kindName(const TracedLine &line);

// The fields of a frame in records: their names, and their contents in the same order.
const QStringList &frameFieldNames();
std::vector<Field> frameFields(const QString &characters, const QString &kind,
                               const FrameText &frame);

// The same for a line of traffic, which also has a time and a direction.
QStringList tracedFieldNames();
std::vector<Field> tracedFields(const TracedLine &line);

} // namespace kmr
