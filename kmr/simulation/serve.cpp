#include "kmr/simulation/serve.h"

#include "kmr/command_definition.h"
#include "kmr/output.h"
#include "kmr/stop_signal.h"
#include "simulator/pseudo_terminal.h"
#include "simulator/tcp_server.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QSocketNotifier>
#include <QUrl>

namespace kmr {

namespace {

const char *const DEFAULT_LISTEN = "tcp://127.0.0.1:8888";

QUrl parseListen(const QString &text)
{
    QUrl url(text, QUrl::StrictMode);
    if (!url.isValid() || url.scheme() != "tcp" || url.host().isEmpty() || url.port() < 0 ||
        !url.path().isEmpty()) {
        throw Error(ErrorKind::Usage, QString("bad address to listen at \"%1\": expected "
                                              "tcp://HOST:PORT, for example %2 (port 0 for any "
                                              "free one)")
                                          .arg(text, DEFAULT_LISTEN));
    }
    return url;
}

QString serialLink(const QString &path)
{
    QUrl url;
    url.setScheme("serial");
    url.setHost(""); // for the two slashes before the path
    url.setPath(QFileInfo(path).absoluteFilePath());
    return url.toString(QUrl::FullyEncoded);
}

} // namespace

void addServeOptions(CommandDefinition &command, ServeOptions &options)
{
    command.add("--listen", options.listen,
                "listen on this TCP address, port 0 for any free port (default without --pty: " +
                    std::string(DEFAULT_LISTEN) + ')');
    command.add("--pty", options.pty, "create a pseudo-terminal, and this path as a link to it");
}

void serve(const ServeOptions &where, const simulator::Responder &respond, simulator::Pacing pacing)
{
    const QString pty = toQString(where.pty);
    const QString listen =
        where.listen.empty() && pty.isEmpty() ? DEFAULT_LISTEN : toQString(where.listen);
    simulator::TcpServer server(respond, pacing);
    simulator::PseudoTerminal terminal(respond, pacing);
    QStringList ready;
    if (!listen.isEmpty()) {
        QUrl url = parseListen(listen);
        const QString fault = server.listen(url.host(), static_cast<quint16>(url.port()));
        if (!fault.isEmpty())
            throw Error(ErrorKind::Link,
                        QString("cannot listen on %1: %2").arg(url.toString(), fault));
        url.setPort(server.port());
        ready.append("ready " + url.toString());
    }
    if (!pty.isEmpty()) {
        const QString fault = terminal.open(pty);
        if (!fault.isEmpty())
            throw Error(ErrorKind::Link, fault);
        ready.append("ready " + serialLink(pty));
    }

    QSocketNotifier stop(stopDescriptor(), QSocketNotifier::Read);
    QObject::connect(&stop, &QSocketNotifier::activated, QCoreApplication::instance(),
                     &QCoreApplication::quit);
    for (const QString &line : ready)
        print(line);
    QCoreApplication::exec();
}

} // namespace kmr
