#include "host/commands/commands.h"
#include "host/commands/connection.h"
#include "host/commands/stop.h"
#include "simulator/animation.h"
#include "simulator/controller.h"
#include "simulator/faults.h"
#include "simulator/pseudo_terminal.h"
#include "simulator/tcp_server.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QSocketNotifier>
#include <QTimer>
#include <QUrl>

#include <utility>
#include <vector>

namespace kmr {

namespace {

constexpr std::chrono::milliseconds ANIMATION_STEP(200);

void require(const QString &fault)
{
    if (!fault.isEmpty())
        throw Error(ExitCode::LinkFailed, fault);
}

QUrl parseListen(const QString &text)
{
    const QUrl url(text, QUrl::StrictMode);
    if (!url.isValid() || url.scheme() != "tcp" || url.host().isEmpty() || url.port() < 0 ||
        !url.path().isEmpty()) {
        throw Error(ExitCode::Usage, QString("bad address to listen at \"%1\": expected "
                                             "tcp://HOST:PORT, for example tcp://127.0.0.1:8888 "
                                             "(port 0 for any free one)")
                                         .arg(text));
    }
    return url;
}

simulator::Faults parseFaults(const SimOptions &sim)
{
    std::vector<simulator::Fault> faults;
    for (const QString &text : sim.faults) {
        QString error;
        const auto fault = simulator::parseFault(text, error);
        if (!fault)
            throw Error(ExitCode::Usage, error);
        faults.push_back(*fault);
    }
    return simulator::Faults(std::move(faults), sim.seed);
}

} // namespace

ExitCode runSim(const Options &options, const SimOptions &sim)
{
    const QString listen =
        sim.listen.isEmpty() && sim.pty.isEmpty() ? QString("tcp://127.0.0.1:8888") : sim.listen;
    simulator::Controller controller(QByteArray::number(options.station).rightJustified(2, '0'));
    simulator::Faults faults = parseFaults(sim);
    simulator::TcpServer server(controller, &faults, simulator::Pacing(sim.baud));
    simulator::PseudoTerminal terminal(controller, &faults, simulator::Pacing(sim.baud));
    QStringList ready;
    if (!listen.isEmpty()) {
        const QUrl url = parseListen(listen);
        require(server.listen(url.host(), static_cast<quint16>(url.port())));
        ready.append(QString("ready tcp://%1:%2").arg(url.host()).arg(server.port()));
    }
    if (!sim.pty.isEmpty()) {
        require(terminal.open(sim.pty));
        ready.append(QString("ready serial://%1").arg(QFileInfo(sim.pty).absoluteFilePath()));
    }

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

    QSocketNotifier stop(stopDescriptor(), QSocketNotifier::Read);
    QObject::connect(&stop, &QSocketNotifier::activated, QCoreApplication::instance(),
                     &QCoreApplication::quit);
    for (const QString &line : ready)
        print(line);
    QCoreApplication::exec();
    return ExitCode::Ok;
}

} // namespace kmr
