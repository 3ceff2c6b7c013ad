// Gathers the rows of 'kmr log': what the session has read since the row before.
#pragma once

#include "host/session/session.h"
#include "kmr/log/log_file.h"

#include <vector>

namespace kmr {

class LogSampler {
public:
    // The session must outlive it.
    LogSampler(Session &session, std::vector<Tag> tags);

    // What the session is to poll.
    const std::vector<ElementRange> &ranges() const
    {
        return m_ranges;
    }

    // These elements were read (Session::ConfirmObserver).
    void noteConfirmed(const ElementRange &run);

    // The row of this time; the next one begins.
    LogRow take(const QDateTime &time);

    // Whether `row` says something else of a tag than the rows before, but for tags that were not
    // read. To be asked once for each row.
    bool isNews(const LogRow &row);

private:
    Session &m_session;
    const std::vector<Tag> m_tags;
    const std::vector<ElementRange> m_ranges;
    std::vector<std::vector<ElementRange>>
        m_unread;                 // by tag: its ranges not read since the last row
    std::vector<LogCell> m_known; // by tag: what rows said last
};

} // namespace kmr
