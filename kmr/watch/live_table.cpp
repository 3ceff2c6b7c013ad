// What each key does. What is shown: live_table_frame.cpp.
#include "kmr/watch/live_table.h"

#include "host/error.h"
#include "host/session/request_ranges.h"

#include <QTime>

#include <algorithm>
#include <limits>
#include <utility>

namespace kmr {

namespace {

const char *const HELP = R"(Keys of the live table

up down  j k       one tag up or down
page up, page down
home end  g G      the first tag, the last one
/                  show only tags with a text in their name, address or unit;
                   Escape shows all again
s                  sort by name, value, quality, age, changes, or as they were typed
r                  reverse the order
space              freeze the picture, and go on; reading goes on all the time
f                  the selected tag's number format: decimal, signed, hexadecimal,
                   binary, its own
F                  the same for all tags
x                  hide the selected tag
X                  show all hidden tags again
w                  write the selected tag: what is sent is shown, and y sends it
m                  messages: outages, writes and their outcome
?  h               this help
q  Ctrl-C          end

Any other key leaves this page.)";

// Hexadecimal as well if that says more.
QString valueText(const ElementRange &run, std::uint32_t value)
{
    const QString text = QString::number(value);
    if (isBitArea(run.area))
        return text;
    const int digits = isCounterArea(run.area) ? 8 : 4;
    return text + " (0x" + QString::number(value, 16).toUpper().rightJustified(digits, '0') + ')';
}

} // namespace

QStringList requestTexts(const Assignment &assignment, int groupLimit)
{
    QStringList texts;
    auto next = assignment.values.begin();
    for (const ElementRange &run : writeRanges({assignment.tag}, groupLimit)) {
        QStringList values;
        for (const auto end = next + run.count; next != end; ++next)
            values.append(valueText(run, *next));
        texts.append(QString::number(run.station) + '#' + runName(run) + " = " + values.join(' '));
    }
    return texts;
}

std::optional<Assignment> LiveTable::takeWrite()
{
    return std::exchange(m_write, std::nullopt);
}

void LiveTable::addMessage(const QString &line)
{
    m_messages.push_back(line);
    if (m_messages.size() <= MOST_MESSAGES)
        return;
    m_messages.pop_front();
    ++m_forgotten;
}

QStringList LiveTable::messages() const
{
    QStringList lines;
    if (m_forgotten > 0)
        lines.append(QString("%1 lines before these are left out").arg(m_forgotten));
    for (const QString &line : m_messages)
        lines.append(line);
    return lines;
}

void LiveTable::take(const Key &key)
{
    m_notice.clear();
    m_columns = {};
    switch (m_mode) {
    case Mode::Table:
        if (!takeMove(key))
            takeCommand(key);
        break;
    case Mode::Filter:
        takeFilterKey(key);
        break;
    case Mode::Value:
        takeValueKey(key);
        break;
    case Mode::Confirm:
        takeConfirmKey(key);
        break;
    case Mode::Page:
        takePageKey(key);
        break;
    }
}

bool LiveTable::takeMove(const Key &key)
{
    if (key.kind == Key::Kind::Up || key.is("k"))
        m_view.move(-1);
    else if (key.kind == Key::Kind::Down || key.is("j"))
        m_view.move(1);
    else if (key.kind == Key::Kind::PageUp)
        m_view.moveByPage(-1);
    else if (key.kind == Key::Kind::PageDown)
        m_view.moveByPage(1);
    else if (key.kind == Key::Kind::Home || key.is("g"))
        m_view.moveToFirst();
    else if (key.kind == Key::Kind::End || key.is("G"))
        m_view.moveToLast();
    else
        return false;
    return true;
}

