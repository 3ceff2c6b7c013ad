#include "view/reading_page.h"

#include "host/error.h"

#include <QFileInfo>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>

namespace kmr {

namespace {

constexpr std::chrono::milliseconds LOOK_INTERVAL(100); // at the progress

} // namespace

ReadingPage::ReadingPage(QString path, QWidget *parent)
    : QWidget(parent), m_path(std::move(path)), m_thread(QThread::create([this] { read(); }))
{
    auto *progress = new QProgressBar;
    progress->setAccessibleName(tr("Share of the file that is read"));
    progress->setRange(0, 0);
    auto *cancel = new QPushButton(tr("&Cancel"));
    cancel->setObjectName("cancelReading");
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(new QLabel(tr("Reading %1…").arg(QFileInfo(m_path).fileName())));
    layout->addWidget(progress);
    layout->addWidget(cancel, 0, Qt::AlignLeft);
    layout->addStretch();
    connect(cancel, &QPushButton::clicked, this, &ReadingPage::cancelWanted);
    auto *look = new QTimer(this);
    connect(look, &QTimer::timeout, this, [this, progress] {
        const int percent = m_percent;
        progress->setRange(0, percent < 0 ? 0 : 100);
        progress->setValue(std::max(0, percent));
    });
    look->start(LOOK_INTERVAL);
    connect(m_thread.get(), &QThread::finished, this, [this] {
        m_thread->wait(); // for its very end
        if (m_isToStop)
            deleteLater();
        else
            emit finished();
    });
    m_thread->start();
}

ReadingPage::~ReadingPage()
{
    m_isToStop = true;
    m_thread->wait();
}

void ReadingPage::cancel()
{
    m_isToStop = true;
    if (m_thread->isFinished())
        deleteLater();
}

OpenedFile ReadingPage::take()
{
    m_thread->wait();
    if (!m_fault.isEmpty())
        throw Error(ErrorKind::Usage, m_fault);
    return std::move(m_file);
}

void ReadingPage::read()
{
    try {
        m_file = readFile(m_path, [this](int percent) {
            m_percent = percent;
            return !m_isToStop;
        });
    } catch (const std::exception &error) { // also if there is not enough memory
        m_fault = QString::fromUtf8(error.what());
    }
}

} // namespace kmr
