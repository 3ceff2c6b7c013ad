// What the parts of the command line share.
#pragma once

#include "kmr/exit_code.h"
#include "kmr/options.h"

#include <CLI/CLI.hpp>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace kmr {

// What the command line has chosen to do.
using Command = std::function<ExitCode(const Options &)>;

// Chooses `run` with the command's own options when the command line names `command`.
template <typename Own>
void setAction(CLI::App &command, Command &chosen, const std::shared_ptr<Own> &own,
               ExitCode (*run)(const Options &, const Own &))
{
    command.callback([own, run, &chosen] {
        chosen = [own, run](const Options &options) { return run(options, *own); };
    });
}

// The help of an argument TAG that may be left out.
extern const char *const WANTED_TAGS;

// How tags are typed, for the help of commands that take them.
extern const char *const TAG_HELP;

// A check of options that take a whole number.
CLI::Validator between(int least, int most);

// A check of options that take a number.
CLI::Validator numberBetween(double least, double most);

// A check of options that take one of a few words.
CLI::Validator oneOf(const std::vector<std::string> &words);

// A check of options that take a number above 0, up to `most`.
CLI::Validator aboveZero(double most);

// Texts as CLI11 has them, which knows nothing of Qt's types.
QString toQString(const std::string &text);
QStringList toQStrings(const std::vector<std::string> &texts);

// "unknown command \"tag\", did you mean \"tags\"?": what `command` can't take.
QString unknownWord(const CLI::App &command, const QString &word);

// What is wrong with the command line, in our words: the parser's say less.
QString faultOf(const CLI::App &app, const CLI::ParseError &error);

} // namespace kmr
