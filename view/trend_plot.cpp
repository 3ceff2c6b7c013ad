#include "view/trend_plot.h"

#include "view/time_scale.h"

#include <QVBoxLayout>

#include <qwt_picker_machine.h>
#include <qwt_plot_canvas.h>
#include <qwt_plot_grid.h>
#include <qwt_plot_layout.h>
#include <qwt_plot_picker.h>
#include <qwt_plot_renderer.h>
#include <qwt_scale_engine.h>
#include <qwt_scale_widget.h>

#include <algorithm>
#include <cmath>

namespace kmr {

namespace {

constexpr double SHORTEST_SPAN = 0.01; // seconds
constexpr double LONGEST_SPAN = 366.0 * 86400;
constexpr int LANE_PIXELS = 26;
constexpr int AXIS_PIXELS = 64; // for the numbers, in both plots alike

// Names of the lanes instead of numbers.
class LaneScale : public QwtScaleDraw {
public:
    explicit LaneScale(QStringList names) : m_names(std::move(names)) {}

    QwtText label(double value) const override
    {
        return m_names.value(static_cast<int>(std::floor(value)));
    }

private:
    const QStringList m_names;
};

} // namespace

TrendPlot::TrendPlot(const History &history, QWidget *parent)
    : QWidget(parent), m_history(history), m_plot(makePlot(tr("Numbers over time"))),
      m_lanes(makePlot(tr("Bits over time")))
{
    setFocusPolicy(Qt::StrongFocus);
    setAccessibleName(tr("Trends"));
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_plot.get(), 1);
    layout->addWidget(m_lanes.get());
    makePicker(*m_plot);
    for (std::size_t plot = 0; plot < m_lines.size(); ++plot) {
        for (std::size_t line = 0; line < m_lines[plot].size(); ++line) {
            QwtPlotMarker &marker = m_lines[plot][line];
            marker.setLineStyle(QwtPlotMarker::VLine);
            marker.setLinePen(palette().color(QPalette::Text), 1,
                              line == 0 ? Qt::DotLine : Qt::SolidLine);
            marker.setLabel(QwtText(line == 0 ? "" : line == 1 ? "A" : "B"));
            marker.setLabelAlignment(Qt::AlignRight | Qt::AlignTop);
            marker.setZ(50);
            marker.setVisible(false);
            marker.attach(plot == 0 ? m_plot.get() : m_lanes.get());
        }
    }
    m_lanes->hide();
}

TrendPlot::~TrendPlot()
{
    for (auto &lines : m_lines) {
        for (QwtPlotMarker &line : lines)
            line.detach();
    }
    m_curves.clear();
}

std::unique_ptr<QwtPlot> TrendPlot::makePlot(const QString &name)
{
    auto plot = std::make_unique<QwtPlot>();
    plot->setAccessibleName(name);
    plot->setAutoReplot(false);
    plot->setMinimumSize(200, 80); // its own hint has room for every label
    plot->setAxisScaleDraw(QwtPlot::xBottom, new TimeScaleDraw);
    plot->axisScaleDraw(QwtPlot::yLeft)->setMinimumExtent(AXIS_PIXELS);
    plot->plotLayout()->setCanvasMargin(0);
    auto *canvas = static_cast<QwtPlotCanvas *>(plot->canvas());
    canvas->setFrameStyle(QFrame::NoFrame);
    canvas->setPalette(QPalette(palette().color(QPalette::Base)));
    canvas->setMouseTracking(true);
    canvas->installEventFilter(this);
    auto *grid = new QwtPlotGrid; // the plot deletes it
    QColor colour = palette().color(QPalette::Text);
    colour.setAlpha(40);
    grid->setPen(colour);
    grid->attach(plot.get());
    return plot;
}

// A rectangle that is drawn with the left button is what is shown next.
void TrendPlot::makePicker(QwtPlot &plot)
{
    auto *picker = new QwtPlotPicker(QwtPlot::xBottom, QwtPlot::yLeft, QwtPicker::RectRubberBand,
                                     QwtPicker::AlwaysOff, plot.canvas());
    picker->setStateMachine(new QwtPickerDragRectMachine);
    picker->setRubberBandPen(palette().color(QPalette::Highlight));
    plot.canvas()->setFocusPolicy(Qt::NoFocus); // the keys are for the plots together
    connect(picker, QOverload<const QRectF &>::of(&QwtPlotPicker::selected), this,
            [this](const QRectF &box) { zoomTo(box); });
}

