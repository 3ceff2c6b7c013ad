// What the parts of the command line share.
#pragma once

#include "host/commands/commands.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <string>
#include <vector>

namespace kmr {

// What the command line has chosen to do.
using Command = std::function<ExitCode(const Options &)>;

// Texts as CLI11 has them, which knows nothing of Qt's types.
QString toQString(const std::string &text);
QStringList toQStrings(const std::vector<std::string> &texts);

} // namespace kmr
