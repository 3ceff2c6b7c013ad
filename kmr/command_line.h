// Helpers for the definition of the command line.
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

// The function that the command line has chosen.
using Command = std::function<ExitCode(const Options &)>;

// Chooses `run` with the command's own options if the command line names `command`.
template <typename Own>
void setAction(CLI::App &command, Command &chosen, const std::shared_ptr<Own> &own,
               ExitCode (*run)(const Options &, const Own &))
{
    command.callback([own, run, &chosen] {
        chosen = [own, run](const Options &options) { return run(options, *own); };
    });
}

// The help of an optional argument TAG.
extern const char *const WANTED_TAGS;

// How tags are typed, for the help of commands with tags.
extern const char *const TAG_HELP;

// Checks an option with a whole number from `least` to `most`.
CLI::Validator between(int least, int most);

// Checks an option with a number from `least` to `most`.
CLI::Validator numberBetween(double least, double most);

// Checks an option with one of a few words.
CLI::Validator oneOf(const std::vector<std::string> &words);

// Checks an option with a number above 0, up to `most`.
CLI::Validator aboveZero(double most);

// Converts texts of CLI11, in the encoding of the command line.
QString toQString(const std::string &text);
QStringList toQStrings(const std::vector<std::string> &texts);

// The error for a word that `command` does not accept: "unknown command \"tag\", did you mean
// \"tags\"?".
QString unknownWord(const CLI::App &command, const QString &word);

// What is wrong with the command line; clearer than the parser's own text.
QString faultOf(const CLI::App &app, const CLI::ParseError &error);

} // namespace kmr
