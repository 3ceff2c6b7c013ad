#include "host/commands/serve.h"

#include "host/commands/connection.h"
#include "host/commands/stop.h"
#include "simulator/pseudo_terminal.h"
#include "simulator/tcp_server.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QSocketNotifier>
#include <QUrl>

namespace kmr {

namespace {

const char *const DEFAULT_LISTEN = "tcp://127.0.0.1:8888";

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
                                             "tcp://HOST:PORT, for example %2 (port 0 for any "
                                             "free one)")
                                         .arg(text, DEFAULT_LISTEN));
    }
    return url;
}

} // namespace

void serve(const ServeOptions &where, const simulator::Responder &respond, simulator::Pacing pacing)
{
    const QString listen =
        where.listen.isEmpty() && where.pty.isEmpty() ? DEFAULT_LISTEN : where.listen;
    simulator::TcpServer server(respond, pacing);
    simulator::PseudoTerminal terminal(respond, pacing);
    QStringList ready;
    if (!listen.isEmpty()) {
        const QUrl url = parseListen(listen);
        require(server.listen(url.host(), static_cast<quint16>(url.port())));
        ready.append(QString("ready tcp://%1:%2").arg(url.host()).arg(server.port()));
    }
    if (!where.pty.isEmpty()) {
        require(terminal.open(where.pty));
        ready.append(QString("ready serial://%1").arg(QFileInfo(where.pty).absoluteFilePath()));
    }

    QSocketNotifier stop(stopDescriptor(), QSocketNotifier::Read);
    QObject::connect(&stop, &QSocketNotifier::activated, QCoreApplication::instance(),
                     &QCoreApplication::quit);
    for (const QString &line : ready)
        print(line);
    QCoreApplication::exec();
}

} // namespace kmr