void LiveTable::takeCommand(const Key &key)
{
    if (key.is("q"))
        m_isLeft = true;
    else if (key.is("?") || key.is("h"))
        showPage(QString(HELP).split('\n'), 0);
    else if (key.is("m"))
        showPage(messages(), std::numeric_limits<int>::max());
    else if (key.is("/"))
        beginFilter();
    else if (key.kind == Key::Kind::Escape)
        m_view.setFilter({});
    else if (key.is("s"))
        m_view.sortByNext();
    else if (key.is("r"))
        m_view.reverse();
    else if (key.is(" "))
        m_view.freeze(QTime::currentTime().toString("HH:mm:ss"));
    else if (key.is("f"))
        m_view.changeFormat();
    else if (key.is("F"))
        m_view.changeAllFormats();
    else if (key.is("x"))
        m_view.hide();
    else if (key.is("X"))
        m_view.unhideAll();
    else if (key.is("w"))
        beginWrite();
    else
        m_notice = "? shows the keys";
}

void LiveTable::beginFilter()
{
    m_mode = Mode::Filter;
    m_oldFilter = m_view.filter();
    m_edit = LineEdit(m_oldFilter);
}

void LiveTable::takeFilterKey(const Key &key)
{
    const bool isCancelled = key.kind == Key::Kind::Escape;
    if (isCancelled || key.kind == Key::Kind::Enter)
        m_mode = Mode::Table;
    m_edit.take(key);
    m_view.setFilter(isCancelled ? m_oldFilter : m_edit.text());
}

void LiveTable::beginWrite()
{
    const WatchRow *row = m_view.selected();
    if (row == nullptr)
        return;
    if (m_write) {
        m_notice = "the write before has not begun yet";
        return;
    }
    try {
        requireWritable(row->tag);
    } catch (const Error &error) {
        m_notice = error.text();
        return;
    }
    m_asked = Assignment{row->tag, {}};
    // To change one of several values, but never old ones.
    const bool isOffered = row->tag.count > elementsPerNumber(row->tag) && !m_view.isFrozen() &&
                           row->state == WatchRow::State::Good;
    m_edit = LineEdit(isOffered ? row->text : QString());
    m_mode = Mode::Value;
}

void LiveTable::takeValueKey(const Key &key)
{
    if (key.kind == Key::Kind::Enter) {
        readValue();
    } else if (key.kind == Key::Kind::Escape) {
        m_mode = Mode::Table;
        m_notice = "nothing is written";
    } else {
        m_edit.take(key);
    }
}

void LiveTable::readValue()
{
    try {
        m_asked->values = parseValues(m_asked->tag, m_edit.text());
        requestTexts(*m_asked, m_groupLimit);
        m_isAllShown = false;
        m_mode = Mode::Confirm;
    } catch (const Error &error) {
        m_notice = error.text();
    }
}

// What was not shown is not sent.
void LiveTable::takeConfirmKey(const Key &key)
{
    if ((key.is("y") || key.is("Y")) && m_isAllShown) {
        m_mode = Mode::Table;
        m_write = std::exchange(m_asked, std::nullopt);
        m_notice = "writing " + m_write->tag.text;
    } else if (key.is("n") || key.is("N") || key.is("q") || key.kind == Key::Kind::Escape) {
        m_mode = Mode::Table;
        m_notice = "nothing is written";
    }
}

void LiveTable::showPage(const QStringList &lines, int top)
{
    m_mode = Mode::Page;
    m_page = lines;
    m_pageTop = top;
}

void LiveTable::takePageKey(const Key &key)
{
    const int page = std::max(1, m_size.lines - 1);
    if (key.kind == Key::Kind::Up || key.is("k"))
        m_pageTop -= 1;
    else if (key.kind == Key::Kind::Down || key.is("j"))
        m_pageTop += 1;
    else if (key.kind == Key::Kind::PageUp)
        m_pageTop -= page;
    else if (key.kind == Key::Kind::PageDown || key.is(" "))
        m_pageTop += page;
    else if (key.kind == Key::Kind::Home || key.is("g"))
        m_pageTop = 0;
    else if (key.kind == Key::Kind::End || key.is("G"))
        m_pageTop = std::numeric_limits<int>::max();
    else
        m_mode = Mode::Table;
}

} // namespace kmr
