// What was measured, by tag: kept as it was, and handed out as a plot can show it.
#pragma once

#include "view/line_news.h"

#include <QString>

#include <map>
#include <optional>
#include <vector>

namespace kmr {

struct Sample {
    double time = 0;
    double value = 0; // not a number: nothing is known from here on
};

// Figures of a span of time. The mean weighs each value by the time that it held.
struct SpanFigures {
    double least = 0;
    double most = 0;
    double mean = 0;
};

// One tag's samples, in the order of time. Between two samples the value is taken to have moved in
// a straight line; while it stays as it is, only the beginning and the end are kept.
class Series {
public:
    // A value that is not finite is a gap.
    void add(double time, double value);

    // From here on nothing is known.
    void addGap(double time);

    const std::vector<Sample> &samples() const
    {
        return m_samples;
    }

    // What a plot of so many pixels shows of the span, with the samples around it: of each pixel
    // the first, the last, the least and the greatest. Gaps stay.
    std::vector<Sample> drawn(double from, double to, int pixels) const;

    // The value at a time, if one is known.
    std::optional<double> at(double time) const;

    // The same of a bit, which has no values in between.
    std::optional<double> heldAt(double time) const;

    // Nothing if no value is known in the span. `isBit`: without values in between.
    std::optional<SpanFigures> figures(double from, double to, bool isBit = false) const;

    void dropBefore(double time);

private:
    std::vector<Sample>::const_iterator firstAfter(double time) const;

    std::vector<Sample> m_samples;
};

struct WriteMark {
    int id = 0; // of the tag
    double time = 0;
    QString text;
};

class History {
public:
    // Samples of all tags together; when there are more, the oldest quarter of the time goes.
    static constexpr std::size_t MOST_SAMPLES = 16000000; // 256 MB

    // A value was confirmed, or is not known any more.
    void add(int id, double time, double value);
    void addGap(int id, double time);
    void mark(WriteMark mark);
    void forget(int id)
    {
        m_series.erase(id);
    }
    void clear();

    const Series &series(int id) const;
    const std::vector<WriteMark> &marks() const
    {
        return m_marks;
    }

    // The times of the oldest and the newest sample; nothing if there is none.
    struct Span {
        double from = 0;
        double to = 0;
    };
    std::optional<Span> span() const;

private:
    void dropOldest();

    std::map<int, Series> m_series;
    std::vector<WriteMark> m_marks;
    std::size_t m_added = 0; // samples since it was last looked how many there are
};

} // namespace kmr
