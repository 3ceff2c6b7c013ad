#include "kmr/publish/topics.h"

#include "host/error.h"

#include <mosquitto.h>

namespace kmr {

namespace {

const QByteArray SET = "/set";
const QByteArray OUTCOME = "/outcome";

Error usage(const QString &text)
{
    return Error(ErrorKind::Usage, text);
}

QString escaped(QString name)
{
    return name.replace('%', "%25").replace('+', "%2B").replace('#', "%23");
}

bool isTopic(const QByteArray &topic)
{
    return !topic.isEmpty() &&
           mosquitto_pub_topic_check2(topic.constData(), static_cast<std::size_t>(topic.size())) ==
               MOSQ_ERR_SUCCESS;
}

} // namespace

Topics::Topics(const QString &prefix, const QStringList &names) : m_prefix(prefix.toUtf8())
{
    if (!isTopic(m_prefix) || prefix.startsWith('/') || prefix.endsWith('/') ||
        prefix.startsWith('$'))
        throw usage(QString("bad prefix \"%1\": expected a topic without + and #, for example "
                            "plant/line1")
                        .arg(prefix));
    for (const QString &name : names) {
        const auto added = m_names.emplace(value(name), name);
        if (!added.second && added.first->second != name)
            throw usage(QString("%1 and %2 would share a topic: rename one of them")
                            .arg(added.first->second, name));
    }
    for (const auto &[topic, name] : m_names) {
        for (const QByteArray &end : {SET, OUTCOME}) {
            const auto other = m_names.find(topic + end);
            if (other != m_names.end())
                throw usage(QString("the topic of %1 is needed for writing %2: rename one of them")
                                .arg(other->second, name));
        }
    }
}

QByteArray Topics::value(const QString &name) const
{
    return m_prefix + '/' + escaped(name).toUtf8();
}

std::optional<QString> Topics::nameOfSet(const QByteArray &topic) const
{
    if (!topic.startsWith(m_prefix + '/') || !topic.endsWith(SET))
        return std::nullopt;
    const QByteArray of = topic.chopped(SET.size());
    const auto known = m_names.find(of);
    return known != m_names.end() ? known->second : QString::fromUtf8(of.mid(m_prefix.size() + 1));
}

QByteArray Topics::outcomeOf(const QByteArray &setTopic)
{
    return setTopic.chopped(SET.size()) + OUTCOME;
}

QStringList Topics::setFilters() const
{
    QStringList filters(QString::fromUtf8(m_prefix) + "/+" + SET);
    for (const auto &[topic, name] : m_names) {
        if (name.contains('/'))
            filters.append(QString::fromUtf8(topic) + SET);
    }
    return filters;
}

bool Topics::mayAnswerTo(const QByteArray &topic) const
{
    return isTopic(topic) && !topic.startsWith('$') && !topic.endsWith(SET) &&
           !(topic + '/').startsWith(m_prefix + '/');
}

} // namespace kmr
