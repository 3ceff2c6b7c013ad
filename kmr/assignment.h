// TAG=VALUE: a typed write to the controller.
#pragma once

#include "host/project/named_tag_reader.h"
#include "host/session/tag_write.h"
#include "host/tags/values.h"

#include <QString>

namespace kmr {

struct Assignment {
    Tag tag;
    Values values;
};

// Throws Error (Usage) for a tag that can't be written, with the reason.
void requireWritable(const Tag &tag);

// Reads "D100=250". Throws Error (Usage) for other texts, and for a tag that can't be written.
Assignment parseAssignment(const QString &text, const NamedTagReader &reader);

// One word for records. A write that got no answer may have been carried out.
QString writeOutcome(const RequestResult &result);

// Why a value is not confirmed, and whether it may have been written. Empty if it is confirmed.
QString writeErrorText(const RequestResult &result);

} // namespace kmr
