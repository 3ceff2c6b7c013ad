#include "kmr/publish/sparkplug_node.h"

#include "host/error.h"
#include "kmr/publish/set_inbox.h"
#include "kmr/publish/sparkplug_command.h"
#include "kmr/publish/sparkplug_payload.h"

#include <QCryptographicHash>
#include <QDateTime>
#include <QFile>
#include <QSaveFile>

#include <utility>

namespace kmr {

namespace {

const char *const BD_SEQ = "bdSeq";
const char *const CONTROL = "Node Control/";
const char *const REBIRTH = "Node Control/Rebirth";
const char *const OUTCOME = "Write/Outcome";
constexpr int NUMBERS = 256;           // of bdSeq and seq
constexpr int LONGEST_COMMAND = 65536; // bytes

qint64 now()
{
    return QDateTime::currentMSecsSinceEpoch();
}

void checkPrefix(const QString &prefix)
{
    if (prefix.count('/') != 1)
        throw Error(ErrorKind::Usage, QString("bad Sparkplug node \"%1\": expected GROUP/NODE, for "
                                              "example plant/line1")
                                          .arg(prefix));
}

void checkName(const QString &name)
{
    if (name == BD_SEQ || name == OUTCOME || name.startsWith(CONTROL))
        throw Error(ErrorKind::Usage,
                    QString("Sparkplug has a metric %1 of its own: rename yours").arg(name));
}

void checkLength(const QByteArray &payload)
{
    if (payload.size() > LONGEST_COMMAND)
        throw Error(ErrorKind::Usage,
                    QString("a command of more than %1 bytes is refused").arg(LONGEST_COMMAND));
}

// The number after the one in the file, 0 without such a file.
int numberAfter(const QString &file)
{
    QFile stored(file);
    if (!stored.open(QIODevice::ReadOnly))
        return 0;
    bool isNumber = false;
    const int number = stored.read(10).trimmed().toInt(&isNumber);
    return isNumber && number >= 0 && number < NUMBERS ? (number + 1) % NUMBERS : 0;
}

} // namespace

SparkplugNode::SparkplugNode(const Topics &topics, const std::vector<PublishedTag> &tags,
                             bool takesRequests, QString bdSeqFile,
                             std::function<void(const QString &)> report)
    : m_topics(topics), m_takesRequests(takesRequests), m_bdSeqFile(std::move(bdSeqFile)),
      m_report(std::move(report)), m_nextBdSeq(numberAfter(m_bdSeqFile))
{
    checkPrefix(m_topics.prefix());
    const qint64 time = now();
    for (const PublishedTag &one : tags) {
        checkName(one.tag.text);
        m_types[one.tag.text] = sparkplug::dataTypeOf(one.tag);
        m_latest[one.tag.text] = sparkplug::metric(one.tag, {}, time);
    }
    if (m_takesRequests)
        m_latest[OUTCOME] = sparkplug::metric(OUTCOME, time, QString());
}

QString SparkplugNode::name() const
{
    return "the Sparkplug node " + m_topics.prefix();
}

bool SparkplugNode::isOurs(const Message &message) const
{
    return message.topic == topic("NDATA");
}

QByteArray SparkplugNode::topic(const char *type) const
{
    const QStringList parts = m_topics.prefix().split('/');
    return "spBv1.0/" + parts[0].toUtf8() + '/' + type + '/' + parts[1].toUtf8();
}

Message SparkplugNode::message(const char *type, qint64 time, const QByteArray &payload) const
{
    return {0, time, topic(type), payload, false, {}};
}

// A value has the time of its answer. That it is stale is news of now.
Message SparkplugNode::value(const PublishedTag &tag, const Sample &sample)
{
    const qint64 time = sample.quality == Quality::Good ? sample.time : now();
    return keep(tag.tag.text, time, sparkplug::metric(tag.tag, sample, time));
}

Message SparkplugNode::outcome(Message answer)
{
    const QString text = QString::fromUtf8(answer.payload);
    return keep(OUTCOME, answer.time, sparkplug::metric(OUTCOME, answer.time, text));
}

// To be called before the outbox gets the message, so that a birth has all that it overtakes.
Message SparkplugNode::keep(const QString &name, qint64 time, const QByteArray &metric)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_latest[name] = metric;
    return message("NDATA", time, metric);
}

