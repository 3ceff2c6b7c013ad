// The plots of a trend, curves above and bits as lanes below, over one span of time, and what mouse
// and keys do in them.
#pragma once

#include "view/trend_curve.h"

#include <QWidget>

#include <qwt_plot.h>
#include <qwt_plot_marker.h>

#include <array>
#include <memory>
#include <optional>
#include <vector>

namespace kmr {

class TrendPlot : public QWidget {
    Q_OBJECT

public:
    // `history` must outlive it.
    explicit TrendPlot(const History &history, QWidget *parent = nullptr);
    ~TrendPlot() override;

    // What is shown, from now on.
    void setCurves(const std::vector<TrendStyle> &styles);

    // While it follows, the span ends now; moving through time ends that.
    bool isFollowing() const
    {
        return m_isFollowing;
    }
    void follow(bool isFollowing);

    double from() const
    {
        return m_from;
    }
    double to() const
    {
        return m_to;
    }
    void show(double from, double to);

    // The whole history, with values that fit.
    void showAll();

    // Draws what is new. To be called some times a second.
    void refresh(double now);

    // Where the mouse points, and the two markers; nothing: nowhere.
    std::optional<double> cursor() const
    {
        return m_cursor;
    }
    enum Marker { A, B, MARKERS };
    std::optional<double> marker(Marker which) const
    {
        return m_markers[which];
    }
    void setMarker(Marker which, std::optional<double> time);

    // Draws the same for a picture.
    void render(QPainter &painter, const QRectF &box);

signals:
    void followingChanged(bool isFollowing);
    void lookedAtChanged(); // cursor or markers

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    std::unique_ptr<QwtPlot> makePlot(const QString &name);
    void makePicker(QwtPlot &plot);
    void zoom(double factor, double around);
    void zoomValues(double factor);
    void zoomTo(const QRectF &box);
    void pan(double share);
    void wheel(const QWheelEvent &event, double time);
    void moved(double time);
    void dragged(int pixels, int width);
    void fitValues(QwtPlot::Axis axis);
    void draw();
    void placeLine(QwtPlotMarker &line, std::optional<double> time);

    const History &m_history;
    std::unique_ptr<QwtPlot> m_plot;  // of numbers
    std::unique_ptr<QwtPlot> m_lanes; // of bits
    std::vector<std::unique_ptr<TrendCurve>> m_curves;
    std::array<std::array<QwtPlotMarker, 3>, 2> m_lines; // by plot: cursor, A and B
    double m_from = 0;
    double m_to = 60;
    bool m_isFollowing = true;
    bool m_areValuesFitted = true;
    std::optional<double> m_cursor;
    std::array<std::optional<double>, MARKERS> m_markers;
    std::optional<int> m_dragFrom; // pixel, while the middle button moves the span
};

} // namespace kmr
