// The part of the command line that belongs to simulation.h.
#include "kmr/commands/simulation.h"
#include "simulator/faults.h"

#include <CLI/CLI.hpp>

#include <memory>
#include <string>
#include <vector>

namespace kmr {

namespace {

// What CLI11 fills.
struct ServeLine {
    std::string listen;
    std::string pty;
};

void addServeOptions(CLI::App &command, ServeLine &line)
{
    command.add_option("--listen", line.listen,
                       "serve TCP there, port 0 for any free one (default without --pty: "
                       "tcp://127.0.0.1:8888)");
    command.add_option("--pty", line.pty, "make a pseudo-terminal, and this path a link to it");
}

ServeOptions serveOptions(const ServeLine &line)
{
    return {toQString(line.listen), toQString(line.pty)};
}

void addSim(CLI::App &app, Command &chosen)
{
    struct Line {
        ServeLine serve;
        bool animate = false;
        std::vector<std::string> faults;
        std::uint64_t seed = 0;
        int baud = 0;
        bool log = false;
        std::string load;
        std::string save;
    };
    const auto line = std::make_shared<Line>();
    CLI::App *command = app.add_subcommand("sim", "Run a simulated controller");
    addServeOptions(*command, line->serve);
    command->add_option("--load", line->load, "begin with the memory that this file holds");
    command->add_option("--save", line->save,
                        "write the memory to this file at the end, whole or not at all");
    command->add_flag("--animate", line->animate, "let X0 to X7, CV2200 and D0 move");
    command->add_flag("--log", line->log, "describe each request on stderr");
    command
        ->add_option("--fault", line->faults,
                     "what goes wrong, KIND[=VALUE][,every=N][,probability=P]; may be repeated")
        ->allow_extra_args(false);
    command
        ->add_option("--baud", line->baud,
                     "answer no faster than a serial line of that rate (default: at once)")
        ->check(CLI::Range(50, 4000000));
    command->add_option("--seed", line->seed, "the same seed repeats the same faults")
        ->capture_default_str();
    command->footer(
        "Prints 'ready' and the link to use when it serves. SIGTERM or Ctrl-C ends it.\n\n"
        "A memory file holds a line TAG,VALUE for each bit, word or counter that isn't 0:\n"
        "  tag,value\n  M5,1\n  D100,250\n  CV2200,70000\n\n"
        "A fault hits every request, or every Nth, or each with the probability P. Kinds, with\n"
        "their usual values:\n" +
        simulator::faultHelp().toStdString() +
        "\nExamples:\n  kmr sim --animate\n  kmr sim --pty /tmp/controller --station 12\n"
        "  kmr sim --load plant.csv --save plant.csv\n"
        "  kmr sim --fault late=1500ms,every=50 --fault flip,probability=0.02 --seed 7");
    command->callback([line, &chosen] {
        chosen = [line](const Options &options) {
            SimOptions sim{serveOptions(line->serve),
                           line->animate,
                           {},
                           line->seed,
                           line->baud,
                           line->log,
                           toQString(line->load),
                           toQString(line->save)};
            for (const std::string &fault : line->faults)
                sim.faults.append(toQString(fault));
            return runSim(options, sim);
        };
    });
}

void addReplay(CLI::App &app, Command &chosen)
{
    struct Line {
        ServeLine serve;
        std::string file;
    };
    const auto line = std::make_shared<Line>();
    CLI::App *command = app.add_subcommand("replay", "Answer as a captured controller did");
    command->add_option("FILE", line->file, "what --capture has written")->required();
    addServeOptions(*command, line->serve);
    command->footer(
        "Each request gets what the capture received after the very same request, in its order\n"
        "and with its delays, at the end the last again and again; silence where it received\n"
        "nothing. A request that the capture doesn't hold is told on stderr and not answered.\n"
        "Prints 'ready' and the link to use when it serves. SIGTERM or Ctrl-C ends it.\n\n"
        "Examples:\n  kmr replay field.jsonl\n"
        "  kmr replay field.jsonl --pty /tmp/controller");
    command->callback([line, &chosen] {
        chosen = [line](const Options &) {
            return runReplay({serveOptions(line->serve), toQString(line->file)});
        };
    });
}

} // namespace

void addSimulation(CLI::App &app, Command &chosen)
{
    addSim(app, chosen);
    addReplay(app, chosen);
}

} // namespace kmr
