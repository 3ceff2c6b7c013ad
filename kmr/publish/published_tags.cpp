#include "kmr/publish/published_tags.h"

#include "host/error.h"
#include "kmr/publish/topics.h"

namespace kmr {

std::vector<PublishedTag> publishedTags(const std::vector<Tag> &tags, const NameTable *names,
                                        const QString &prefix)
{
    const Topics topics(prefix, {});
    std::vector<PublishedTag> published;
    for (const Tag &tag : tags) {
        const Name *const name = names == nullptr ? nullptr : names->find(tag.text);
        published.push_back(
            {tag, topics.value(tag.text), name == nullptr ? 0 : name->deadband.toDouble()});
    }
    return published;
}

QStringList knownNames(const std::vector<PublishedTag> &tags, const NameTable *names,
                       bool allowsWrites)
{
    QStringList all;
    for (const PublishedTag &one : tags)
        all.append(one.tag.text);
    if (!allowsWrites)
        return all;
    int writable = 0;
    for (const Name &name : names == nullptr ? std::vector<Name>() : names->names()) {
        if (name.isWritable && ++writable > 0 && !all.contains(name.name))
            all.append(name.name);
    }
    if (writable == 0)
        throw Error(ErrorKind::Usage,
                    "--allow-write allows nothing: no name is marked writable. Name a file of "
                    "names with --names, and mark names in its column writable with yes");
    return all;
}

} // namespace kmr
