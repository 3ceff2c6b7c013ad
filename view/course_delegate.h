// Draws the course of a value as a small line, from the left, the newest, to the right.
#pragma once

#include <QStyledItemDelegate>

namespace kmr {

class CourseDelegate : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override;
};

} // namespace kmr
