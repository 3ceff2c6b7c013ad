// The window's menus, and what they do with project files.
#include "host/error.h"
#include "view/main_window.h"
#include "view/start_dialog.h"

#include <QApplication>
#include <QDragEnterEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QMenuBar>
#include <QMessageBox>
#include <QMimeData>
#include <QSettings>

#include <utility>

namespace kmr {

namespace {

constexpr int MOST_RECENT = 8;
const char *const RECENT = "recent";

// The files that were dropped or dragged.
QStringList filesOf(const QMimeData &data)
{
    QStringList files;
    for (const QUrl &url : data.urls()) {
        if (url.isLocalFile())
            files.append(url.toLocalFile());
    }
    return files;
}

} // namespace

void MainWindow::makeMenus()
{
    makeFileMenu();
    menuBar()->addMenu(m_valuesView->menu());
    QMenu *help = menuBar()->addMenu(tr("&Help"));
    help->addAction(tr("&About kmr-view"), this, [this] {
        QMessageBox::about(this, tr("About kmr-view"),
                           tr("kmr-view %1, the window on a line of Ostrel KMR controllers.")
                               .arg(QApplication::applicationVersion()));
    });
}

void MainWindow::makeFileMenu()
{
    QMenu *file = menuBar()->addMenu(tr("&File"));
    file->setObjectName("file");
    file->addAction(
        tr("&New line…"), this, [this] { askForLine(); }, QKeySequence::New);
    file->addAction(
        tr("&Open project…"), this, [this] { chooseProject(); }, QKeySequence::Open);
    file->addAction(tr("Open &recording or capture…"), this, [this] { chooseRecording(); });
    QMenu *recent = file->addMenu(tr("Open re&cent"));
    recent->setObjectName("recent");
    connect(file, &QMenu::aboutToShow, this, [this, recent] { fillRecent(*recent); });
    fillRecent(*recent);
    file->addSeparator();
    file->addAction(
        tr("&Save project"), this, [this] { saveThen([] {}); }, QKeySequence::Save);
    file->addAction(
        tr("Save project &as…"), this, [this] { chooseFileToSave([] {}); }, QKeySequence::SaveAs);
    file->addAction(
        tr("C&lose page"), this, [this] { closePage(m_pages->currentIndex()); },
        QKeySequence::Close);
    file->addSeparator();
    file->addAction(
        tr("&Quit"), this, [this] { close(); }, QKeySequence::Quit);
}

void MainWindow::fillRecent(QMenu &menu)
{
    menu.clear();
    for (const QString &path : QSettings().value(RECENT).toStringList())
        menu.addAction(path, this,
                       [this, path] { leaveProject([this, path] { openProject(path); }); });
    menu.setEnabled(!menu.isEmpty());
}

void MainWindow::noteRecent(const QString &path)
{
    QSettings settings;
    QStringList recent = settings.value(RECENT).toStringList();
    const QString whole = QFileInfo(path).absoluteFilePath();
    recent.removeAll(whole);
    recent.prepend(whole);
    settings.setValue(RECENT, QStringList(recent.mid(0, MOST_RECENT)));
}

void MainWindow::askForLine()
{
    try {
        if (!m_drivers)
            m_drivers = std::make_unique<Drivers>(m_settings.driver);
    } catch (const Error &error) {
        warn(error.text());
        return;
    }
    ProjectSettings present = m_settings;
    present.tags = tagTexts();
    auto *dialog = new StartDialog(present, *m_drivers, this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &QDialog::accepted, this, [this, dialog] {
        const ProjectSettings settings = dialog->settings();
        leaveProject([this, settings] { start(settings); });
    });
    dialog->open();
}

void MainWindow::chooseProject()
{
    auto *dialog = new QFileDialog(this, tr("Open project"), QString(),
                                   tr("Projects (*.toml);;All files (*)"));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setFileMode(QFileDialog::ExistingFile);
    connect(dialog, &QFileDialog::fileSelected, this,
            [this](const QString &path) { leaveProject([this, path] { openProject(path); }); });
    dialog->open();
}

void MainWindow::openFile(const QString &path)
{
    if (path.endsWith(".toml", Qt::CaseInsensitive))
        leaveProject([this, path] { openProject(path); });
    else
        openRecorded(path);
}

void MainWindow::dragEnterEvent(QDragEnterEvent *event)
{
    if (!filesOf(*event->mimeData()).isEmpty())
        event->acceptProposedAction();
}

void MainWindow::dropEvent(QDropEvent *event)
{
    bool hasProject = false; // only one can be open
    for (const QString &path : filesOf(*event->mimeData())) {
        const bool isProject = path.endsWith(".toml", Qt::CaseInsensitive);
        if (!isProject || !std::exchange(hasProject, true))
            openFile(path);
    }
    event->acceptProposedAction();
}

} // namespace kmr
