#include "view/course_delegate.h"

#include "view/values_model.h"

#include <QPainter>

#include <algorithm>

namespace kmr {

void CourseDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option,
                           const QModelIndex &index) const
{
    QStyledItemDelegate::paint(painter, option, index);
    const QVariantList course = index.data(ValuesModel::COURSE_ROLE).toList();
    if (course.size() < 2)
        return;
    double least = course.front().toDouble();
    double most = least;
    for (const QVariant &number : course) {
        least = std::min(least, number.toDouble());
        most = std::max(most, number.toDouble());
    }
    const QRectF box = QRectF(option.rect).adjusted(4, 4, -4, -4);
    const double step = box.width() / (course.size() - 1);
    const double scale = most > least ? box.height() / (most - least) : 0;
    QPolygonF line; // in steps: each number is held until the next
    for (int i = 0; i < course.size(); ++i) {
        const QPointF point(box.left() + step * i,
                            box.bottom() - (course[i].toDouble() - least) * scale);
        if (!line.isEmpty())
            line << QPointF(point.x(), line.back().y());
        line << point;
    }
    const bool isSelected = option.state.testFlag(QStyle::State_Selected);
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(
        QPen(option.palette.color(isSelected ? QPalette::HighlightedText : QPalette::Text), 1.2));
    painter->drawPolyline(line);
    painter->restore();
}

} // namespace kmr
