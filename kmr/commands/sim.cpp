// kmr sim: simulated controllers.
#include "host/project/text_file.h"
#include "kmr/command_definition.h"
#include "kmr/commands/commands.h"
#include "kmr/connection.h"
#include "kmr/simulation/control.h"
#include "kmr/simulation/generator.h"
#include "kmr/simulation/memory_file.h"
#include "kmr/simulation/plant.h"
#include "kmr/simulation/serve.h"
#include "simulator/animation.h"
#include "simulator/controller.h"
#include "simulator/faults.h"

#include <QTimer>

#include <unistd.h>

#include <limits>
#include <optional>
#include <utility>
#include <vector>

namespace kmr {

namespace {

const char *const HELP =
    R"(Prints 'ready' and the link to use when it is ready. SIGTERM, Ctrl-C or closing
the terminal ends it.

A memory file holds a line TAG,VALUE for each bit, word or counter that isn't 0:
  tag,value
  M5,1
  D100,250
  CV2200,70000
No element may be in two lines. With several stations 2#D100 is that of station 2, and D100
that of the lowest. The names of --names can be used as tags: boiler.temp,21.5

With --control, lines TAG=VALUE are read from stdin while it runs, also for inputs. Each is
answered with 'ok' or 'error: ' and what is wrong. The end of stdin does not end the simulation:
  X0=1
  2#D100=5
  boiler.temp=21.5

--generate sets a tag every 50 ms: TAG=KIND[,period=TIME][,range=LOW..HIGH]. Kinds:
  sine     swings about the middle    ramp     rises, then starts again
  square   low, then high             counter  1 more each period
  random   another number each period
Defaults: period=10s and range=0..100, for bits 0..1.

A fault hits every request, or every Nth, or each with the probability P. Kinds, with
their default values:
)";
const char *const EXAMPLES = R"(
Examples:
  kmr sim --animate
  kmr sim --pty /tmp/controller --station 12
  kmr sim --load plant.csv --save plant.csv
  kmr sim --station 1,2,5 --control
  kmr sim --generate D100=sine,period=30s,range=150..200 --generate X0=square
  kmr sim --fault late=1500ms,every=50 --fault flip,probability=0.02 --seed 7)";

constexpr std::chrono::milliseconds ANIMATION_STEP(200);
constexpr std::chrono::milliseconds GENERATOR_STEP(50);

struct SimOptions {
    ServeOptions serve;
    bool animate = false;
    std::vector<int> stations;           // empty: Options::station
    bool control = false;                // read lines from stdin
    std::vector<std::string> generators; // as parseGenerator() reads them
    std::vector<std::string> faults;     // as simulator::parseFault() reads them
    std::uint64_t seed = 0;              // of the faults and the random numbers
    int baud = 0;                        // pace of the line, bits a second; 0: none
    std::string strict = "on";           // refuse registers that no area has
    bool log = false;                    // describe each request on stderr
    std::string load;                    // file with the memory at the beginning; empty: all 0
    std::string save;                    // file that receives the memory at the end; empty: none
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

std::vector<Generator> parseGenerators(const SimOptions &sim, Plant &plant,
                                       const NamedTagReader &reader)
{
    std::vector<Generator> generators;
    QStringList faults;
    for (const QString &text : toQStrings(sim.generators)) {
        try {
            generators.push_back(parseGenerator(text, reader));
            plant.memory(generators.back().tag.elements.station); // throws if there is none
        } catch (const Error &error) {
            faults.append(error.text());
        }
    }
    if (!faults.isEmpty())
        throw Error(ErrorKind::Usage, faults.join('\n'));
    return generators;
}

// Changes values by timers while the simulation runs.
class Motion {
public:
    Motion(const SimOptions &sim, Plant &plant, std::vector<Generator> generators)
        : m_plant(plant), m_generators(std::move(generators)), m_seed(sim.seed)
    {
        QObject::connect(&m_animation, &QTimer::timeout, [this] { animate(); });
        if (sim.animate)
            m_animation.start(ANIMATION_STEP);
        QObject::connect(&m_generation, &QTimer::timeout, [this] { generate(); });
        if (!m_generators.empty())
            m_generation.start(GENERATOR_STEP);
        generate();
    }

private:
    void animate()
    {
        for (const auto &[station, controller] : m_plant.controllers())
            simulator::advance(m_plant.memory(station));
    }

