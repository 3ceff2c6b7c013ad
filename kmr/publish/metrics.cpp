#include "kmr/publish/metrics.h"

#include "host/error.h"

#include <QHostAddress>
#include <QTcpServer>
#include <QUrl>
#include <prometheus/counter.h>
#include <prometheus/exposer.h>
#include <prometheus/gauge.h>
#include <prometheus/histogram.h>
#include <prometheus/registry.h>

#include <exception>

namespace kmr {

namespace {

using prometheus::Counter;
using prometheus::Gauge;
using prometheus::Histogram;

// Seconds. Eight words take 5 ms at 115200 baud, 63 ms at 9600 and 250 ms at 2400.
const Histogram::BucketBoundaries ROUND_TRIPS = {0.002, 0.005, 0.01, 0.02, 0.05, 0.075,
                                                 0.1,   0.2,   0.5,  1,    2,    5};

// The server that Prometheus's library brings does not say why it can't listen.
void checkListening(const QUrl &url, const QString &text)
{
    const QHostAddress address(url.host());
    if (address.isNull() || url.port() < 0 || url.authority() != text)
        throw Error(ErrorKind::Usage,
                    QString("bad address for metrics \"%1\": expected ADDRESS:PORT, for example "
                            "127.0.0.1:9100 (port 0 for any free one)")
                        .arg(text));
    QTcpServer probe;
    if (!probe.listen(address, static_cast<quint16>(url.port())))
        throw Error(ErrorKind::Usage,
                    QString("cannot listen on %1 for metrics: %2").arg(text, probe.errorString()));
}

void set(Counter &counter, std::uint64_t count)
{
    counter.Increment(static_cast<double>(count) - counter.Value());
}

void set(Gauge &gauge, std::uint64_t value)
{
    gauge.Set(static_cast<double>(value));
}

} // namespace

// Each is changed by the polling and read by the server, without a lock but the histogram's.
struct Metrics::Figures {
    Counter &counter(const char *name, const char *help)
    {
        return prometheus::BuildCounter().Name(name).Help(help).Register(*registry).Add({});
    }
    Gauge &gauge(const char *name, const char *help)
    {
        return prometheus::BuildGauge().Name(name).Help(help).Register(*registry).Add({});
    }

    const std::shared_ptr<prometheus::Registry> registry = std::make_shared<prometheus::Registry>();
    Counter &exchanges =
        counter("kmr_exchanges_total", "Requests sent on the line, repeats included.");
    Counter &good = counter("kmr_exchanges_good_total", "Requests that were answered.");
    Counter &retries = counter("kmr_retries_total", "Requests that were sent again.");
    Counter &giveUps = counter("kmr_give_ups_total", "Requests that were given up.");
    Counter &checks = counter("kmr_checks_total", "Check questions, which confirm answers.");
    Counter &strays =
        counter("kmr_strays_total", "Answers out of step, which no request waited for.");
    Histogram &roundTrips = prometheus::BuildHistogram()
                                .Name("kmr_round_trip_seconds")
                                .Help("Time from a request's first character to its answer's last.")
                                .Register(*registry)
                                .Add({}, ROUND_TRIPS);
    Gauge &isLineOpen = gauge("kmr_line_open", "1 while the line is open, 0 while it is lost.");
    Gauge &silentStations = gauge("kmr_silent_stations", "Stations that answer nothing.");
    Gauge &isConnected = gauge("kmr_broker_connected", "1 while there is a connection, else 0.");
    Gauge &waiting = gauge("kmr_waiting_messages", "Messages that wait for the broker.");
    Gauge &spooled = gauge("kmr_spool_messages", "Messages that wait on disk.");
    Gauge &spoolBytes = gauge("kmr_spool_bytes", "Bytes of the messages that wait on disk.");
    Counter &dropped = counter("kmr_dropped_messages_total",
                               "Messages that are lost: no room, or refused by the broker.");
    prometheus::Family<Counter> &requests = prometheus::BuildCounter()
                                                .Name("kmr_requests_total")
                                                .Help("Requests to write, by their outcome.")
                                                .Register(*registry);
    Counter &requestsRefused =
        counter("kmr_requests_refused_total", "Requests to write that came too fast.");
};

Metrics::Metrics(const QString &address)
    : m_host(address.section(':', 0, -2)), m_figures(std::make_unique<Figures>())
{
    checkListening(QUrl("http://" + address, QUrl::StrictMode), address);
    try {
        m_server = std::make_unique<prometheus::Exposer>(address.toStdString());
    } catch (const std::exception &error) {
        throw Error(ErrorKind::Usage,
                    QString("cannot listen on %1 for metrics: %2").arg(address, error.what()));
    }
    m_server->RegisterCollectable(m_figures->registry);
}

Metrics::~Metrics() = default;

QString Metrics::url() const
{
    return QString("http://%1:%2/metrics").arg(m_host).arg(m_server->GetListeningPorts().front());
}

void Metrics::noteRoundTrip(std::chrono::nanoseconds time)
{
    m_figures->roundTrips.Observe(std::chrono::duration<double>(time).count());
}

void Metrics::note(const LineReport &report)
{
    Figures &figures = *m_figures;
    set(figures.exchanges, report.statistics.sent());
    set(figures.good, report.statistics.good());
    set(figures.retries, report.statistics.retries());
    set(figures.giveUps, report.statistics.giveUps());
    set(figures.checks, report.statistics.checks());
    set(figures.strays, report.statistics.strays());
    set(figures.isLineOpen, report.isLost ? 0 : 1);
    set(figures.silentStations, report.silentStations.size());
    set(figures.isConnected, report.isConnected ? 1 : 0);
    set(figures.waiting, report.waiting);
    set(figures.spooled, report.spooled);
    set(figures.spoolBytes, report.spoolBytes);
    set(figures.dropped, report.dropped);
    set(figures.requestsRefused, report.requestsRefused);
    for (const auto &[outcome, count] : report.outcomes)
        set(figures.requests.Add({{"outcome", outcome}}), count);
}

} // namespace kmr
