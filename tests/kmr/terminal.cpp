#include "tests/kmr/terminal.h"

#include "tests/kmr/kmr_process.h"

#include <QElapsedTimer>
#include <QEventLoop>
#include <QProcess>
#include <QTimer>
#include <gtest/gtest.h>

namespace {

constexpr int PATIENCE_MS = 60000;
constexpr int LOOK_AGAIN_MS = 20;

} // namespace

Terminal::Terminal(const QString &line, int columns, int rows)
{
    saveFile(m_directory.filePath("tmux.conf"), "set -g status off\n");
    // Ctrl-C reaches the shell as well.
    const QString whole = "trap : INT; " + line + "; echo \"exit code $?\"; exec cat";
    tmux({"-f", m_directory.filePath("tmux.conf"), "new-session", "-d", "-x",
          QString::number(columns), "-y", QString::number(rows), whole});
}

Terminal::~Terminal()
{
    tmux({"kill-server"});
}

QString Terminal::tmux(const QStringList &arguments)
{
    QProcess process;
    QProcessEnvironment variables = kmrEnvironment();
    variables.insert("LC_ALL", "C.UTF-8");
    variables.insert("SHELL", "/bin/sh");
    variables.remove("TMUX"); // of a developer who works in one
    process.setProcessEnvironment(variables);
    QEventLoop loop; // a FakeController may live in this process
    QObject::connect(
        &process, static_cast<void (QProcess::*)(int, QProcess::ExitStatus)>(&QProcess::finished),
        &loop, &QEventLoop::quit);
    process.start("tmux", QStringList{"-u", "-S", m_directory.filePath("socket")} + arguments);
    EXPECT_TRUE(process.waitForStarted()) << "no tmux: run script/bootstrap";
    if (process.state() != QProcess::NotRunning)
        loop.exec();
    EXPECT_EQ(process.exitCode(), 0) << process.readAllStandardError().toStdString();
    return QString::fromUtf8(process.readAllStandardOutput());
}

QString Terminal::ask(const QString &format)
{
    return tmux({"display-message", "-p", format}).trimmed();
}

QString Terminal::screen()
{
    return tmux({"capture-pane", "-p"});
}

QString Terminal::colouredScreen()
{
    return tmux({"capture-pane", "-p", "-e"});
}

QString Terminal::waitFor(const std::function<bool(const QString &screen)> &isThere)
{
    QElapsedTimer timer;
    timer.start();
    QString last = screen();
    while (!isThere(last) && timer.elapsed() < PATIENCE_MS) {
        QEventLoop loop;
        QTimer::singleShot(LOOK_AGAIN_MS, &loop, &QEventLoop::quit);
        loop.exec();
        last = screen();
    }
    EXPECT_TRUE(isThere(last)) << last.toStdString();
    return last;
}

QString Terminal::waitFor(const char *pattern)
{
    SCOPED_TRACE(pattern);
    return waitFor([pattern](const QString &screen) { return matches(screen, pattern); });
}

void Terminal::type(const QString &text)
{
    tmux({"send-keys", "-l", text});
}

void Terminal::press(const QString &key)
{
    tmux({"send-keys", key});
}

void Terminal::resize(int columns, int rows)
{
    tmux({"resize-window", "-x", QString::number(columns), "-y", QString::number(rows)});
}

int Terminal::scrolledLines()
{
    return ask("#{history_size}").toInt();
}

bool Terminal::isCursorVisible()
{
    return ask("#{cursor_flag}") == "1";
}

int Terminal::cursorRow()
{
    return ask("#{cursor_y}").toInt();
}
