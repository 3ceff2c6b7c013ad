#include "kmr/publish/broker.h"

#include <mosquitto.h>
#include <mqtt_protocol.h>
#include <poll.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace kmr {

namespace {

constexpr int KEEP_ALIVE = 10; // seconds: a stalled connection ends after twice that
constexpr int LONGEST_PACKET = 65536;
constexpr int AT_MOST_ONCE = 0;
constexpr int AT_LEAST_ONCE = 1;
constexpr int SEND_MAXIMUM = 100;
constexpr int FIRST_FAILURE = 128; // of MQTT's reason codes

struct Properties {
    mosquitto_property *list = nullptr;

    Properties() = default;
    ~Properties()
    {
        mosquitto_property_free_all(&list);
    }
    Properties(const Properties &) = delete;
    Properties &operator=(const Properties &) = delete;
};

const char *textOrNull(const QByteArray &text)
{
    return text.isEmpty() ? nullptr : text.constData();
}

QByteArray stringProperty(const mosquitto_property *properties, int identifier)
{
    char *text = nullptr;
    mosquitto_property_read_string(properties, identifier, &text, false);
    const QByteArray bytes(text);
    free(text);
    return bytes;
}

QByteArray binaryProperty(const mosquitto_property *properties, int identifier)
{
    void *data = nullptr;
    std::uint16_t size = 0;
    mosquitto_property_read_binary(properties, identifier, &data, &size, false);
    const QByteArray bytes(static_cast<const char *>(data), data == nullptr ? 0 : size);
    free(data);
    return bytes;
}

std::optional<std::chrono::seconds> expiryOf(const mosquitto_property *properties)
{
    std::uint32_t seconds = 0;
    if (mosquitto_property_read_int32(properties, MQTT_PROP_MESSAGE_EXPIRY_INTERVAL, &seconds,
                                      false) == nullptr)
        return std::nullopt;
    return std::chrono::seconds(seconds);
}

Incoming incomingOf(const mosquitto_message &message, const mosquitto_property *properties)
{
    Incoming incoming;
    incoming.topic = message.topic;
    incoming.payload = QByteArray(static_cast<const char *>(message.payload),
                                  std::min(message.payloadlen, LONGEST_PACKET + 1));
    incoming.isRetained = message.retain;
    incoming.responseTopic = stringProperty(properties, MQTT_PROP_RESPONSE_TOPIC);
    incoming.correlation = binaryProperty(properties, MQTT_PROP_CORRELATION_DATA);
    incoming.expiry = expiryOf(properties);
    incoming.time = std::chrono::steady_clock::now();
    return incoming;
}

// Of a variable byte integer (MQTT 5, section 1.5.5).
qint64 bytesOfInteger(qint64 value)
{
    return value < 128 ? 1 : value < 16384 ? 2 : value < 2097152 ? 3 : 4;
}

// Of a PUBLISH (MQTT 5, section 3.3).
qint64 bytesOf(const Message &message, bool hasId)
{
    const qint64 correlation = message.correlation.size();
    const qint64 properties = correlation == 0 ? 0 : 3 + correlation;
    const qint64 rest = 2 + message.topic.size() + (hasId ? 2 : 0) + bytesOfInteger(properties) +
                        properties + message.payload.size();
    return 1 + bytesOfInteger(rest) + rest;
}

// Whether sending failed because of the message, not of the connection.
bool isAboutMessage(int result)
{
    return result == MOSQ_ERR_INVAL || result == MOSQ_ERR_PAYLOAD_SIZE ||
           result == MOSQ_ERR_MALFORMED_UTF8 || result == MOSQ_ERR_QOS_NOT_SUPPORTED ||
           result == MOSQ_ERR_OVERSIZE_PACKET;
}

} // namespace

// What libmosquitto calls, with the broker as its argument.
struct BrokerCallbacks {
    static Broker &of(void *object)
    {
        return *static_cast<Broker *>(object);
    }

    static void connected(mosquitto *, void *object, int code, int,
                          const mosquitto_property *properties)
    {
        Broker &broker = of(object);
        mosquitto_property_read_int32(properties, MQTT_PROP_MAXIMUM_PACKET_SIZE,
                                      &broker.m_longestPacket, false);
        if (code == 0)
            broker.m_events.connected();
        else
            broker.m_why = QString("it refuses the connection: ") +
                           (broker.m_settings.isMqtt5 ? mosquitto_reason_string(code)
                                                      : mosquitto_connack_string(code));
    }

