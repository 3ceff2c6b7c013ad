// All that a terminal shows at a time.
#pragma once

#include <QString>

#include <optional>
#include <vector>

namespace kmr {

enum class Look { Plain, Heading, Selected, Stale, SelectedStale, Strong };

struct FrameLine {
    QString text;
    Look look = Look::Plain;
};

struct FrameSize {
    int columns = 80;
    int lines = 24;
};

inline bool operator==(const FrameSize &left, const FrameSize &right)
{
    return left.columns == right.columns && left.lines == right.lines;
}

struct Frame {
    std::vector<FrameLine> lines; // from the topmost

    struct Cursor {
        int line = 0;
        int column = 0;
    };
    std::optional<Cursor> cursor; // where something is typed
};

} // namespace kmr
