#include "kmr/command_definition.h"

#include "host/tags/nearest.h"

#include <CLI/CLI.hpp>

#include <cstdint>
#include <optional>
#include <utility>

namespace kmr {

namespace {

// Replaces the text by the number without leading zeros: CLI11 would read 010 as octal.
CLI::Validator wholeNumber(std::uint64_t least, std::uint64_t most)
{
    const auto normalize = [least, most](std::string &text) {
        bool isNumber = false;
        const std::uint64_t number = toQString(text).toULongLong(&isNumber);
        if (isNumber && number >= least && number <= most) {
            text = std::to_string(number);
            return std::string();
        }
        return QString("expected a whole number from %1 to %2, not \"%3\"")
            .arg(least)
            .arg(most)
            .arg(toQString(text))
            .toStdString();
    };
    return CLI::Validator(normalize,
                          QString("INT in [%1 - %2]").arg(least).arg(most).toStdString());
}

CLI::Validator number(double least, double most)
{
    const auto check = [least, most](const std::string &text) {
        bool isNumber = false;
        const double number = toQString(text).toDouble(&isNumber);
        if (isNumber && number >= least && number <= most)
            return std::string();
        return QString("expected a number from %1 to %2, not \"%3\"")
            .arg(least)
            .arg(most)
            .arg(toQString(text))
            .toStdString();
    };
    return CLI::Validator(check, QString("FLOAT in [%1 - %2]").arg(least).arg(most).toStdString());
}

CLI::Validator positiveNumber(double most)
{
    const auto check = [most](const std::string &text) {
        bool isNumber = false;
        const double number = toQString(text).toDouble(&isNumber);
        if (isNumber && number > 0 && number <= most)
            return std::string();
        return QString("expected a number above 0, at most %1, not \"%2\"")
            .arg(QString::number(most, 'f', 0), toQString(text))
            .toStdString();
    };
    return CLI::Validator(check, "POSITIVE");
}

CLI::Validator oneWordOf(const std::vector<std::string> &words)
{
    const QStringList known = toQStrings(words);
    const auto check = [known](const std::string &text) {
        const QString typed = toQString(text);
        if (known.contains(typed))
            return std::string();
        return QString("expected %1, not \"%2\"%3")
            .arg(known.join(", "), typed, didYouMean(typed, known))
            .toStdString();
    };
    return CLI::Validator(check, QString("{%1}").arg(known.join(',')).toStdString());
}

} // namespace

Argument &Argument::required()
{
    m_option->required();
    return *this;
}

Argument &Argument::showDefault()
{
    m_option->capture_default_str();
    return *this;
}

Argument &Argument::showDefault(const std::string &text)
{
    m_option->default_str(text);
    return *this;
}

Argument &Argument::between(std::uint64_t least, std::uint64_t most)
{
    m_option->transform(wholeNumber(least, most));
    return *this;
}

Argument &Argument::numberBetween(double least, double most)
{
    m_option->check(number(least, most));
    return *this;
}

Argument &Argument::aboveZero(double most)
{
    m_option->check(positiveNumber(most));
    return *this;
}

Argument &Argument::oneOf(const std::vector<std::string> &words)
{
    m_option->check(oneWordOf(words));
    return *this;
}

Argument &Argument::check(const std::function<std::string(const std::string &)> &fault)
{
    m_option->check(fault);
    return *this;
}

Argument &Argument::oneEach()
{
    m_option->allow_extra_args(false);
    return *this;
}

Argument &Argument::separatedBy(char separator)
{
    m_option->delimiter(separator);
    return *this;
}

CommandDefinition::CommandDefinition(CLI::App &program, const char *name, const char *summary)
    : m_command(program.add_subcommand(name, summary))
{
}

CommandDefinition::CommandDefinition(CommandDefinition &group, const char *name,
                                     const char *summary)
    : m_command(group.m_command->add_subcommand(name, summary))
{
}

template <typename Value>
Argument CommandDefinition::add(const char *name, Value &value, const std::string &help)
{
    return Argument(m_command->add_option(name, value, help));
}

template Argument CommandDefinition::add(const char *, std::string &, const std::string &);
template Argument CommandDefinition::add(const char *, int &, const std::string &);
template Argument CommandDefinition::add(const char *, double &, const std::string &);
template Argument CommandDefinition::add(const char *, std::uint64_t &, const std::string &);
template Argument CommandDefinition::add(const char *, std::optional<int> &, const std::string &);
template Argument CommandDefinition::add(const char *, std::optional<double> &,
                                         const std::string &);
template Argument CommandDefinition::add(const char *, std::optional<std::uint64_t> &,
                                         const std::string &);
template Argument CommandDefinition::add(const char *, std::vector<std::string> &,
                                         const std::string &);
template Argument CommandDefinition::add(const char *, std::vector<int> &, const std::string &);

void CommandDefinition::addFlag(const char *name, bool &value, const char *help)
{
    m_command->add_flag(name, value, help);
}

void CommandDefinition::setHelp(const std::string &help)
{
    m_command->footer(help);
}

void CommandDefinition::requireCommand()
{
    m_command->require_subcommand(1);
}

void CommandDefinition::setAction(Command &chosen, Command run)
{
    m_command->callback([&chosen, run = std::move(run)] { chosen = run; });
}

void CommandDefinition::setImmediateAction(const std::function<void()> &run)
{
    m_command->callback([run] {
        run();
        throw CLI::Success();
    });
}

CLI::Option *CommandDefinition::option(const std::string &name) const
{
    return m_command->get_option(name);
}

} // namespace kmr
