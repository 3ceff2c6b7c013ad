#include "kmr/watch/table_view.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace kmr {

namespace {

QString nameOf(TableView::Order order)
{
    switch (order) {
    case TableView::Order::Name:
        return "by name";
    case TableView::Order::Value:
        return "by value";
    case TableView::Order::Quality:
        return "by quality";
    case TableView::Order::Age:
        return "by age";
    case TableView::Order::Changes:
        return "by changes";
    case TableView::Order::Given:
        break;
    }
    return {};
}

QString searchedText(const Tag &tag)
{
    return tag.text + ' ' + QString::number(tag.elements.station) + '#' + runName(tag.elements) +
           ' ' + tag.unit;
}

// Numbers come before texts, and these before nothing.
int kindOfValue(const WatchRow &row)
{
    return row.number ? 0 : row.text.isEmpty() ? 2 : 1;
}

bool isValueBefore(const WatchRow &left, const WatchRow &right)
{
    const int kind = kindOfValue(left);
    if (kind != kindOfValue(right))
        return kind < kindOfValue(right);
    return kind == 0 ? *left.number < *right.number : isNameBefore(left.text, right.text);
}

// What needs attention comes first.
int rank(WatchRow::State state)
{
    switch (state) {
    case WatchRow::State::Stale:
        return 0;
    case WatchRow::State::Unread:
        return 1;
    case WatchRow::State::Good:
        break;
    }
    return 2;
}

bool isAgeBefore(const WatchRow &left, const WatchRow &right)
{
    return left.age && (!right.age || *left.age < *right.age);
}

// The number that begins at `at`, which is moved after it: its digits without leading zeroes.
QString takeNumber(const QString &text, int &at)
{
    const int begin = at;
    while (at < text.size() && text[at].isDigit())
        ++at;
    int first = begin;
    while (first < at - 1 && text[first] == '0')
        ++first;
    return text.mid(first, at - first);
}

} // namespace

bool isNameBefore(const QString &left, const QString &right)
{
    int i = 0;
    int k = 0;
    while (i < left.size() && k < right.size()) {
        if (left[i].isDigit() && right[k].isDigit()) {
            const QString one = takeNumber(left, i);
            const QString other = takeNumber(right, k);
            if (one != other)
                return one.size() != other.size() ? one.size() < other.size() : one < other;
            continue;
        }
        const QChar one = left[i++].toCaseFolded();
        const QChar other = right[k++].toCaseFolded();
        if (one != other)
            return one < other;
    }
    return left.size() - i < right.size() - k;
}

TableView::TableView(const std::vector<WatchRow> &rows)
    : m_rows(rows), m_formats(rows.size(), NumberFormat::AsTag), m_isHidden(rows.size())
{
    for (const WatchRow &row : rows)
        m_searched.push_back(searchedText(row.tag));
    refresh();
}

void TableView::refresh()
{
    m_shown.clear();
    for (std::size_t index = 0; index < rows().size(); ++index) {
        if (isShown(index))
            m_shown.push_back(index);
    }
    std::stable_sort(m_shown.begin(), m_shown.end(), [this](std::size_t left, std::size_t right) {
        return m_isReversed ? isBefore(right, left) : isBefore(left, right);
    });
    if (m_order == Order::Given && m_isReversed)
        std::reverse(m_shown.begin(), m_shown.end());
    if (m_shown.empty())
        return;
    if (!isShown(m_selected))
        m_selected = m_shown[std::min(m_lastPosition, m_shown.size() - 1)];
    m_lastPosition = position();
    const std::size_t height = std::min(m_shown.size(), static_cast<std::size_t>(m_height));
    m_top = std::min(m_top, m_shown.size() - height);
}

void TableView::setHeight(int lines)
{
    if (std::exchange(m_height, std::max(1, lines)) != m_height)
        bringIntoView();
}

std::size_t TableView::end() const
{
    return std::min(m_shown.size(), m_top + static_cast<std::size_t>(m_height));
}

const WatchRow &TableView::row(std::size_t position) const
{
    return rows()[m_shown[position]];
}

