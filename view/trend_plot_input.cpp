// What mouse and keys do in the plots of a trend.
#include "view/trend_plot.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QWheelEvent>

#include <qwt_scale_map.h>

#include <algorithm>
#include <cmath>

namespace kmr {

namespace {

constexpr double ZOOM_STEP = 0.8;
constexpr double PAN_STEP = 0.1;

} // namespace

void TrendPlot::zoom(double factor, double around)
{
    if (m_isFollowing) // the newest stays
        around = m_to;
    show(around - (around - m_from) * factor, around + (m_to - around) * factor);
}

void TrendPlot::zoomValues(double factor)
{
    m_areValuesFitted = false;
    for (const QwtPlot::Axis axis : {QwtPlot::yLeft, QwtPlot::yRight}) {
        const QwtInterval old = m_plot->axisInterval(axis);
        const double middle = (old.minValue() + old.maxValue()) / 2;
        const double half = old.width() * factor / 2;
        m_plot->setAxisScale(axis, middle - half, middle + half);
    }
    draw();
}

void TrendPlot::zoomTo(const QRectF &box)
{
    constexpr int FEWEST_PIXELS = 5;
    const QwtScaleMap map = m_plot->canvasMap(QwtPlot::xBottom);
    if (std::abs(map.transform(box.right()) - map.transform(box.left())) < FEWEST_PIXELS)
        return; // a click
    const QwtInterval left = m_plot->axisInterval(QwtPlot::yLeft);
    const QwtInterval right = m_plot->axisInterval(QwtPlot::yRight);
    const auto onRight = [&](double value) {
        return right.minValue() + (value - left.minValue()) / left.width() * right.width();
    };
    follow(false);
    if (box.height() > 0) {
        m_areValuesFitted = false;
        m_plot->setAxisScale(QwtPlot::yRight, onRight(box.top()), onRight(box.bottom()));
        m_plot->setAxisScale(QwtPlot::yLeft, box.top(), box.bottom());
    }
    show(box.left(), box.right());
}

void TrendPlot::pan(double share)
{
    const double way = (m_to - m_from) * share;
    follow(false);
    show(m_from + way, m_to + way);
}

bool TrendPlot::eventFilter(QObject *watched, QEvent *event)
{
    const auto *canvas = qobject_cast<QWidget *>(watched);
    if (canvas == nullptr)
        return false;
    const auto timeAt = [&](double x) {
        return m_from + (m_to - m_from) * x / std::max(1, canvas->width());
    };
    switch (event->type()) {
    case QEvent::Wheel:
        wheel(*static_cast<QWheelEvent *>(event),
              timeAt(static_cast<QWheelEvent *>(event)->position().x()));
        return true;
    case QEvent::MouseButtonPress:
        setFocus(Qt::MouseFocusReason);
        if (static_cast<QMouseEvent *>(event)->button() == Qt::MiddleButton)
            m_dragFrom = static_cast<QMouseEvent *>(event)->x();
        return false;
    case QEvent::MouseButtonRelease:
        m_dragFrom.reset();
        return false;
    case QEvent::MouseMove:
        if (m_dragFrom)
            dragged(static_cast<QMouseEvent *>(event)->x(), canvas->width());
        moved(timeAt(static_cast<QMouseEvent *>(event)->x()));
        return false;
    default:
        return false;
    }
}

void TrendPlot::wheel(const QWheelEvent &event, double time)
{
    const double factor = event.angleDelta().y() > 0 ? ZOOM_STEP : 1 / ZOOM_STEP;
    if (event.modifiers().testFlag(Qt::ControlModifier))
        zoomValues(factor);
    else
        zoom(factor, time);
}

void TrendPlot::moved(double time)
{
    m_cursor = time;
    draw();
    emit lookedAtChanged();
}

void TrendPlot::dragged(int pixels, int width)
{
    pan(static_cast<double>(*m_dragFrom - pixels) / std::max(1, width));
    m_dragFrom = pixels;
}

void TrendPlot::keyPressEvent(QKeyEvent *event)
{
    const double middle = (m_from + m_to) / 2;
    const double looked = m_cursor && *m_cursor > m_from && *m_cursor < m_to ? *m_cursor : middle;
    switch (event->key()) {
    case Qt::Key_Left:
    case Qt::Key_Right:
        if (event->modifiers().testFlag(Qt::ShiftModifier)) // moves the cursor
            moved(looked + (event->key() == Qt::Key_Left ? -1 : 1) * (m_to - m_from) / 200);
        else
            pan(event->key() == Qt::Key_Left ? -PAN_STEP : PAN_STEP);
        break;
    case Qt::Key_Plus:
        zoom(ZOOM_STEP, looked);
        break;
    case Qt::Key_Minus:
        zoom(1 / ZOOM_STEP, looked);
        break;
    case Qt::Key_Up:
    case Qt::Key_Down:
        zoomValues(event->key() == Qt::Key_Up ? ZOOM_STEP : 1 / ZOOM_STEP);
        break;
    case Qt::Key_Home:
        showAll();
        break;
    case Qt::Key_Space:
        follow(!m_isFollowing);
        break;
    case Qt::Key_Escape:
        setMarker(A, {});
        setMarker(B, {});
        break;
    case Qt::Key_A:
        setMarker(A, looked);
        break;
    case Qt::Key_B:
        setMarker(B, looked);
        break;
    default:
        QWidget::keyPressEvent(event);
    }
}

} // namespace kmr
