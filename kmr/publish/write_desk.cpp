#include "kmr/publish/write_desk.h"

#include "kmr/assignment.h"
#include "kmr/json_value.h"
#include "kmr/outcome.h"
#include "kmr/publish/payload.h"

#include <QDateTime>

#include <algorithm>
#include <utility>

namespace kmr {

namespace {

WriteOutcome refused(const QString &reason)
{
    return {"refused", reason, {}};
}

// Why it is too late for a request, or nothing.
QString lateness(const Incoming &incoming, const SetRequest &request)
{
    const auto waited = std::chrono::steady_clock::now() - incoming.time;
    if (incoming.expiry && waited >= *incoming.expiry)
        return "expired before its turn came";
    if (request.expires && QDateTime::currentMSecsSinceEpoch() >= *request.expires)
        return "expired at " + utcText(*request.expires);
    if (waited >= WriteDesk::PATIENCE)
        return QString("waited for the line for %1 s, and is too old now")
            .arg(WriteDesk::PATIENCE.count());
    return {};
}

// What is the same when a request comes twice. Empty for one that can't be recognised.
QByteArray identityOf(const Incoming &incoming, const QString &id)
{
    if (!id.isEmpty())
        return incoming.topic + "\nid\n" + id.toUtf8();
    if (incoming.correlation.isEmpty())
        return {};
    return incoming.topic + '\n' + incoming.responseTopic + '\n' + incoming.correlation;
}

// Why others may not write the name, or nothing.
QString forbidden(const NameTable &names, const QString &name)
{
    const Name *const known = names.find(name);
    if (known == nullptr)
        return QString("%1 has no name \"%2\"").arg(names.file(), name.left(100));
    if (!known->isWritable)
        return QString("%1 is not marked writable in %2").arg(name, names.file());
    return {};
}

} // namespace

WriteDesk::WriteDesk(const NamedTagReader &reader, const Topics &topics, Write write)
    : m_reader(reader), m_topics(topics), m_write(std::move(write))
{
}

Message WriteDesk::handle(const Incoming &incoming)
{
    const QString name = m_topics.nameOfSet(incoming.topic).value_or(QString());
    QString id;
    const WriteOutcome outcome = carryOut(incoming, name, id);
    ++m_outcomes[outcome.word.toStdString()];
    return answer(incoming, name, id, outcome);
}

Message WriteDesk::refuse(const Incoming &incoming, const QString &reason) const
{
    const QString name = m_topics.nameOfSet(incoming.topic).value_or(QString());
    return answer(incoming, name, {}, refused(reason));
}

WriteOutcome WriteDesk::carryOut(const Incoming &incoming, const QString &name, QString &id)
{
    if (incoming.isRetained)
        return refused("retained: a request counts only while it is new");
    if (!incoming.responseTopic.isEmpty() && !m_topics.mayAnswerTo(incoming.responseTopic))
        return refused("no answer may go to the response topic");
    try {
        const SetRequest request = parseSetRequest(incoming.payload);
        id = request.id;
        const QByteArray identity = identityOf(incoming, id);
        const auto done = std::find_if(m_done.begin(), m_done.end(), [&](const auto &one) {
            return !identity.isEmpty() && one.first == identity;
        });
        if (done != m_done.end())
            return done->second;
        const QString late = lateness(incoming, request);
        if (!late.isEmpty())
            return refused(late);
        const WriteOutcome outcome = writeChecked(request, name);
        remember(identity, outcome);
        return outcome;
    } catch (const Error &error) {
        return refused(error.text());
    }
}

void WriteDesk::remember(const QByteArray &identity, const WriteOutcome &outcome)
{
    if (identity.isEmpty())
        return;
    m_done.emplace_back(identity, outcome);
    if (m_done.size() > REMEMBERED)
        m_done.pop_front();
}

WriteOutcome WriteDesk::writeChecked(const SetRequest &request, const QString &name)
{
    const QString why = forbidden(*m_reader.names(), name);
    if (!why.isEmpty())
        return refused(why);
    const Tag tag = m_reader.read(name);
    const Assignment assignment = parseAssignment(name + '=' + typedValues(request, tag), m_reader);
    WriteOutcome outcome = m_write(tag, assignment.values);
    outcome.value = formatValues(tag, assignment.values);
    return outcome;
}

Message WriteDesk::answer(const Incoming &incoming, const QString &name, const QString &id,
                          const WriteOutcome &outcome) const
{
    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    Json object = Json::object();
    object["name"] = name.toStdString();
    object["outcome"] = outcome.word.toStdString();
    object["reason"] = textOrNull(outcome.reason);
    object["value"] = textOrNull(outcome.value);
    object["id"] = textOrNull(id);
    object["time"] = utcText(now).toStdString();
    Message message;
    message.time = now;
    message.topic = m_topics.mayAnswerTo(incoming.responseTopic)
                        ? incoming.responseTopic
                        : Topics::outcomeOf(incoming.topic);
    message.payload = QByteArray::fromStdString(object.dump());
    message.isRetained = false;
    message.correlation = incoming.correlation;
    return message;
}

WriteOutcome outcomeOf(const RequestResult &result, const QString &stoppedAt)
{
    const QString reason = stoppedAt.isEmpty()
                               ? writeErrorText(result)
                               : "stopped at " + stoppedAt + ": " + writeErrorText(result);
    return {result.isDone() ? "confirmed" : outcomeName(result), reason, {}};
}

} // namespace kmr
