#include "kmr/log/log_sampler.h"

#include "host/session/request_ranges.h"

#include <algorithm>
#include <utility>

namespace kmr {

LogSampler::LogSampler(Session &session, std::vector<Tag> tags)
    : m_session(session), m_tags(std::move(tags)), m_ranges(session.ranges(m_tags)),
      m_known(m_tags.size())
{
    take({});
}

void LogSampler::noteConfirmed(const ElementRange &run)
{
    for (std::vector<ElementRange> &ranges : m_unread) {
        ranges.erase(
            std::remove_if(ranges.begin(), ranges.end(),
                           [&run](const ElementRange &range) { return overlap(range, run); }),
            ranges.end());
    }
}

LogRow LogSampler::take(const QDateTime &time)
{
    LogRow row;
    row.time = time;
    m_unread.resize(m_tags.size());
    for (std::size_t i = 0; i < m_tags.size(); ++i) {
        LogCell cell;
        cell.quality = m_session.state(m_tags[i]).quality;
        if (cell.quality == Quality::Good && m_unread[i].empty())
            cell.values = m_session.values(m_tags[i]);
        row.cells.push_back(std::move(cell));
        m_unread[i].clear();
        for (const ElementRange &range : m_ranges) {
            if (overlap(range, m_tags[i].elements))
                m_unread[i].push_back(range);
        }
    }
    return row;
}

bool LogSampler::isNews(const LogRow &row)
{
    bool isNews = false;
    for (std::size_t i = 0; i < m_tags.size(); ++i) {
        const LogCell &cell = row.cells[i];
        if (cell.quality == Quality::Good && !cell.isRead())
            continue;
        isNews = isNews || cell.quality != m_known[i].quality ||
                 (cell.isRead() && cell.values != m_known[i].values);
        m_known[i].quality = cell.quality;
        if (cell.isRead())
            m_known[i].values = cell.values;
    }
    return isNews;
}

} // namespace kmr
