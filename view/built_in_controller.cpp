#include "view/built_in_controller.h"

#include "host/error.h"
#include "host/line/link.h"
#include "simulator/animation.h"
#include "simulator/controller.h"
#include "simulator/faults.h"
#include "simulator/tcp_server.h"

#include <QTimer>

#include <cmath>
#include <map>

namespace kmr {

namespace {

constexpr std::chrono::milliseconds STEP(100);
const int STATIONS[] = {1, 2};

// The controllers and their server, in the thread.
class Server : public QObject {
public:
    explicit Server(const BuiltInSettings &settings)
        : m_faults(settings.faults, 1),
          m_server([this](const QByteArray &line) { return answer(line); },
                   simulator::Pacing(settings.baud))
    {
        for (const int station : STATIONS) {
            const QByteArray name = QByteArray::number(station).rightJustified(2, '0');
            m_controllers.emplace(station,
                                  simulator::Controller(name, simulator::Registers::OfAreas));
        }
        QObject::connect(&m_timer, &QTimer::timeout, this, [this] { move(); });
    }

    // Returns what went wrong, or an empty text.
    QString listen()
    {
        m_timer.start(STEP);
        return m_server.listen("127.0.0.1", 0);
    }

    quint16 port() const
    {
        return m_server.port();
    }

private:
    simulator::Plan answer(const QByteArray &line)
    {
        for (auto &[station, controller] : m_controllers) {
            if (controller.isAddressedBy(line))
                return m_faults.answer(controller, line);
        }
        return {};
    }

    // A ramp, a wave and a value that can't find its place, besides what animation moves.
    void move()
    {
        ++m_steps;
        for (auto &[station, controller] : m_controllers) {
            simulator::Memory &memory = controller.memory();
            simulator::advance(memory);
            const double phase = m_steps * 0.1 + station;
            const auto word = [&](int number, double value) {
                simulator::setElement(memory, "D", number,
                                      static_cast<std::uint32_t>(std::lround(value)));
            };
            word(100, 500 + 300 * std::sin(phase / 3));
            word(101, 420 + 4 * std::sin(phase / 9));
            word(102, m_steps % 40 < 20 ? 300 : 700);
            simulator::setElement(memory, "Y", 0, m_steps / 30 % 2);
        }
    }

    std::map<int, simulator::Controller> m_controllers;
    simulator::Faults m_faults;
    simulator::TcpServer m_server;
    QTimer m_timer;
    std::uint32_t m_steps = 0;
};

} // namespace

BuiltInController::BuiltInController(const BuiltInSettings &settings)
    : m_server(nullptr), m_baud(settings.baud)
{
    m_thread.setObjectName("simulator");
    m_thread.start();
    QString fault;
    quint16 port = 0;
    // The server's sockets belong to the thread that makes them.
    QObject starter;
    starter.moveToThread(&m_thread);
    QMetaObject::invokeMethod(
        &starter,
        [&] {
            auto *server = new Server(settings);
            m_server = server;
            fault = server->listen();
            port = server->port();
            starter.moveToThread(nullptr);
        },
        Qt::BlockingQueuedConnection);
    m_link = QString("tcp://127.0.0.1:%1").arg(port);
    if (!fault.isEmpty()) {
        m_server->deleteLater();
        m_thread.quit();
        m_thread.wait();
        throw Error(ErrorKind::Link, fault);
    }
}

BuiltInController::~BuiltInController()
{
    m_server->deleteLater(); // which a thread that ends does at last
    m_thread.quit();
    m_thread.wait();
}

std::chrono::nanoseconds BuiltInController::characterTime() const
{
    LinkAddress address;
    address.kind = LinkAddress::Kind::Serial;
    address.baud = m_baud;
    return m_baud > 0 ? kmr::characterTime(address) : std::chrono::nanoseconds(0);
}

QStringList BuiltInController::tags()
{
    return {"D0", "D100", "D101", "D102", "CV2200", "X0x8", "Y0", "2#D100"};
}

} // namespace kmr
