// The table of 'kmr watch': what is known of each tag, and how it becomes lines of text.
#pragma once

#include "host/tags/number_bits.h"
#include "host/tags/values.h"

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

    Tag tag;
    Values values;                // the last good ones, empty before the first
    QString text;                 // the same for a person
    std::optional<double> number; // the first of them, unless it is a text
    State state = State::Unread;
    QString staleSince;                           // time of day, with Stale
    QString cause;                                // in words, likewise
    std::optional<std::chrono::milliseconds> age; // since the last good answer
    std::uint64_t changes = 0;                    // after the first value
    std::deque<double> trend;                     // the last numbers, oldest first
};

// "good", "stale" or "pending"; the table adds to "stale" since when.
QString toText(WatchRow::State state);

// The controller holds these values, as it was just confirmed, and other ones before.
void noteValues(WatchRow &row, const Values &values);

// Eight heights of blocks from the least to the greatest; flat in the middle if all are equal.
// Numbers that aren't finite are left out.
QString trendLine(const std::deque<double> &trend);

// `text` in no more than `width` characters: cut between words and marked with "...", so that no
// part of a number is ever shown.
QString shortened(const QString &text, int width);

// What stands in each column. In another format than the tag's own there is no unit: it belongs to
// the scaled number.
QStringList columnHeadings();
QStringList cellsOf(const WatchRow &row, NumberFormat format);

// The columns as wide as what was shown in them, so that they don't jump.
class TableColumns {
public:
    // Makes room for these cells.
    void add(const QStringList &cells);

    // From now on lines are no wider than `width` characters. If values don't fit, the columns
    // TREND, CHANGES, AGE and UNIT make room, then QUALITY and TAG become narrower; what still does
    // not fit is cut between values.
    void fit(int width);

    QString line(const QStringList &cells) const;

private:
    std::vector<int> m_wanted;
    std::vector<int> m_widths; // 0 for a column that is left out
    int m_width = 0;
};

} // namespace kmr
