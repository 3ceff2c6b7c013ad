// What the window does with the course of values: it keeps them, and shows those that are wanted.
#include "host/error.h"
#include "view/main_window.h"
#include "view/recording.h"

#include <QFileDialog>
#include <QFileInfo>
#include <QTabBar>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>

namespace kmr {

namespace {

constexpr int MOST_NUMBERS = 64; // of one tag that have trends

// The series of a tag's number at `place`, from 0.
int seriesOf(int id, int place)
{
    return id * MOST_NUMBERS + place;
}

int countOf(const ValueRow &row)
{
    const int numbers = static_cast<int>(row.numbers.size());
    return std::min(std::max(1, numbers), MOST_NUMBERS);
}

QString nameOf(const Tag &tag, int place, int count)
{
    if (count == 1)
        return tag.text;
    const bool isElement = tag.type == ValueType::Plain && tag.kind != ElementKind::WordBit;
    return isElement ? elementName(tag.elements.area, tag.elements.first + place)
                     : QString("%1[%2]").arg(tag.text).arg(place);
}

bool isBit(const Tag &tag)
{
    return tag.kind == ElementKind::Bit || tag.kind == ElementKind::WordBit;
}

// A page of its own, with what it shows.
class RecordingView : public QWidget {
public:
    explicit RecordingView(const QString &path)
    {
        readRecording(path, m_recording);
        m_view = new TrendView(m_recording.history);
        auto *layout = new QVBoxLayout(this);
        layout->setContentsMargins(0, 0, 0, 0);
        layout->addWidget(m_view);
        m_view->setAcceptDrops(false); // of tags of the line
        for (const RecordedTag &tag : m_recording.tags)
            m_view->add(tag.id, tag.name, tag.unit, tag.isBit);
        m_view->plot().showAll();
    }
    ~RecordingView() override
    {
        delete m_view; // before its history
    }

private:
    Recording m_recording;
    TrendView *m_view;
};

} // namespace

void MainWindow::makeTrends()
{
    m_pages->setTabsClosable(true);
    m_pages->setDocumentMode(true);
    addPage(m_trends, tr("&Trends"));
    connect(m_pages, &QTabWidget::tabCloseRequested, this, [this](int index) {
        QWidget *page = m_pages->widget(index);
        m_pages->removeTab(index);
        page->deleteLater();
    });
    connect(m_valuesView, &ValuesView::trendWanted, this, &MainWindow::showTrends);
    connect(m_trends, &TrendView::tagsDropped, this, &MainWindow::showTrends);
}

// A page that stays.
void MainWindow::addPage(QWidget *page, const QString &title)
{
    const int index = m_pages->addTab(page, title);
    for (const auto side : {QTabBar::LeftSide, QTabBar::RightSide})
        m_pages->tabBar()->setTabButton(index, side, nullptr);
}

void MainWindow::refresh()
{
    const double now = timeNow();
    m_values.refresh(now);
    if (m_trends->isVisible())
        m_trends->refresh(now);
    if (m_lineView->isVisible())
        m_lineView->refresh(now, characterTimeOfLink());
}

void MainWindow::record(const TagNews &news)
{
    const ValueRow *row = m_values.find(news.id);
    if (row == nullptr)
        return;
    for (int place = 0; place < countOf(*row); ++place) {
        const int series = seriesOf(news.id, place);
        const double number =
            row->numbers.empty() ? std::nan("") : row->numbers[static_cast<std::size_t>(place)];
        if (news.quality == Quality::Good && !std::isnan(number))
            m_history.add(series, news.time, number);
        else
            m_history.addGap(series, news.time);
    }
}

void MainWindow::showTrends(const std::vector<int> &ids)
{
    for (const int id : ids) {
        const ValueRow *row = m_values.find(id);
        if (row == nullptr)
            continue;
        const Tag &tag = row->polled.tag;
        const int count = std::min(tag.count / elementsPerNumber(tag), MOST_NUMBERS);
        for (int place = 0; place < count; ++place)
            m_trends->add(seriesOf(id, place), nameOf(tag, place, count), tag.unit, isBit(tag));
    }
    m_pages->setCurrentWidget(m_trends);
}

void MainWindow::forgetTrend(int id)
{
    for (int place = 0; place < MOST_NUMBERS; ++place) {
        m_trends->remove(seriesOf(id, place));
        m_history.forget(seriesOf(id, place));
    }
}

void MainWindow::markWrite(int id, double time, const QString &text)
{
    const ValueRow *row = m_values.find(id);
    for (int place = 0; row != nullptr && place < countOf(*row); ++place)
        m_history.mark({seriesOf(id, place), time, place == 0 ? text : QString()});
}

void MainWindow::chooseRecording()
{
    auto *dialog =
        new QFileDialog(this, tr("Open recording"), QString(),
                        tr("Recordings of kmr log (*.csv *.sqlite *.sqlite3 *.db);;All files (*)"));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setFileMode(QFileDialog::ExistingFile);
    connect(dialog, &QFileDialog::fileSelected, this,
            [this](const QString &path) { openFile(path); });
    dialog->open();
}

bool MainWindow::openRecording(const QString &path)
{
    try {
        const int index = m_pages->addTab(new RecordingView(path), QFileInfo(path).fileName());
        m_pages->setTabToolTip(index, path);
        m_pages->setCurrentIndex(index);
    } catch (const Error &error) {
        warn(error.text());
        return false;
    }
    return true;
}

} // namespace kmr
