// Debian's mosquitto and its clients, each in a process of its own, on a free port of the loopback.
#pragma once

#include <QByteArray>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

// A broker with persistence, which lasts over its restarts. As an encrypted one it wants clients to
// have a certificate, see certificate(); as a guarded one a user, and it lets "kmr" read and write
// below "line", "panel" only below "line/valve", and "nobody" nothing.
class BrokerProcess {
public:
    enum class Kind { Open, Guarded, Encrypted };

    explicit BrokerProcess(Kind kind = Kind::Open);
    ~BrokerProcess();
    BrokerProcess(const BrokerProcess &) = delete;
    BrokerProcess &operator=(const BrokerProcess &) = delete;

    void start(); // the constructor has, too
    void stop();  // as an administrator does, so that it keeps its sessions

    // Adds a line to mosquitto's configuration, which holds from the next start on.
    void configure(const QByteArray &line) const;

    QString url() const;

    // What mosquitto's clients need to connect as this user.
    QStringList clientOptions(const QString &user = {}) const;

    // A file in the broker's folder: "ca.pem", "kmr.pem" and "kmr.key" of an encrypted one.
    QString file(const QString &name) const
    {
        return m_directory.filePath(name);
    }

private:
    void makeCertificates();
    void guard(QByteArray &configuration);

    const Kind m_kind;
    const QTemporaryDir m_directory;
    int m_port = 0;
    QProcess m_process;
};

// A subscriber that keeps its session while the broker restarts: mosquitto_sub, with a line for
// each message, "TOPIC RETAINED PAYLOAD", RETAINED being 1 for what was there before, else 0.
// `format` may say otherwise.
class Subscriber {
public:
    // `id`: of the session; another for each subscriber.
    Subscriber(const BrokerProcess &broker, const QString &topic, const QString &id,
               const QString &user = {}, const QString &format = "%t %r %p");
    ~Subscriber();
    Subscriber(const Subscriber &) = delete;
    Subscriber &operator=(const Subscriber &) = delete;

    // The next line that the pattern is found in; lines before it are passed over. Empty, and a
    // failure of the test, when none comes.
    QString waitFor(const QString &pattern);

    // All lines that came and were not passed over yet.
    QStringList rest();

private:
    QProcess m_process;
};

// mosquitto_pub with these options besides; `input` is what it sends with -l.
void publishTo(const BrokerProcess &broker, const QString &topic, const QStringList &options,
               const QString &user = {}, const QByteArray &input = {});
