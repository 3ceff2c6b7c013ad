#include "view/history.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace kmr {

namespace {

constexpr std::size_t LOOK_INTERVAL = 100000; // samples

// The first, the last, the least and the greatest of one pixel, in the order of time.
void reduce(std::vector<Sample>::const_iterator begin, std::vector<Sample>::const_iterator end,
            std::vector<Sample> &drawn)
{
    const auto [least, most] =
        std::minmax_element(begin, end, [](const Sample &left, const Sample &right) {
            return left.value < right.value;
        });
    std::vector<std::vector<Sample>::const_iterator> kept = {begin, least, most, end - 1};
    std::sort(kept.begin(), kept.end());
    kept.erase(std::unique(kept.begin(), kept.end()), kept.end());
    for (const auto sample : kept)
        drawn.push_back(*sample);
}

} // namespace

void Series::add(double time, double value)
{
    if (!std::isfinite(value)) { // no plot can show it
        addGap(time);
        return;
    }
    const std::size_t count = m_samples.size();
    if (count > 0 && time < m_samples.back().time)
        return; // the clock was set back
    if (count > 1 && m_samples[count - 1].value == value && m_samples[count - 2].value == value)
        m_samples.back().time = time;
    else
        m_samples.push_back({time, value});
}

void Series::addGap(double time)
{
    if (!m_samples.empty() && !std::isnan(m_samples.back().value))
        m_samples.push_back(
            {std::max(time, m_samples.back().time), std::numeric_limits<double>::quiet_NaN()});
}

std::vector<Sample>::const_iterator Series::firstAfter(double time) const
{
    return std::upper_bound(m_samples.begin(), m_samples.end(), time,
                            [](double at, const Sample &sample) { return at < sample.time; });
}

std::vector<Sample> Series::drawn(double from, double to, int pixels) const
{
    auto begin = firstAfter(from);
    begin -= begin == m_samples.begin() ? 0 : 1;
    auto end = firstAfter(to);
    end += end == m_samples.end() ? 0 : 1;
    if (end - begin <= 4 * pixels)
        return {begin, end};
    std::vector<Sample> drawn;
    const double width = (to - from) / pixels;
    for (auto next = begin; next != end;) {
        if (std::isnan(next->value)) {
            drawn.push_back(*next++);
            continue;
        }
        const double limit = from + width * (std::floor((next->time - from) / width) + 1);
        const auto first = next++;
        while (next != end && next->time < limit && !std::isnan(next->value))
            ++next;
        reduce(first, next, drawn);
    }
    return drawn;
}

std::optional<double> Series::heldAt(double time) const
{
    const auto after = firstAfter(time);
    if (after == m_samples.begin() || std::isnan((after - 1)->value))
        return std::nullopt;
    const Sample &before = *(after - 1);
    const bool isKnown = after != m_samples.end() || before.time == time; // else nobody has looked
    return isKnown ? std::make_optional(before.value) : std::nullopt;
}

std::optional<double> Series::at(double time) const
{
    const std::optional<double> held = heldAt(time);
    const auto after = firstAfter(time);
    if (!held || after == m_samples.end() || std::isnan(after->value))
        return held;
    const Sample &before = *(after - 1);
    const double share = (time - before.time) / (after->time - before.time);
    return before.value + share * (after->value - before.value);
}

std::optional<SpanFigures> Series::figures(double from, double to, bool isBit) const
{
    std::vector<Sample> inside;
    if (const auto first = isBit ? heldAt(from) : at(from))
        inside.push_back({from, *first});
    for (auto next = firstAfter(from); next != m_samples.end() && next->time <= to; ++next)
        inside.push_back(*next);
    if (const auto last = isBit ? heldAt(to) : at(to))
        inside.push_back({to, *last});

    SpanFigures figures{HUGE_VAL, -HUGE_VAL, 0};
    double weighed = 0;
    double known = 0; // seconds
    for (std::size_t i = 0; i < inside.size(); ++i) {
        const Sample &sample = inside[i];
        if (std::isnan(sample.value))
            continue;
        figures.least = std::min(figures.least, sample.value);
        figures.most = std::max(figures.most, sample.value);
        if (i + 1 == inside.size() || std::isnan(inside[i + 1].value))
            continue;
        const double time = inside[i + 1].time - sample.time;
        weighed += time * (isBit ? sample.value : (sample.value + inside[i + 1].value) / 2);
        known += time;
    }
    if (figures.least > figures.most)
        return std::nullopt;
    figures.mean = known > 0 ? weighed / known : figures.least;
    return figures;
}

void Series::dropBefore(double time)
{
    m_samples.erase(m_samples.begin(), firstAfter(time));
    if (m_samples.capacity() > 2 * m_samples.size())
        m_samples.shrink_to_fit();
}

void History::add(int id, double time, double value)
{
    m_series[id].add(time, value);
    if (++m_added >= LOOK_INTERVAL)
        dropOldest();
}

void History::addGap(int id, double time)
{
    m_series[id].addGap(time);
}

void History::mark(WriteMark mark)
{
    m_marks.push_back(std::move(mark));
}

void History::clear()
{
    m_series.clear();
    m_marks.clear();
}

const Series &History::series(int id) const
{
    static const Series none;
    const auto found = m_series.find(id);
    return found == m_series.end() ? none : found->second;
}

std::optional<History::Span> History::span() const
{
    std::optional<Span> span;
    for (const auto &[id, series] : m_series) {
        if (series.samples().empty())
            continue;
        const double first = series.samples().front().time;
        const double last = series.samples().back().time;
        span =
            span ? Span{std::min(span->from, first), std::max(span->to, last)} : Span{first, last};
    }
    return span;
}

void History::dropOldest()
{
    m_added = 0;
    std::size_t count = 0;
    for (const auto &[id, series] : m_series)
        count += series.samples().size();
    const std::optional<Span> all = span();
    if (count <= MOST_SAMPLES || !all)
        return;
    const double from = all->from + (all->to - all->from) / 4;
    for (auto &[id, series] : m_series)
        series.dropBefore(from);
}

} // namespace kmr
