// The output of 'kmr watch': changes, as records or in a live table, and a line on stderr when an
// outage begins and when it ends. Lines for stderr are shown below the live table meanwhile.
#pragma once

#include "host/session/session.h"
#include "kmr/exit_code.h"
#include "kmr/outages.h"
#include "kmr/record_writer.h"
#include "kmr/watch/live_table.h"
#include "kmr/watch/screen.h"
#include "kmr/watch/watch_cycle.h"
#include "kmr/watch/watch_rates.h"
#include "kmr/watch/watch_table.h"

#include <QString>

#include <chrono>
#include <cstdint>
#include <optional>
#include <vector>

namespace kmr {

class Watcher {
public:
    // Observes the session, which must outlive it. `isLive`: in a table, else in records of this
    // format. `wantedCycle`: see WatchCycle. The watch is over with change number `maxChanges`;
    // that a value is stale is not a change.
    Watcher(Session &session, std::vector<Tag> tags, Format format, bool isLive,
            std::chrono::milliseconds wantedCycle, std::optional<std::uint64_t> maxChanges);
    ~Watcher();
    Watcher(const Watcher &) = delete;
    Watcher &operator=(const Watcher &) = delete;

    void beginPolling();

    // The time until the next request; 0 except between two cycles.
    std::chrono::nanoseconds pause() const;

    // The line is lost: all values are stale.
    void noteLoss();

    // The line is open again. This is reported with the first answer.
    void noteReconnection();

    // Whether the line was lost and nothing has been answered since.
    bool isLost() const
    {
        return m_isLost;
    }

    // Takes keys, draws the table when it is time to, and ends the watch if nobody reads it any
    // more. To be called often.
    void draw();

    // Writes what the user has confirmed in the table. To be called often, but never during an
    // exchange.
    void writeConfirmed();

    // Leaves the table on the terminal, or completes the records.
    void end();

    bool isOver() const
    {
        return (m_maxChanges && m_changes >= *m_maxChanges) || (m_table && m_table->isLeft());
    }

    // Why tags are not up to date, or Ok.
    ExitCode outcome() const;

private:
    using Time = std::chrono::steady_clock::time_point;

    void openTable();
    void closeTable();
    void takeKeys();
    void refuseWrite();
    void tellWrite(const Assignment &assignment, const WriteResult &result);
    void note(const Exchange &exchange);
    void noteConfirmed(const ElementRange &run);
    void noteStep(const StepNews &news);
    void noteStation(int station);
    void noteQuality(std::size_t index);
    void showGood(std::size_t index);
    void makeStale(std::size_t index, const QString &cause);
    void addRecord(std::size_t index, const QString &plain, const QString &error);

    Session &m_session;
    const std::vector<Tag> m_tags;
    const std::optional<std::uint64_t> m_maxChanges;
    std::vector<WatchRow> m_rows; // by tag, as all these
    std::vector<std::optional<Time>> m_lastGood;
    const std::vector<ElementRange> m_ranges;
    WatchCycle m_cycle;
    WatchRates m_rates;
    std::optional<RecordWriter> m_records; // or
    std::optional<LiveTable> m_table;      // and, until the end,
    std::optional<Screen> m_screen;
    FrameSize m_size; // as it was last drawn
    Time m_nextDraw;
    Outages m_outages;
    bool m_isLost = false;
    std::uint64_t m_changes = 0;
};

} // namespace kmr
