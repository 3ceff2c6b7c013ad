// Records of single requests, for 'kmr ping' and 'kmr scan'.
#pragma once

#include "host/session/session.h"
#include "kmr/options.h"
#include "kmr/record_writer.h"

#include <QString>

#include <vector>

namespace kmr {

// The same options, but each request is sent once, so that every loss counts.
Options withoutRetries(Options options);

// True also for a refusal, since the station has answered.
bool isAnswered(const Exchange &exchange);

// The result in words: "answered in 12.345 ms".
QString replyText(const Exchange &exchange);

// Records of requests for `command`, and the fields of one.
RecordWriter exchangeRecords(Format format, const char *command);
std::vector<Field> exchangeFields(const Exchange &exchange, const QString &tag);

} // namespace kmr
