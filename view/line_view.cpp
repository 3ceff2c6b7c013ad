#include "view/line_view.h"

#include "view/duration_text.h"
#include "view/quality_icon.h"
#include "view/time_scale.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QVBoxLayout>

#include <qwt_legend.h>
#include <qwt_plot.h>
#include <qwt_plot_canvas.h>
#include <qwt_plot_curve.h>
#include <qwt_plot_grid.h>
#include <qwt_plot_histogram.h>
#include <qwt_series_data.h>
#include <qwt_text_label.h>

#include <cmath>

namespace kmr {

namespace {

constexpr int BINS = 40;
constexpr int RATE_SECONDS = 5;
constexpr double SHOWN_SECONDS = 300;

using Seconds = std::chrono::duration<double>;

std::unique_ptr<QwtPlotCurve> makeCurve(QwtPlot &plot, const QString &title, const QColor &colour,
                                        Qt::PenStyle pen)
{
    auto curve = std::make_unique<QwtPlotCurve>(title);
    curve->setPen(colour, 1.8, pen);
    curve->setRenderHint(QwtPlotItem::RenderAntialiased);
    curve->attach(&plot);
    return curve;
}

} // namespace

QString stateText(const StationState &state)
{
    switch (state.kind) {
    case StationState::Kind::NeverAnswered:
        return LineView::tr("never answered");
    case StationState::Kind::Silent:
        return LineView::tr("silent for %1 s").arg(state.silentSeconds, 0, 'f', 0);
    case StationState::Kind::Limps:
        return LineView::tr("limps: %1 % answered").arg(100 * state.share, 0, 'f', 1);
    case StationState::Kind::Good:
        break;
    }
    return LineView::tr("good");
}

QStringList limpingStations(const LineCounts &counts)
{
    QStringList texts;
    for (const auto &[station, stationCounts] : counts.stations()) {
        const StationState state = stateOf(stationCounts);
        if (state.kind != StationState::Kind::Good)
            texts.append(LineView::tr("Station %1 %2").arg(station).arg(stateText(state)));
    }
    return texts;
}

LineView::LineView(const LineCounts &counts, QWidget *parent)
    : QWidget(parent), m_counts(counts), m_examine(new QPushButton(tr("&Examine the line"))),
      m_verdict(new QLabel(tr("An examination asks the first tag's station three times and says "
                              "what is wrong and what to do. Polling waits meanwhile."))),
      m_summary(new QLabel), m_stations(new QTableWidget(0, 6)),
      m_histogramPlot(makePlot(tr("Round trips (ms): how often"), tr("ms"))),
      m_timePlot(makePlot(tr("Round trips over time (ms)"), QString())),
      m_faultPlot(makePlot(tr("Failed attempts a second"), QString()))
{
    m_examine->setObjectName("examine");
    m_verdict->setObjectName("verdict");
    m_verdict->setWordWrap(true);
    m_verdict->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_summary->setObjectName("summary");
    m_stations->setObjectName("stations");
    m_stations->setAccessibleName(tr("Stations"));
    m_stations->setHorizontalHeaderLabels({tr("Station"), tr("State"), tr("Answered"), tr("Failed"),
                                           tr("Mean ms"), tr("Longest ms")});
    m_stations->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_stations->setTabKeyNavigation(false);
    m_stations->verticalHeader()->hide();
    m_stations->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    m_stations->horizontalHeader()->setSectionResizeMode(1, QHeaderView::Stretch);
    auto *top = new QHBoxLayout;
    top->addWidget(m_examine, 0, Qt::AlignTop);
    top->addWidget(m_verdict, 1);
    auto *grid = new QGridLayout;
    grid->addWidget(m_stations, 0, 0, 1, 2);
    grid->addWidget(m_timePlot, 1, 0, 1, 2);
    grid->addWidget(m_histogramPlot, 2, 0);
    grid->addWidget(m_faultPlot, 2, 1);
    grid->setColumnStretch(0, 1);
    grid->setColumnStretch(1, 1);
    grid->setRowStretch(1, 1);
    grid->setRowStretch(2, 1);
    m_stations->setFixedHeight(fontMetrics().height() * 9);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(top);
    layout->addWidget(m_summary);
    layout->addLayout(grid, 1);
    makeCurves();
    connect(m_examine, &QPushButton::clicked, this, [this] {
        m_examine->setEnabled(false);
        m_verdict->setText(tr("Examining…"));
        emit examinationWanted();
    });
}

LineView::~LineView() = default;

QwtPlot *LineView::makePlot(const QString &title, const QString &unit)
{
    auto *plot = new QwtPlot;
    QwtText text(title);
    text.setFont(font());
    plot->titleLabel()->setFont(font());
    plot->setTitle(text);
    plot->setAccessibleName(title);
    plot->setMinimumSize(200, 140);
    plot->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Expanding); // columns of one width
    plot->setAxisMaxMajor(QwtPlot::yLeft, 4);
    plot->setAxisMaxMinor(QwtPlot::yLeft, 0);
    plot->setCanvasBackground(palette().base());
    static_cast<QwtPlotCanvas *>(plot->canvas())->setFrameStyle(QFrame::NoFrame);
    if (unit.isEmpty())
        plot->setAxisScaleDraw(QwtPlot::xBottom, new TimeScaleDraw);
    auto *grid = new QwtPlotGrid; // the plot deletes it
    QColor colour = palette().color(QPalette::Text);
    colour.setAlpha(40);
    grid->setPen(colour);
    grid->attach(plot);
    return plot;
}

