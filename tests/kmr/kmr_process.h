// The command kmr as its users run it: a program with arguments, output and an exit code. And what
// peers: a simulated controller in a process of its own, or a misbehaving one.
//
// The test program needs a QCoreApplication.
#pragma once

#include "modbus/ascii.h"

#include <QByteArray>
#include <QProcess>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>
#include <QTcpServer>

#include <functional>

// The environment of kmr: that of this program, with the built driver, without a link, with KMR,
// the command for lines of shell.
QProcessEnvironment kmrEnvironment();

struct Finished {
    int exitCode;
    QString out;
    QString err;
};

// Runs kmr to its end while this program continues to serve. `started` is called after its start.
Finished run(const QStringList &arguments,
             const std::function<void(QProcess &)> &started = std::function<void(QProcess &)>());

// The same with a line of shell, in which "$KMR" is kmr.
Finished runShell(const QString &line);

// A command of kmr that serves, 'sim' unless another is named, in a process of its own. Its link
// is there once this is built.
class Simulator {
public:
    explicit Simulator(const QStringList &arguments, const QString &command = "sim");
    ~Simulator();
    Simulator(const Simulator &) = delete;
    Simulator &operator=(const Simulator &) = delete;

    // The line that it prints when it is ready, and its link.
    QString ready() const
    {
        return m_ready;
    }
    QString link() const
    {
        return m_ready.section(' ', 1);
    }

    // Writes a line to its stdin and returns the line that it answers with.
    QString answerTo(const QByteArray &line);

    // What came on stderr since the last call.
    QString log();

    // Ends it and returns its exit code.
    int terminate();

private:
    QString readLine();

    QProcess m_process;
    QString m_ready;
};

// A misbehaving controller in this process: answers each line by a function. A null answer
// closes the connection.
class FakeController {
public:
    using Answer = std::function<QByteArray(const QByteArray &line)>;

    // Check questions (InStep) are answered without asking `answer`.
    explicit FakeController(Answer answer);

    QString link() const;

private:
    void serve();

    const Answer m_answer;
    QTcpServer m_server;
    modbus::LineCollector m_collector;
};

// True when the pattern is found in the text.
bool matches(const QString &text, const char *pattern);

void saveFile(const QString &path, const QByteArray &text);
QByteArray loadFile(const QString &path);
