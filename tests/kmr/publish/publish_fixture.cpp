#include "tests/kmr/publish/publish_fixture.h"

#include <QDeadlineTimer>
#include <QThread>

const char *const NAMES = "name,tag,unit,scale,writable\n"
                          "oven,D100/int16,°C,0.1,yes\n"
                          "valve,M5,,,yes\n"
                          "speed,D0,,,no\n"
                          "ghost,7#D5,,,yes\n";

PublisherProcess::PublisherProcess(const QString &directory, const QStringList &arguments,
                                   const std::map<QString, QString> &environment)
{
    QProcessEnvironment variables = kmrEnvironment();
    variables.remove("KMR_BROKER");
    for (const auto &[name, value] : environment)
        variables.insert(name, value);
    m_process.setProcessEnvironment(variables);
    m_process.setWorkingDirectory(directory);
    m_process.start(KMR_EXECUTABLE, QStringList("publish") + arguments);
    EXPECT_TRUE(m_process.waitForStarted());
}

int PublisherProcess::terminate()
{
    m_process.terminate();
    EXPECT_TRUE(m_process.waitForFinished(60000));
    EXPECT_EQ(m_process.exitStatus(), QProcess::NormalExit);
    return m_process.exitCode();
}

void PublisherProcess::kill()
{
    m_process.kill();
    EXPECT_TRUE(m_process.waitForFinished(60000));
}

QString PublisherProcess::waitFor(const QString &text)
{
    m_process.setReadChannel(QProcess::StandardError);
    const QDeadlineTimer end(60000);
    for (;;) {
        while (!m_process.canReadLine() || end.hasExpired()) {
            if (!m_process.waitForReadyRead(static_cast<int>(end.remainingTime()))) {
                ADD_FAILURE() << text.toStdString() << " was not reported";
                return {};
            }
        }
        const QString line = QString::fromUtf8(m_process.readLine()).trimmed();
        m_seen += line + '\n';
        if (line.contains(text))
            return line;
    }
}

PublishTest::PublishTest()
{
    saveFile(m_directory.filePath("names.csv"), NAMES);
}

std::unique_ptr<PublisherProcess> PublishTest::publish(const QStringList &arguments)
{
    return std::make_unique<PublisherProcess>(
        m_directory.path(), QStringList{"--names", "names.csv", "--prefix", "line", "--broker",
                                        m_broker.url(), "--link", m_simulator.link(), "--timeout",
                                        "200", "--retries", "0", "--cycle", "10"} +
                                arguments);
}

void PublishTest::set(const QByteArray &assignment)
{
    EXPECT_EQ(m_simulator.answerTo(assignment), "ok");
}

void PublishTest::setAndAwaitSpool(const QByteArray &value, const QByteArray &message)
{
    set("D100=" + value);
    while (!loadFile(m_directory.filePath("kmr-publish.spool-wal")).contains(message))
        QThread::msleep(20);
}
