#include "host/line/poll_loop.h"

#include "host/line/link.h"

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

// The station's characters of a frame.
QByteArray stationOf(const QByteArray &frame)
{
    return frame.mid(1, 2);
}

// Whether the line that ended an exchange was the answer, if maybe a damaged one.
bool wasAnswered(ReplyFault fault)
{
    return fault == ReplyFault::None || fault == ReplyFault::NotHex ||
           fault == ReplyFault::WrongLrc || fault == ReplyFault::NoExceptionCode;
}

// The driver hears silence until it turns to its next request.
void giveUp(const DriverFunctions &driver, QString &driverText)
{
    QByteArray silence;
    while (driver.dealRcvFrame(silence, driverText) == SEND_AGAIN) {
    }
}

} // namespace

PollLoop::PollLoop(const DriverFunctions &driver, QIODevice &device, const PollSettings &settings,
                   const std::atomic<bool> &stop, Clock clock)
    : m_driver(driver), m_device(device), m_settings(settings), m_stop(stop),
      m_clock(std::move(clock)), m_quiet(settings.firstQuiet), m_lastHeard(m_clock())
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
    m_isRetry = false;
    Exchange exchange{m_frame};
    exchange.outcome = Exchange::Outcome::PassedOver;
    exchange.fault = ReplyFault::Silence;
    giveUp(m_driver, exchange.driverText);
    tell(exchange);
    return true;
}

PollLoop::Step PollLoop::exchange()
{
    Exchange exchange{m_frame};
    const bool isRetry = std::exchange(m_isRetry, false);
    if (m_frame.frameLen == 0) {
        exchange.fault = ReplyFault::NotSendable;
        handIn(exchange, QByteArray());
        return Step::Exchanged;
    }
    const QByteArray frame(m_frame.frame, m_frame.frameLen);
    const QByteArray station = stationOf(frame);
    emptyLine();
    if (!settle(station, isRetry))
        return broken();
    if (m_stop || isLost(m_device))
        return broken();

    exchange.isOutOfStep = std::exchange(m_isOutOfStep, false);
    noteSent(station, isRetry);
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
    handIn(exchange, filter.reply());
    quietAfter(exchange);
    noteEnd(station, exchange);
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
        giveUp(m_driver, exchange.driverText);
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

// Waits until the line has been quiet as long as it must, and for the answers that the station
// owes. False when the wait was broken off.
bool PollLoop::settle(const QByteArray &station, bool isRetry)
{
    const TimePoint begin = m_clock();
    for (;;) {
        TimePoint end = std::min(m_lastHeard + m_quiet, begin + MAX_QUIET_TIMES * m_quiet);
        const Owed &owed = m_owed[station];
        if (owed.answers > 0 && !isRetry)
            end = std::max(end, owed.until);
        if (m_clock() >= end)
            break;
        const Wait wait = waitUntil(end);
        if (wait == Wait::Broken)
            return false;
        if (wait == Wait::Characters) {
            takeStrays(receive());
            m_lastHeard = m_clock();
        }
    }
    m_quiet = milliseconds(0);
    return true;
}

// What comes between requests: answers that are owed, or prove that answers are out of step.
void PollLoop::takeStrays(const QByteArray &bytes)
{
    for (const QByteArray &line : m_strays.take(bytes)) {
        if (modbus::decodeLine(line).fault != modbus::LineFault::None)
            continue;
        Owed &owed = m_owed[stationOf(line)];
        if (owed.answers > 0) {
            --owed.answers;
            owed.slowest =
                std::max<std::chrono::nanoseconds>(owed.slowest, m_clock() - owed.firstSent);
            owed.until = std::max(owed.until, owed.lastSent + owed.slowest + m_settings.timeout);
        } else if (stationOf(line) == m_lastStation) {
            m_isOutOfStep = true;
            m_quiet = std::max(m_quiet, m_settings.timeout);
            m_lastHeard = m_clock();
        }
    }
}

void PollLoop::noteSent(const QByteArray &station, bool isRetry)
{
    m_strays.clear();
    m_lastStation = station;
    Owed &owed = m_owed[station];
    if (!isRetry)
        owed.answers = 0;
    owed.lastSent = m_clock();
    if (owed.answers == 0)
        owed.firstSent = owed.lastSent;
    ++owed.answers;
}

void PollLoop::noteEnd(const QByteArray &station, const Exchange &exchange)
{
    m_isRetry = exchange.outcome == Exchange::Outcome::SentAgain;
    Owed &owed = m_owed[station];
    const bool isAnswered = wasAnswered(exchange.fault);
    if (isAnswered)
        --owed.answers;
    const TimePoint now = m_clock();
    owed.until = isAnswered ? now + (owed.lastSent - owed.firstSent) + m_settings.timeout
                            : now + 3 * m_settings.timeout;
    owed.until = std::max(owed.until, owed.lastSent + owed.slowest + m_settings.timeout);
}

void PollLoop::quietAfter(const Exchange &exchange)
{
    m_lastHeard = m_clock();
    const bool isRetry = exchange.outcome == Exchange::Outcome::SentAgain;
    switch (exchange.fault) {
    case ReplyFault::None:
    case ReplyFault::NotSendable:
        m_quiet = m_settings.gap;
        break;
    case ReplyFault::TooLong:
    case ReplyFault::NotHex:
    case ReplyFault::WrongLrc:
        m_quiet = std::max(m_settings.gap, std::min(DAMAGED_QUIET, m_settings.timeout));
        break;
    case ReplyFault::Silence:
        m_quiet = isRetry ? m_settings.gap : std::max(m_settings.gap, m_settings.timeout);
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
        takeStrays(receive());
    } while (!m_stop && m_device.waitForReadyRead(0) && m_clock() < latest);
}

QByteArray PollLoop::receive()
{
    QByteArray bytes = m_device.readAll();
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
        if (m_waitObserver)
            m_waitObserver();
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
