#include "kmr/watch/watch_table.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <iterator>
#include <sys/ioctl.h>
#include <unistd.h>

namespace kmr {

namespace {

constexpr int COLUMNS = 7;
constexpr int MAX_VALUE_WIDTH = 32;
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
    const QString value = row.value.isEmpty() ? QString("-") : row.value;
    return {row.tag,
            value.left(MAX_VALUE_WIDTH),
            row.unit,
            qualityText(row),
            ageText(row),
            QString::number(row.changes),
            trendLine(row.trend)};
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
    int widths[COLUMNS] = {};
    for (const QStringList &cells : table) {
        for (int i = 0; i < COLUMNS; ++i)
            widths[i] = std::max(widths[i], static_cast<int>(cells[i].size()));
    }

    QStringList lines;
    for (std::size_t i = 0; i < table.size(); ++i) {
        QString line;
        for (int column = 0; column < COLUMNS; ++column)
            line += table[i][column].leftJustified(widths[column] + 2);
        line = line.trimmed().left(width);
        const bool isStale = i > 0 && rows[i - 1].state == WatchRow::State::Stale;
        lines.append(hasColours && isStale ? "\x1b[31m" + line + "\x1b[0m" : line);
    }
    if (rows.size() > room)
        lines.append(QString("... %1 more").arg(rows.size() - room).left(width));
    lines.append(status.left(width));
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
