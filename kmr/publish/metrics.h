// The figures of a line and of its publisher for Prometheus, at http://HOST:PORT/metrics. It
// answers in threads of its own, which delay nothing else.
#pragma once

#include "kmr/publish/line_report.h"

#include <QString>

#include <chrono>
#include <memory>

namespace prometheus {
class Exposer;
}

namespace kmr {

class Metrics {
public:
    // Listens at "127.0.0.1:9100", port 0 for any free one. Throws Error (Usage) for a bad address,
    // and when it can't listen there.
    explicit Metrics(const QString &address);
    ~Metrics();
    Metrics(const Metrics &) = delete;
    Metrics &operator=(const Metrics &) = delete;

    // Where the figures are.
    QString url() const;

    // Adds the round trip of a good exchange.
    void noteRoundTrip(std::chrono::nanoseconds time);

    // Shows these figures from now on.
    void note(const LineReport &report);

private:
    struct Figures;

    const QString m_host;
    std::unique_ptr<Figures> m_figures;
    std::unique_ptr<prometheus::Exposer> m_server;
};

} // namespace kmr
