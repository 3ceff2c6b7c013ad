#include "kmr/command_line.h"

#include "host/error.h"
#include "host/tags/nearest.h"

#include <CLI/CLI.hpp>

namespace kmr {

namespace {

// The innermost command that was recognised.
const CLI::App &chosenCommand(const CLI::App &app)
{
    const std::vector<CLI::App *> commands = app.get_subcommands();
    return commands.empty() ? app : chosenCommand(*commands.front());
}

QStringList commandNames(const CLI::App &app)
{
    QStringList names;
    for (const CLI::App *command : app.get_subcommands({}))
        names.append(toQString(command->get_name()));
    return names;
}

// The options of the command and of its parents.
QStringList optionNames(const CLI::App &app)
{
    QStringList names;
    for (const CLI::App *command = &app; command != nullptr; command = command->get_parent()) {
        for (const CLI::Option *option : command->get_options()) {
            for (const std::string &name : option->get_lnames())
                names.append("--" + toQString(name));
        }
    }
    return names;
}

// The first of the command's help: ", for example: kmr read D100".
QString exampleOf(const CLI::App &command)
{
    const QString help = toQString(command.get_footer());
    const QString example = help.section("Examples:\n", 1).section('\n', 0, 0).trimmed();
    return example.isEmpty() ? QString() : ", for example: " + example;
}

const CLI::App *find(const CLI::App &app, const std::string &name)
{
    const auto commands = app.get_subcommands(
        [&name](const CLI::App *command) { return command->get_name() == name; });
    return commands.empty() ? nullptr : commands.front();
}

} // namespace

QString unknownWord(const CLI::App &command, const QString &word)
{
    if (word.startsWith('-'))
        return QString("unknown option %1%2").arg(word, didYouMean(word, optionNames(command)));
    const QStringList commands = commandNames(command);
    if (!commands.isEmpty())
        return QString("unknown command \"%1\"%2").arg(word, didYouMean(word, commands));
    return QString("unexpected argument \"%1\"").arg(word);
}

QString faultOf(const CLI::App &app, const CLI::ParseError &error)
{
    const CLI::App &command = chosenCommand(app);
    const std::vector<std::string> unknown = app.remaining(true);
    const QString text = toQString(error.what());
    const bool isRequired =
        error.get_exit_code() == static_cast<int>(CLI::ExitCodes::RequiredError);
    const bool isExtra = error.get_exit_code() == static_cast<int>(CLI::ExitCodes::ExtrasError);
    if ((isRequired || isExtra) && !unknown.empty())
        return unknownWord(command, toQString(unknown.front()));
    if (isRequired && !commandNames(command).isEmpty())
        return QString("which command? Expected %1").arg(commandNames(command).join(", "));
    if (isRequired) // "FILE is required"
        return QString("%1 is missing%2").arg(text.section(' ', 0, 0), exampleOf(command));
    if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::ArgumentMismatch)) {
        // "--link: At Most 1 required but received 2"
        return QString(text.contains(": At Most 1 ") ? "%1 is given twice" : "%1 needs a value")
            .arg(text.section(':', 0, 0));
    }
    if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::ConversionError)) {
        const QString what = text.section(": ", 1); // "--trace = abc"
        return QString("%1 can't take the value \"%2\"")
            .arg(what.section(" = ", 0, 0), what.section(" = ", 1));
    }
    return text;
}

QString helpOf(const CLI::App &app, const std::vector<std::string> &names)
{
    const CLI::App *command = &app;
    std::string path = app.get_name();
    for (const std::string &name : names) {
        const CLI::App *const next = find(*command, name);
        if (next == nullptr)
            throw Error(ErrorKind::Usage,
                        unknownWord(*command, toQString(name)) + "\n'kmr help' lists the commands");
        command = next;
        path += ' ' + name;
    }
    // App::help() would explain the chosen command, which may be another one.
    return toQString(
        command->get_formatter()->make_help(command, path, CLI::AppFormatMode::Normal));
}

const char *const WANTED_TAGS = "the tags (default: those of kmr.toml)";

const char *const TAG_HELP =
    R"(A TAG is [STATION#]AREA ADDRESS[..END | xCOUNT][/TYPE] without blanks:
  D100     word D 100                   2#M0x16   bits M 0 to M 15 of station 2
  X17      input X 17 (octal)           D100.3    bit 3 of the word D 100, read only
  CV2200   counter CV2 200              CV21      word CV 21 (CV2 begins at 200)
  D100..107  eight words                D100/float32  one value in D 100 and D 101
Types: int16, uint16, int32, uint32, float32, int64, uint64, float64, hex, bcd, text.
A name of --names is also a tag, and can be typed as 2#NAME, NAMExCOUNT or NAME/TYPE.
'kmr areas' lists the areas, 'kmr tags check --help' explains names.)";

QString toQString(const std::string &text)
{
    return QString::fromLocal8Bit(text.c_str());
}

QStringList toQStrings(const std::vector<std::string> &texts)
{
    QStringList list;
    for (const std::string &text : texts)
        list.append(toQString(text));
    return list;
}

} // namespace kmr