    static void disconnected(mosquitto *, void *object, int code, const mosquitto_property *)
    {
        Broker &broker = of(object);
        if (code >= FIRST_FAILURE && broker.m_why.isEmpty())
            broker.m_why = mosquitto_reason_string(code);
    }

    static void published(mosquitto *, void *object, int id, int code, const mosquitto_property *)
    {
        Broker &broker = of(object);
        if (broker.m_settings.isSparkplug)
            return;
        if (code == MQTT_RC_QUOTA_EXCEEDED) // it may take the message later
            broker.m_why = "it takes no more messages for now: quota exceeded";
        else
            broker.m_events.acknowledged(id, code >= FIRST_FAILURE ? mosquitto_reason_string(code)
                                                                   : "");
    }

    static void unsubscribed(mosquitto *, void *object, int id, const mosquitto_property *)
    {
        of(object).m_events.acknowledged(id, {});
    }

    static void subscribed(mosquitto *, void *object, int, int count, const int *codes,
                           const mosquitto_property *)
    {
        for (int i = 0; i < count; ++i) {
            if (codes[i] >= FIRST_FAILURE)
                return of(object).m_events.unsubscribed(mosquitto_reason_string(codes[i]));
        }
    }

    static void received(mosquitto *, void *object, const mosquitto_message *message,
                         const mosquitto_property *properties)
    {
        of(object).m_events.received(incomingOf(*message, properties));
    }

    static void logged(mosquitto *, void *object, int level, const char *text)
    {
        if (level == MOSQ_LOG_ERR)
            of(object).m_lastError = text;
    }
};

Broker::Broker(const BrokerSettings &settings, const Message &will, Events events)
    : m_settings(settings), m_events(std::move(events)), m_client(nullptr, mosquitto_destroy)
{
    static const int initialised = mosquitto_lib_init();
    static_cast<void>(initialised);
    m_client.reset(mosquitto_new(settings.clientId.constData(), true, this));
    setUp(settings, will);
}

Broker::~Broker() = default;

void Broker::setUp(const BrokerSettings &settings, const Message &will)
{
    mosquitto *const client = m_client.get();
    mosquitto_int_option(client, MOSQ_OPT_PROTOCOL_VERSION,
                         settings.isMqtt5 ? MQTT_PROTOCOL_V5 : MQTT_PROTOCOL_V311);
    mosquitto_int_option(client, MOSQ_OPT_TCP_NODELAY, 1);
    mosquitto_int_option(client, MOSQ_OPT_SEND_MAXIMUM, SEND_MAXIMUM);
    mosquitto_connect_v5_callback_set(client, BrokerCallbacks::connected);
    mosquitto_disconnect_v5_callback_set(client, BrokerCallbacks::disconnected);
    mosquitto_publish_v5_callback_set(client, BrokerCallbacks::published);
    mosquitto_subscribe_v5_callback_set(client, BrokerCallbacks::subscribed);
    mosquitto_unsubscribe_v5_callback_set(client, BrokerCallbacks::unsubscribed);
    mosquitto_message_v5_callback_set(client, BrokerCallbacks::received);
    mosquitto_log_callback_set(client, BrokerCallbacks::logged);
    mosquitto_username_pw_set(client, textOrNull(settings.user), textOrNull(settings.password));
    mosquitto_will_set(client, will.topic.constData(), static_cast<int>(will.payload.size()),
                       will.payload.constData(), AT_LEAST_ONCE, will.isRetained);
}

bool Broker::connect()
{
    if (m_settings.isEncrypted) {
        const QByteArray authorities = m_settings.authorities.toLocal8Bit();
        const QByteArray certificate = m_settings.certificate.toLocal8Bit();
        const QByteArray key = m_settings.key.toLocal8Bit();
        if (authorities.isEmpty())
            mosquitto_int_option(m_client.get(), MOSQ_OPT_TLS_USE_OS_CERTS, 1);
        const int result = mosquitto_tls_set(m_client.get(), textOrNull(authorities),
                                             authorities.isEmpty() ? "/etc/ssl/certs" : nullptr,
                                             textOrNull(certificate), textOrNull(key), nullptr);
        if (result != MOSQ_ERR_SUCCESS)
            return fail(result);
    }
    const int result = connectWithProperties();
    return result == MOSQ_ERR_SUCCESS || fail(result);
}