    // Each generator has random numbers of its own.
    void generate()
    {
        const auto time = std::chrono::steady_clock::now() - m_begin;
        std::uint64_t seed = m_seed;
        for (const Generator &generator : m_generators)
            m_plant.set(m_plant.settingsOf(generator.tag, valuesAt(generator, time, seed++)));
    }

    Plant &m_plant;
    const std::vector<Generator> m_generators;
    const std::uint64_t m_seed;
    const std::chrono::steady_clock::time_point m_begin = std::chrono::steady_clock::now();
    QTimer m_animation;
    QTimer m_generation;
};

// The driver and the names, if an option needs tags.
std::optional<Connection> connectionFor(Options options, const SimOptions &sim, const Plant &plant)
{
    const bool needsTags =
        sim.control || !sim.generators.empty() || (!sim.load.empty() && !options.names.isEmpty());
    options.station = plant.firstStation();
    return needsTags ? std::make_optional<Connection>(options) : std::nullopt;
}

// Runs the controllers until SIGTERM or Ctrl-C.
ExitCode runSim(const Options &options, const SimOptions &sim)
{
    Plant plant(sim.stations.empty() ? std::vector<int>{options.station} : sim.stations,
                sim.strict == "on" ? simulator::Registers::OfAreas : simulator::Registers::All);
    simulator::Faults faults = parseFaults(sim);
    const auto connection = connectionFor(options, sim, plant);
    const NamedTagReader *tags = connection ? &connection->tags() : nullptr;
    const QString load = toQString(sim.load);
    if (!load.isEmpty())
        loadMemory(readTextFile(load), load, plant, tags);
    const QString save = toQString(sim.save);
    if (!save.isEmpty())
        requireWritable(save); // otherwise everything would be lost at the end
    if (sim.log) {
        plant.setObserver([](const simulator::Exchange &exchange) {
            printError(now() + ' ' + simulator::describe(exchange));
        });
    }
    const Motion motion(sim, plant,
                        tags ? parseGenerators(sim, plant, *tags) : std::vector<Generator>());
    std::optional<ControlInput> control;
    if (sim.control)
        control.emplace(STDIN_FILENO,
                        [&](const QString &line) { return obey(line, plant, *tags); });
    serve(sim.serve, plant.responder(faults), simulator::Pacing(sim.baud));
    if (!save.isEmpty())
        writeTextFile(save, formatMemory(plant));
    return ExitCode::Ok;
}

} // namespace

void addSim(CLI::App &app, Command &chosen)
{
    const auto sim = std::make_shared<SimOptions>();
    CommandDefinition command(app, "sim", "Run simulated controllers");
    addServeOptions(command, sim->serve);
    command.add("--station", sim->stations, "the stations to simulate, 1,2,5; may be repeated")
        .separatedBy(',')
        .oneEach()
        .between(MIN_STATION, MAX_STATION);
    command.add("--load", sim->load, "start with the memory from this file");
    command.add("--save", sim->save,
                "write the memory to this file at the end, completely or not at all");
    command.addFlag("--control", sim->control, "set values from lines TAG=VALUE on stdin");
    command
        .add("--generate", sim->generators,
             "a changing value, TAG=KIND[,period=TIME][,range=LOW..HIGH]; may be repeated")
        .oneEach();
    command.addFlag("--animate", sim->animate, "let X0 to X7, CV2200 and D0 change by themselves");
    command
        .add("--strict", sim->strict,
             "refuse registers that no area has, with exception 02: on or off")
        .showDefault()
        .oneOf({"on", "off"});
    command.addFlag("--log", sim->log, "describe each request on stderr");
    command
        .add("--fault", sim->faults,
             "a fault, KIND[=VALUE][,every=N][,probability=P]; may be repeated")
        .oneEach();
    command
        .add("--baud", sim->baud,
             "answer at the speed of a serial line of this rate (default: at once)")
        .between(50, 4000000);
    command.add("--seed", sim->seed, "the same seed repeats the same faults and random numbers")
        .between(0, std::numeric_limits<std::uint64_t>::max())
        .showDefault();
    command.setHelp(HELP + simulator::faultHelp().toStdString() + EXAMPLES);
    command.setAction(chosen, sim, runSim);
}

} // namespace kmr
