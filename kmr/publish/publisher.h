// One run of 'kmr publish': polls, and joins the values, the broker, the spool and the requests.
#pragma once

#include "kmr/connection.h"
#include "kmr/outages.h"
#include "kmr/publish/courier.h"
#include "kmr/publish/metrics.h"
#include "kmr/publish/service_notice.h"
#include "kmr/publish/set_inbox.h"
#include "kmr/publish/spooler.h"
#include "kmr/publish/topics.h"
#include "kmr/publish/value_publisher.h"
#include "kmr/publish/write_desk.h"
#include "kmr/reconnection.h"
#include "kmr/watch/watch_cycle.h"

#include <atomic>
#include <memory>
#include <optional>
#include <vector>

namespace kmr {

struct PublisherSettings {
    QStringList tags;      // empty: those of the project
    QString prefix;        // with Sparkplug GROUP/NODE
    BrokerSettings broker; // without client id
    PayloadForm form = PayloadForm::Json;
    std::chrono::milliseconds heartbeat{0}; // 0: none
    std::chrono::milliseconds cycle{0};     // to poll everything once; 0: the shortest
    std::optional<double> seconds;          // to run
    QString spool;                          // file
    SpoolLimits spoolLimits;
    bool allowsWrites = false;
    QString metrics; // "127.0.0.1:9100", where Prometheus finds figures; empty: nowhere
};

class Publisher {
public:
    // Reads the names, and opens the spool and the line. As a service it waits for the line. Throws
    // Error.
    Publisher(const Options &options, PublisherSettings settings);
    ~Publisher();
    Publisher(const Publisher &) = delete;
    Publisher &operator=(const Publisher &) = delete;

    // Publishes until the end is asked for. ItemFailed when messages were dropped.
    ExitCode run();

private:
    using Time = std::chrono::steady_clock::time_point;

    std::shared_ptr<Convention> convention() const;
    void checkSpool();
    BrokerSettings brokerSettings() const;
    Courier::Events courierEvents();
    void observe();
    bool isOver() const;
    void beginPolling();
    void next();
    void tick();
    void takeRequest();
    void refuseExcess(Time now);
    std::uint64_t dropped() const;
    LineReport report() const;
    void reportLine(Time now);
    void bringBack();
    void note(const Exchange &exchange);
    WriteOutcome write(const Tag &tag, const Values &values);
    void finish();

    const PublisherSettings m_settings;
    const std::unique_ptr<Metrics> m_metrics; // or null
    ServiceNotice m_notice;
    Connection m_connection;
    const std::vector<PublishedTag> m_tags;
    const Topics m_topics;
    const std::shared_ptr<Convention> m_convention;
    Spool m_spool;
    const std::shared_ptr<WakeUp> m_wakeUp = std::make_shared<WakeUp>();
    const std::shared_ptr<Outbox> m_outbox;
    Session &m_session;
    ValuePublisher m_values;
    WriteDesk m_desk;
    SetInbox m_inbox;
    WatchCycle m_cycle;
    Reconnection m_reconnection;
    Outages m_outages;
    const Time m_begin = std::chrono::steady_clock::now();
    Time m_nextReport;
    Time m_nextMetrics;
    Time m_nextRefusals;
    std::uint64_t m_requests = 0;
    bool m_isLost = false;
    std::atomic<bool> m_mustPublishAll{false};
    std::atomic<std::uint64_t> m_unsendable{0}; // messages
    std::optional<Spooler> m_spooler;           // the threads come last and go first
    std::optional<Courier> m_courier;
};

} // namespace kmr
