// Which tags are published, and which names others may ask for.
#pragma once

#include "host/project/named_tag_reader.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <vector>

namespace kmr {

struct PublishedTag {
    Tag tag;
    QByteArray topic;
    double deadband = 0;
};

// The tags with their topics below `prefix`. Names with a deadband have it; others, and tags, have
// none. `names` may be null.
std::vector<PublishedTag> publishedTags(const std::vector<Tag> &tags, const NameTable *names,
                                        const QString &prefix);

// The names that are published, and with `allowsWrites` those that are marked writable. Throws
// Error (Usage) when no name is marked.
QStringList knownNames(const std::vector<PublishedTag> &tags, const NameTable *names,
                       bool allowsWrites);

} // namespace kmr
