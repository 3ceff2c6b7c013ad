// Writes, and closing the window, which may end one.
#include "view/main_window.h"
#include "view/outcome_text.h"

#include <QCloseEvent>
#include <QMessageBox>
#include <QStatusBar>

namespace kmr {

namespace {

// What a tag holds, and if that is not certain, why not; empty: it was not read yet.
QString heldText(const ValueRow &row)
{
    if (row.values.empty())
        return {};
    const QString values = withUnit(row.polled.tag, row.values);
    return row.quality == Quality::Good ? values
                                        : QString("%1 (%2)").arg(values, qualityName(row.quality));
}

} // namespace

void MainWindow::askToWrite(int id)
{
    const ValueRow *row = m_values.find(id);
    if (row == nullptr || !m_line)
        return;
    const Tag tag = row->polled.tag;
    const QString fault = whyNotWritable(tag);
    if (!fault.isEmpty()) {
        warn(fault);
        return;
    }
    auto *dialog = new WriteDialog(tag, heldText(*row), this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(&m_refresh, &QTimer::timeout, dialog, [this, id, dialog] {
        if (const ValueRow *now = m_values.find(id))
            dialog->showCurrent(heldText(*now));
    });
    connect(dialog, &WriteDialog::confirmed, this, [this, id, tag, dialog](const Values &values) {
        if (!m_line)
            return;
        const int request = m_line->write(tag, values);
        m_writes[request] = {id, tr("%1 = %2").arg(tag.text, withUnit(tag, values)), dialog};
    });
    dialog->open();
}

void MainWindow::takeWrites(const std::vector<WriteNews> &writes)
{
    for (const WriteNews &write : writes) {
        const auto found = m_writes.find(write.request);
        if (found == m_writes.end())
            continue;
        const OpenWrite open = found->second;
        m_writes.erase(found);
        // A dialog that was closed is deleted later.
        const bool isSeen = open.dialog && open.dialog->isVisible();
        if (isSeen)
            open.dialog->showOutcome(write.result);
        const QString text = tr("%1: %2").arg(open.text, writeOutcomeText(write.result));
        statusBar()->showMessage(text, 10000);
        if (write.result.request.isDone())
            markWrite(open.id, write.time, open.text);
        if (!write.result.request.isDone() && !isSeen)
            tellFailure(text);
    }
}

// Of a write that nobody can see any more.
void MainWindow::tellFailure(const QString &text)
{
    if (m_isStopping)
        m_uncertain.append(text);
    else
        warn(text);
}

void MainWindow::closeEvent(QCloseEvent *event)
{
    if (isWindowModified()) {
        event->ignore();
        leaveProject([this] {
            setWindowModified(false);
            close();
        });
        return;
    }
    stopLine();
    if (!m_uncertain.isEmpty()) { // to be read before the window is gone
        auto *box = new QMessageBox(
            QMessageBox::Warning, windowTitle(),
            tr("The window was closed during a write.\n%1").arg(m_uncertain.join('\n')),
            QMessageBox::Ok, this);
        box->setAttribute(Qt::WA_DeleteOnClose);
        m_uncertain.clear();
        connect(box, &QMessageBox::finished, this, [this] { close(); });
        box->open();
        event->ignore();
        return;
    }
    saveWindow();
    event->accept();
}

} // namespace kmr
