// What a command takes on the command line. It keeps CLI11 out of the commands' files: each would
// take four seconds longer to compile with it.
#pragma once

#include "kmr/command_line.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace kmr {

// An option or argument of a command. Values that don't pass its checks are refused with a text
// that says what was expected.
class Argument {
public:
    explicit Argument(CLI::Option *option) : m_option(option) {}

    Argument &required();

    // Shows the present value, or `text`, as the default in the help.
    Argument &showDefault();
    Argument &showDefault(const std::string &text);

    // A whole number from `least` to `most`, in decimal digits. Every whole number needs it:
    // without it, a number that begins with 0 would be octal.
    Argument &between(std::uint64_t least, std::uint64_t most);
    // A number from `least` to `most`.
    Argument &numberBetween(double least, double most);
    // A number above 0, up to `most`.
    Argument &aboveZero(double most);
    Argument &oneOf(const std::vector<std::string> &words);
    // `fault` says what is wrong with a text; empty: nothing.
    Argument &check(const std::function<std::string(const std::string &)> &fault);

    // Of an option with several values: each needs the option's name, so that what follows the
    // first is an argument of the command.
    Argument &oneEach();
    // Several values may stand in one text, between these characters.
    Argument &separatedBy(char separator);

private:
    CLI::Option *m_option;
};

// A command and what it takes.
class CommandDefinition {
public:
    // Adds the command to the program's.
    CommandDefinition(CLI::App &program, const char *name, const char *summary);
    // Adds the command to a group of commands.
    CommandDefinition(CommandDefinition &group, const char *name, const char *summary);

    // Adds an option ("--name") or an argument ("NAME") that sets `value`, which is a std::string,
    // int, double or std::uint64_t, a std::optional of a number, or a std::vector of std::string or
    // int. `value` must live until the command line is parsed.
    template <typename Value> Argument add(const char *name, Value &value, const std::string &help);
    // Adds an option without a value.
    void addFlag(const char *name, bool &value, const char *help);

    // What --help shows after the options.
    void setHelp(const std::string &help);

    // One of the group's commands has to follow.
    void requireCommand();

    // Chooses `run` if the command line names this command.
    void setAction(Command &chosen, Command run);

    // The same with the command's own options.
    template <typename Own>
    void setAction(Command &chosen, const std::shared_ptr<Own> &own,
                   ExitCode (*run)(const Options &, const Own &))
    {
        setAction(chosen, [own, run](const Options &options) { return run(options, *own); });
    }

    // Runs `run` as soon as the command line names this command, and ends the program with success.
    void setImmediateAction(const std::function<void()> &run);

    // The option of this name. It exists until the program ends.
    CLI::Option *option(const std::string &name) const;

private:
    CLI::App *m_command;
};

} // namespace kmr
