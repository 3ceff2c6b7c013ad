// Draws what a request reads: each element as a cell, full when it is asked for, hatched when it is
// only read along.
#pragma once

#include <QStyledItemDelegate>

namespace kmr {

class PlanMapDelegate : public QStyledItemDelegate {
public:
    static constexpr int CELLS_ROLE = Qt::UserRole; // QByteArray: one of these for each element
    static constexpr char ASKED = 'a';
    static constexpr char UNASKED = 'u';

    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override;
};

} // namespace kmr
