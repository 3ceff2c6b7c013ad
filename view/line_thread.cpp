#include "view/line_thread.h"

#include "host/error.h"
#include "view/line_doctor.h"
#include "view/line_run.h"

#include <QMutexLocker>

#include <iterator>
#include <utility>

namespace kmr {

namespace {

using std::chrono::milliseconds;

constexpr milliseconds HAND_INTERVAL(50); // 20 times a second is what an eye can follow
constexpr milliseconds STOP_CHECK(20);
constexpr milliseconds FIRST_PAUSE(250); // before a lost link is opened again
constexpr milliseconds LONGEST_PAUSE(5000);

template <typename Item> void append(std::vector<Item> &all, std::vector<Item> &more)
{
    if (all.empty())
        all.swap(more);
    else
        all.insert(all.end(), std::make_move_iterator(more.begin()),
                   std::make_move_iterator(more.end()));
    more.clear();
}

// What came of a request that was taken before goes to that request.
void appendTraffic(std::vector<TrafficNews> &all, std::vector<TrafficNews> &more)
{
    if (!all.empty() && !more.empty() && more.front().sent.isEmpty()) {
        all.back().received += more.front().received;
        all.back().lastReceived = more.front().lastReceived;
        more.erase(more.begin());
    }
    append(all, more);
}

} // namespace

LineThread::LineThread(const DriverFunctions &driver, LineSetup setup, QObject *parent)
    : QThread(parent), m_driver(driver), m_setup(std::move(setup)), m_tags(m_setup.tags)
{
}

LineThread::~LineThread()
{
    stop();
}

LineNews LineThread::take()
{
    const QMutexLocker lock(&m_mutex);
    m_isAnnounced = false;
    LineNews news = std::exchange(m_ready, LineNews());
    m_ready.state = news.state;
    m_ready.stateText = news.stateText;
    return news;
}

void LineThread::poll(std::vector<PolledTag> tags)
{
    const QMutexLocker lock(&m_mutex);
    m_tags = std::move(tags);
    m_areTagsNew = true;
}

int LineThread::write(const Tag &tag, const Values &values)
{
    const int number = ++m_writes;
    ++m_openWrites;
    post([this, tag, values, number](LineRun *line) {
        WriteResult result;
        if (line != nullptr)
            result = line->write(tag, values);
        m_own.writes.push_back({number, timeNow(), result});
        --m_openWrites;
        hand();
    });
    return number;
}

void LineThread::transfer(RecipeNews::Kind kind, const std::vector<RecipeItem> &items)
{
    RecipeNews news;
    news.kind = kind;
    news.items = items;
    post([this, news](LineRun *line) mutable {
        if (line != nullptr)
            line->transfer(news);
        else
            news.fault = tr("Nothing was transferred: the line is not open.");
        m_own.recipes.push_back(news);
        hand();
    });
}

void LineThread::post(Job job)
{
    const QMutexLocker lock(&m_mutex);
    m_jobs.push_back(std::move(job));
}

void LineThread::stop()
{
    m_stop = true;
    wait();
    doJobs(nullptr); // that were posted after the thread had ended
    if (m_isToExamine.exchange(false))
        m_own.examinations.push_back({});
    hand();
}

void LineThread::run()
{
    milliseconds wait = FIRST_PAUSE;
    while (!m_stop) {
        try {
            runLine();
            wait = FIRST_PAUSE;
        } catch (const Error &error) {
            setState(LinkState::Opening, error.text());
            pause(wait);
            wait = std::min(2 * wait, LONGEST_PAUSE);
        }
    }
    doJobs(nullptr);
    setState(LinkState::Closed);
}

// Until it is to stop or to examine.
void LineThread::runLine()
{
    if (m_isToExamine)
        examineLine();
    setState(LinkState::Opening, m_own.stateText);
    const std::unique_ptr<QIODevice> device = openLink(m_setup.address, CONNECT_LIMIT, m_stop);
    if (m_setup.address.kind == LinkAddress::Kind::Serial)
        m_nameById = nameById(m_setup.address.device);
    LineRun line(
        m_driver, *device, m_setup.settings, m_stop, m_own, [this] { handInTime(); },
        [this](bool isSent, const QByteArray &characters) { tap(isSent, characters); });
    {
        const QMutexLocker lock(&m_mutex);
        m_areTagsNew = true;
    }
    setState(LinkState::Open);
    try {
        pollLine(*device, line);
    } catch (const Error &) {
        line.noteLoss(tr("it is not polled"));
        throw;
    }
    line.noteLoss(tr("it is not polled"));
}

void LineThread::pollLine(QIODevice &device, LineRun &line)
{
    while (!m_stop && !m_isToExamine) {
        pollNewTags(line);
        doJobs(&line);
        if (line.step() == PollLoop::Step::LineLost && !reconnectTo(device, line))
            return;
        handInTime();
    }
}

void LineThread::examineLine()
{
    setState(LinkState::Opening, tr("The line is examined."));
    LineSetup setup = m_setup;
    {
        const QMutexLocker lock(&m_mutex);
        setup.tags = m_tags;
    }
    m_own.examinations.push_back({kmr::examine(m_driver, setup, m_stop)});
    m_isToExamine = false;
    setState(LinkState::Opening);
}

void LineThread::tap(bool isSent, const QByteArray &characters)
{
    if (!m_capture)
        return;
    try {
        m_capture->add(isSent, characters);
    } catch (const Error &error) { // a full disk ends the capture, not the work
        m_capture.reset();
        m_own.captureFault = error.text();
    }
}

void LineThread::capture(std::shared_ptr<CaptureWriter> writer)
{
    post([this, writer = std::move(writer)](LineRun *) { m_capture = writer; });
}

// False when it is to stop or to examine.
bool LineThread::reconnectTo(QIODevice &device, LineRun &line)
{
    line.noteLoss(tr("the line was lost"));
    setState(LinkState::Opening, tr("The line was lost; it is opened again."));
    milliseconds wait = FIRST_PAUSE;
    while (pause(wait)) {
        if (reconnect(device, m_setup.address, m_nameById, CONNECT_LIMIT, m_stop)) {
            line.restart();
            setState(LinkState::Open);
            return true;
        }
        wait = std::min(2 * wait, LONGEST_PAUSE);
    }
    return false;
}

// False when it is to stop or to examine.
bool LineThread::pause(milliseconds time)
{
    for (milliseconds waited(0); waited < time && !m_stop && !m_isToExamine; waited += STOP_CHECK) {
        doJobs(nullptr);
        handInTime();
        QThread::msleep(static_cast<unsigned long>(STOP_CHECK.count()));
    }
    return !m_stop && !m_isToExamine;
}

void LineThread::pollNewTags(LineRun &line)
{
    std::vector<PolledTag> tags;
    {
        const QMutexLocker lock(&m_mutex);
        if (!std::exchange(m_areTagsNew, false))
            return;
        tags = m_tags;
    }
    line.poll(std::move(tags));
}

void LineThread::doJobs(LineRun *line)
{
    while (true) {
        Job job;
        {
            const QMutexLocker lock(&m_mutex);
            if (m_jobs.empty())
                return;
            job = std::move(m_jobs.front());
            m_jobs.pop_front();
        }
        job(line);
    }
}

void LineThread::setState(LinkState state, const QString &text)
{
    m_own.state = state;
    m_own.stateText = text;
    hand();
}

void LineThread::handInTime()
{
    if (std::chrono::steady_clock::now() >= m_nextHand)
        hand();
}

void LineThread::hand()
{
    m_nextHand = std::chrono::steady_clock::now() + HAND_INTERVAL;
    bool isToBeAnnounced = false;
    {
        const QMutexLocker lock(&m_mutex);
        m_ready.state = m_own.state;
        m_ready.stateText = m_own.stateText;
        append(m_ready.tags, m_own.tags);
        append(m_ready.exchanges, m_own.exchanges);
        appendTraffic(m_ready.traffic, m_own.traffic);
        append(m_ready.writes, m_own.writes);
        append(m_ready.examinations, m_own.examinations);
        append(m_ready.recipes, m_own.recipes);
        m_ready.recipeRequests = m_own.recipeRequests;
        if (!m_own.captureFault.isEmpty())
            m_ready.captureFault = std::exchange(m_own.captureFault, QString());
        isToBeAnnounced = !std::exchange(m_isAnnounced, true);
    }
    if (isToBeAnnounced)
        emit newsReady();
}

} // namespace kmr
