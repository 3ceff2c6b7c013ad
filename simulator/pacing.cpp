#include "simulator/pacing.h"

#include <QSocketNotifier>
#include <QTimer>

#include <memory>
#include <utility>
#include <vector>

#include <sys/timerfd.h>
#include <unistd.h>

namespace simulator {

namespace {

constexpr int BITS_PER_CHARACTER = 10;

// A file that becomes readable after a time.
class TimerFile {
public:
    explicit TimerFile(std::chrono::nanoseconds time)
        : m_descriptor(timerfd_create(CLOCK_MONOTONIC, TFD_NONBLOCK | TFD_CLOEXEC))
    {
        const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(time);
        itimerspec setting{};
        setting.it_value.tv_sec = seconds.count();
        setting.it_value.tv_nsec = (time - seconds).count();
        timerfd_settime(m_descriptor, 0, &setting, nullptr);
    }
    ~TimerFile()
    {
        if (m_descriptor >= 0)
            ::close(m_descriptor);
    }
    TimerFile(const TimerFile &) = delete;
    TimerFile &operator=(const TimerFile &) = delete;

    int descriptor() const
    {
        return m_descriptor;
    }

private:
    int m_descriptor;
};

// Pieces on their way.
struct Sending {
    struct Piece {
        std::chrono::steady_clock::time_point due;
        QByteArray bytes;
    };

    QObject &owner;
    std::function<void(const QByteArray &)> send;
    std::vector<Piece> pieces;
};

// One timer at a time: timers that expire together in a late event loop fire in any order.
void sendFrom(std::size_t index, const std::shared_ptr<const Sending> &sending)
{
    for (; index < sending->pieces.size(); ++index) {
        const Sending::Piece &piece = sending->pieces[index];
        const auto left = piece.due - std::chrono::steady_clock::now();
        if (left.count() > 0) {
            callAfter(left, sending->owner, [index, sending] { sendFrom(index, sending); });
            return;
        }
        sending->send(piece.bytes);
    }
}

} // namespace

Pacing::Pacing(int baud) : m_baud(baud) {}

std::chrono::nanoseconds Pacing::timeOf(qint64 characters) const
{
    if (m_baud <= 0)
        return std::chrono::nanoseconds(0);
    return std::chrono::nanoseconds(std::chrono::seconds(BITS_PER_CHARACTER * characters)) / m_baud;
}

void Pacing::slowDown(Plan &plan, qint64 requestChars) const
{
    qint64 before = requestChars;
    for (Plan::Piece &piece : plan.pieces) {
        piece.after += timeOf(before + piece.bytes.size());
        before = 0;
    }
}

void callAfter(std::chrono::nanoseconds time, QObject &owner, std::function<void()> action)
{
    const auto file = std::make_shared<TimerFile>(time);
    if (time.count() <= 0 || file->descriptor() < 0) { // no descriptors left: rounds up
        QTimer::singleShot(std::chrono::ceil<std::chrono::milliseconds>(time), Qt::PreciseTimer,
                           &owner, std::move(action));
        return;
    }
    auto *notifier = new QSocketNotifier(file->descriptor(), QSocketNotifier::Read, &owner);
    QObject::connect(notifier, &QSocketNotifier::activated, notifier,
                     [file, notifier, action = std::move(action)] {
                         notifier->setEnabled(false);
                         notifier->deleteLater();
                         action();
                     });
}

void sendPieces(const Plan &plan, QObject &owner, std::function<void(const QByteArray &)> send)
{
    const auto sending = std::make_shared<Sending>(Sending{owner, std::move(send), {}});
    auto due = std::chrono::steady_clock::now();
    for (const Plan::Piece &piece : plan.pieces) {
        due += piece.after;
        sending->pieces.push_back({due, piece.bytes});
    }
    sendFrom(0, sending);
}

} // namespace simulator
