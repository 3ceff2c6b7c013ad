#include "view/values_model.h"

#include "view/quality_icon.h"

#include <QFont>

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

QString qualityName(Quality quality)
{
    switch (quality) {
    case Quality::Good:
        return ValuesModel::tr("good");
    case Quality::Stale:
        return ValuesModel::tr("stale");
    case Quality::Unread:
        break;
    }
    return ValuesModel::tr("pending");
}

std::vector<double> numbersOf(const Tag &tag, const Values &values)
{
    const bool isPlain = tag.type == ValueType::Plain && !tag.scaling;
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
    m_index.clear();
    endResetModel();
}

void ValuesModel::add(const PolledTag &tag, const QString &comment)
{
    const int row = static_cast<int>(m_rows.size());
    beginInsertRows({}, row, row);
    ValueRow added;
    added.polled = tag;
    added.address = addressOf(tag.tag);
    added.comment = comment;
    m_rows.push_back(std::move(added));
    reindex();
    endInsertRows();
}

void ValuesModel::remove(int id)
{
    const auto found = m_index.find(id);
    if (found == m_index.end())
        return;
    const int row = static_cast<int>(found->second);
    beginRemoveRows({}, row, row);
    m_rows.erase(m_rows.begin() + row);
    reindex();
    endRemoveRows();
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
    if (!m_rows.empty())
        emit dataChanged(index(0, VALUE), index(static_cast<int>(m_rows.size()) - 1, CHANGES));
}

int ValuesModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_rows.size());
}

int ValuesModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : COLUMNS;
}

QVariant ValuesModel::data(const QModelIndex &index, int role) const
{
    const ValueRow &row = m_rows[static_cast<std::size_t>(index.row())];
    switch (role) {
    case Qt::DisplayRole:
        return text(row, index.column());
    case SORT_ROLE:
        return sortKey(row, index.column());
    case ID_ROLE:
        return row.polled.id;
    case QUALITY_ROLE:
        return static_cast<int>(row.quality);
    case STILL_ROLE:
        return row.lastChange > 0 ? m_now - row.lastChange : 1e9;
    case COURSE_ROLE: {
        QVariantList course;
        for (const double number : row.course)
            course.append(number);
        return course;
    }
    case Qt::DecorationRole:
        return index.column() == QUALITY ? qualityIcon(row.quality) : QVariant();
    case Qt::ToolTipRole:
    case Qt::AccessibleDescriptionRole:
        return toolTip(row);
    case Qt::TextAlignmentRole:
        return index.column() == VALUE || index.column() == CHANGES || index.column() == AGE
                   ? static_cast<int>(Qt::AlignRight | Qt::AlignVCenter)
                   : static_cast<int>(Qt::AlignLeft | Qt::AlignVCenter);
    default:
        return {};
    }
}

QVariant ValuesModel::text(const ValueRow &row, int column) const
{
    switch (column) {
    case TAG:
        return row.polled.tag.text;
    case ADDRESS:
        return row.address;
    case VALUE:
        return row.values.empty() ? QString("–") : row.text;
    case UNIT:
        return row.polled.tag.unit;
    case QUALITY:
        return row.quality == Quality::Stale ? qualityName(row.quality) + ": " + row.cause
                                             : qualityName(row.quality);
    case AGE: {
        if (row.lastGood == 0)
            return QString("–");
        const double age = std::max(0.0, m_now - row.lastGood);
        return tr("%1 s").arg(age, 0, 'f', age < 10 ? 1 : 0);
    }
    case CHANGES:
        return QString::number(row.changes);
    default:
        return {};
    }
}

QVariant ValuesModel::sortKey(const ValueRow &row, int column) const
{
    switch (column) {
    case VALUE:
        return row.numbers.empty() || std::isnan(row.numbers.front()) ? -HUGE_VAL
                                                                      : row.numbers.front();
    case QUALITY: // the bad ones first
        return row.quality == Quality::Stale ? 0 : row.quality == Quality::Unread ? 1 : 2;
    case AGE:
        return m_now - row.lastGood;
    case CHANGES:
    case COURSE:
        return QVariant::fromValue(static_cast<qulonglong>(row.changes));
    case ADDRESS: {
        const ElementRange &elements = row.polled.tag.elements;
        return QString("%1 %2 %3")
            .arg(elements.station, 2, 10, QChar('0'))
            .arg(elements.area)
            .arg(elements.first, 6, 10, QChar('0'));
    }
    default:
        return text(row, column);
    }
}

QString ValuesModel::toolTip(const ValueRow &row) const
{
    QString tip = tr("%1, %2: %3").arg(row.polled.tag.text, row.address, qualityName(row.quality));
    if (!row.cause.isEmpty())
        tip += ", " + row.cause;
    if (!row.comment.isEmpty())
        tip += '\n' + row.comment;
    if (!whyNotWritable(row.polled.tag).isEmpty())
        tip += '\n' + tr("Can only be read.");
    return tip;
}

QVariant ValuesModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QAbstractTableModel::headerData(section, orientation, role);
    const QStringList names = {tr("Tag"),    tr("Value"), tr("Unit"),    tr("Quality"),
                               tr("Course"), tr("Age"),   tr("Changes"), tr("Address")};
    return names.value(section);
}

Qt::ItemFlags ValuesModel::flags(const QModelIndex &index) const
{
    return QAbstractTableModel::flags(index) | Qt::ItemIsDragEnabled;
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
        if (index.column() != TAG)
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
