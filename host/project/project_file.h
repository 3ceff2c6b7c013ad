// A project's settings in a TOML file, kmr.toml:
//
//     link = "serial:///dev/ttyUSB0?baud=19200"
//     station = 2
//     names = "names.csv"
//     tags = ["boiler.temp", "D100..107"]
//
//     [publish]
//     broker = "mqtt://192.168.0.2"
//
// The keys are those of the options; those of one command stand in its section and are called
// "publish.broker". Paths are relative to the file.
#pragma once

#include <QString>
#include <QStringList>

#include <vector>

namespace kmr {

// Characters of the file's text.
struct TextSpan {
    int begin = 0;
    int end = 0; // the first one after it
};

struct ConfigEntry {
    QString key;
    QStringList values;          // as text; more than one only for a list
    int line = 0;                // in the file, from 1
    QString fault;               // what is wrong with the key or its values; `values` is empty then
    bool isSection = false;      // an unknown key that has keys of its own
    TextSpan span;               // of what follows the key
    std::vector<TextSpan> items; // of a list
};

// Reads a file's text. `file` names it in messages, `known` has the allowed keys, `lists` those of
// them that take lists. The entries are in the order of their lines. Throws Error (Usage) for a
// text that is not TOML.
std::vector<ConfigEntry> parseConfig(const QString &text, const QString &file,
                                     const QStringList &known, const QStringList &lists);

// A text as it is written in a file.
QString quoted(QString text);

// The path that the file at `file` calls `value`, and what it may call a path.
QString absolutePathIn(const QString &value, const QString &file);
QString asSeenFrom(const QString &file, const QString &path);

} // namespace kmr
