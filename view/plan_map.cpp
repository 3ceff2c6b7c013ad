#include "view/plan_map.h"

#include "view/quality_icon.h"

#include <QPainter>

#include <algorithm>

namespace kmr {

void PlanMapDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option,
                            const QModelIndex &index) const
{
    QStyledItemDelegate::paint(painter, option, index);
    const QByteArray cells = index.data(CELLS_ROLE).toByteArray();
    if (cells.isEmpty())
        return;
    const QRect box = option.rect.adjusted(4, 4, -4, -4);
    const int width = std::min(14, box.width() / std::max(1, static_cast<int>(cells.size())));
    for (int i = 0; i < cells.size(); ++i) {
        const QRect cell(box.left() + i * width, box.top(), std::max(2, width - 1), box.height());
        const bool isAsked = cells[i] == ASKED;
        painter->fillRect(cell, isAsked ? QBrush(goodColour())
                                        : QBrush(doubtfulColour(), Qt::BDiagPattern));
        if (!isAsked) {
            painter->setPen(doubtfulColour());
            painter->drawRect(cell.adjusted(0, 0, -1, -1));
        }
    }
}

} // namespace kmr
