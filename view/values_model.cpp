#include "view/values_model.h"

#include <algorithm>
#include <cmath>

namespace kmr {

namespace {

constexpr std::size_t COURSE_LENGTH = 60;

QString addressOf(const Tag &tag)
{
    const QString bit = tag.kind == ElementKind::WordBit ? QString(".%1").arg(tag.firstBit) : "";
    return QString("%1#%2%3").arg(tag.elements.station).arg(runName(tag.elements), bit);
}

} // namespace

const char *const ValuesModel::MIME_TYPE = "application/x-kmr-tags";

std::vector<double> numbersOf(const Tag &tag, const Values &values)
{
    const bool isPlain =
        (tag.type == ValueType::Plain || tag.type == ValueType::Hex) && !tag.scaling;
    if (isPlain || !tag.texts.empty()) // most, and at once; of a text the number that it stands for
        return {values.begin(), values.end()};
    std::vector<double> numbers;
    for (const Value &value : interpret(tag, values)) {
        numbers.push_back(std::visit(
            [](const auto &shown) {
                if constexpr (std::is_same_v<std::decay_t<decltype(shown)>, QString>)
                    return std::nan("");
                else
                    return static_cast<double>(shown);
            },
            value));
    }
    return numbers;
}

ValuesModel::ValuesModel(QObject *parent) : QAbstractTableModel(parent) {}

void ValuesModel::clear()
{
    beginResetModel();
    m_rows.clear();
    m_headings.clear();
    m_index.clear();
    endResetModel();
}

void ValuesModel::setGrouping(Grouping grouping)
{
    m_grouping = grouping;
    regroup();
}

void ValuesModel::toggle(int heading)
{
    const QString &name = m_headings[static_cast<std::size_t>(heading)].name;
    if (!m_collapsed.remove(name))
        m_collapsed.insert(name);
    emit dataChanged(index(headingRow(heading), 0), index(headingRow(heading), COLUMNS - 1));
}

// If the headings changed, replaces all of them.
void ValuesModel::regroup()
{
    std::vector<Heading> headings = headingsOf(m_rows, m_grouping);
    if (headings.size() != m_headings.size()) {
        if (!m_headings.empty()) {
            beginRemoveRows({}, headingRow(0), rowCount() - 1);
            m_headings.clear();
            endRemoveRows();
        }
        if (!headings.empty()) {
            beginInsertRows({}, headingRow(0), headingRow(static_cast<int>(headings.size())) - 1);
            m_headings = headings;
            endInsertRows();
        }
    }
    m_headings = std::move(headings);
    if (rowCount() > 0)
        emit dataChanged(index(0, 0), index(rowCount() - 1, COLUMNS - 1));
}

void ValuesModel::add(const std::vector<NewTag> &tags)
{
    if (tags.empty())
        return;
    const int row = static_cast<int>(m_rows.size());
    beginInsertRows({}, row, row + static_cast<int>(tags.size()) - 1);
    for (const NewTag &tag : tags) {
        ValueRow added;
        added.polled = tag.polled;
        added.address = addressOf(tag.polled.tag);
        added.comment = tag.comment;
        m_rows.push_back(std::move(added));
    }
    reindex();
    endInsertRows();
    if (m_grouping != Grouping::None)
        regroup();
}

void ValuesModel::remove(const std::vector<int> &ids)
{
    std::vector<int> rows;
    for (const int id : ids) {
        const auto found = m_index.find(id);
        if (found == m_index.end())
            continue;
        rows.push_back(static_cast<int>(found->second));
        m_index.erase(found);
    }
    std::sort(rows.rbegin(), rows.rend()); // the last first: the rows before stay where they are
    for (const int row : rows) {
        beginRemoveRows({}, row, row);
        m_rows.erase(m_rows.begin() + row);
        endRemoveRows();
    }
    reindex();
    if (m_grouping != Grouping::None)
        regroup();
}

void ValuesModel::replace(const PolledTag &tag)
{
    const auto found = m_index.find(tag.id);
    if (found == m_index.end())
        return;
    ValueRow &row = m_rows[found->second];
    const bool isSame = row.polled.tag.elements == tag.tag.elements;
    row.polled = tag;
    row.address = addressOf(tag.tag);
    row.course.clear();
    if (!isSame) {
        row.values.clear();
        row.quality = Quality::Unread;
    }
    row.numbers = row.values.empty() ? std::vector<double>() : numbersOf(tag.tag, row.values);
    row.text = row.values.empty() ? QString() : formatValues(tag.tag, row.values);
    const int place = static_cast<int>(found->second);
    emit dataChanged(index(place, 0), index(place, COLUMNS - 1));
    if (m_grouping != Grouping::None)
        regroup();
}

const ValueRow *ValuesModel::find(int id) const
{
    const auto found = m_index.find(id);
    return found == m_index.end() ? nullptr : &m_rows[found->second];
}

std::vector<PolledTag> ValuesModel::polled() const
{
    std::vector<PolledTag> tags;
    tags.reserve(m_rows.size());
    for (const ValueRow &row : m_rows)
        tags.push_back(row.polled);
    return tags;
}

void ValuesModel::take(const TagNews &news)
{
    const auto found = m_index.find(news.id);
    if (found == m_index.end())
        return;
    ValueRow &row = m_rows[found->second];
    row.quality = news.quality;
    row.cause = news.cause;
    if (news.quality == Quality::Good)
        row.lastGood = news.time;
    if (news.values.empty())
        return;
    const std::size_t wanted = row.polled.tag.kind == ElementKind::WordBit
                                   ? static_cast<std::size_t>(row.polled.tag.count)
                                   : static_cast<std::size_t>(row.polled.tag.elements.count);
    if (news.values.size() != wanted)
        return; // of an older format
    row.changes += row.values.empty() ? 0 : 1;
    row.lastChange = news.time;
    row.values = news.values;
    row.text = formatValues(row.polled.tag, row.values);
    row.numbers = numbersOf(row.polled.tag, row.values);
    if (row.numbers.empty() || !std::isfinite(row.numbers.front()))
        return;
    row.course.push_back(row.numbers.front());
    if (row.course.size() > COURSE_LENGTH)
        row.course.pop_front();
}

void ValuesModel::refresh(double now)
{
    m_now = now;
    for (Heading &heading : m_headings)
        heading.bad = 0;
    for (const ValueRow &row : m_rows) {
        if (!m_headings.empty() && row.quality != Quality::Good)
            ++m_headings[static_cast<std::size_t>(row.group)].bad;
    }
    if (!m_rows.empty())
        emit dataChanged(index(0, VALUE), index(rowCount() - 1, CHANGES));
}

int ValuesModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : headingRow(static_cast<int>(m_headings.size()));
}

int ValuesModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : COLUMNS;
}

Qt::ItemFlags ValuesModel::flags(const QModelIndex &index) const
{
    const bool isTag = index.isValid() && headingAt(index.row()) < 0;
    return QAbstractTableModel::flags(index) | (isTag ? Qt::ItemIsDragEnabled : Qt::NoItemFlags);
}

QStringList ValuesModel::mimeTypes() const
{
    return {MIME_TYPE, "text/plain"};
}

QMimeData *ValuesModel::mimeData(const QModelIndexList &indexes) const
{
    QStringList ids;
    QStringList texts;
    for (const QModelIndex &index : indexes) {
        if (index.column() != TAG || headingAt(index.row()) >= 0)
            continue;
        const ValueRow &row = m_rows[static_cast<std::size_t>(index.row())];
        ids.append(QString::number(row.polled.id));
        texts.append(row.polled.tag.text);
    }
    auto *data = new QMimeData;
    data->setData(MIME_TYPE, ids.join(' ').toLatin1());
    data->setText(texts.join('\n'));
    return data;
}

void ValuesModel::reindex()
{
    m_index.clear();
    for (std::size_t i = 0; i < m_rows.size(); ++i)
        m_index[m_rows[i].polled.id] = i;
}

} // namespace kmr
