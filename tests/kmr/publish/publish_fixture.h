// 'kmr publish' between a simulated controller and Debian's mosquitto.
#pragma once

#include "tests/kmr/kmr_process.h"
#include "tests/kmr/publish/broker_process.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <map>
#include <memory>

// oven is D100, shown as a tenth of it; oven and valve may be written, speed may not. No station
// answers for ghost.
extern const char *const NAMES;

// kmr publish in a process of its own.
class PublisherProcess {
public:
    PublisherProcess(const QString &directory, const QStringList &arguments,
                     const std::map<QString, QString> &environment = {});

    // With SIGTERM. Returns the exit code.
    int terminate();

    void kill();

    // The next line on stderr that has this text.
    QString waitFor(const QString &text);

    // All lines so far, up to that one.
    const QString &seen() const
    {
        return m_seen;
    }

private:
    QProcess m_process;
    QString m_seen;
};

class PublishTest : public testing::Test {
protected:
    PublishTest();

    // With the broker, the controller and the names.
    std::unique_ptr<PublisherProcess> publish(const QStringList &arguments);

    void set(const QByteArray &assignment);

    // Sets D100 and waits until `message` is on disk, a part of what is published of it.
    void setAndAwaitSpool(const QByteArray &value, const QByteArray &message);

    const QTemporaryDir m_directory;
    BrokerProcess m_broker;
    Simulator m_simulator{{"--listen", "tcp://127.0.0.1:0", "--control"}};
};
