// How the broker is reached.
#pragma once

#include <QByteArray>
#include <QString>

namespace kmr {

struct BrokerSettings {
    QString host;
    int port = 1883;
    bool isEncrypted = false; // mqtts
    bool isMqtt5 = true;      // else 3.1.1
    QString authorities;      // file of certificates to trust; empty: the system's
    QString certificate;      // file of the client's own, or empty
    QString key;              // file of the key to it, or empty
    QByteArray user;          // empty: none
    QByteArray password;
    QByteArray clientId;      // one for each publisher
    bool isSparkplug = false; // quality of service 0, and the will also at a regular end
};

// "mqtt://HOST[:PORT]" or "mqtts://HOST[:PORT]" into host, port and isEncrypted. Throws Error
// (Usage); a user and a password in it are refused, because others can see command lines.
void readBrokerUrl(const QString &url, BrokerSettings &settings);

// User and password: the two lines of `file`, or if that is empty KMR_MQTT_USER and
// KMR_MQTT_PASSWORD of the environment. Throws Error (Usage).
void readCredentials(const QString &file, BrokerSettings &settings);

// Throws Error (Usage) when the files don't go together or can't be read, before anything begins.
void checkTls(const BrokerSettings &settings);

} // namespace kmr
