// What became of a request, in sentences for a person.
#pragma once

#include "host/session/tag_write.h"

#include <QString>

namespace kmr {

QString writeOutcomeText(const WriteResult &result);

// "not sent", "unknown" and the like, in a word or two.
QString outcomeWord(RequestResult::Outcome outcome);

// Why, or an empty text.
QString failureText(const RequestResult &result);

} // namespace kmr
