#include "kmr/publish/publisher.h"

#include "host/error.h"
#include "kmr/assignment.h"
#include "kmr/output.h"
#include "kmr/publish/plain_topics.h"
#include "kmr/publish/service_line.h"
#include "kmr/publish/sparkplug_node.h"
#include "kmr/stop_signal.h"

#include <algorithm>
#include <utility>

namespace kmr {

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr milliseconds STOP_CHECK(50);
constexpr std::chrono::seconds BETWEEN_REPORTS(10);
constexpr std::chrono::seconds BETWEEN_METRICS(1);
constexpr std::chrono::seconds BETWEEN_REFUSALS(1);

void printTimed(const QString &line)
{
    printError(now() + ' ' + line);
}

std::unique_ptr<Metrics> metricsAt(const QString &address)
{
    if (address.isEmpty())
        return nullptr;
    auto metrics = std::make_unique<Metrics>(address);
    printTimed("metrics at " + metrics->url());
    return metrics;
}

} // namespace

Publisher::Publisher(const Options &options, PublisherSettings settings)
    : m_settings(std::move(settings)), m_metrics(metricsAt(m_settings.metrics)),
      m_connection(options), m_tags(publishedTags(m_connection.readTags(m_settings.tags),
                                                  m_connection.tags().names(), m_settings.prefix)),
      m_topics(m_settings.prefix,
               knownNames(m_tags, m_connection.tags().names(), m_settings.allowsWrites)),
      m_convention(convention()), m_spool(m_settings.spool, m_settings.spoolLimits),
      m_outbox(std::make_shared<Outbox>(m_spool.lastNumber(), m_spool.count() == 0,
                                        [wakeUp = m_wakeUp] { wakeUp->wake(); })),
      m_session(openLine(m_connection, m_notice, printTimed)),
      m_values(m_session, m_tags, m_settings.heartbeat,
               [this](const PublishedTag &tag, const Sample &sample) {
                   m_outbox->push(m_convention->value(tag, sample));
               }),
      m_desk(m_connection.tags(), m_topics,
             [this](const Tag &tag, const Values &values) { return write(tag, values); }),
      m_cycle(m_settings.cycle), m_reconnection(m_connection), m_outages(printError, now)
{
    checkSpool();
    if (m_settings.broker.isSparkplug) // the birth says what is not read yet
        m_values.notePublished();
    observe();
    m_spooler.emplace(m_spool, *m_outbox, printTimed);
    printTimed(QString("publishing %1 tags as %2").arg(m_tags.size()).arg(m_convention->name()));
    m_courier.emplace(brokerSettings(), m_convention, m_outbox, m_wakeUp, courierEvents());
}

Publisher::~Publisher()
{
    m_courier.reset();
    m_spooler.reset();
    m_session.setObserver({});
    m_session.setConfirmObserver({});
    m_session.setStepObserver({});
    m_session.setWaitObserver({});
}

std::shared_ptr<Convention> Publisher::convention() const
{
    if (m_settings.broker.isSparkplug)
        return std::make_shared<SparkplugNode>(m_topics, m_tags, m_settings.allowsWrites,
                                               m_settings.spool + "-bdseq", printTimed);
    return std::make_shared<PlainTopics>(m_topics, m_settings.form, m_settings.allowsWrites);
}

void Publisher::checkSpool()
{
    if (m_spool.count() == 0)
        return;
    if (!m_convention->isOurs(m_spool.readAfter(0, 1).front()))
        throw Error(ErrorKind::Usage, QString("%1 holds messages that are not of %2: deliver them "
                                              "as before, or name another file with --spool")
                                          .arg(m_settings.spool, m_convention->name()));
    printTimed(QString("%1 messages wait in %2").arg(m_spool.count()).arg(m_settings.spool));
}

BrokerSettings Publisher::brokerSettings() const
{
    BrokerSettings settings = m_settings.broker;
    settings.clientId = "kmr:" + m_settings.prefix.toUtf8();
    return settings;
}

Courier::Events Publisher::courierEvents()
{
    // A birth has all values.
    return {[this] { m_mustPublishAll = !m_settings.broker.isSparkplug; },
            [this](std::vector<Incoming> requests) { m_inbox.add(std::move(requests)); },
            [this](std::size_t count) { m_unsendable += count; }, printTimed};
}

void Publisher::observe()
{
    m_session.setObserver([this](const Exchange &exchange) { note(exchange); });
    m_session.setConfirmObserver([this](const ElementRange &run) { m_values.noteConfirmed(run); });
    m_session.setStepObserver([this](const StepNews &news) {
        if (news.kind != StepNews::Kind::Stray)
            return;
        m_outages.noteStray(news.station, news.late, steady_clock::now());
        m_values.noteStation(news.station);
    });
    m_session.setWaitObserver([this] { tick(); });
}

