// The part of the command line that belongs to diagnosis.h.
#include "host/commands/diagnosis.h"

#include <CLI/CLI.hpp>

#include <memory>
#include <string>
#include <vector>

namespace kmr {

namespace {

using Command = std::function<ExitCode(const Options &)>;

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

void addDecode(CLI::App &app, Command &chosen)
{
    const auto frames = std::make_shared<std::vector<std::string>>();
    CLI::App *command = app.add_subcommand("decode", "Explain lines of text from the wire");
    command->add_option("FRAME", *frames, "a line, ':' to LRC; the end may be left out")
        ->required();
    command->footer("An answer to a read does not say what it answers: give the request before "
                    "it.\nEnds with 1 when a line is no good frame.\n\n"
                    "Examples:\n  kmr decode :01031064000880\n"
                    "  kmr decode :01031064000286 :01030400FA0001FD");
    command->callback([frames, &chosen] {
        chosen = [frames](const Options &) { return runDecode(toQStrings(*frames)); };
    });
}

} // namespace

void addDiagnosis(CLI::App &app, Command &chosen)
{
    addDecode(app, chosen);
}

} // namespace kmr
