#include "kmr/watch/watch_table.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

namespace kmr {

namespace {

enum Column { TAG, VALUE, UNIT, QUALITY, AGE, CHANGES, TREND, COLUMNS };
constexpr Column LEFT_OUT_FIRST[] = {TREND, CHANGES, AGE, UNIT}; // for values that don't fit
constexpr int GAP = 2;                                           // between columns
constexpr int VALUE_WIDTH = 32;                                  // for which others are left out
constexpr int LONGEST_NUMBER = 26;
constexpr int LEAST_QUALITY = 9; // "stale ..."
constexpr int LEAST_TAG = 12;    // characters of which it is still known
const char *const CUT = "...";   // where something is left out

QString ageText(const WatchRow &row)
{
    if (!row.age)
        return "-";
    const auto milliseconds = row.age->count();
    return milliseconds < 10000
               ? QString::number(static_cast<double>(milliseconds) / 1000, 'f', 1) + " s"
               : QString::number(milliseconds / 1000) + " s";
}

QString qualityText(const WatchRow &row)
{
    const QString quality = toText(row.state);
    return row.state == WatchRow::State::Stale ? quality + " since " + row.staleSince : quality;
}

// Tags and headings are not numbers: they are cut anywhere.
QString cutAnywhere(const QString &text, int width)
{
    const int mark = static_cast<int>(qstrlen(CUT));
    if (text.size() <= width)
        return text;
    return width > mark ? text.left(width - mark) + CUT : QString(CUT).left(std::max(0, width));
}

} // namespace

QString toText(WatchRow::State state)
{
    switch (state) {
    case WatchRow::State::Good:
        return "good";
    case WatchRow::State::Stale:
        return "stale";
    case WatchRow::State::Unread:
        break;
    }
    return "pending";
}

void noteValues(WatchRow &row, const Values &values)
{
    const Value first = interpret(row.tag, values).front();
    row.changes += row.values.empty() ? 0 : 1;
    row.values = values;
    row.text = formatValues(row.tag, values);
    row.number.reset();
    if (std::holds_alternative<QString>(first))
        return;
    row.number = toText(first).toDouble();
    row.trend.push_back(*row.number);
    if (row.trend.size() > WatchRow::TREND_LENGTH)
        row.trend.pop_front();
}

QString trendLine(const std::deque<double> &trend)
{
    std::vector<double> numbers;
    std::copy_if(trend.begin(), trend.end(), std::back_inserter(numbers),
                 [](double number) { return std::isfinite(number); });
    if (numbers.empty())
        return {};
    const auto [least, greatest] = std::minmax_element(numbers.begin(), numbers.end());
    const double range = *greatest / 8 - *least / 8; // an eighth, which can't overflow
    QString line;
    for (const double number : numbers) {
        const int height =
            range > 0 ? static_cast<int>(std::lround((number / 8 - *least / 8) / range * 7)) : 3;
        line += QChar(0x2581 + height);
    }
    return line;
}

QString shortened(const QString &text, int width)
{
    const int mark = static_cast<int>(qstrlen(CUT));
    if (text.size() <= width)
        return text;
    const int end = static_cast<int>(width > mark ? text.lastIndexOf(' ', width - mark - 1) : -1);
    if (end > 0)
        return text.left(end).trimmed() + ' ' + CUT;
    return width > LONGEST_NUMBER + mark ? text.left(width - mark) + CUT
                                         : QString(CUT).left(std::max(0, width));
}

QStringList columnHeadings()
{
    return {"TAG", "VALUE", "UNIT", "QUALITY", "AGE", "CHANGES", "TREND"};
}

QStringList cellsOf(const WatchRow &row, NumberFormat format)
{
    const bool isAsTag = format == NumberFormat::AsTag;
    const QString value = isAsTag ? row.text : formatNumbers(row.tag, row.values, format);
    return {row.tag.text,
            value.isEmpty() ? QString("-") : value,
            isAsTag ? row.tag.unit : QString(),
            qualityText(row),
            ageText(row),
            QString::number(row.changes),
            trendLine(row.trend)};
}

void TableColumns::add(const QStringList &cells)
{
    m_wanted.resize(COLUMNS);
    for (int i = 0; i < COLUMNS; ++i) {
        int &wanted = m_wanted[static_cast<std::size_t>(i)];
        wanted = std::max(wanted, static_cast<int>(cells[i].size()));
    }
}

void TableColumns::fit(int width)
{
    m_width = width;
    m_widths = m_wanted;
    int left = width + GAP; // for the values
    for (int i = 0; i < COLUMNS; ++i)
        left -= GAP + (i == VALUE ? 0 : m_widths[static_cast<std::size_t>(i)]);
    const int wanted = std::min(m_widths[VALUE], VALUE_WIDTH);
    for (const Column column : LEFT_OUT_FIRST) {
        if (left < wanted)
            left += GAP + std::exchange(m_widths[column], 0);
    }
    for (const auto &[column, least] : {std::pair(QUALITY, LEAST_QUALITY), {TAG, LEAST_TAG}}) {
        const int narrower = std::clamp(wanted - left, 0, std::max(0, m_widths[column] - least));
        m_widths[column] -= narrower;
        left += narrower;
    }
    m_widths[VALUE] = std::clamp(left, 0, m_widths[VALUE]);
}

QString TableColumns::line(const QStringList &cells) const
{
    QString line;
    for (int i = 0; i < COLUMNS; ++i) {
        const int width = m_widths[static_cast<std::size_t>(i)];
        if (width > 0)
            line += (i == TAG ? cutAnywhere(cells[i], width) : shortened(cells[i], width))
                        .leftJustified(width + GAP);
    }
    return shortened(line.trimmed(), m_width);
}

} // namespace kmr
