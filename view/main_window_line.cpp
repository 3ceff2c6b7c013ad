// What the window does with the traffic and the state of the line.
#include "host/error.h"
#include "view/main_window.h"
#include "view/quality_icon.h"

namespace kmr {

void MainWindow::makeTraffic()
{
    addPage(m_traffic, tr("T&raffic"));
    connect(m_traffic, &TrafficView::captureWanted, this, &MainWindow::capture);
}

void MainWindow::makeLine()
{
    addPage(m_lineView, tr("&Line"));
    connect(m_lineView, &LineView::examinationWanted, this, [this] {
        if (m_line)
            m_line->examine();
        else
            m_lineView->showDiagnosis({});
    });
}

// Called again and again, as an answer may be under way when the last tag of a station is removed.
void MainWindow::forgetUnpolledStations()
{
    if (m_isTransferring)
        return; // a recipe may have stations of its own
    std::set<int> polled;
    for (const ValueRow &row : m_values.rows())
        polled.insert(row.polled.tag.elements.station);
    m_counts.keepStations(polled);
}

// Seen on every page.
void MainWindow::showHint()
{
    const QStringList texts = limpingStations(m_counts);
    m_hint->setText(texts.join("; "));
    m_hint->setIcon(qualityIcon(Quality::Stale));
    m_hint->setVisible(!texts.isEmpty());
}

void MainWindow::makePlan()
{
    addPage(m_plan, tr("&Plan"));
    connect(m_pages, &QTabWidget::currentChanged, this, [this] { showPlan(); });
}

void MainWindow::showPlan()
{
    if (m_pages->currentWidget() != m_plan || !m_reader)
        return;
    std::vector<Tag> tags;
    for (const PolledTag &polled : m_values.polled())
        tags.push_back(polled.tag);
    m_plan->showPlan(m_settings, std::move(tags), m_drivers->forQuestions(), *m_reader);
}

void MainWindow::capture(const QString &path)
{
    if (!m_line)
        return;
    std::shared_ptr<CaptureWriter> writer;
    try {
        if (!path.isEmpty())
            writer = std::make_shared<CaptureWriter>(path, m_settings.link);
    } catch (const Error &error) {
        warn(error.text());
        return;
    }
    m_line->capture(writer);
    m_traffic->showCapturing(!path.isEmpty());
}

std::chrono::nanoseconds MainWindow::characterTimeOfLink() const
{
    if (m_simulated)
        return m_simulated->characterTime();
    if (m_settings.link.isEmpty()) // no line yet
        return std::chrono::nanoseconds(0);
    return characterTime(parseLink(m_settings.link));
}

} // namespace kmr
