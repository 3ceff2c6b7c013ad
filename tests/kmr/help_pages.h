// What 'kmr --help' and 'kmr COMMAND --help' show.
#pragma once

#include <QString>
#include <QStringList>

#include <vector>

struct HelpPage {
    QStringList command;  // {"recipe", "upload"}, or empty for kmr itself
    QStringList commands; // below it: {"read", "write"}
    QStringList options;  // {"--help", "--count"}
    QString text;
};

// All pages, each command after its parent.
const std::vector<HelpPage> &helpPages();
