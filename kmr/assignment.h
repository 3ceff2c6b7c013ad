// TAG=VALUE: what a person has written to the controller.
#pragma once

#include "host/project/named_tag_reader.h"
#include "host/session/session.h"
#include "host/tags/values.h"

#include <QString>

namespace kmr {

struct Assignment {
    Tag tag;
    Values values;
};

// Throws Error (Usage) for a tag that can't be written, with the reason.
void requireWritable(const Tag &tag);

// Throws Error (Usage) for what is not TAG=VALUE, and for a tag that can't be written.
Assignment parseAssignment(const QString &text, const NamedTagReader &reader);

struct WriteResult {
    RequestResult request; // of the first one that failed, else Done
    QString stoppedAt;     // "1#D108", of a tag of several elements
};

// Writes piece by piece and stops at the first that fails.
WriteResult write(Session &session, const Assignment &assignment);

// One word for records. A write that got no answer may have been carried out all the same.
QString writeOutcome(const RequestResult &result);

// Why a value is not written for certain, and whether it may be all the same. Empty if it is.
QString writeErrorText(const RequestResult &result);

} // namespace kmr
