#include "kmr/publish/value_publisher.h"

#include "kmr/outcome.h"

#include <QDateTime>

#include <algorithm>
#include <utility>

namespace kmr {

namespace {

std::vector<Tag> tagsOf(const std::vector<PublishedTag> &published)
{
    std::vector<Tag> tags;
    tags.reserve(published.size());
    for (const PublishedTag &one : published)
        tags.push_back(one.tag);
    return tags;
}

ChangeFilter::Time clockNow()
{
    return std::chrono::steady_clock::now();
}

} // namespace

ValuePublisher::ValuePublisher(Session &session, const std::vector<PublishedTag> &tags,
                               std::chrono::milliseconds heartbeat, Publish publish)
    : m_session(session), m_publish(std::move(publish)), m_ranges(session.ranges(tagsOf(tags)))
{
    for (const PublishedTag &tag : tags)
        m_entries.push_back({tag, {}, ChangeFilter(tag.deadband, heartbeat)});
}

void ValuePublisher::noteExchange(const Exchange &exchange)
{
    if (exchange.outcome != Exchange::Outcome::Good) {
        noteStation(exchange.request.var.station);
        return;
    }
    if (!isRead(exchange.request))
        return;
    const ElementRange run = refreshedBy(exchange.request);
    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    const auto known = std::find_if(m_answers.begin(), m_answers.end(),
                                    [&run](const auto &answer) { return answer.first == run; });
    if (known != m_answers.end())
        known->second = now;
    else
        m_answers.emplace_back(run, now);
}

// An answer is confirmed before the observer of the next exchange is called, so the last answer to
// the run is the one that is confirmed.
qint64 ValuePublisher::answeredAt(const ElementRange &run) const
{
    const auto known = std::find_if(m_answers.begin(), m_answers.end(),
                                    [&run](const auto &answer) { return answer.first == run; });
    return known != m_answers.end() ? known->second : QDateTime::currentMSecsSinceEpoch();
}

void ValuePublisher::noteConfirmed(const ElementRange &run)
{
    const qint64 time = answeredAt(run);
    for (Entry &entry : m_entries) {
        const Tag &tag = entry.what.tag;
        if (!overlap(tag.elements, run))
            continue;
        if (m_session.state(tag).quality == Quality::Good)
            entry.sample = {Quality::Good, m_session.values(tag), time, {}};
        else
            noteQuality(entry);
        publishNews(entry);
    }
}

void ValuePublisher::noteStation(int station)
{
    for (Entry &entry : m_entries) {
        if (entry.what.tag.elements.station != station)
            continue;
        noteQuality(entry);
        if (entry.sample.quality != Quality::Good)
            publishNews(entry);
    }
}

// What is stale stays so until it is read.
void ValuePublisher::noteQuality(Entry &entry)
{
    if (m_isLost)
        return;
    const ElementState state = m_session.state(entry.what.tag);
    if (state.quality == Quality::Stale) {
        entry.sample.quality = Quality::Stale;
        entry.sample.cause = toTextWithHint(state.failure);
    } else if (state.quality == Quality::Unread && entry.sample.quality == Quality::Good) {
        entry.sample = {};
    }
}

void ValuePublisher::noteLoss()
{
    if (std::exchange(m_isLost, true))
        return;
    for (Entry &entry : m_entries) {
        entry.sample.quality = Quality::Stale;
        entry.sample.cause = "the line was lost";
        publishNews(entry);
    }
}

void ValuePublisher::publishAll()
{
    for (Entry &entry : m_entries) {
        noteQuality(entry);
        publish(entry);
    }
}

void ValuePublisher::notePublished()
{
    for (Entry &entry : m_entries)
        entry.filter.notePublished(entry.sample, clockNow());
}

void ValuePublisher::beat()
{
    for (Entry &entry : m_entries) {
        if (entry.sample.quality != Quality::Good)
            publishNews(entry);
    }
}

void ValuePublisher::publishNews(Entry &entry)
{
    if (entry.filter.isNews(entry.what.tag, entry.sample, clockNow()))
        publish(entry);
}

void ValuePublisher::publish(Entry &entry)
{
    entry.filter.notePublished(entry.sample, clockNow());
    m_publish(entry.what, entry.sample);
}

std::set<int> ValuePublisher::silentStations() const
{
    std::set<int> silent;
    for (const Entry &entry : m_entries) {
        const int station = entry.what.tag.elements.station;
        const ElementState state = m_session.state(entry.what.tag);
        if (m_isLost || (state.quality == Quality::Stale && state.failure.exceptionCode == 0))
            silent.insert(station);
    }
    for (const Entry &entry : m_entries) {
        if (!m_isLost && m_session.state(entry.what.tag).quality == Quality::Good)
            silent.erase(entry.what.tag.elements.station);
    }
    return silent;
}

} // namespace kmr
