// What 'kmr --help' and 'kmr COMMAND --help' show.
#pragma once

#include <QStringList>

#include <vector>

struct HelpPage {
    QStringList command;  // {"recipe", "upload"}, or empty for kmr itself
    QStringList commands; // below it: {"read", "write"}
    QStringList options;  // {"--help", "--count"}
};

// All of them, each command behind that which it belongs to.
const std::vector<HelpPage> &helpPages();
