// TAG=VALUE: what a person has written to the controller.
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

// Throws Error (Usage) for what is not TAG=VALUE, and for a tag that can't be written.
Assignment parseAssignment(const QString &text, const NamedTagReader &reader);

// Why a value is not written for certain, and whether it may be all the same. Empty if it is.
QString writeErrorText(const RequestResult &result);

} // namespace kmr