void TrendPlot::setCurves(const std::vector<TrendStyle> &styles)
{
    m_curves.clear();
    QStringList names;
    bool isRightUsed = false;
    for (const TrendStyle &style : styles) {
        const int lane = style.isBit ? static_cast<int>(names.size()) : -1;
        if (style.isBit)
            names.append(style.name);
        auto curve = std::make_unique<TrendCurve>(m_history, style, lane);
        isRightUsed = isRightUsed || (!style.isBit && style.isRight);
        if (!style.isBit)
            curve->setYAxis(style.isRight ? QwtPlot::yRight : QwtPlot::yLeft);
        curve->attach(style.isBit ? m_lanes.get() : m_plot.get());
        m_curves.push_back(std::move(curve));
    }
    m_plot->enableAxis(QwtPlot::yRight, isRightUsed);
    m_lanes->enableAxis(QwtPlot::yRight, isRightUsed);
    m_plot->axisScaleDraw(QwtPlot::yRight)->setMinimumExtent(AXIS_PIXELS);
    auto *lanes = new LaneScale(names);
    lanes->setMinimumExtent(AXIS_PIXELS);
    m_lanes->setAxisScaleDraw(QwtPlot::yLeft, lanes);
    QList<double> ticks;
    for (int lane = 0; lane < names.size(); ++lane)
        ticks.append(lane + 0.5);
    m_lanes->setAxisScaleDiv(QwtPlot::yLeft,
                             QwtScaleDiv(0, std::max<double>(1, names.size()), {}, {}, ticks));
    m_lanes->setVisible(!names.isEmpty());
    m_lanes->setFixedHeight(static_cast<int>(names.size()) * LANE_PIXELS + 30);
    m_plot->enableAxis(QwtPlot::xBottom, names.isEmpty());
    draw();
}

void TrendPlot::follow(bool isFollowing)
{
    if (std::exchange(m_isFollowing, isFollowing) != isFollowing)
        emit followingChanged(isFollowing);
}

void TrendPlot::show(double from, double to)
{
    const double middle = (from + to) / 2;
    const double half = std::clamp(to - from, SHORTEST_SPAN, LONGEST_SPAN) / 2;
    m_from = middle - half;
    m_to = middle + half;
    draw();
}

void TrendPlot::showAll()
{
    const auto span = m_history.span();
    m_areValuesFitted = true;
    if (!span)
        return;
    follow(false);
    const double edge = (span->to - span->from) * 0.02;
    show(span->from - edge, span->to + edge);
}

void TrendPlot::refresh(double now)
{
    if (!m_isFollowing)
        return;
    const double span = m_to - m_from;
    m_to = now;
    m_from = now - span;
    draw();
}

void TrendPlot::setMarker(Marker which, std::optional<double> time)
{
    m_markers[which] = time;
    draw();
    emit lookedAtChanged();
}

// The least and the greatest value that is shown, with some room.
void TrendPlot::fitValues(QwtPlot::Axis axis)
{
    double least = HUGE_VAL;
    double most = -HUGE_VAL;
    for (const auto &curve : m_curves) {
        const TrendStyle &style = curve->style();
        if (style.isBit || curve->yAxis() != axis)
            continue;
        if (const auto figures = m_history.series(style.id).figures(m_from, m_to)) {
            least = std::min({least, style.shown(figures->least), style.shown(figures->most)});
            most = std::max({most, style.shown(figures->least), style.shown(figures->most)});
        }
    }
    if (!std::isfinite(most - least)) { // none, or more than a scale can show
        m_plot->setAxisScale(axis, 0, 1);
        return;
    }
    const double edge = most > least ? (most - least) * 0.06 : std::max(1.0, std::abs(most) * 0.1);
    m_plot->setAxisScale(axis, least - edge, most + edge);
}

void TrendPlot::draw()
{
    if (m_areValuesFitted) {
        fitValues(QwtPlot::yLeft);
        fitValues(QwtPlot::yRight);
    }
    const QwtScaleDiv times = timeScale(m_from, m_to, width() - AXIS_PIXELS);
    for (QwtPlot *plot : {m_plot.get(), m_lanes.get()}) {
        auto &lines = m_lines[plot == m_plot.get() ? 0 : 1];
        placeLine(lines[0], m_cursor);
        placeLine(lines[1], m_markers[A]);
        placeLine(lines[2], m_markers[B]);
        plot->setAxisScaleDiv(QwtPlot::xBottom, times);
        if (plot->isVisibleTo(this))
            plot->replot();
    }
}

void TrendPlot::placeLine(QwtPlotMarker &line, std::optional<double> time)
{
    line.setVisible(time.has_value());
    if (time)
        line.setXValue(*time);
}

void TrendPlot::render(QPainter &painter, const QRectF &box)
{
    QwtPlotRenderer renderer;
    renderer.setDiscardFlag(QwtPlotRenderer::DiscardBackground);
    const bool hasLanes = m_lanes->isVisibleTo(this);
    const double lanes = hasLanes ? box.height() * m_lanes->height() / std::max(1, height()) : 0;
    renderer.render(m_plot.get(), &painter, box.adjusted(0, 0, 0, -lanes));
    if (hasLanes)
        renderer.render(m_lanes.get(), &painter,
                        QRectF(box.left(), box.bottom() - lanes, box.width(), lanes));
}

} // namespace kmr
