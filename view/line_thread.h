// The thread that the line has for itself: opens the link, polls, writes, and opens a lost link
// again. Whatever the line does, only this thread waits for it.
#pragma once

#include "host/line/link.h"
#include "host/project/capture.h"
#include "view/line_news.h"

#include <QMutex>
#include <QThread>

#include <atomic>
#include <deque>
#include <functional>
#include <memory>
#include <vector>

namespace kmr {

class LineRun;

struct LineSetup {
    LinkAddress address;
    SessionSettings settings;
    std::vector<PolledTag> tags;
};

// One at a time may run on a driver. Its functions are for the window's thread, but for run().
class LineThread : public QThread {
    Q_OBJECT

public:
    // `driver` must outlive it.
    LineThread(const DriverFunctions &driver, LineSetup setup, QObject *parent = nullptr);
    ~LineThread() override;

    // All that is new since it was called before.
    LineNews take();

    // Polls these from now on.
    void poll(std::vector<PolledTag> tags);

    // Queues a write; what becomes of it comes as WriteNews. Returns its number there.
    int write(const Tag &tag, const Values &values);

    // Queued writes whose outcome is not known yet.
    int openWrites() const
    {
        return m_openWrites;
    }

    // Queues the transfer of a recipe; what becomes of it comes as RecipeNews.
    void transfer(RecipeNews::Kind kind, const std::vector<RecipeItem> &items);

    // Has the thread do something with the session between two requests, unless the line is not
    // open then: with null. It is always called, in the thread.
    using Job = std::function<void(LineRun *run)>;
    void post(Job job);

    // Writes all traffic there from now on; null: no more.
    void capture(std::shared_ptr<CaptureWriter> writer);

    // Interrupts polling to find out what is wrong with the line; comes as ExaminationNews.
    void examine()
    {
        m_isToExamine = true;
    }

    // Ends what is going on and waits for the thread: about 50 ms. take() then has all that is
    // left.
    void stop();

signals:
    // There is something to take(). Is not sent again before that.
    void newsReady();

protected:
    void run() override;

private:
    void runLine();
    void pollLine(QIODevice &device, LineRun &line);
    void examineLine();
    void tap(bool isSent, const QByteArray &characters);
    bool reconnectTo(QIODevice &device, LineRun &line);
    bool pause(std::chrono::milliseconds time);
    void pollNewTags(LineRun &line);
    void doJobs(LineRun *line);
    void setState(LinkState state, const QString &text = {});
    void hand();
    void handInTime();

    const DriverFunctions &m_driver;
    const LineSetup m_setup;
    std::atomic<bool> m_stop{false};
    std::atomic<bool> m_isToExamine{false};
    std::atomic<int> m_openWrites{0};
    int m_writes = 0; // queued so far

    // Of the thread alone.
    LineNews m_own;
    std::chrono::steady_clock::time_point m_nextHand;
    QString m_nameById; // of a serial port
    std::shared_ptr<CaptureWriter> m_capture;

    QMutex m_mutex; // for all that follows
    LineNews m_ready;
    bool m_isAnnounced = false;
    std::vector<PolledTag> m_tags; // that are polled, or soon
    bool m_areTagsNew = false;
    std::deque<Job> m_jobs;
};

} // namespace kmr
