#include "view/line_run.h"

#include "host/error.h"

#include <map>
#include <utility>

namespace kmr {

double timeNow()
{
    return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch())
        .count();
}

LineRun::LineRun(const DriverFunctions &driver, QIODevice &device, SessionSettings settings,
                 const std::atomic<bool> &stop, LineNews &news, std::function<void()> breathe,
                 Tap tap)
    : m_news(news), m_tap(std::move(tap)),
      m_session(driver, device, tapped(std::move(settings)), stop)
{
    m_session.setObserver([this](const Exchange &exchange) { note(exchange); });
    m_session.setConfirmObserver([this](const ElementRange &run) { noteConfirmed(run); });
    m_session.setStepObserver([this](const StepNews &news) {
        if (news.kind == StepNews::Kind::Stray)
            noteStation(news.station);
    });
    m_session.setWaitObserver(std::move(breathe));
}

SessionSettings LineRun::tapped(SessionSettings settings)
{
    settings.poll.tap = [this](bool isSent, const QByteArray &characters) {
        m_tap(isSent, characters);
        noteTraffic(isSent, characters);
    };
    return settings;
}

void LineRun::poll(std::vector<PolledTag> tags)
{
    std::vector<Tag> polled;
    std::vector<ElementRange> elements;
    for (const PolledTag &tag : tags) {
        polled.push_back(tag.tag);
        elements.push_back(tag.tag.elements);
    }
    const std::vector<ElementRange> ranges = m_session.ranges(polled);
    std::map<int, Known> known;
    for (std::size_t i = 0; i < m_tags.size(); ++i)
        known[m_tags[i].id] = m_known[i];
    m_tags = std::move(tags);
    m_known.clear();
    for (const PolledTag &tag : m_tags)
        m_known.push_back(known[tag.id]);
    m_index = TagIndex(elements);
    m_session.poll(ranges);
}

void LineRun::noteTraffic(bool isSent, const QByteArray &characters)
{
    const double now = timeNow();
    if (isSent) {
        m_news.traffic.push_back({now, characters, {}, 0});
        return;
    }
    if (m_news.traffic.empty()) // the window has taken what was sent
        m_news.traffic.push_back({now, {}, {}, 0});
    // A copy: what a device hands over may have room for thousands.
    m_news.traffic.back().received.append(characters.constData(), characters.size());
    m_news.traffic.back().lastReceived = now;
}

void LineRun::note(const Exchange &exchange)
{
    const int station = exchange.request.var.station;
    const bool wasSent = exchange.outcome != Exchange::Outcome::PassedOver;
    m_news.exchanges.push_back(
        {timeNow(),
         station,
         exchange.outcome,
         {exchange.fault, exchange.exceptionCode, exchange.length},
         exchange.roundTrip,
         wasSent ? exchange.request.frameLen + static_cast<qsizetype>(exchange.receivedChars) : 0});
    if (exchange.outcome != Exchange::Outcome::Good)
        noteStation(station);
}

void LineRun::noteConfirmed(const ElementRange &run)
{
    const double now = timeNow();
    for (const std::size_t place : m_index.in(run))
        noteState(place, now);
}

void LineRun::noteStation(int station)
{
    const double now = timeNow();
    for (std::size_t place = 0; place < m_tags.size(); ++place) {
        const bool isConcerned = m_tags[place].tag.elements.station == station;
        if (isConcerned && m_session.state(m_tags[place].tag).quality != m_known[place].quality)
            noteState(place, now);
    }
}

// Of a good one also that it is still good.
void LineRun::noteState(std::size_t place, double time)
{
    const Tag &tag = m_tags[place].tag;
    const ElementState state = m_session.state(tag);
    Known &known = m_known[place];
    TagNews news{m_tags[place].id, time, state.quality, {}, {}};
    if (state.quality == Quality::Good) {
        Values values = m_session.values(tag);
        if (values != known.values)
            news.values = known.values = std::move(values);
    } else if (state.quality == known.quality) {
        return;
    } else if (state.quality == Quality::Stale) {
        news.cause = toText(state.failure);
    }
    known.quality = state.quality;
    m_news.tags.push_back(std::move(news));
}

void LineRun::transfer(RecipeNews &news)
{
    const bool isDownload = news.kind == RecipeNews::Kind::Download;
    m_news.recipeRequests = 0;
    const PollLoop::Observer observer = m_session.setObserver({});
    m_session.setObserver([&](const Exchange &exchange) {
        const bool isPart = !isDownload || !isRead(exchange.request);
        if (isPart && exchange.outcome == Exchange::Outcome::Good)
            ++m_news.recipeRequests;
        observer(exchange);
    });
    try {
        news.runs = isDownload ? downloadRanges(m_session, news.items)
                               : uploadRanges(m_session, news.items);
        news.result = isDownload ? download(m_session, news.items) : upload(m_session, news.items);
    } catch (const Error &error) {
        news.fault = error.text();
    }
    m_session.setObserver(observer);
    poll(m_tags); // the transfer may have replaced it
}

void LineRun::noteLoss(const QString &cause)
{
    const double now = timeNow();
    for (std::size_t place = 0; place < m_tags.size(); ++place) {
        if (std::exchange(m_known[place].quality, Quality::Stale) != Quality::Stale)
            m_news.tags.push_back({m_tags[place].id, now, Quality::Stale, {}, cause});
    }
}

void LineRun::restart()
{
    m_session.restart();
    poll(m_tags);
}

} // namespace kmr
