// One tag in a plot.
#pragma once

#include "view/history.h"

#include <QColor>
#include <QString>

#include <qwt_plot_item.h>

namespace kmr {

// How a tag is shown.
struct TrendStyle {
    int id = 0;
    QString name;
    QString unit;
    bool isBit = false;
    bool isRight = false; // its axis
    double factor = 1;    // what is shown is the value times the factor, plus the offset
    double offset = 0;
    QColor colour;
    Qt::PenStyle pen = Qt::SolidLine;

    double shown(double value) const
    {
        return value * factor + offset;
    }
};

// Draws what a pixel can show. Gaps stay empty, writes are marked by a dashed line.
class TrendCurve : public QwtPlotItem {
public:
    // `history` must outlive it. `lane`: from the bottom, of a bit; else -1.
    TrendCurve(const History &history, TrendStyle style, int lane);

    void draw(QPainter *painter, const QwtScaleMap &xMap, const QwtScaleMap &yMap,
              const QRectF &canvas) const override;

    const TrendStyle &style() const
    {
        return m_style;
    }

private:
    double place(double value) const;
    void drawMarks(QPainter &painter, const QwtScaleMap &xMap, const QRectF &canvas) const;

    const History &m_history;
    const TrendStyle m_style;
    const int m_lane;
};

// The colour and the pen of the curve with this number, from 0: the pens change when the colours
// begin anew.
void giveLook(TrendStyle &style, int number);

} // namespace kmr
