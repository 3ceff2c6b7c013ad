#include "view/trend_curve.h"

#include <QPainter>

#include <qwt_painter.h>
#include <qwt_scale_map.h>

#include <cmath>

namespace kmr {

namespace {

constexpr double LANE_HEIGHT = 0.7; // of the room of a lane

// Colours that are told apart also by who sees few (Okabe and Ito), on light and on dark.
const QRgb COLOURS[] = {0xff0072b2, 0xffd55e00, 0xff009e73, 0xffcc79a7,
                        0xff56b4e9, 0xffe69f00, 0xff8c6bb1, 0xff7f7f7f};
const Qt::PenStyle PENS[] = {Qt::SolidLine, Qt::DashLine, Qt::DotLine, Qt::DashDotLine};

} // namespace

void giveLook(TrendStyle &style, int number)
{
    constexpr int COUNT = static_cast<int>(std::size(COLOURS));
    style.colour = QColor(COLOURS[number % COUNT]);
    style.pen = PENS[number / COUNT % static_cast<int>(std::size(PENS))];
}

TrendCurve::TrendCurve(const History &history, TrendStyle style, int lane)
    : QwtPlotItem(QwtText(style.name)), m_history(history), m_style(std::move(style)), m_lane(lane)
{
    setRenderHint(RenderAntialiased, m_lane < 0);
    setZ(20);
}

double TrendCurve::place(double value) const
{
    return m_lane < 0 ? m_style.shown(value) : m_lane + 0.15 + LANE_HEIGHT * (value != 0 ? 1 : 0);
}

void TrendCurve::draw(QPainter *painter, const QwtScaleMap &xMap, const QwtScaleMap &yMap,
                      const QRectF &canvas) const
{
    const std::vector<Sample> samples =
        m_history.series(m_style.id).drawn(xMap.s1(), xMap.s2(), static_cast<int>(canvas.width()));
    QPen pen(m_style.colour, m_lane < 0 ? 1.6 : 2, m_style.pen);
    if (static_cast<double>(samples.size()) >
        canvas.width()) { // its lines touch; as fast as can be
        pen.setWidth(1);
        pen.setCosmetic(true);
        painter->setRenderHint(QPainter::Antialiasing, false);
    }
    painter->setPen(pen);
    QPolygonF line;
    const auto end = [&] {
        if (line.size() > 1)
            QwtPainter::drawPolyline(painter, line);
        else if (!line.isEmpty())
            painter->drawPoint(line.front());
        line.clear();
    };
    for (const Sample &sample : samples) {
        if (std::isnan(sample.value)) {
            end();
            continue;
        }
        const QPointF point(xMap.transform(sample.time), yMap.transform(place(sample.value)));
        if (m_lane >= 0 && !line.isEmpty()) // a bit has no values in between
            line.append(QPointF(point.x(), line.back().y()));
        line.append(point);
    }
    end();
    drawMarks(*painter, xMap, canvas);
}

void TrendCurve::drawMarks(QPainter &painter, const QwtScaleMap &xMap, const QRectF &canvas) const
{
    painter.setPen(QPen(m_style.colour, 1, Qt::DashLine));
    for (const WriteMark &mark : m_history.marks()) {
        if (mark.id != m_style.id || mark.time < xMap.s1() || mark.time > xMap.s2())
            continue;
        const double x = xMap.transform(mark.time);
        painter.drawLine(QPointF(x, canvas.top()), QPointF(x, canvas.bottom()));
        painter.drawText(QPointF(x + 4, canvas.top() + 12), mark.text);
    }
}

} // namespace kmr
