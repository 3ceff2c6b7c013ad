// What the table of values shows in its cells.
#include "view/quality_icon.h"
#include "view/values_model.h"

#include <QFont>
#include <QGuiApplication>
#include <QPalette>

#include <cmath>

namespace kmr {

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

QVariant ValuesModel::data(const QModelIndex &index, int role) const
{
    const int heading = headingAt(index.row());
    if (heading >= 0)
        return headingData(m_headings[static_cast<std::size_t>(heading)], index.column(), role);
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

QVariant ValuesModel::headingData(const Heading &heading, int column, int role) const
{
    const bool isCollapsed = m_collapsed.contains(heading.name);
    switch (role) {
    case Qt::DisplayRole:
        if (column == TAG)
            return QString::fromUtf8(isCollapsed ? "▸ %1 (%2)" : "▾ %1 (%2)")
                .arg(heading.name)
                .arg(heading.count);
        if (column == QUALITY)
            return heading.bad == 0 ? qualityName(Quality::Good)
                                    : tr("%1 not good").arg(heading.bad);
        return {};
    case ID_ROLE:
        return 0;
    case Qt::DecorationRole:
        return column == QUALITY ? qualityIcon(heading.bad == 0 ? Quality::Good : Quality::Stale)
                                 : QVariant();
    case Qt::AccessibleDescriptionRole:
    case Qt::ToolTipRole:
        return isCollapsed ? tr("A group; a click shows its tags")
                           : tr("A group; a click hides its tags");
    case Qt::FontRole: {
        QFont font = QGuiApplication::font();
        font.setBold(true);
        return font;
    }
    case Qt::BackgroundRole:
        return QGuiApplication::palette().brush(QPalette::Button);
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
    if (!row.values.empty())
        tip += '\n' + withUnit(row.polled.tag, row.values);
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

} // namespace kmr
