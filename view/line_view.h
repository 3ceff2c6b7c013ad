// The page of the line: how long answers take, what fails, which station is silent, and the verdict
// of an examination.
#pragma once

#include "host/line/line_diagnosis.h"
#include "view/line_counts.h"

#include <QLabel>
#include <QPushButton>
#include <QTableWidget>
#include <QWidget>

#include <memory>
#include <optional>

class QwtPlot;
class QwtPlotHistogram;
class QwtPlotCurve;

namespace kmr {

class LineView : public QWidget {
    Q_OBJECT

public:
    // `counts` must outlive it.
    explicit LineView(const LineCounts &counts, QWidget *parent = nullptr);
    ~LineView() override;

    // To be called once a second or so while it is visible. `characterTime`: 0 over TCP.
    void refresh(double now, std::chrono::nanoseconds characterTime);

    // What an examination found; nothing: it was stopped.
    void showDiagnosis(const std::optional<Diagnosis> &diagnosis);

signals:
    void examinationWanted();

private:
    QwtPlot *makePlot(const QString &title, const QString &unit);
    void makeCurves();
    void showStations();
    void showTimes(double now);
    void showHistogram();

    const LineCounts &m_counts;
    QPushButton *m_examine;
    QLabel *m_verdict;
    QLabel *m_summary;
    QTableWidget *m_stations;
    QwtPlot *m_histogramPlot;
    QwtPlot *m_timePlot;
    QwtPlot *m_faultPlot;
    std::unique_ptr<QwtPlotHistogram> m_histogram;
    std::unique_ptr<QwtPlotCurve> m_mean;
    std::unique_ptr<QwtPlotCurve> m_longest;
    std::unique_ptr<QwtPlotCurve> m_silent;
    std::unique_ptr<QwtPlotCurve> m_faulty;
    std::unique_ptr<QwtPlotCurve> m_refused;
};

// "limps: 93.1 % answered".
QString stateText(const StationState &state);

// "Station 2 limps: 93.1 % answered", of each station that does not answer as it should.
QStringList limpingStations(const LineCounts &counts);

} // namespace kmr
