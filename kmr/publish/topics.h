// The topics of what is published.
//
//   PREFIX/$state        online or offline
//   PREFIX/$line         figures of the line
//   PREFIX/NAME          the value of a name, or of a tag
//   PREFIX/NAME/set      a request to write it
//   PREFIX/NAME/outcome  what came of that
//
// A slash in a name makes a level of its own. What a topic can't have is written as %2B for '+',
// %23 for '#' and %25 for '%'.
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <map>
#include <optional>

namespace kmr {

class Topics {
public:
    // `names`: all that are published or may be asked for. Throws Error (Usage) for a prefix that
    // is not a topic, and for two names that would share a topic.
    Topics(const QString &prefix, const QStringList &names);

    QString prefix() const
    {
        return QString::fromUtf8(m_prefix);
    }
    QByteArray state() const
    {
        return m_prefix + "/$state";
    }
    QByteArray line() const
    {
        return m_prefix + "/$line";
    }
    QByteArray value(const QString &name) const;

    // What a request's topic names: "boiler" for PREFIX/boiler/set, also when there is no such
    // name. Nothing for other topics.
    std::optional<QString> nameOfSet(const QByteArray &topic) const;

    // Where the request of such a topic is answered.
    static QByteArray outcomeOf(const QByteArray &setTopic);

    // What is to be subscribed to, for requests to known names, and to unknown ones of one level.
    QStringList setFilters() const;

    // Whether an answer may go to this topic, which a request names. Nothing of ours, nothing of
    // the broker's own, and no request to anyone else.
    bool mayAnswerTo(const QByteArray &topic) const;

private:
    QByteArray m_prefix;
    std::map<QByteArray, QString> m_names; // by their topics
};

} // namespace kmr
