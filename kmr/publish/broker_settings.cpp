#include "kmr/publish/broker_settings.h"

#include "host/error.h"
#include "host/project/text_file.h"

#include <QUrl>

namespace kmr {

namespace {

constexpr int PLAIN_PORT = 1883;
constexpr int TLS_PORT = 8883;

Error badUrl(const QString &url, const QString &why)
{
    return Error(ErrorKind::Usage, QString("bad broker \"%1\": %2").arg(url, why));
}

} // namespace

void readBrokerUrl(const QString &text, BrokerSettings &settings)
{
    const char *const expected = "expected mqtt://HOST[:PORT] or mqtts://HOST[:PORT]";
    const QUrl url(text, QUrl::StrictMode);
    const bool isKnown = url.scheme() == "mqtt" || url.scheme() == "mqtts";
    if (!url.userInfo().isEmpty())
        throw badUrl(QString("%1://...@%2").arg(url.scheme(), url.host()),
                     "everybody can see user and password there; put them into a file "
                     "(--credentials) or into KMR_MQTT_USER and KMR_MQTT_PASSWORD");
    const bool hasMore = url.path().size() > 1 || url.hasQuery() || url.hasFragment();
    if (!url.isValid() || !isKnown || url.host().isEmpty() || hasMore || url.port() == 0)
        throw badUrl(text, expected);
    settings.host = url.host();
    settings.isEncrypted = url.scheme() == "mqtts";
    settings.port = url.port(settings.isEncrypted ? TLS_PORT : PLAIN_PORT);
}

void readCredentials(const QString &file, BrokerSettings &settings)
{
    if (file.isEmpty()) {
        settings.user = qgetenv("KMR_MQTT_USER");
        settings.password = qgetenv("KMR_MQTT_PASSWORD");
        if (settings.user.isEmpty() && !settings.password.isEmpty())
            throw Error(ErrorKind::Usage, "KMR_MQTT_PASSWORD is set, but not KMR_MQTT_USER");
        return;
    }
    const QStringList lines = readTextFile(file).split('\n');
    settings.user = lines[0].trimmed().toUtf8();
    settings.password = lines.value(1).remove('\r').toUtf8();
    if (settings.user.isEmpty() || settings.password.isEmpty())
        throw Error(
            ErrorKind::Usage,
            QString("%1: expected a line with the user and a line with the password").arg(file));
}

void checkTls(const BrokerSettings &settings)
{
    const bool hasAny = !settings.authorities.isEmpty() || !settings.certificate.isEmpty() ||
                        !settings.key.isEmpty();
    if (hasAny && !settings.isEncrypted)
        throw Error(ErrorKind::Usage, "certificates are given, but the broker is named mqtt://, "
                                      "which has no encryption: name it mqtts://");
    if (settings.certificate.isEmpty() != settings.key.isEmpty())
        throw Error(ErrorKind::Usage, "--certificate and --key go together");
    for (const QString &file : {settings.authorities, settings.certificate, settings.key}) {
        if (!file.isEmpty())
            readTextFile(file);
    }
}

} // namespace kmr
