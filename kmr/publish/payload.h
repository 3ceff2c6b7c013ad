// What messages say, as JSON or plain.
//
// JSON is an object:
//   value    a number or text, or a list of them if the tag has several; null before the first
//   unit     null if the tag has none
//   quality  good, stale or pending
//   time     when the controller answered with the value, RFC 3339; null before the first
//   cause    why it is stale, else null
//
// Plain has quality, time, value, unit and cause, separated by tabs.
#pragma once

#include "host/session/quality.h"
#include "host/tags/values.h"

#include <QByteArray>
#include <QString>

namespace kmr {

enum class PayloadForm { Json, Plain };

// What is known of a tag.
struct Sample {
    Quality quality = Quality::Unread;
    Values values;   // the last confirmed ones; empty before the first
    qint64 time = 0; // of the answer that brought them, milliseconds since 1970 UTC
    QString cause;   // with Stale
};

QByteArray valuePayload(PayloadForm form, const Tag &tag, const Sample &sample);

// "2026-11-22T04:30:00.000Z".
QString utcText(qint64 time);

// "good", "stale" or "pending".
QString qualityName(Quality quality);

} // namespace kmr
