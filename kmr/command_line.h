// What the parts of the command line share.
#pragma once

#include "kmr/commands/commands.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <string>
#include <vector>

namespace CLI {
class Validator;
}

namespace kmr {

// What the command line has chosen to do.
using Command = std::function<ExitCode(const Options &)>;

// How tags are typed, for the help of commands that take them.
extern const char *const TAG_HELP;

// A check of options that take a number above 0, up to `most`.
CLI::Validator aboveZero(double most);

// Texts as CLI11 has them, which knows nothing of Qt's types.
QString toQString(const std::string &text);
QStringList toQStrings(const std::vector<std::string> &texts);

} // namespace kmr
