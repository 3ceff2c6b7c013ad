// kmr sim: a simulated controller.
#include "host/project/text_file.h"
#include "kmr/command_line.h"
#include "kmr/commands/commands.h"
#include "kmr/outcome.h"
#include "kmr/output.h"
#include "kmr/simulation/memory_file.h"
#include "kmr/simulation/serve.h"
#include "simulator/animation.h"
#include "simulator/controller.h"
#include "simulator/faults.h"

#include <QTimer>

#include <utility>
#include <vector>

namespace kmr {

namespace {

const char *const HELP =
    R"(Prints 'ready' and the link to use when it serves. SIGTERM, Ctrl-C or closing
the terminal ends it.

A memory file holds a line TAG,VALUE for each bit, word or counter that isn't 0:
  tag,value
  M5,1
  D100,250
  CV2200,70000
No element stands in two lines.

A fault hits every request, or every Nth, or each with the probability P. Kinds, with
their usual values:
)";
const char *const EXAMPLES = R"(
Examples:
  kmr sim --animate
  kmr sim --pty /tmp/controller --station 12
  kmr sim --load plant.csv --save plant.csv
  kmr sim --fault late=1500ms,every=50 --fault flip,probability=0.02 --seed 7)";

constexpr std::chrono::milliseconds ANIMATION_STEP(200);

struct SimOptions {
    ServeOptions serve;
    bool animate = false;
    std::vector<std::string> faults; // as simulator::parseFault() takes them
    std::uint64_t seed = 0;          // of the faults
    int baud = 0;                    // pace of the line, bits a second; 0: none
    bool isStrict = true;            // refuses registers that no area has
    bool log = false;                // describe each request on stderr
    std::string load;                // file with the memory at the beginning; empty: all 0
    std::string save;                // file that receives the memory at the end; empty: none
};

simulator::Faults parseFaults(const SimOptions &sim)
{
    std::vector<simulator::Fault> faults;
    for (const QString &text : toQStrings(sim.faults)) {
        QString error;
        const auto fault = simulator::parseFault(text, error);
        if (!fault)
            throw Error(ErrorKind::Usage, error);
        faults.push_back(*fault);
    }
    return simulator::Faults(std::move(faults), sim.seed);
}

// Runs a controller of the options' station until SIGTERM or Ctrl-C.
ExitCode runSim(const Options &options, const SimOptions &sim)
{
    simulator::Controller controller(QByteArray::number(options.station).rightJustified(2, '0'),
                                     sim.isStrict ? simulator::Registers::OfAreas
                                                  : simulator::Registers::All);
    simulator::Faults faults = parseFaults(sim);
    const QString load = toQString(sim.load);
    if (!load.isEmpty())
        controller.memory() = parseMemory(readTextFile(load), load);
    const QString save = toQString(sim.save);
    if (!save.isEmpty())
        requireWritable(save); // else all would be lost at the end
    if (sim.log) {
        controller.setObserver([](const simulator::Exchange &exchange) {
            printError(now() + ' ' + simulator::describe(exchange));
        });
    }
    QTimer animation;
    QObject::connect(&animation, &QTimer::timeout,
                     [&controller] { simulator::advance(controller.memory()); });
    if (sim.animate)
        animation.start(ANIMATION_STEP);

    serve(sim.serve, simulator::respondAs(controller, &faults), simulator::Pacing(sim.baud));
    if (!save.isEmpty())
        writeTextFile(save, formatMemory(controller.memory()));
    return ExitCode::Ok;
}

} // namespace

void addSim(CLI::App &app, Command &chosen)
{
    const auto sim = std::make_shared<SimOptions>();
    CLI::App *command = app.add_subcommand("sim", "Run a simulated controller");
    addServeOptions(*command, sim->serve);
    command->add_option("--load", sim->load, "begin with the memory that this file holds");
    command->add_option("--save", sim->save,
                        "write the memory to this file at the end, whole or not at all");
    command->add_flag("--animate", sim->animate, "let X0 to X7, CV2200 and D0 move");
    command
        ->add_option_function<std::string>(
            "--strict", [sim](const std::string &choice) { sim->isStrict = choice == "on"; },
            "whether registers that no area has are refused with exception 02: on or off")
        ->default_str("on")
        ->check(CLI::IsMember({"on", "off"}));
    command->add_flag("--log", sim->log, "describe each request on stderr");
    command
        ->add_option("--fault", sim->faults,
                     "what goes wrong, KIND[=VALUE][,every=N][,probability=P]; may be repeated")
        ->allow_extra_args(false);
    command
        ->add_option("--baud", sim->baud,
                     "answer no faster than a serial line of that rate (default: at once)")
        ->check(between(50, 4000000));
    command->add_option("--seed", sim->seed, "the same seed repeats the same faults")
        ->capture_default_str();
    command->footer(HELP + simulator::faultHelp().toStdString() + EXAMPLES);
    setAction(*command, chosen, sim, runSim);
}

} // namespace kmr
