// One connection to an MQTT broker, through libmosquitto. It neither connects again nor repeats
// what was not acknowledged: Courier and Outbox do. For one thread.
#pragma once

#include "kmr/publish/broker_settings.h"
#include "kmr/publish/message.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

struct mosquitto;
struct mosquitto_message;
struct mqtt5__property;

namespace kmr {

// What came from the broker.
struct Incoming {
    QByteArray topic;
    QByteArray payload; // the first 65537 bytes: what is longer than 65536 is refused
    bool isRetained = false;
    QByteArray responseTopic;                   // MQTT 5, or empty
    QByteArray correlation;                     // likewise
    std::optional<std::chrono::seconds> expiry; // likewise: until it is out of date
    std::chrono::steady_clock::time_point time; // when it came
};

class Broker {
public:
    // Called from within wait().
    struct Events {
        std::function<void()> connected;
        // `refusal`: why the broker does not take the message, or empty. When a quota is exceeded,
        // the connection ends instead.
        std::function<void(int id, const QString &refusal)> acknowledged;
        std::function<void(const Incoming &)> received;
        // `refusal`: why it does not let us subscribe.
        std::function<void(const QString &refusal)> unsubscribed;
    };

    // `will`: what the broker is to publish when the connection ends without disconnect().
    Broker(const BrokerSettings &settings, const Message &will, Events events);
    ~Broker();
    Broker(const Broker &) = delete;
    Broker &operator=(const Broker &) = delete;

    // Begins to connect; blocks while the host's name is looked up and its port is connected to,
    // maybe for minutes. False when it fails: see why().
    bool connect();

    // Waits until the connection or `descriptor` is ready or the time is over, then sends, receives
    // and calls `events`. False when the connection is over: see why().
    bool wait(int descriptor, std::chrono::milliseconds time);

    // What became of a message: the id with which it is acknowledged, or why it can't be sent at
    // all, for example because it is too long for the broker.
    struct Publication {
        int id = 0;
        QString refusal; // empty unless it can't be sent at all
    };

    // After Events::connected. With Sparkplug a message has no acknowledgement; what is
    // acknowledged is an UNSUBSCRIBE after it, which the broker answers.
    Publication publish(const Message &message);
    void subscribe(const QStringList &topics);

    // Ends the connection so that the broker does not publish the will, unless it is Sparkplug's.
    void disconnect();

    // Why the connection failed or ended.
    const QString &why() const
    {
        return m_why;
    }

private:
    friend struct BrokerCallbacks;

    void setUp(const BrokerSettings &settings, const Message &will);
    void askWhetherTaken(const QByteArray &topic, int &id);
    bool fail(int result);
    int connectWithProperties();

    const BrokerSettings m_settings;
    const Events m_events;
    std::unique_ptr<mosquitto, void (*)(mosquitto *)> m_client;
    std::uint32_t m_longestPacket = 0; // that the broker takes, in bytes; 0 without a limit
    QString m_why;
    QString m_lastError; // of libmosquitto's log
};

} // namespace kmr