void LineView::makeCurves()
{
    m_histogram = std::make_unique<QwtPlotHistogram>();
    m_histogram->setBrush(palette().highlight());
    m_histogram->setPen(QPen(Qt::NoPen));
    m_histogram->attach(m_histogramPlot);
    m_mean = makeCurve(*m_timePlot, tr("mean"), goodColour(), Qt::SolidLine);
    m_longest = makeCurve(*m_timePlot, tr("longest"), doubtfulColour(), Qt::DashLine);
    m_silent = makeCurve(*m_faultPlot, tr("no answer"), badColour(), Qt::SolidLine);
    m_faulty = makeCurve(*m_faultPlot, tr("bad answer"), doubtfulColour(), Qt::DashLine);
    m_refused =
        makeCurve(*m_faultPlot, tr("refused"), palette().color(QPalette::Text), Qt::DotLine);
    for (QwtPlot *plot : {m_timePlot, m_faultPlot})
        plot->insertLegend(new QwtLegend, QwtPlot::BottomLegend);
}

void LineView::refresh(double now, std::chrono::nanoseconds characterTime)
{
    QString text = tr("%1 requests a second").arg(m_counts.rate(now, RATE_SECONDS), 0, 'f', 1);
    if (characterTime.count() > 0)
        text += tr(", %1 % of the wire's time in use")
                    .arg(100 * m_counts.wireShare(now, RATE_SECONDS, characterTime), 0, 'f', 0);
    m_summary->setText(text);
    showStations();
    showHistogram();
    showTimes(now);
}

void LineView::showStations()
{
    m_stations->setRowCount(static_cast<int>(m_counts.stations().size()));
    int row = 0;
    for (const auto &[station, counts] : m_counts.stations()) {
        const StationState state = stateOf(counts);
        const Seconds mean(counts.roundTrips /
                           static_cast<double>(std::max<std::uint64_t>(1, counts.good)));
        const QString texts[] = {QString::number(station),
                                 stateText(state),
                                 QString::number(counts.good + counts.refused),
                                 QString::number(counts.failed),
                                 millisecondsText(mean),
                                 millisecondsText(Seconds(counts.longest))};
        const Quality quality =
            state.kind == StationState::Kind::Good ? Quality::Good : Quality::Stale;
        for (int column = 0; column < static_cast<int>(std::size(texts)); ++column) {
            QTableWidgetItem *item = m_stations->item(row, column);
            if (item == nullptr) {
                item = new QTableWidgetItem; // the table deletes it
                m_stations->setItem(row, column, item);
            }
            item->setText(texts[column]);
            if (column == 1)
                item->setIcon(qualityIcon(quality));
        }
        ++row;
    }
}

void LineView::showHistogram()
{
    const RoundTripBins bins = binsOf(m_counts.roundTrips(), BINS);
    QVector<QwtIntervalSample> samples;
    for (std::size_t i = 0; i < bins.counts.size(); ++i) {
        const double left = bins.width * static_cast<double>(i) * 1000;
        samples.append({static_cast<double>(bins.counts[i]), left, left + bins.width * 1000});
    }
    m_histogram->setSamples(samples);
    m_histogramPlot->replot();
}

void LineView::showTimes(double now)
{
    QVector<QPointF> mean;
    QVector<QPointF> longest;
    QVector<QPointF> silent;
    QVector<QPointF> faulty;
    QVector<QPointF> refused;
    for (const SecondCounts &counts : m_counts.seconds()) {
        const auto time = static_cast<double>(counts.second);
        if (time < now - SHOWN_SECONDS)
            continue;
        if (counts.good > 0) {
            mean.append({time, counts.roundTrips / counts.good * 1000});
            longest.append({time, counts.longest * 1000});
        }
        silent.append({time, static_cast<double>(counts.silent)});
        faulty.append({time, static_cast<double>(counts.faulty)});
        refused.append({time, static_cast<double>(counts.refused)});
    }
    m_mean->setSamples(mean);
    m_longest->setSamples(longest);
    m_silent->setSamples(silent);
    m_faulty->setSamples(faulty);
    m_refused->setSamples(refused);
    const double from =
        silent.isEmpty() ? now - 1 : std::max(now - SHOWN_SECONDS, silent.front().x());
    for (QwtPlot *plot : {m_timePlot, m_faultPlot}) {
        plot->setAxisScaleDiv(QwtPlot::xBottom, timeScale(from, now, plot->width() - 50));
        plot->replot();
    }
}

void LineView::showDiagnosis(const std::optional<Diagnosis> &diagnosis)
{
    m_examine->setEnabled(true);
    if (!diagnosis) {
        m_verdict->setText(tr("The examination was stopped before the line was known."));
        return;
    }
    QString text = diagnosis->text;
    if (!diagnosis->advice.isEmpty())
        text += '\n' + diagnosis->advice;
    const QStringList limping = limpingStations(m_counts);
    if (diagnosis->finding == Finding::Good && !limping.isEmpty()) // seldom seen in three requests
        text +=
            '\n' + tr("That was three requests. But: %1. Check plugs, shield and terminators, and "
                      "that no two controllers have the same station number.")
                       .arg(limping.join("; "));
    m_verdict->setText(text);
}

} // namespace kmr
