// Carries out what others ask to be written, and says what came of it. For the polling thread.
#pragma once

#include "host/project/named_tag_reader.h"
#include "host/session/session.h"
#include "kmr/publish/broker.h"
#include "kmr/publish/set_request.h"
#include "kmr/publish/topics.h"

#include <QString>

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <string>
#include <utility>

namespace kmr {

// What came of a request, in the words of its answer.
struct WriteOutcome {
    QString word; // confirmed, refused, no answer, unknown or not sent
    QString reason;
    QString value; // as it was to be written; empty if that is not known
};

class WriteDesk {
public:
    // A request that waits longer is out of date.
    static constexpr std::chrono::seconds PATIENCE{10};
    static constexpr std::size_t REMEMBERED = 256; // ids of requests

    // `write` carries out one that is checked.
    using Write = std::function<WriteOutcome(const Tag &tag, const Values &values)>;

    // `reader` must have names, and must outlive this, as `topics` must.
    WriteDesk(const NamedTagReader &reader, const Topics &topics, Write write);

    // Checks and carries out, and returns the answer.
    Message handle(const Incoming &incoming);

    // The answer to a request for which there was no room.
    Message refuse(const Incoming &incoming, const QString &reason) const;

    // How many requests were answered with each word; all words are there.
    const std::map<std::string, std::uint64_t> &outcomes() const
    {
        return m_outcomes;
    }

private:
    WriteOutcome carryOut(const Incoming &incoming, const QString &name, QString &id);
    void remember(const QByteArray &identity, const WriteOutcome &outcome);
    WriteOutcome writeChecked(const SetRequest &request, const QString &name);
    Message answer(const Incoming &incoming, const QString &name, const QString &id,
                   const WriteOutcome &outcome) const;

    const NamedTagReader &m_reader;
    const Topics &m_topics;
    const Write m_write;
    std::deque<std::pair<QByteArray, WriteOutcome>> m_done; // by what makes a request the same
    std::map<std::string, std::uint64_t> m_outcomes = {
        {"confirmed", 0}, {"no answer", 0}, {"not sent", 0}, {"refused", 0}, {"unknown", 0}};
};

// What came of writing, in the words of an answer.
WriteOutcome outcomeOf(const RequestResult &result, const QString &stoppedAt);

} // namespace kmr
