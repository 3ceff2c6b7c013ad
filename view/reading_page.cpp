#include "view/reading_page.h"

#include "host/error.h"

#include <QFileInfo>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>
#include <atomic>
#include <chrono>

namespace kmr {

namespace {

constexpr std::chrono::milliseconds LOOK_INTERVAL(50);
constexpr std::chrono::milliseconds LAST_WAIT(100); // for the thread, while the window stands still

bool isReady(const std::future<OpenedFile> &file, std::chrono::milliseconds patience = {})
{
    return file.wait_for(patience) == std::future_status::ready;
}

} // namespace

struct ReadingPage::Reading {
    explicit Reading(QString thePath) : path(std::move(thePath)) {}

    const QString path;
    std::atomic<bool> isToStop{false};
    std::atomic<int> percent{-1}; // as of ReadProgress
};

ReadingPage::ReadingPage(QString path, QWidget *parent)
    : QWidget(parent), m_reading(std::make_shared<Reading>(std::move(path)))
{
    auto *progress = new QProgressBar;
    progress->setAccessibleName(tr("Share of the file that is read"));
    progress->setRange(0, 0);
    auto *cancel = new QPushButton(tr("&Cancel"));
    cancel->setObjectName("cancelReading");
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(new QLabel(tr("Reading %1…").arg(QFileInfo(m_reading->path).fileName())));
    layout->addWidget(progress);
    layout->addWidget(cancel, 0, Qt::AlignLeft);
    layout->addStretch();
    connect(cancel, &QPushButton::clicked, this, &ReadingPage::cancelWanted);
    auto *timer = new QTimer(this);
    connect(timer, &QTimer::timeout, this, [this, timer, progress] {
        const int percent = m_reading->percent;
        progress->setRange(0, percent < 0 ? 0 : 100);
        progress->setValue(std::max(0, percent));
        if (m_reading->isToStop || !isReady(m_file))
            return;
        timer->stop();
        emit finished();
    });
    timer->start(LOOK_INTERVAL);
    start();
}

ReadingPage::~ReadingPage()
{
    m_reading->isToStop = true;
    if (!m_thread.joinable())
        return;
    if (isReady(m_file, LAST_WAIT))
        m_thread.join();
    else
        m_thread.detach(); // it uses nothing but its own, and may even end with the process
}

void ReadingPage::start()
{
    std::packaged_task<OpenedFile()> task([reading = m_reading] {
        return readFile(reading->path, [&](int percent) {
            reading->percent = percent;
            return !reading->isToStop;
        });
    });
    m_file = task.get_future();
    m_thread = std::thread(std::move(task));
}

void ReadingPage::cancel()
{
    m_reading->isToStop = true;
    deleteLater();
}

OpenedFile ReadingPage::take()
{
    m_thread.join();
    try {
        return m_file.get();
    } catch (const std::exception &error) { // also if there is not enough memory
        throw Error(ErrorKind::Usage, QString::fromUtf8(error.what()));
    }
}

const QString &ReadingPage::path() const
{
    return m_reading->path;
}

} // namespace kmr
