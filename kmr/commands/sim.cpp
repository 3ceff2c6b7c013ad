#include "host/project/text_file.h"
#include "kmr/commands/simulation.h"
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

constexpr std::chrono::milliseconds ANIMATION_STEP(200);

simulator::Faults parseFaults(const SimOptions &sim)
{
    std::vector<simulator::Fault> faults;
    for (const QString &text : sim.faults) {
        QString error;
        const auto fault = simulator::parseFault(text, error);
        if (!fault)
            throw Error(ErrorKind::Usage, error);
        faults.push_back(*fault);
    }
    return simulator::Faults(std::move(faults), sim.seed);
}

} // namespace

ExitCode runSim(const Options &options, const SimOptions &sim)
{
    simulator::Controller controller(QByteArray::number(options.station).rightJustified(2, '0'));
    simulator::Faults faults = parseFaults(sim);
    if (!sim.load.isEmpty())
        controller.memory() = parseMemory(readTextFile(sim.load), sim.load);
    if (!sim.save.isEmpty())
        requireWritable(sim.save); // else all would be lost at the end
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
    if (!sim.save.isEmpty())
        writeTextFile(sim.save, formatMemory(controller.memory()));
    return ExitCode::Ok;
}

} // namespace kmr
