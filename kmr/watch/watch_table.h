// The live table of 'kmr watch': what it shows, and how it is drawn in place.
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <chrono>
#include <cstdint>
#include <deque>
#include <optional>
#include <vector>

namespace kmr {

struct WatchRow {
    enum class State {
        Unread, // no answer yet, or none since answers proved to be out of step
        Good,   // the controller held the value when it was last asked
        Stale   // the last request for it was given up, or the line is lost
    };

    // Numbers kept for the trend line.
    static constexpr std::size_t TREND_LENGTH = 12;

    QString tag;
    QString value; // the last good one
    QString unit;
    State state = State::Unread;
    QString staleSince;                           // time of day, with Stale
    std::optional<std::chrono::milliseconds> age; // since the last good answer
    std::uint64_t changes = 0;                    // after the first value
    std::deque<double> trend;                     // the last numbers, oldest first
};

// "good", "stale" or "pending"; the table adds to "stale" since when.
QString toText(WatchRow::State state);

// Eight heights of blocks from the least to the greatest; flat in the middle if all are equal.
// Numbers that aren't finite are left out.
QString trendLine(const std::deque<double> &trend);

// The heading, a line for each row and at the end `status`, none wider than `width` characters and
// no more than `height` lines. Where values don't fit, the columns TREND, CHANGES, AGE and UNIT
// make room; what still does not fit is cut between values and ends with "...". `hasColours`: stale
// rows in red.
QStringList tableLines(const std::vector<WatchRow> &rows, const QString &status, int width,
                       int height, bool hasColours);

// Draws lines on stdout over those of the last time.
class LiveTable {
public:
    void draw(const std::vector<WatchRow> &rows, const QString &status);

    // Takes the table away, so that a message can come in its place, and brings it back below.
    void erase();
    void drawAgain();

private:
    QByteArray wayUp() const;

    QByteArray m_text; // as it was last drawn
    int m_height = 0;  // lines of it
    bool m_isThere = false;
};

} // namespace kmr
