#include "kmr/output.h"

#include "kmr/stop_signal.h"

#include <cerrno>
#include <cstdio>
#include <poll.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace kmr {

namespace {

bool g_isLost = false;         // an output could not be written
bool g_isStdoutBroken = false; // further lines are not tried
ErrorSink g_errorSink;

} // namespace

void print(const QString &line)
{
    if (g_isStdoutBroken)
        return;
    const QByteArray bytes = line.toLocal8Bit() + '\n';
    if (std::fputs(bytes.constData(), stdout) >= 0 && std::fflush(stdout) == 0)
        return;
    const int cause = errno;
    g_isStdoutBroken = true;
    stopFlag() = true;
    if (cause != EPIPE)
        reportLoss("cannot write to stdout: " +
                   QString::fromStdString(std::generic_category().message(cause)));
}

void stopWithoutReader()
{
    pollfd output = {STDOUT_FILENO, 0, 0};
    if (poll(&output, 1, 0) == 1 && (output.revents & (POLLERR | POLLHUP)) != 0)
        stopFlag() = true;
}

void printError(const QString &line)
{
    if (g_errorSink)
        g_errorSink(line);
    else
        writeError(line);
}

void setErrorSink(ErrorSink sink)
{
    g_errorSink = std::move(sink);
}

void writeError(const QString &line)
{
    const int written = std::fputs((line.toLocal8Bit() + '\n').constData(), stderr);
    static_cast<void>(written); // there is no place to report it
}

void reportLoss(const QString &text)
{
    g_isLost = true;
    printError("kmr: " + text);
}

ExitCode exitCodeAfterLosses(ExitCode code)
{
    return g_isLost && code == ExitCode::Ok ? ExitCode::ItemFailed : code;
}

} // namespace kmr