int Broker::connectWithProperties()
{
    Properties properties;
    if (m_settings.isMqtt5)
        mosquitto_property_add_int32(&properties.list, MQTT_PROP_MAXIMUM_PACKET_SIZE,
                                     LONGEST_PACKET);
    return mosquitto_connect_bind_v5(m_client.get(), m_settings.host.toUtf8().constData(),
                                     m_settings.port, KEEP_ALIVE, nullptr, properties.list);
}

bool Broker::wait(int descriptor, std::chrono::milliseconds time)
{
    mosquitto *const client = m_client.get();
    const int socket = mosquitto_socket(client);
    if (socket < 0)
        return fail(MOSQ_ERR_CONN_LOST);
    const short wanted = mosquitto_want_write(client) ? POLLIN | POLLOUT : POLLIN;
    pollfd waited[] = {{socket, wanted, 0}, {descriptor, POLLIN, 0}};
    ::poll(waited, 2, static_cast<int>(time.count()));
    int result = MOSQ_ERR_SUCCESS;
    if ((waited[0].revents & (POLLIN | POLLERR | POLLHUP)) != 0)
        result = mosquitto_loop_read(client, 1);
    if (result == MOSQ_ERR_SUCCESS && (waited[0].revents & POLLOUT) != 0)
        result = mosquitto_loop_write(client, 1);
    if (result == MOSQ_ERR_SUCCESS)
        result = mosquitto_loop_misc(client);
    return (result == MOSQ_ERR_SUCCESS && m_why.isEmpty()) || fail(result);
}

Broker::Publication Broker::publish(const Message &message)
{
    // libmosquitto would abort, or send what is one byte too long.
    if (m_longestPacket > 0 && bytesOf(message, !m_settings.isSparkplug) > m_longestPacket)
        return {0, mosquitto_strerror(MOSQ_ERR_OVERSIZE_PACKET)};
    Properties properties;
    if (m_settings.isMqtt5 && !message.correlation.isEmpty())
        mosquitto_property_add_binary(&properties.list, MQTT_PROP_CORRELATION_DATA,
                                      message.correlation.constData(),
                                      static_cast<std::uint16_t>(message.correlation.size()));
    int id = 0;
    const int result = mosquitto_publish_v5(
        m_client.get(), &id, message.topic.constData(), static_cast<int>(message.payload.size()),
        message.payload.constData(), m_settings.isSparkplug ? AT_MOST_ONCE : AT_LEAST_ONCE,
        message.isRetained, properties.list);
    if (result == MOSQ_ERR_SUCCESS && m_settings.isSparkplug)
        askWhetherTaken(message.topic, id);
    if (isAboutMessage(result))
        return {0, mosquitto_strerror(result)};
    return {id, {}}; // without a connection it is never acknowledged, and sent again later
}

// A broker handles what a connection sends in order. So when it answers this, it has the message
// before. It ends no subscription, because there is none to a topic that we publish to.
void Broker::askWhetherTaken(const QByteArray &topic, int &id)
{
    mosquitto_unsubscribe_v5(m_client.get(), &id, topic.constData(), nullptr);
}

void Broker::subscribe(const QStringList &topics)
{
    // Retained requests are to be known as such, also when they are not the first.
    const int options = m_settings.isMqtt5 ? MQTT_SUB_OPT_RETAIN_AS_PUBLISHED : 0;
    for (const QString &topic : topics)
        mosquitto_subscribe_v5(m_client.get(), nullptr, topic.toUtf8().constData(), AT_LEAST_ONCE,
                               options, nullptr);
}

void Broker::disconnect()
{
    const bool publishesWill = m_settings.isSparkplug && m_settings.isMqtt5;
    mosquitto_disconnect_v5(m_client.get(), publishesWill ? MQTT_RC_DISCONNECT_WITH_WILL_MSG : 0,
                            nullptr);
}

bool Broker::fail(int result)
{
    if (!m_why.isEmpty())
        return false;
    if (result == MOSQ_ERR_ERRNO)
        m_why = std::strerror(errno);
    else if (result == MOSQ_ERR_TLS && !m_lastError.isEmpty())
        m_why = m_lastError;
    else
        m_why = mosquitto_strerror(result);
    return false;
}

} // namespace kmr
