// What the window does with its project: saves it, leaves it for another, and remembers how it was
// looked at.
#include "host/error.h"
#include "host/project/project_edit.h"
#include "host/project/project_settings.h"
#include "host/project/text_file.h"
#include "view/main_window.h"

#include <QCryptographicHash>
#include <QFileDialog>
#include <QFileInfo>
#include <QHeaderView>
#include <QMessageBox>
#include <QSettings>

namespace kmr {

namespace {

const char *const PROJECTS = "projects";

// The settings of a project.
QString settingsOf(const QString &path)
{
    const QByteArray whole = QFileInfo(path).absoluteFilePath().toUtf8();
    return QString("%1/%2").arg(
        PROJECTS,
        QString::fromLatin1(QCryptographicHash::hash(whole, QCryptographicHash::Md5).toHex()));
}

// Removes the settings of projects whose files no longer exist.
void forgetLostProjects()
{
    QSettings settings;
    settings.beginGroup(PROJECTS);
    for (const QString &group : settings.childGroups()) {
        if (!QFileInfo::exists(settings.value(group + "/path").toString()))
            settings.remove(group);
    }
}

} // namespace

// Calls `next` at once if nothing is unsaved; else after the person has saved or discarded it.
void MainWindow::leaveProject(const std::function<void()> &next)
{
    if (!isWindowModified()) {
        next();
        return;
    }
    auto *box =
        new QMessageBox(QMessageBox::Question, windowTitle(),
                        m_path.isEmpty() ? tr("Save the tags of this line as a project?")
                                         : tr("Save the changes to %1?").arg(m_path),
                        QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel, this);
    box->setAttribute(Qt::WA_DeleteOnClose);
    connect(box, &QMessageBox::finished, this, [this, next](int button) {
        if (button == QMessageBox::Save)
            saveThen(next);
        else if (button == QMessageBox::Discard)
            next();
    });
    box->open();
}

void MainWindow::saveThen(const std::function<void()> &next)
{
    if (m_path.isEmpty())
        chooseFileToSave(next);
    else
        save(m_path, next);
}

void MainWindow::chooseFileToSave(const std::function<void()> &next)
{
    auto *dialog =
        new QFileDialog(this, tr("Save project as"), "kmr.toml", tr("Projects (*.toml)"));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setDefaultSuffix("toml");
    connect(dialog, &QFileDialog::fileSelected, this,
            [this, next](const QString &path) { save(path, next); });
    dialog->open();
}

// Asks first if somebody has changed the tags in the file meanwhile.
void MainWindow::save(const QString &path, const std::function<void()> &next)
{
    const auto write = [this, path, next] {
        try {
            saveProject(path);
        } catch (const Error &error) {
            warn(error.text());
            return;
        }
        next();
    };
    if (!hasOtherTags(path)) {
        write();
        return;
    }
    auto *box = new QMessageBox(QMessageBox::Question, windowTitle(),
                                tr("The tags in %1 were changed while it was open here. Replace "
                                   "them with the tags of this window?")
                                    .arg(path),
                                QMessageBox::Save | QMessageBox::Cancel, this);
    box->setAttribute(Qt::WA_DeleteOnClose);
    connect(box, &QMessageBox::finished, this, [write](int button) {
        if (button == QMessageBox::Save)
            write();
    });
    box->open();
}

// Whether `path` is the project's file and has other tags than when it was read or written here.
bool MainWindow::hasOtherTags(const QString &path) const
{
    if (m_path.isEmpty() || QFileInfo(path) != QFileInfo(m_path) || !QFileInfo::exists(path))
        return false;
    try {
        const QString text = readTextFile(path);
        return text != m_text && parseProject(text, path).tags != parseProject(m_text, path).tags;
    } catch (const Error &) {
        return false; // saving says what is wrong
    }
}

// As they are saved, with those that could not be read.
QStringList MainWindow::tagTexts() const
{
    QStringList tags;
    for (const ValueRow &row : m_values.rows())
        tags.append(row.polled.tag.text);
    for (const auto &[place, text] : m_unreadTags)
        tags.insert(std::min(place, static_cast<int>(tags.size())), text);
    return tags;
}

void MainWindow::saveProject(const QString &path)
{
    const QStringList tags = tagTexts();
    m_settings.tags = tags;
    QString text = formatProject(m_settings, path);
    if (!m_path.isEmpty()) // what a person has written there stays
        text = editProject(QFileInfo::exists(m_path) ? readTextFile(m_path) : m_text, m_path, tags,
                           path);
    writeTextFile(path, text);
    m_text = text;
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

void MainWindow::restoreWindow()
{
    resize(1360, 800);
    m_splitter->resize(size()); // or the sizes would be shared out anew
    m_splitter->setSizes({620, 740});
    m_splitter->setStretchFactor(1, 1);
    restoreGeometry(QSettings().value("window/geometry").toByteArray());
    restoreLook("window");
}

void MainWindow::saveWindow()
{
    QSettings().setValue("window/geometry", saveGeometry());
    saveLook("window");
    rememberProject();
}

void MainWindow::saveLook(const QString &group) const
{
    QSettings settings;
    settings.beginGroup(group);
    settings.setValue("splitter", m_splitter->saveState());
    settings.setValue("values", m_valuesView->table()->horizontalHeader()->saveState());
    settings.setValue("grouping", static_cast<int>(m_values.grouping()));
}

void MainWindow::restoreLook(const QString &group)
{
    QSettings settings;
    settings.beginGroup(group);
    m_splitter->restoreState(settings.value("splitter").toByteArray());
    m_valuesView->table()->horizontalHeader()->restoreState(settings.value("values").toByteArray());
    m_valuesView->setGrouping(static_cast<Grouping>(settings.value("grouping").toInt()));
}

// How the project is looked at, for when it is opened again.
void MainWindow::rememberProject() const
{
    if (m_path.isEmpty())
        return;
    forgetLostProjects();
    const QString group = settingsOf(m_path);
    saveLook(group);
    QSettings settings;
    settings.beginGroup(group);
    settings.setValue("path", QFileInfo(m_path).absoluteFilePath());
    if (m_pages->currentIndex() < m_steadyPages) // not a file of its own
        settings.setValue("page", m_pages->currentIndex());
    settings.setValue("curves", curves());
}

void MainWindow::recallProject()
{
    const QString group = settingsOf(m_path);
    QSettings settings;
    if (!settings.contains(group + "/path"))
        return;
    restoreLook(group);
    settings.beginGroup(group);
    showCurves(settings.value("curves").toList());
    m_pages->setCurrentIndex(settings.value("page").toInt());
}

} // namespace kmr
