#include "kmr/publish/plain_topics.h"

#include <QDateTime>

namespace kmr {

QString PlainTopics::name() const
{
    return m_topics.prefix() + "/...";
}

bool PlainTopics::isOurs(const Message &message) const
{
    return !message.topic.startsWith("spBv1.0/");
}

Message PlainTopics::value(const PublishedTag &tag, const Sample &sample)
{
    Message message;
    message.time = QDateTime::currentMSecsSinceEpoch();
    message.topic = tag.topic;
    message.payload = valuePayload(m_form, tag.tag, sample);
    return message;
}

Message PlainTopics::outcome(Message answer)
{
    return answer;
}

QStringList PlainTopics::filters() const
{
    return m_takesRequests ? m_topics.setFilters() : QStringList();
}

Message PlainTopics::will()
{
    return state("offline");
}

Message PlainTopics::birth(std::uint64_t)
{
    return state("online");
}

Message PlainTopics::death()
{
    return state("offline");
}

Message PlainTopics::data(const std::vector<Message> &messages)
{
    return messages.front();
}

// Some brokers subscribe their clients to topics by themselves.
Convention::Commands PlainTopics::commands(const Incoming &incoming)
{
    if (!m_takesRequests)
        return {};
    return {{incoming}, false};
}

Message PlainTopics::state(const char *state) const
{
    return {0, QDateTime::currentMSecsSinceEpoch(), m_topics.state(), state, true, {}};
}

} // namespace kmr
