// Collects the rows of 'kmr log': what the session has read since the previous row.
#pragma once

#include "host/session/session.h"
#include "kmr/log/log_file.h"

#include <vector>

namespace kmr {

class LogSampler {
public:
    // The session must outlive it.
    LogSampler(Session &session, std::vector<Tag> tags);

    // The ranges for the session to poll.
    const std::vector<ElementRange> &ranges() const
    {
        return m_ranges;
    }

    // These elements were read (Session::ConfirmObserver).
    void noteConfirmed(const ElementRange &run);

    // Returns the row of this time and begins the next one.
    LogRow take(const QDateTime &time);

    // Whether `row` differs from the previous rows, apart from tags that were not read. To be
    // called once for each row.
    bool isNews(const LogRow &row);

private:
    Session &m_session;
    const std::vector<Tag> m_tags;
    const std::vector<ElementRange> m_ranges;
    std::vector<std::vector<ElementRange>>
        m_unread;                 // by tag: its ranges not read since the last row
    std::vector<LogCell> m_known; // by tag: its last cell
};

} // namespace kmr
