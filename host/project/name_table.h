// Names for tags, from a file of comma-separated values:
//
//     name,tag,unit,scale,comment
//     boiler.temp,D100/int16,°C,0.1,flow temperature
//     pump.on,2#Y17
//
// The heading is optional, what is empty at the end of a line may be missing, empty lines and those
// that begin with '#' are skipped. What is shown is the controller's value times the scale.
#pragma once

#include "host/tags/tag.h"

#include <QString>
#include <QStringList>

#include <map>
#include <optional>
#include <vector>

namespace kmr {

struct Name {
    QString name; // a letter, then letters, digits and . _ -
    QString tag;
    QString unit;
    double scale = 1; // not 0
    QString comment;
    int line = 0; // in the file, from 1
};

class NameTable {
public:
    // Reads the text of the file called `file`. Every bad line is added to `faults` with its
    // number and left out.
    static NameTable parse(const QString &text, const QString &file, QStringList &faults);

    // The name, or null.
    const Name *find(const QString &name) const;

    // Where they stand.
    const QString &file() const
    {
        return m_file;
    }

    // In the order of their lines.
    const std::vector<Name> &names() const
    {
        return m_names;
    }

private:
    QString m_file;
    std::vector<Name> m_names;
    std::map<QString, std::size_t> m_index;
};

// Reads tags and the names that stand for them.
class NamedTagReader {
public:
    // Without names it reads what `reader` does.
    NamedTagReader(TagReader reader) : m_reader(std::move(reader)) {}
    NamedTagReader(TagReader reader, NameTable names)
        : m_reader(std::move(reader)), m_names(std::move(names))
    {
    }

    // As TagReader::read() and check(). A name counts before an address.
    Tag read(const QString &text) const;
    AddressCheck check(const QString &text) const;

    // The reader without names.
    const TagReader &unnamed() const
    {
        return m_reader;
    }

private:
    Tag readNamed(const Name &name) const;
    const Name *find(const QString &text) const;

    TagReader m_reader;
    std::optional<NameTable> m_names;
};

// What is wrong with the tags behind the names, and with names that are tags themselves: a line of
// text for each.
QStringList checkNames(const NameTable &names, const QString &file, const TagReader &reader);

} // namespace kmr
