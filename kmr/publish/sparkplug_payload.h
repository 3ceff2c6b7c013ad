// Encodes Sparkplug B payloads (Eclipse Sparkplug Specification 3.0.0, chapter "Payloads").
//
// Metrics have no aliases, and always their data type: what comes out of the spool may be older
// than the birth that would define them.
#pragma once

#include "kmr/publish/payload.h"
#include "kmr/publish/sparkplug_fields.h"

#include <QByteArray>
#include <QString>

#include <optional>
#include <vector>

namespace kmr::sparkplug {

// The type of a tag's values: an array if it has several. UInt32 is avoided, Int64 taken instead:
// programs disagree about the field that holds it.
DataType dataTypeOf(const Tag &tag);

// An encoded metric: a tag's values, with quality, unit and cause as properties. Null when they
// were never read, or when their type can't express them (a float that is not a number). `time`:
// milliseconds since 1970 UTC, as everywhere here.
QByteArray metric(const Tag &tag, const Sample &sample, qint64 time);

// Encoded metrics without properties. An empty text is null.
QByteArray metric(const QString &name, qint64 time, bool value);
QByteArray metric(const QString &name, qint64 time, int value); // as Int64
QByteArray metric(const QString &name, qint64 time, const QString &value);

// The same metric, marked as historical.
QByteArray historical(const QByteArray &metric);

// A whole payload of encoded metrics. `seq`: 0 to 255, or nothing.
QByteArray payload(qint64 time, const std::vector<QByteArray> &metrics, std::optional<int> seq);

} // namespace kmr::sparkplug
