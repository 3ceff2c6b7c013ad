// Many simulated lines in one process, for script/bench-plant: a controller with station 1 on each,
// on a free TCP port of the loopback, at the pace of a serial line.
//
//     plant_simulator LINES BAUD
//
// BAUD: 0 for lines without a pace. Prints a port a line. Nothing changes at first; a line
// "WORDS MILLISECONDS" on stdin lets each controller change its words from D0 on, that many, once
// in each such time; 0 0 stops that. D0 and D1, the low word first, then hold the time of the
// change in milliseconds since 1970 UTC, modulo 2^32; the others a number that counts the changes.
#include "simulator/controller.h"
#include "simulator/faults.h"
#include "simulator/tcp_server.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QSocketNotifier>
#include <QTextStream>
#include <QTimer>

#include <memory>
#include <vector>

#include <unistd.h>

namespace {

class Line {
public:
    explicit Line(int baud) : m_server(simulator::respondAs(m_controller), simulator::Pacing(baud))
    {
        m_timer.setTimerType(Qt::PreciseTimer);
        QObject::connect(&m_timer, &QTimer::timeout, [this] { change(); });
    }

    // Its port, or 0.
    int listen()
    {
        return m_server.listen("127.0.0.1", 0).isEmpty() ? m_server.port() : 0;
    }

    void changeEach(int words, int milliseconds)
    {
        m_words = words;
        m_timer.stop();
        if (words > 0)
            m_timer.start(milliseconds);
    }

private:
    void change()
    {
        ++m_changes;
        for (int number = 2; number < m_words; ++number)
            simulator::setElement(m_controller.memory(), "D", number, m_changes % 1000);
        const auto time = static_cast<std::uint64_t>(QDateTime::currentMSecsSinceEpoch());
        simulator::setElement(m_controller.memory(), "D", 0, time & 0xffff);
        simulator::setElement(m_controller.memory(), "D", 1, time >> 16 & 0xffff);
    }

    simulator::Controller m_controller{"01"};
    simulator::TcpServer m_server;
    QTimer m_timer;
    int m_words = 0;
    std::uint32_t m_changes = 0;
};

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 3) {
        QTextStream(stderr) << "usage: plant_simulator LINES BAUD\n";
        return 2;
    }
    std::vector<std::unique_ptr<Line>> lines;
    for (int i = 0; i < arguments[1].toInt(); ++i) {
        lines.push_back(std::make_unique<Line>(arguments[2].toInt()));
        QTextStream(stdout) << lines.back()->listen() << '\n';
    }
    QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, [&lines] {
        char text[100] = {};
        if (read(STDIN_FILENO, text, sizeof text - 1) <= 0)
            QCoreApplication::quit();
        const QStringList numbers = QString(text).simplified().split(' ');
        const int interval = numbers.last().toInt();
        int index = 0;
        for (const auto &line : lines) // one after the other, so that they don't change at once
            QTimer::singleShot(interval * index++ / static_cast<int>(lines.size()),
                               [&line, numbers, interval] {
                                   line->changeEach(numbers.first().toInt(), interval);
                               });
    });
    return QCoreApplication::exec();
}
