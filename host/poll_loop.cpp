#include "host/poll_loop.h"

#include "host/link.h"

#include <algorithm>
#include <utility>

namespace kmr {

namespace {

using std::chrono::milliseconds;

constexpr milliseconds STOP_CHECK(50); // longest wait without a look at the stop flag
constexpr milliseconds IDLE_WAIT(10);
constexpr milliseconds DAMAGED_QUIET(50); // the answer was there, only its rest may follow
constexpr int SEND_AGAIN = 8;             // intf_dealRcvFrame's result
constexpr int MAX_QUIET_TIMES = 10;       // a line that never falls silent is used all the same

} // namespace

PollLoop::PollLoop(const DriverFunctions &driver, QIODevice &device, const PollSettings &settings,
                   const std::atomic<bool> &stop, Clock clock)
    : m_driver(driver), m_device(device), m_settings(settings), m_stop(stop),
      m_clock(std::move(clock))
{
    m_echo.mode = settings.echo;
}

PollLoop::Step PollLoop::step()
{
    if (m_stop)
        return Step::Stopped;
    if (isLost(m_device))
        return Step::LineLost;
    do {
        if (m_driver.getSendFrame(&m_frame) == 0)
            return idle();
        if (!isNextPassedOver())
            return exchange();
    } while (!m_stop);
    return Step::Stopped;
}

bool PollLoop::isNextPassedOver()
{
    m_turn = m_turnOf ? m_turnOf(m_frame) : Turn::Ask;
    if (m_turn != Turn::PassOver)
        return false;
    Exchange exchange{m_frame, {}, Exchange::Outcome::PassedOver, ReplyFault::Silence, 0, {}, {}};
    giveUp(exchange.driverText);
    tell(exchange);
    return true;
}

// The driver hears silence until it turns to its next request.
void PollLoop::giveUp(QString &driverText)
{
    QByteArray silence;
    while (m_driver.dealRcvFrame(silence, driverText) == SEND_AGAIN) {
    }
}

PollLoop::Step PollLoop::exchange()
{
    Exchange exchange{m_frame, {}, Exchange::Outcome::Interrupted, ReplyFault::None, 0, {}, {}};
    if (m_frame.frameLen == 0) {
        exchange.fault = ReplyFault::NotSendable;
        handIn(exchange, QByteArray());
        return Step::Exchanged;
    }
    if (!settle())
        return broken();
    emptyLine();
    if (m_stop || isLost(m_device))
        return broken();

    const QByteArray frame(m_frame.frame, m_frame.frameLen);
    const TimePoint begin = m_clock();
    ReplyFilter filter(frame, m_echo);
    ReplyFilter::Verdict verdict = ReplyFilter::Verdict::MoreWanted;
    if (send(frame)) {
        const auto wireTime = m_settings.characterTime * (m_frame.frameLen + m_frame.replyLen);
        verdict = collect(filter, m_clock() + m_settings.timeout + wireTime, exchange.received);
    }
    if (verdict == ReplyFilter::Verdict::MoreWanted) {
        tell(exchange);
        return broken();
    }
    exchange.roundTrip = m_clock() - begin;
    exchange.fault = filter.fault();
    exchange.exceptionCode = filter.exceptionCode();
    quietAfter(exchange.fault);
    handIn(exchange, filter.reply());
    return Step::Exchanged;
}

// The driver takes an empty reply for silence.
void PollLoop::handIn(Exchange &exchange, QByteArray reply)
{
    switch (m_driver.dealRcvFrame(reply, exchange.driverText)) {
    case 1:
        exchange.outcome = Exchange::Outcome::Good;
        break;
    case 2:
        exchange.outcome = Exchange::Outcome::GivenUp;
        break;
    default:
        exchange.outcome = Exchange::Outcome::SentAgain;
        break;
    }
    if (m_turn == Turn::AskOnce && exchange.outcome == Exchange::Outcome::SentAgain) {
        giveUp(exchange.driverText);
        exchange.outcome = Exchange::Outcome::GivenUp;
    }
    tell(exchange);
}

PollLoop::Step PollLoop::idle()
{
    if (waitUntil(m_clock() + IDLE_WAIT) == Wait::Broken)
        return broken();
    emptyLine();
    return Step::Idle;
}

// After a bad exchange the answer may still be on its way: waits until nothing comes any more, so
// that it is not taken for the answer to the next request. False when the wait was broken off.
bool PollLoop::settle()
{
    const TimePoint latest = m_clock() + MAX_QUIET_TIMES * m_quiet;
    while (m_quiet.count() > 0) {
        switch (waitUntil(std::min(m_lastHeard + m_quiet, latest))) {
        case Wait::Characters:
            receive();
            m_lastHeard = m_clock();
            if (m_lastHeard >= latest)
                m_quiet = milliseconds(0);
            break;
        case Wait::TimeOver:
            m_quiet = milliseconds(0);
            break;
        case Wait::Broken:
            return false;
        }
    }
    return true;
}

void PollLoop::quietAfter(ReplyFault fault)
{
    m_lastHeard = m_clock();
    switch (fault) {
    case ReplyFault::None:
    case ReplyFault::NotSendable:
        m_quiet = m_settings.gap;
        break;
    case ReplyFault::TooLong:
    case ReplyFault::NotHex:
    case ReplyFault::WrongLrc:
    case ReplyFault::WrongLength:
        m_quiet = std::max(m_settings.gap, std::min(DAMAGED_QUIET, m_settings.timeout));
        break;
    default:
        m_quiet = std::max(m_settings.gap, m_settings.timeout);
        break;
    }
}

void PollLoop::emptyLine()
{
    const TimePoint latest = m_clock() + m_settings.timeout;
    do {
        receive();
    } while (!m_stop && m_device.waitForReadyRead(0) && m_clock() < latest);
}

QByteArray PollLoop::receive()
{
    const QByteArray bytes = m_device.readAll();
    if (m_settings.tap && !bytes.isEmpty())
        m_settings.tap(false, bytes);
    return bytes;
}

// False when the wait was broken off, also because the line takes no characters any more.
bool PollLoop::send(const QByteArray &frame)
{
    if (m_settings.tap)
        m_settings.tap(true, frame);
    if (m_device.write(frame) != frame.size())
        return false;
    const TimePoint latest =
        m_clock() + m_settings.timeout + m_settings.characterTime * frame.size();
    while (m_device.bytesToWrite() > 0) {
        const bool written = m_device.waitForBytesWritten(static_cast<int>(STOP_CHECK.count()));
        if (!written && (m_stop || isLost(m_device) || m_clock() >= latest))
            return false;
    }
    return true;
}

// MoreWanted when the wait was broken off.
ReplyFilter::Verdict PollLoop::collect(ReplyFilter &filter, TimePoint deadline,
                                       QByteArray &received)
{
    for (;;) {
        switch (waitUntil(deadline)) {
        case Wait::Characters: {
            const QByteArray bytes = receive();
            received.append(bytes);
            const ReplyFilter::Verdict verdict = filter.take(bytes);
            if (verdict != ReplyFilter::Verdict::MoreWanted)
                return verdict;
            if (m_clock() >= deadline) // also on a line that never falls silent
                return filter.end();
            break;
        }
        case Wait::TimeOver:
            return filter.end();
        case Wait::Broken:
            return ReplyFilter::Verdict::MoreWanted;
        }
    }
}

PollLoop::Wait PollLoop::waitUntil(TimePoint deadline)
{
    for (;;) {
        if (m_stop)
            return Wait::Broken;
        if (m_device.bytesAvailable() > 0)
            return Wait::Characters;
        const auto left = std::chrono::ceil<milliseconds>(deadline - m_clock());
        if (left.count() <= 0)
            return Wait::TimeOver;
        const int wait = static_cast<int>(std::min(left, STOP_CHECK).count());
        if (!m_device.waitForReadyRead(wait) && m_device.bytesAvailable() == 0 && isLost(m_device))
            return Wait::Broken;
    }
}

PollLoop::Step PollLoop::broken() const
{
    return m_stop ? Step::Stopped : Step::LineLost;
}

void PollLoop::tell(const Exchange &exchange) const
{
    if (m_observer)
        m_observer(exchange);
}

} // namespace kmr
