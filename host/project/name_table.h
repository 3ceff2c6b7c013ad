// Names for tags, from a file of comma-separated values:
//
//     name,tag,unit,scale,comment
//     boiler.temp,D100/int16,°C,0.1,flow temperature
//     pump.on,2#Y17
//
// The heading is optional, what is empty at the end of a line may be missing, empty lines and those
// that begin with '#' are skipped. What is shown is the controller's value times the scale.
#pragma once

#include <QString>
#include <QStringList>

#include <map>
#include <vector>

namespace kmr {

class TagReader;

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

// What is wrong with the tags behind the names, and with names that are tags themselves: a line of
// text for each. `reader` knows no names.
QStringList checkNames(const NameTable &names, const QString &file, const TagReader &reader);

} // namespace kmr
