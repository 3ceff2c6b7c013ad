// What the live table shows.
#include "kmr/watch/live_table.h"

#include <algorithm>

namespace kmr {

namespace {

constexpr int MOST_MESSAGES_SHOWN = 3;

// In lines of no more than `width` characters, cut between words where there are any.
QStringList wrapped(const QString &text, int width)
{
    QStringList lines;
    QString rest = text;
    while (rest.size() > width) {
        const int blank = static_cast<int>(rest.lastIndexOf(' ', width));
        const int end = blank > 0 ? blank : width;
        lines.append(rest.left(end));
        rest.remove(0, blank > 0 ? end + 1 : end);
    }
    return lines << rest;
}

// The same, cut anywhere, so that a character's place can be computed.
QStringList cutIntoLines(const QString &text, int width)
{
    QStringList lines;
    for (int i = 0; i < text.size(); i += width)
        lines.append(text.mid(i, width));
    return lines;
}

} // namespace

Frame LiveTable::frame(const FrameSize &size, const QString &status)
{
    if (!(size == m_size))
        m_columns = {};
    m_size = size;
    if (m_mode == Mode::Page)
        return pageFrame(size);
    const Footer below = footer(size, status);
    Frame frame;
    addTable(size, std::max(0, size.lines - static_cast<int>(below.lines.size())), frame);
    const int above = static_cast<int>(frame.lines.size());
    frame.lines.insert(frame.lines.end(), below.lines.begin(), below.lines.end());
    if (m_mode == Mode::Filter || m_mode == Mode::Value) {
        const int place = static_cast<int>(promptText().size()) + m_edit.cursor();
        frame.cursor = {above + below.prompt + place / size.columns, place % size.columns};
    }
    return frame;
}

// The heading and as many rows as there is room for; empty lines below keep the rest in its place.
void LiveTable::addTable(const FrameSize &size, int height, Frame &frame)
{
    m_view.setHeight(height - 1);
    m_view.refresh();
    std::vector<QStringList> cells;
    m_columns.add(columnHeadings());
    for (std::size_t i = m_view.begin(); i < m_view.end(); ++i) {
        cells.push_back(cellsOf(m_view.row(i), m_view.format(i)));
        m_columns.add(cells.back());
    }
    m_columns.fit(size.columns);
    frame.lines.push_back({m_columns.line(columnHeadings()), Look::Heading});
    for (std::size_t i = m_view.begin(); i < m_view.end(); ++i) {
        const bool isStale = m_view.row(i).state == WatchRow::State::Stale;
        const Look look = m_view.isSelected(i) ? (isStale ? Look::SelectedStale : Look::Selected)
                                               : (isStale ? Look::Stale : Look::Plain);
        frame.lines.push_back({m_columns.line(cells[i - m_view.begin()]), look});
    }
    m_picture.clear();
    for (const FrameLine &line : frame.lines)
        m_picture.append(line.text);
    frame.lines.resize(static_cast<std::size_t>(std::max(0, height)));
}

// As many lines as leave room for the heading and a row; what matters less is left out first.
LiveTable::Footer LiveTable::footer(const FrameSize &size, const QString &status)
{
    int room = std::max(1, size.lines - 2);
    const QStringList asked = prompt(size);
    room -= std::max(1, static_cast<int>(asked.size()));
    const bool hasMessage = !m_messages.empty() && room-- > 0;
    const bool hasStatus = room-- > 0;
    const bool hasDetails = asked.isEmpty() && room-- > 0;
    int messages = static_cast<int>(m_messages.size());
    messages = hasMessage ? 1 + std::clamp(messages - 1, 0,
                                           std::clamp(room - 4, 0, MOST_MESSAGES_SHOWN - 1))
                          : 0;

    Footer footer;
    for (auto line = m_messages.end() - messages; line != m_messages.end(); ++line)
        footer.lines.push_back({shortened(*line, size.columns)});
    if (hasDetails)
        footer.lines.push_back({shortened(details(), size.columns), Look::Strong});
    footer.prompt = static_cast<int>(footer.lines.size());
    for (const QString &line : asked)
        footer.lines.push_back({line, Look::Strong});
    if (asked.isEmpty())
        footer.lines.push_back(
            {shortened((m_view.facts() << "? for the keys").join("  "), size.columns)});
    if (hasStatus)
        footer.lines.push_back({shortened(status, size.columns)});
    return footer;
}

// Of the selected tag, unless there is something to be said.
QString LiveTable::details() const
{
    if (!m_notice.isEmpty())
        return m_notice;
    const WatchRow *row = m_view.selected();
    if (row == nullptr)
        return "no tag is shown: Escape ends the filter, X shows hidden tags";
    QStringList facts = {row->tag.text, QString::number(row->tag.elements.station) + '#' +
                                            runName(row->tag.elements)};
    if (const QString format = toText(m_view.selectedFormat()); !format.isEmpty())
        facts.append(format);
    if (row->state == WatchRow::State::Stale)
        facts.append(row->cause);
    return facts.join("  ");
}

QString LiveTable::promptText() const
{
    if (m_mode == Mode::Filter)
        return "filter: ";
    return "new value of " + m_asked->tag.text + ": ";
}

// What is asked, in full: of a write that does not fit nothing is shown.
QStringList LiveTable::prompt(const FrameSize &size)
{
    if (m_mode == Mode::Table)
        return {};
    const int most = std::max(1, size.lines - 2);
    if (m_mode != Mode::Confirm) {
        QStringList lines = m_notice.isEmpty() ? QStringList() : wrapped(m_notice, size.columns);
        // A blank for the cursor.
        lines = cutIntoLines(promptText() + m_edit.text() + ' ', size.columns) + lines;
        return lines.mid(0, most);
    }
    const Tag &tag = m_asked->tag;
    const QString text = QString("Write ") + tag.text + '=' + withUnit(tag, m_asked->values) +
                         ", that is " + requestTexts(*m_asked, m_groupLimit).join(", then ") +
                         "? y/n";
    QStringList lines = wrapped(text, size.columns);
    m_isAllShown = lines.size() <= most;
    if (!m_isAllShown)
        lines = QStringList{
            shortened("Too long to be shown whole: a larger window, or n", size.columns)};
    return lines;
}

Frame LiveTable::pageFrame(const FrameSize &size)
{
    QStringList lines;
    for (const QString &line : m_page)
        lines += wrapped(line, size.columns);
    m_pageTop = std::clamp(m_pageTop, 0, std::max(0, static_cast<int>(lines.size()) - size.lines));
    Frame frame;
    for (const QString &line : lines.mid(m_pageTop, size.lines))
        frame.lines.push_back({line});
    return frame;
}

} // namespace kmr
