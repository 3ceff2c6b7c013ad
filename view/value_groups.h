// The tags in groups: by area, by station, or by a part of their names.
#pragma once

#include "view/line_news.h"

#include <deque>
#include <vector>

namespace kmr {

struct ValueRow {
    PolledTag polled;
    QString address; // "1#D100"
    QString comment; // of a name
    Quality quality = Quality::Unread;
    QString cause;               // of Stale
    Values values;               // the last confirmed; empty before the first
    QString text;                // the same as shown
    std::vector<double> numbers; // the same as numbers; not a number for a text
    double lastGood = 0;
    double lastChange = 0;
    std::uint64_t changes = 0;
    std::deque<double> course; // the newest numbers
    int group = -1;            // the heading that it belongs to
};

enum class Grouping { None, Area, Station, Name };

struct Heading {
    QString name;
    int count = 0; // of its tags
    int bad = 0;   // of those that are not good
};

// The group of a tag: "D", "Station 2", or of a name what precedes its first dot or slash.
QString groupOf(const Tag &tag, Grouping grouping);

// The headings in the order of their names or numbers. Sets each row's group; -1: none.
std::vector<Heading> headingsOf(std::vector<ValueRow> &rows, Grouping grouping);

} // namespace kmr
