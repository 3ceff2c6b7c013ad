#include "tests/kmr/kmr_process.h"

#include <QEventLoop>
#include <QFile>
#include <QRegularExpression>
#include <QTcpSocket>
#include <gtest/gtest.h>

#include <utility>

namespace {

constexpr int PATIENCE_MS = 60000;

Finished runProgram(const QString &program, const QStringList &arguments,
                    const std::function<void(QProcess &)> &started)
{
    QProcess process;
    process.setProcessEnvironment(kmrEnvironment());
    QEventLoop loop;
    QObject::connect(
        &process, static_cast<void (QProcess::*)(int, QProcess::ExitStatus)>(&QProcess::finished),
        &loop, &QEventLoop::quit);
    process.start(program, arguments);
    EXPECT_TRUE(process.waitForStarted());
    if (started)
        started(process);
    if (process.state() != QProcess::NotRunning)
        loop.exec();
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
    return {process.exitCode(), QString::fromLocal8Bit(process.readAllStandardOutput()),
            QString::fromLocal8Bit(process.readAllStandardError())};
}

} // namespace

QProcessEnvironment kmrEnvironment()
{
    QProcessEnvironment variables = QProcessEnvironment::systemEnvironment();
    variables.remove("KMR_LINK");
    variables.insert("KMR_DRIVER", DRIVER_LIBRARY);
    variables.insert("KMR", KMR_EXECUTABLE);
    return variables;
}

Finished run(const QStringList &arguments, const std::function<void(QProcess &)> &started)
{
    return runProgram(KMR_EXECUTABLE, arguments, started);
}

Finished runShell(const QString &line)
{
    return runProgram("/bin/sh", {"-c", line}, {});
}

Simulator::Simulator(const QStringList &arguments, const QString &command)
{
    m_process.setProcessEnvironment(kmrEnvironment());
    m_process.start(KMR_EXECUTABLE, QStringList{command} + arguments);
    m_ready = readLine();
}

Simulator::~Simulator()
{
    if (m_process.state() != QProcess::NotRunning)
        terminate();
}

QString Simulator::readLine()
{
    while (!m_process.canReadLine() && m_process.waitForReadyRead(PATIENCE_MS)) {
    }
    return QString::fromLocal8Bit(m_process.readLine()).trimmed();
}

QString Simulator::answerTo(const QByteArray &line)
{
    m_process.write(line + '\n');
    return readLine();
}

QString Simulator::log()
{
    return QString::fromLocal8Bit(m_process.readAllStandardError());
}

int Simulator::terminate()
{
    m_process.terminate();
    EXPECT_TRUE(m_process.waitForFinished(PATIENCE_MS));
    EXPECT_EQ(m_process.exitStatus(), QProcess::NormalExit);
    return m_process.exitCode();
}

// The answer to a read of an odd number of bytes from X0 on, or nothing.
QByteArray checkAnswer(const QByteArray &line)
{
    const QByteArray request = modbus::decodeLine(line).message;
    const int bytes = request.size() == 6 ? request.at(5) / 8 : 0;
    if (request.mid(1, 3) != QByteArray::fromHex("020400") || bytes % 2 == 0)
        return {};
    return modbus::encodeLine(request.left(2) + static_cast<char>(bytes) + QByteArray(bytes, '\0'));
}

FakeController::FakeController(Answer answer) : m_answer(std::move(answer))
{
    EXPECT_TRUE(m_server.listen(QHostAddress::LocalHost, 0));
    QObject::connect(&m_server, &QTcpServer::newConnection, [this] { serve(); });
}

QString FakeController::link() const
{
    return QString("tcp://127.0.0.1:%1").arg(m_server.serverPort());
}

void FakeController::serve()
{
    QTcpSocket *socket = m_server.nextPendingConnection();
    QObject::connect(socket, &QTcpSocket::readyRead, [this, socket] {
        for (const QByteArray &line : m_collector.take(socket->readAll())) {
            const QByteArray check = checkAnswer(line);
            const QByteArray answer = check.isEmpty() ? m_answer(line) : check;
            if (answer.isNull())
                socket->disconnectFromHost();
            else
                socket->write(answer);
        }
    });
}

bool matches(const QString &text, const char *pattern)
{
    return QRegularExpression(pattern).match(text).hasMatch();
}

void saveFile(const QString &path, const QByteArray &text)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << path.toStdString();
    file.write(text);
}

QByteArray loadFile(const QString &path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    return file.readAll();
}
