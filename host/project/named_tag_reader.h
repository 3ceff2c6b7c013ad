// Tags, and the names that stand for them.
#pragma once

#include "host/project/name_table.h"
#include "host/tags/tag.h"

#include <QString>
#include <QStringList>

#include <optional>

namespace kmr {

// Reads tags and the names that stand for them. A name may have a station before it and a count or
// a type after it, as a tag has: 2#valve, boiler.tempx4, boiler.temp/hex. With a type it is shown
// as that type has it, without scale, offset, texts and unit.
class NamedTagReader {
public:
    // Without names it reads what `reader` does.
    NamedTagReader(TagReader reader) : m_reader(std::move(reader)) {}
    NamedTagReader(TagReader reader, NameTable names)
        : m_reader(std::move(reader)), m_names(std::move(names))
    {
    }

    // As TagReader::read() and check(). A name counts before an address. Throws Error (Usage) also
    // for a name that can't be used.
    Tag read(const QString &text) const;
    AddressCheck check(const QString &text) const;

    // The reader without names.
    const TagReader &unnamed() const
    {
        return m_reader;
    }

    // Null without names.
    const NameTable *names() const
    {
        return m_names ? &*m_names : nullptr;
    }

private:
    // A name, and what was typed before and after it.
    struct Found {
        const Name *name = nullptr;
        std::optional<int> station;
        std::optional<int> count;
        std::optional<ValueType> type;
    };

    std::optional<Found> find(const QString &text) const;
    Tag readNamed(const Found &found, const QString &text) const;
    Tag tagBehind(const Found &found) const;
    bool isTag(const QString &text) const;
    QString unknownName(const QString &text) const;

    TagReader m_reader;
    std::optional<NameTable> m_names;
};

// What is wrong with the file's lines, in their order: "FILE:LINE: what". Also with the tags of
// the names, and with names that are tags themselves.
QStringList checkNames(const NameTable &names, const TagReader &reader);

} // namespace kmr
