// Names for tags, from a text file:
//
//     name,tag,unit,scale,offset,texts,comment
//     boiler.temp,D100/int16,°C,0.1,-40,,flow temperature
//     valve,2#Y17,,,,0=closed;1=open,
//
// The first line with several fields decides on the separator: a comma, a semicolon or a tab.
// Unless it is a comma, scale and offset may have a decimal comma.
//
// The heading names the columns, in any order and in upper or lower case:
//
//   name        a letter or _, then anything but = , ; and double quotes
//   tag         as typed
//   unit        of the values
//   scale       the value shown is the controller's number times the scale, plus the offset
//   offset
//   texts       texts for numbers: 0=closed;1=open
//   word-order  of types of 32 and 64 bits: low or high, the word that comes first
//   byte-order  of texts: low or high, the byte of a word that comes first
//   writable    yes or no: whether others may write it through 'kmr publish --allow-write'
//   deadband    'kmr publish' leaves out changes smaller than this
//   comment
//
// Without a heading the columns are name, tag, unit, scale, comment. Empty fields at the end of a
// line may be missing; empty lines and lines that begin with '#' are skipped.
#pragma once

#include "host/tags/tag.h"

#include <QString>
#include <QStringList>

#include <map>
#include <optional>
#include <vector>

namespace kmr {

struct Name {
    QString name;
    QString tag;
    QString unit;
    QString scale;  // a decimal number other than 0, or empty
    QString offset; // a decimal number, or empty
    std::vector<ValueText> texts;
    std::optional<WordOrder> wordOrder;
    std::optional<ByteOrder> byteOrder;
    bool isWritable = false; // by others, over the network
    QString deadband;        // a decimal number, 0 or more, or empty
    QString comment;
    int line = 0;  // in the file, from 1
    QString fault; // why it can't be used, else empty
};

// What is wrong with a line of a file.
struct LineFault {
    int line = 0;
    QString text;
};

// The columns that a heading may name, in the order of the list above.
QStringList nameColumns();

// The texts as in the file: "0=closed;1=open".
QString valueTextsOf(const Name &name);

class NameTable {
public:
    // The headings of another file by the column names above: "Symbol" for "name".
    using Headings = std::map<QString, QString>;

    // Reads the text of the file called `file`. `headings`: if there are any, the file's heading
    // must have them, and other columns are ignored. Throws Error (Usage) for a heading with
    // unknown columns or without name or tag. A bad line is in faults(), and its name can't be
    // used.
    static NameTable parse(const QString &text, const QString &file, const Headings &headings = {});

    // The name, or null.
    const Name *find(const QString &name) const;

    // The file's name.
    const QString &file() const
    {
        return m_file;
    }

    // In the order of their lines.
    const std::vector<Name> &names() const
    {
        return m_names;
    }

    const std::vector<LineFault> &faults() const
    {
        return m_faults;
    }

private:
    void add(Name name);

    QString m_file;
    std::vector<Name> m_names;
    std::map<QString, std::size_t> m_index;
    std::vector<LineFault> m_faults;
};

} // namespace kmr
