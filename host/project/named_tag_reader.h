// Reads tags and the names of tags.
#pragma once

#include "host/project/name_table.h"
#include "host/tags/tag.h"

#include <QString>
#include <QStringList>

#include <optional>

namespace kmr {

// Reads tags and names of tags. A name may have a station before it and a count or a type after it,
// like a tag: 2#valve, boiler.tempx4, boiler.temp/hex. With a type its values are shown in that
// type, without scale, offset, texts and unit.
class NamedTagReader {
public:
    // Without names it reads the same as `reader`.
    NamedTagReader(TagReader reader) : m_reader(std::move(reader)) {}
    NamedTagReader(TagReader reader, NameTable names)
        : m_reader(std::move(reader)), m_names(std::move(names))
    {
    }

    // As TagReader::read() and check(). A name takes precedence over an address. Throws Error
    // (Usage) also for a name that can't be used.
    Tag read(const QString &text) const;
    AddressCheck check(const QString &text) const;

    // The reader without names.
    const TagReader &unnamed() const
    {
        return m_reader;
    }

    // The names, or null.
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
    Tag tagOf(const Found &found) const;
    bool isTag(const QString &text) const;
    QString unknownName(const QString &text) const;

    TagReader m_reader;
    std::optional<NameTable> m_names;
};

// What is wrong with the file's lines, in order: "FILE:LINE: what". Includes tags that are not
// valid and names that are tags themselves.
QStringList checkNames(const NameTable &names, const TagReader &reader);

} // namespace kmr
