// The simulated controller with a link and a thread of its own, and the history of its
// memory. Its functions are for the host's thread.
#pragma once

#include "host/line/poll_loop.h"
#include "simulator/controller.h"
#include "simulator/faults.h"
#include "simulator/pseudo_terminal.h"
#include "simulator/tcp_server.h"
#include "tests/soak/cell.h"
#include "tests/soak/strays.h"

#include <QMutex>
#include <QObject>
#include <QStringList>
#include <QTemporaryDir>
#include <QThread>
#include <QTimer>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <random>
#include <vector>

namespace soak {

class Plant {
public:
    enum class Link { Tcp, Pty };

    Plant(Link link, const std::vector<Cell> &cells, std::uint64_t seed);
    ~Plant();
    Plant(const Plant &) = delete;
    Plant &operator=(const Plant &) = delete;

    // The link as a host's user types it.
    const QString &link() const
    {
        return m_link;
    }

    // A clock that stops while the plant's thread does not run: on a busy machine answers are not
    // later by this clock than the faults make them.
    kmr::Clock clock();

    // Replaces the faults. From then on the controller changes a cell of its own at each request,
    // or none.
    void set(std::vector<simulator::Fault> faults, std::uint64_t seed, bool changes,
             const StraySettings &strays = {});

    std::uint32_t value(std::size_t cell) const;

    // What the cell held since the last forget().
    std::vector<std::uint32_t> heldValues(std::size_t cell) const;

    // Forgets what cells held before now.
    void forget();

    // The write requests, ':' to LF, that were carried out since the last call.
    std::vector<QByteArray> takeWrites();

    // The last requests that were carried out, each with the answer before anything happened to it.
    QStringList recentAnswers() const;

    // Stray answers so far.
    int strays();

    // Waits until the plant's thread has nothing to do.
    void finish();

private:
    struct Server { // lives in the plant's thread
        explicit Server(const simulator::Responder &respond);

        simulator::TcpServer tcp;
        simulator::PseudoTerminal terminal;
        QTimer heartbeat;
    };

    void inThread(const std::function<void()> &task);
    void start(Link link);
    void beat();
    void note(const simulator::Exchange &exchange);

    const std::vector<Cell> m_cells;
    simulator::Controller m_controller{"01"};
    simulator::Faults m_faults;
    Strays m_strays;
    bool m_changes = false;
    std::mt19937_64 m_random;
    QString m_link;
    QTemporaryDir m_directory;

    mutable QMutex m_mutex; // for the next four
    std::vector<std::vector<std::uint32_t>> m_held;
    std::vector<QByteArray> m_writes;
    std::vector<std::uint32_t> m_values;
    QStringList m_recentAnswers;

    std::atomic<std::int64_t> m_now{0}; // nanoseconds of the plant's clock
    std::chrono::steady_clock::time_point m_lastBeat;
    QThread m_thread;
    QObject m_context; // in the plant's thread
    std::unique_ptr<Server> m_server;
};

} // namespace soak
