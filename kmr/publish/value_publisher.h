// Publishes what a session knows of tags: when it changes, when it becomes stale, and at each
// heartbeat.
#pragma once

#include "host/session/session.h"
#include "kmr/publish/change_filter.h"
#include "kmr/publish/message.h"
#include "kmr/publish/payload.h"
#include "kmr/publish/published_tags.h"

#include <functional>
#include <set>
#include <utility>
#include <vector>

namespace kmr {

class ValuePublisher {
public:
    using Publish = std::function<void(const PublishedTag &, const Sample &)>;

    // The session must outlive it. `publish` makes a message of what is known of a tag.
    ValuePublisher(Session &session, const std::vector<PublishedTag> &tags,
                   std::chrono::milliseconds heartbeat, Publish publish);

    // What the session is to poll.
    const std::vector<ElementRange> &ranges() const
    {
        return m_ranges;
    }

    // To be called by the session's observers of exchanges, confirmations and steps.
    void noteExchange(const Exchange &exchange);
    void noteConfirmed(const ElementRange &run);
    void noteStation(int station);

    // The line is lost: no value is fresh until the line is open and the value is polled again.
    void noteLoss();
    void noteReconnection()
    {
        m_isLost = false;
    }

    // Publishes all tags as they are now: the broker may have forgotten them.
    void publishAll();

    // All tags count as published as they are now.
    void notePublished();

    // Publishes what is not good once more when its heartbeat is due; what is good is published
    // when it is read. To be called often.
    void beat();

    // Stations that answer nothing, not even with a refusal.
    std::set<int> silentStations() const;

private:
    struct Entry {
        PublishedTag what;
        Sample sample;
        ChangeFilter filter;
    };

    void noteQuality(Entry &entry);
    void publishNews(Entry &entry);
    void publish(Entry &entry);
    qint64 answeredAt(const ElementRange &run) const;

    Session &m_session;
    const Publish m_publish;
    std::vector<Entry> m_entries;
    const std::vector<ElementRange> m_ranges;
    std::vector<std::pair<ElementRange, qint64>> m_answers; // when each run was answered last
    bool m_isLost = false;
};

} // namespace kmr