QStringList SparkplugNode::filters() const
{
    return {QString::fromUtf8(topic("NCMD"))};
}

Message SparkplugNode::will()
{
    return deathOf(m_nextBdSeq);
}

// Section 6.4.25: each CONNECT has the number after that of the one before.
void SparkplugNode::noteWillSent()
{
    m_bdSeq = m_nextBdSeq;
    m_nextBdSeq = (m_bdSeq + 1) % NUMBERS;
    QSaveFile file(m_bdSeqFile);
    const bool isWritten = file.open(QIODevice::WriteOnly) &&
                           file.write(QByteArray::number(m_bdSeq) + '\n') > 0 && file.commit();
    if (!isWritten && !std::exchange(m_hasReportedFailure, true))
        m_report(QString("can't write %1: %2; bdSeq will not continue after a restart")
                     .arg(m_bdSeqFile, file.errorString()));
}

Message SparkplugNode::death()
{
    return deathOf(m_bdSeq);
}

// Section 6.4.25: without a seq.
Message SparkplugNode::deathOf(int bdSeq) const
{
    const qint64 time = now();
    const QByteArray payload =
        sparkplug::payload(time, {sparkplug::metric(BD_SEQ, time, bdSeq)}, std::nullopt);
    return message("NDEATH", time, payload);
}

// Section 6.4.19.
Message SparkplugNode::birth(std::uint64_t lastNumber)
{
    const qint64 time = now();
    std::vector<QByteArray> metrics = {sparkplug::metric(BD_SEQ, time, m_bdSeq),
                                       sparkplug::metric(REBIRTH, time, false)};
    const std::lock_guard<std::mutex> lock(m_mutex);
    for (const auto &[name, metric] : m_latest)
        metrics.push_back(metric);
    m_overtaken = lastNumber;
    m_seq = 1;
    return message("NBIRTH", time, sparkplug::payload(time, metrics, 0));
}

// Section 6.4.21.
Message SparkplugNode::data(const std::vector<Message> &messages)
{
    std::vector<QByteArray> metrics;
    for (const Message &one : messages)
        metrics.push_back(one.number <= m_overtaken ? sparkplug::historical(one.payload)
                                                    : one.payload);
    const qint64 time = now();
    return message("NDATA", time, sparkplug::payload(time, metrics, m_seq));
}

void SparkplugNode::noteDataSent()
{
    m_seq = (m_seq + 1) % NUMBERS;
}

// Enough to save messages; what is too long together is sent in parts.
std::size_t SparkplugNode::mostTogether() const
{
    return 20;
}

sparkplug::DataType SparkplugNode::typeOf(const QString &name) const
{
    const auto known = m_types.find(name);
    return known != m_types.end() ? known->second : sparkplug::DataType::String;
}

// Each value to be written becomes a request as it comes without Sparkplug. A command that comes
// twice is the same request, as its time says. A command is taken as a whole or not at all.
Convention::Commands SparkplugNode::commands(const Incoming &incoming)
{
    checkLength(incoming.payload);
    const sparkplug::CommandPayload parsed = sparkplug::parseCommands(
        incoming.payload, [this](const QString &name) { return typeOf(name); });
    const QByteArray hash =
        QCryptographicHash::hash(incoming.payload, QCryptographicHash::Sha256).toHex();
    Commands result;
    for (std::size_t i = 0; i < parsed.commands.size(); ++i) {
        const sparkplug::Command &command = parsed.commands[i];
        if (command.name == REBIRTH) {
            result.wantsBirth |= command.values == "[true]" && !incoming.isRetained;
            continue;
        }
        if (!m_takesRequests)
            continue;
        if (result.requests.size() == SetInbox::MOST_WAITING)
            throw Error(ErrorKind::Usage,
                        QString("a command with more than %1 values to write is refused")
                            .arg(SetInbox::MOST_WAITING));
        Incoming request = incoming;
        request.topic = m_topics.value(command.name) + "/set";
        request.payload = command.values;
        request.responseTopic.clear();
        request.correlation =
            parsed.hasTime ? QByteArray::number(quint64{i}) + ' ' + hash : QByteArray();
        result.requests.push_back(std::move(request));
    }
    return result;
}

} // namespace kmr