const WatchRow *TableView::selected() const
{
    return m_shown.empty() ? nullptr : &rows()[m_selected];
}

void TableView::move(int places)
{
    if (m_shown.empty())
        return;
    const auto last = static_cast<std::ptrdiff_t>(m_shown.size()) - 1;
    const auto wanted = static_cast<std::ptrdiff_t>(position()) + places;
    m_selected = m_shown[static_cast<std::size_t>(std::clamp<std::ptrdiff_t>(wanted, 0, last))];
    bringIntoView();
}

void TableView::moveToFirst()
{
    move(-static_cast<int>(m_shown.size()));
}

void TableView::moveToLast()
{
    move(static_cast<int>(m_shown.size()));
}

void TableView::setFilter(const QString &text)
{
    m_filter = text;
    bringIntoView();
}

void TableView::sortByNext()
{
    m_order = m_order == Order::Changes ? Order::Given
                                        : static_cast<Order>(static_cast<int>(m_order) + 1);
    bringIntoView();
}

void TableView::reverse()
{
    m_isReversed = !m_isReversed;
    bringIntoView();
}

void TableView::freeze(const QString &now)
{
    if (m_frozen)
        m_frozen.reset();
    else
        m_frozen = m_rows;
    m_frozenAt = now;
    refresh();
}

void TableView::changeFormat()
{
    if (!m_shown.empty())
        m_formats[m_selected] = nextFormat(m_formats[m_selected]);
}

// All alike, whatever each had before.
void TableView::changeAllFormats()
{
    if (m_shown.empty())
        return;
    const NumberFormat format = nextFormat(m_formats[m_selected]);
    std::fill(m_formats.begin(), m_formats.end(), format);
}

void TableView::hide()
{
    if (!m_shown.empty())
        m_isHidden[m_selected] = true;
    bringIntoView();
}

void TableView::unhideAll()
{
    std::fill(m_isHidden.begin(), m_isHidden.end(), false);
    bringIntoView();
}

QStringList TableView::facts() const
{
    QStringList facts;
    const QString all = m_rows.size() == 1 ? "1 tag" : QString("%1 tags").arg(m_rows.size());
    facts.append(
        m_shown.size() == m_rows.size() ? all : QString("%1 of %2").arg(m_shown.size()).arg(all));
    if (!m_filter.isEmpty())
        facts.append("filter " + m_filter);
    const auto hidden = std::count(m_isHidden.begin(), m_isHidden.end(), true);
    if (hidden > 0)
        facts.append(QString("%1 hidden").arg(hidden));
    if (m_order != Order::Given)
        facts.append(nameOf(m_order));
    if (m_isReversed)
        facts.append("reversed");
    if (m_frozen)
        facts.append("frozen since " + m_frozenAt);
    return facts;
}

bool TableView::isShown(std::size_t index) const
{
    return !m_isHidden[index] &&
           (m_filter.isEmpty() || m_searched[index].contains(m_filter, Qt::CaseInsensitive));
}

bool TableView::isBefore(std::size_t left, std::size_t right) const
{
    const WatchRow &one = rows()[left];
    const WatchRow &other = rows()[right];
    switch (m_order) {
    case Order::Name:
        return isNameBefore(one.tag.text, other.tag.text);
    case Order::Value:
        return isValueBefore(one, other);
    case Order::Quality:
        return rank(one.state) < rank(other.state);
    case Order::Age:
        return isAgeBefore(one, other);
    case Order::Changes:
        return one.changes < other.changes;
    case Order::Given:
        break;
    }
    return false;
}

// Of the selected row.
std::size_t TableView::position() const
{
    return static_cast<std::size_t>(std::find(m_shown.begin(), m_shown.end(), m_selected) -
                                    m_shown.begin());
}

void TableView::bringIntoView()
{
    refresh();
    if (m_shown.empty())
        return;
    const std::size_t height = static_cast<std::size_t>(m_height);
    const std::size_t selected = position();
    if (selected < m_top)
        m_top = selected;
    else if (selected >= m_top + height)
        m_top = selected - height + 1;
}

} // namespace kmr
