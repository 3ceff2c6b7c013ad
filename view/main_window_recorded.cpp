// What the window does with recordings and captures: it reads them, and shows them on pages that
// can be closed.
#include "host/error.h"
#include "view/main_window.h"
#include "view/recording_view.h"

#include <QFileDialog>
#include <QFileInfo>

namespace kmr {

void MainWindow::chooseRecording()
{
    auto *dialog =
        new QFileDialog(this, tr("Open recording or capture"), QString(),
                        tr("Recordings and captures (*.csv *.sqlite *.sqlite3 *.db *.kmr);;"
                           "All files (*)"));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setFileMode(QFileDialog::ExistingFile);
    connect(dialog, &QFileDialog::fileSelected, this,
            [this](const QString &path) { openFile(path); });
    dialog->open();
}

void MainWindow::openRecorded(const QString &path)
{
    auto *reading = new ReadingPage(path);
    const int index = m_pages->addTab(reading, QFileInfo(path).fileName());
    m_pages->setTabToolTip(index, path);
    m_pages->setCurrentIndex(index);
    connect(reading, &ReadingPage::finished, this, [this, reading] { showRecorded(*reading); });
    connect(reading, &ReadingPage::cancelWanted, this,
            [this, reading] { closePage(m_pages->indexOf(reading)); });
}

// Replaces the page that says that the file is read.
void MainWindow::showRecorded(ReadingPage &reading)
{
    const int index = m_pages->indexOf(&reading);
    const bool isCurrent = m_pages->currentIndex() == index;
    const QString name = m_pages->tabText(index);
    closePage(index);
    const auto insert = [&](QWidget *page, const QString &title, const QString &tip) {
        m_pages->insertTab(index, page, title);
        m_pages->setTabToolTip(index, tip);
    };
    try {
        OpenedFile file = reading.take();
        const QString tip =
            file.isCapture ? tr("%1, of %2").arg(reading.path(), file.link) : reading.path();
        QWidget *shown = nullptr;
        if (file.isCapture) {
            auto *traffic = new TrafficView(false);
            traffic->show(std::move(file.traffic));
            insert(shown = traffic, name, tip);
        }
        if (file.recording) {
            auto *trends = new RecordingView(std::move(file.recording));
            insert(trends, file.isCapture ? tr("%1: trends").arg(name) : name, tip);
            shown = file.isCapture ? shown : trends;
        }
        if (isCurrent)
            m_pages->setCurrentWidget(shown);
        if (!file.cut.isEmpty())
            warn(file.cut);
    } catch (const Error &error) {
        warn(error.text());
    }
}

void MainWindow::closePage(int index)
{
    if (index < m_steadyPages)
        return;
    QWidget *page = m_pages->widget(index);
    m_pages->removeTab(index);
    if (auto *reading = qobject_cast<ReadingPage *>(page))
        reading->cancel();
    else
        page->deleteLater();
}

} // namespace kmr
