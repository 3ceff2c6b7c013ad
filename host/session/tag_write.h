// Writes all of a tag, as a person asks for it.
#pragma once

#include "host/session/session.h"
#include "host/tags/tag.h"
#include "host/tags/values.h"

#include <QString>

namespace kmr {

struct WriteResult {
    RequestResult request; // of the first one that failed, else Done
    QString stoppedAt;     // "1#D108", of a tag of several elements
};

// Writes piece by piece and stops at the first that fails. `values`: one for each element of a tag
// that can be written.
WriteResult writeTag(Session &session, const Tag &tag, const Values &values);

// Why nobody can write the tag: "inputs can't be written", or an empty text.
QString whyNotWritable(const Tag &tag);

} // namespace kmr
