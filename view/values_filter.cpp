#include "view/values_filter.h"

#include <algorithm>

namespace kmr {

namespace {

constexpr double MOVING_SECONDS = 10;

} // namespace

ValuesFilter::ValuesFilter(ValuesModel &model, QObject *parent)
    : QSortFilterProxyModel(parent), m_model(model)
{
    setSourceModel(&model);
    setSortRole(ValuesModel::SORT_ROLE);
}

void ValuesFilter::set(const QString &text, Kind kind)
{
    m_text = text;
    m_kind = kind;
    invalidateFilter();
}

void ValuesFilter::sort(int column, Qt::SortOrder order)
{
    m_isAsAdded = column < 0;
    const bool isGrouped = m_model.grouping() != Grouping::None;
    QSortFilterProxyModel::sort(m_isAsAdded && isGrouped ? 0 : column,
                                m_isAsAdded ? Qt::AscendingOrder : order);
}

// A heading as long as one of its tags is.
bool ValuesFilter::filterAcceptsRow(int row, const QModelIndex &) const
{
    const int heading = m_model.headingAt(row);
    const int group = m_model.groupAt(row);
    if (heading < 0)
        return isWanted(row) && (group < 0 || !m_model.isCollapsed(group));
    if (m_text.isEmpty() && m_kind == ALL)
        return true;
    const int tags = static_cast<int>(m_model.rows().size());
    for (int tag = 0; tag < tags; ++tag) {
        if (m_model.groupAt(tag) == heading && isWanted(tag))
            return true;
    }
    return false;
}

bool ValuesFilter::isWanted(int row) const
{
    const QModelIndex index = m_model.index(row, ValuesModel::QUALITY);
    const bool isMoving = index.data(ValuesModel::STILL_ROLE).toDouble() < MOVING_SECONDS;
    const bool isGood =
        index.data(ValuesModel::QUALITY_ROLE).toInt() == static_cast<int>(Quality::Good);
    if ((m_kind == NOT_GOOD && isGood) || (m_kind == MOVING && !isMoving) ||
        (m_kind == STILL && isMoving))
        return false;
    if (m_text.isEmpty())
        return true;
    const int columns[] = {ValuesModel::TAG, ValuesModel::ADDRESS, ValuesModel::UNIT};
    return std::any_of(std::begin(columns), std::end(columns), [&](int column) {
        return m_model.index(row, column).data().toString().contains(m_text, Qt::CaseInsensitive);
    });
}

bool ValuesFilter::lessThan(const QModelIndex &left, const QModelIndex &right) const
{
    const bool isUp = sortOrder() == Qt::AscendingOrder;
    const int leftGroup = m_model.groupAt(left.row());
    const int rightGroup = m_model.groupAt(right.row());
    if (leftGroup != rightGroup)
        return (leftGroup < rightGroup) == isUp;
    const bool isLeftHeading = m_model.headingAt(left.row()) >= 0;
    const bool isRightHeading = m_model.headingAt(right.row()) >= 0;
    if (isLeftHeading != isRightHeading)
        return isLeftHeading == isUp;
    return m_isAsAdded ? left.row() < right.row() : QSortFilterProxyModel::lessThan(left, right);
}

} // namespace kmr
