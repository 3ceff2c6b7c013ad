#include "tests/soak/plant.h"

#include "modbus/protocol.h"

#include <QMutexLocker>

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace soak {

namespace {

using namespace std::chrono_literals;

constexpr int RECENT_ANSWERS = 4;
constexpr auto BEAT = 1ms;
constexpr std::chrono::nanoseconds LONGEST_BEAT = 2ms; // what is longer, the thread did not run

bool isWrite(std::uint8_t function)
{
    return function == modbus::WRITE_SINGLE_COIL || function == modbus::WRITE_MULTIPLE_REGISTERS;
}

} // namespace

Plant::Server::Server(const simulator::Responder &respond) : tcp(respond), terminal(respond) {}

Plant::Plant(Link link, const std::vector<Cell> &cells, std::uint64_t seed)
    : m_cells(cells), m_strays(seed), m_random(seed)
{
    for (const Cell &cell : m_cells) {
        store(m_controller.memory(), cell, cell.mark);
        m_values.push_back(cell.mark);
        m_held.push_back({cell.mark});
    }
    m_controller.setObserver([this](const simulator::Exchange &exchange) { note(exchange); });
    m_context.moveToThread(&m_thread);
    m_thread.start();
    inThread([this, link] { start(link); });
}

Plant::~Plant()
{
    inThread([this] { m_server.reset(); });
    m_thread.quit();
    m_thread.wait();
}

void Plant::inThread(const std::function<void()> &task)
{
    QMetaObject::invokeMethod(&m_context, task, Qt::BlockingQueuedConnection);
}

void Plant::start(Link link)
{
    const simulator::Responder respond = simulator::respondAs(m_controller, &m_faults);
    m_server = std::make_unique<Server>(
        [this, respond](const QByteArray &line) { return m_strays.stray(respond(line)); });
    QString error;
    if (link == Link::Tcp) {
        error = m_server->tcp.listen("127.0.0.1", 0);
        m_link = QString("tcp://127.0.0.1:%1").arg(m_server->tcp.port());
    } else {
        const QString path = m_directory.filePath("line");
        error = m_server->terminal.open(path);
        // A pseudo-terminal passes characters on at once, whatever its settings say.
        m_link = QString("serial://%1?baud=115200&frame=8N1").arg(path);
    }
    if (!error.isEmpty())
        qFatal("%s", qPrintable(error));
    m_lastBeat = std::chrono::steady_clock::now();
    m_server->heartbeat.setTimerType(Qt::PreciseTimer);
    QObject::connect(&m_server->heartbeat, &QTimer::timeout, &m_server->heartbeat,
                     [this] { beat(); });
    m_server->heartbeat.start(BEAT);
}

void Plant::beat()
{
    const auto now = std::chrono::steady_clock::now();
    const std::chrono::nanoseconds passed = now - std::exchange(m_lastBeat, now);
    m_now += std::min(passed, LONGEST_BEAT).count();
}

kmr::Clock Plant::clock()
{
    return [this] {
        return std::chrono::steady_clock::time_point(std::chrono::nanoseconds(m_now.load()));
    };
}

void Plant::set(std::vector<simulator::Fault> faults, std::uint64_t seed, bool changes,
                const StraySettings &strays)
{
    inThread([&] {
        m_strays.set(strays);
        m_faults = simulator::Faults(std::move(faults), seed);
        m_changes = changes;
    });
}

std::uint32_t Plant::value(std::size_t cell) const
{
    const QMutexLocker lock(&m_mutex);
    return m_values[cell];
}

std::vector<std::uint32_t> Plant::heldValues(std::size_t cell) const
{
    const QMutexLocker lock(&m_mutex);
    return m_held[cell];
}

void Plant::forget()
{
    const QMutexLocker lock(&m_mutex);
    for (std::size_t i = 0; i < m_cells.size(); ++i)
        m_held[i].assign(1, m_values[i]);
}

std::vector<QByteArray> Plant::takeWrites()
{
    const QMutexLocker lock(&m_mutex);
    return std::exchange(m_writes, {});
}

QStringList Plant::recentAnswers() const
{
    const QMutexLocker lock(&m_mutex);
    return m_recentAnswers;
}

int Plant::strays()
{
    int count = 0;
    inThread([&] { count = m_strays.count(); });
    return count;
}

void Plant::finish()
{
    inThread([] {});
}

// Runs before the answer goes out, and after it was made.
void Plant::note(const simulator::Exchange &exchange)
{
    if (exchange.outcome != simulator::Outcome::Executed)
        return;
    if (m_changes) {
        const Cell &cell = m_cells[m_random() % m_cells.size()];
        const std::uint32_t value = load(m_controller.memory(), cell);
        if (cell.owner == Owner::Controller)
            store(m_controller.memory(), cell, cell.mark | ((value + 1) & 0xFF));
    }
    const QMutexLocker lock(&m_mutex);
    m_recentAnswers.append(
        QString::fromLatin1(exchange.line.trimmed() + " -> " + exchange.answer.trimmed()));
    if (m_recentAnswers.size() > RECENT_ANSWERS)
        m_recentAnswers.removeFirst();
    if (isWrite(exchange.function))
        m_writes.push_back(exchange.line);
    for (std::size_t i = 0; i < m_cells.size(); ++i) {
        const std::uint32_t value = load(m_controller.memory(), m_cells[i]);
        if (std::exchange(m_values[i], value) != value)
            m_held[i].push_back(value);
    }
}

} // namespace soak