ExitCode Publisher::run()
{
    beginPolling();
    m_notice.ready();
    while (!isOver())
        next();
    m_notice.stopping();
    finish();
    return dropped() > 0 ? ExitCode::ItemFailed : ExitCode::Ok;
}

bool Publisher::isOver() const
{
    return stopFlag() ||
           (m_settings.seconds &&
            steady_clock::now() - m_begin >= std::chrono::duration<double>(*m_settings.seconds));
}

void Publisher::beginPolling()
{
    m_cycle.begin(m_session.poll(m_values.ranges()), steady_clock::now());
}

// A request to write, then an exchange of the polling, or a part of a pause, or the way back from a
// lost line: however many requests come, the polling goes on.
void Publisher::next()
{
    tick();
    takeRequest();
    const std::chrono::nanoseconds pause = m_cycle.pause(steady_clock::now());
    if (pause > std::chrono::nanoseconds::zero()) {
        m_session.confirm(false);
        m_inbox.await(std::min<std::chrono::nanoseconds>(pause, STOP_CHECK));
    } else if (m_session.step() == PollLoop::Step::LineLost) {
        bringBack();
    }
}

// What is to be done often, also while the session waits: nothing that uses the line.
void Publisher::tick()
{
    const Time time = steady_clock::now();
    m_notice.alive();
    m_outages.tellEnds(time);
    if (m_mustPublishAll.exchange(false)) {
        m_values.publishAll();
        m_nextReport = time;
    }
    m_values.beat();
    refuseExcess(time);
    reportLine(time);
}

void Publisher::takeRequest()
{
    const std::optional<Incoming> request = m_inbox.take();
    if (!request)
        return;
    ++m_requests;
    m_outbox->push(m_convention->outcome(m_desk.handle(*request)));
}

void Publisher::refuseExcess(Time now)
{
    if (now < m_nextRefusals)
        return;
    m_nextRefusals = now + BETWEEN_REFUSALS;
    const std::vector<Incoming> excess = m_inbox.takeRefused();
    for (const Incoming &request : excess)
        m_outbox->push(m_convention->outcome(m_desk.refuse(request, "too many requests at once")));
    if (!excess.empty())
        printTimed(QString("too many requests to write at once: %1 refused so far")
                       .arg(m_inbox.refused()));
}

std::uint64_t Publisher::dropped() const
{
    return m_spooler->dropped() + m_unsendable;
}

LineReport Publisher::report() const
{
    return {QDateTime::currentMSecsSinceEpoch(),
            m_isLost,
            m_session.statistics(),
            m_values.silentStations(),
            m_spooler->stored() + m_outbox->unstored(),
            dropped(),
            m_requests,
            m_inbox.refused(),
            m_outbox->isConnected(),
            m_spooler->stored(),
            m_spooler->storedBytes(),
            m_desk.outcomes()};
}

void Publisher::reportLine(Time now)
{
    if (m_metrics && now >= m_nextMetrics) {
        m_nextMetrics = now + BETWEEN_METRICS;
        m_metrics->note(report());
    }
    if (m_settings.broker.isSparkplug || now < m_nextReport)
        return;
    m_nextReport = now + BETWEEN_REPORTS;
    const LineReport line = report();
    Message message;
    message.time = line.time;
    message.topic = m_topics.line();
    message.payload = toJson(line);
    m_outbox->pushIfConnected(std::move(message));
}

void Publisher::bringBack()
{
    if (!std::exchange(m_isLost, true)) {
        m_reconnection.noteAnswer();
        printTimed("the line was lost, opening it again");
    }
    m_values.noteLoss();
    const bool isBack = m_reconnection.await([this] {
        tick();
        takeRequest();
        return isOver();
    });
    if (!isBack)
        return;
    m_values.noteReconnection();
    m_outages.forget();
    beginPolling();
}

void Publisher::note(const Exchange &exchange)
{
    const Time time = steady_clock::now();
    m_cycle.note(exchange, time);
    m_values.noteExchange(exchange);
    m_outages.note(exchange, time);
    if (exchange.outcome != Exchange::Outcome::Good)
        return;
    if (m_metrics)
        m_metrics->noteRoundTrip(exchange.roundTrip);
    if (std::exchange(m_isLost, false))
        printTimed("the line is back");
}

WriteOutcome Publisher::write(const Tag &tag, const Values &values)
{
    if (m_isLost)
        return {"not sent", "the line is lost", {}};
    const WriteResult result = writeTag(m_session, tag, values);
    return outcomeOf(result.request, result.stoppedAt);
}

void Publisher::finish()
{
    m_session.confirm(false);
    m_courier->end();
    m_spooler->end();
    printError(summary(m_session.statistics()));
    if (m_spool.count() > 0)
        printTimed(QString("%1 messages wait in %2 for the next start")
                       .arg(m_spool.count())
                       .arg(m_settings.spool));
}

} // namespace kmr
