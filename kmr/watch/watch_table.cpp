#include "kmr/watch/watch_table.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <iterator>
#include <sys/ioctl.h>
#include <unistd.h>
#include <utility>

namespace kmr {

namespace {

enum Column { TAG, VALUE, UNIT, QUALITY, AGE, CHANGES, TREND, COLUMNS };
constexpr Column LEFT_OUT_FIRST[] = {TREND, CHANGES, AGE, UNIT}; // for values that don't fit
constexpr int GAP = 2;                                           // between columns
constexpr int VALUE_WIDTH = 32;                                  // for which others are left out
constexpr int LONGEST_NUMBER = 26;
const char *const CUT = "...";           // where something is left out
const char *const CLEAR_LINE = "\x1b[K"; // from the cursor on

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

QStringList cellsOf(const WatchRow &row)
{
    return {row.tag,
            row.value.isEmpty() ? QString("-") : row.value,
            row.unit,
            qualityText(row),
            ageText(row),
            QString::number(row.changes),
            trendLine(row.trend)};
}

// `text` in no more than `width` characters: cut between words and marked, so that no part of a
// number is ever shown.
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

// The widths of the columns in `table`, 0 for those that are left out in favour of the values.
std::vector<int> columnWidths(const std::vector<QStringList> &table, int width)
{
    std::vector<int> widths(COLUMNS);
    for (const QStringList &cells : table) {
        for (int i = 0; i < COLUMNS; ++i)
            widths[static_cast<std::size_t>(i)] =
                std::max(widths[static_cast<std::size_t>(i)], static_cast<int>(cells[i].size()));
    }
    int left = width + GAP; // for the values
    for (int i = 0; i < COLUMNS; ++i)
        left -= GAP + (i == VALUE ? 0 : widths[static_cast<std::size_t>(i)]);
    for (const Column column : LEFT_OUT_FIRST) {
        if (left < std::min(widths[VALUE], VALUE_WIDTH))
            left += GAP + std::exchange(widths[column], 0);
    }
    widths[VALUE] = std::clamp(left, 0, widths[VALUE]);
    return widths;
}

QString lineOf(const QStringList &cells, const std::vector<int> &widths)
{
    QString line;
    for (int i = 0; i < COLUMNS; ++i) {
        const int width = widths[static_cast<std::size_t>(i)];
        if (width > 0)
            line += shortened(cells[i], width).leftJustified(width + GAP);
    }
    return line.trimmed();
}

void show(const QByteArray &text)
{
    const bool isShown = std::fputs(text.constData(), stdout) >= 0 && std::fflush(stdout) == 0;
    static_cast<void>(isShown); // print() reports it when stdout is lost
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

QStringList tableLines(const std::vector<WatchRow> &rows, const QString &status, int width,
                       int height, bool hasColours)
{
    std::vector<QStringList> table = {
        {"TAG", "VALUE", "UNIT", "QUALITY", "AGE", "CHANGES", "TREND"}};
    const std::size_t room = static_cast<std::size_t>(std::max(1, height - 3));
    for (std::size_t i = 0; i < std::min(rows.size(), room); ++i)
        table.push_back(cellsOf(rows[i]));
    const std::vector<int> widths = columnWidths(table, width);

    QStringList lines;
    for (std::size_t i = 0; i < table.size(); ++i) {
        const QString line = shortened(lineOf(table[i], widths), width);
        const bool isStale = i > 0 && rows[i - 1].state == WatchRow::State::Stale;
        lines.append(hasColours && isStale ? "\x1b[31m" + line + "\x1b[0m" : line);
    }
    if (rows.size() > room)
        lines.append(shortened(QString("... %1 more").arg(rows.size() - room), width));
    lines.append(shortened(status, width));
    return lines;
}

void LiveTable::draw(const std::vector<WatchRow> &rows, const QString &status)
{
    winsize size = {};
    const bool isKnown = ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    const QStringList lines =
        tableLines(rows, status, isKnown ? size.ws_col : 80,
                   (isKnown ? size.ws_row : 24) - 1, // the cursor stands on the line below
                   qEnvironmentVariableIsEmpty("NO_COLOR"));
    QString text;
    for (const QString &line : lines)
        text += CLEAR_LINE + line + '\n'; // after a full line it would take a character
    const QByteArray above = wayUp();
    m_text = (text + "\x1b[J").toLocal8Bit();
    m_height = static_cast<int>(lines.size());
    show(above + m_text); // at once, so that nothing flickers
    m_isThere = true;
}

// Line by line: clearing from the topmost makes some terminals keep what they had.
void LiveTable::erase()
{
    if (m_isThere)
        show(wayUp() + (QByteArray(CLEAR_LINE) + '\n').repeated(m_height) + wayUp());
    m_isThere = false;
}

void LiveTable::drawAgain()
{
    show(m_text);
    m_isThere = m_height > 0;
}

// Moves the cursor to the heading.
QByteArray LiveTable::wayUp() const
{
    return m_isThere ? "\r\x1b[" + QByteArray::number(m_height) + 'A' : QByteArray();
}

} // namespace kmr
