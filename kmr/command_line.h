// The command line: what it chooses, its texts in Qt, and its errors and help.
#pragma once

#include "kmr/exit_code.h"
#include "kmr/options.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
class ParseError;
} // namespace CLI

namespace kmr {

// The function that the command line has chosen.
using Command = std::function<ExitCode(const Options &)>;

// The help of an optional argument TAG.
extern const char *const WANTED_TAGS;

// How tags are typed, for the help of commands with tags.
extern const char *const TAG_HELP;

// Converts texts of CLI11, in the encoding of the command line.
QString toQString(const std::string &text);
QStringList toQStrings(const std::vector<std::string> &texts);

// The error for a word that `command` does not accept: "unknown command \"tag\", did you mean
// \"tags\"?".
QString unknownWord(const CLI::App &command, const QString &word);

// What --help shows of the command that `names` lead to, for example recipe, upload. Throws Error
// (Usage) for an unknown command.
QString helpOf(const CLI::App &app, const std::vector<std::string> &names);

// What is wrong with the command line; clearer than the parser's own text.
QString faultOf(const CLI::App &app, const CLI::ParseError &error);

} // namespace kmr
