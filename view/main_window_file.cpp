// The window's menus, and what they do with project files.
#include "host/error.h"
#include "host/project/text_file.h"
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
    file->addAction(
        tr("&New line…"), this, [this] { askForLine(); }, QKeySequence::New);
    file->addAction(
        tr("&Open project…"), this, [this] { chooseProject(); }, QKeySequence::Open);
    file->addAction(tr("Open &recording or capture…"), this, [this] { chooseRecording(); });
    QMenu *recent = file->addMenu(tr("Open &recent"));
    connect(file, &QMenu::aboutToShow, this, [this, recent] { fillRecent(*recent); });
    fillRecent(*recent);
    file->addSeparator();
    file->addAction(
        tr("&Save project"), this,
        [this] {
            if (m_path.isEmpty())
                chooseFileToSave();
            else
                save(m_path);
        },
        QKeySequence::Save);
    file->addAction(
        tr("Save project &as…"), this, [this] { chooseFileToSave(); }, QKeySequence::SaveAs);
    file->addSeparator();
    file->addAction(
        tr("&Quit"), this, [this] { close(); }, QKeySequence::Quit);
}

void MainWindow::fillRecent(QMenu &menu)
{
    menu.clear();
    for (const QString &path : QSettings().value(RECENT).toStringList())
        menu.addAction(path, this, [this, path] { openProject(path); });
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
    auto *dialog = new StartDialog(m_settings, *m_drivers, this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &QDialog::accepted, this, [this, dialog] { start(dialog->settings()); });
    dialog->open();
}

void MainWindow::chooseProject()
{
    auto *dialog = new QFileDialog(this, tr("Open project"), QString(),
                                   tr("Projects (*.toml);;All files (*)"));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setFileMode(QFileDialog::ExistingFile);
    connect(dialog, &QFileDialog::fileSelected, this,
            [this](const QString &path) { openProject(path); });
    dialog->open();
}

void MainWindow::chooseFileToSave()
{
    auto *dialog =
        new QFileDialog(this, tr("Save project as"), "kmr.toml", tr("Projects (*.toml)"));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setDefaultSuffix("toml");
    connect(dialog, &QFileDialog::fileSelected, this, [this](const QString &path) { save(path); });
    dialog->open();
}

void MainWindow::save(const QString &path)
{
    try {
        saveProject(path);
    } catch (const Error &error) {
        warn(error.text());
    }
}

void MainWindow::saveProject(const QString &path)
{
    m_settings.tags.clear();
    for (const ValueRow &row : m_values.rows())
        m_settings.tags.append(row.polled.tag.text);
    writeTextFile(path, formatProject(m_settings, path));
    setProject(path, false);
    noteRecent(path);
}

void MainWindow::setProject(const QString &path, bool isChanged)
{
    m_path = path;
    setWindowTitle(
        tr("%1[*] – kmr-view").arg(path.isEmpty() ? tr("New line") : QFileInfo(path).fileName()));
    setWindowFilePath(path);
    setWindowModified(isChanged);
}

void MainWindow::openFile(const QString &path)
{
    const QString ending = QFileInfo(path).suffix().toLower();
    if (ending == "toml")
        openProject(path);
    else if (QStringList{"csv", "sqlite", "sqlite3", "db"}.contains(ending))
        openRecording(path);
    else
        openCapture(path);
}

void MainWindow::dragEnterEvent(QDragEnterEvent *event)
{
    if (!filesOf(*event->mimeData()).isEmpty())
        event->acceptProposedAction();
}

void MainWindow::dropEvent(QDropEvent *event)
{
    for (const QString &path : filesOf(*event->mimeData()))
        openFile(path);
    event->acceptProposedAction();
}

} // namespace kmr
