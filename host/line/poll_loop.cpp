#include "host/line/poll_loop.h"

#include "host/line/answer_form.h"
#include "modbus/protocol.h"

#include <algorithm>
#include <utility>

namespace kmr {

namespace {

using std::chrono::milliseconds;

constexpr milliseconds IDLE_WAIT(10);
constexpr milliseconds DAMAGED_QUIET(50);   // the answer was there, only its rest may follow
constexpr int SEND_AGAIN = 8;               // intf_dealRcvFrame's result
constexpr int MAX_QUIET_TIMES = 10;         // a line that never falls silent is used all the same
constexpr int CHECK_ATTEMPTS = 3;           // of a check question that confirms something
constexpr milliseconds LONGEST_DOUBT(1000); // what waits longer gets a check question
constexpr int KEPT_CHARS = 8192;            // of each end of what an exchange brings
constexpr int READ_REPLY_OVERHEAD = 11;     // characters of a read's answer that are not data

// Whether the line that ended an exchange was the answer, if maybe a damaged one.
bool wasAnswered(ReplyFault fault)
{
    return fault == ReplyFault::None || fault == ReplyFault::NotHex ||
           fault == ReplyFault::WrongLrc || fault == ReplyFault::NoExceptionCode;
}

// Of a peer that floods only the two ends are kept.
QByteArray withinLimit(const QByteArray &received)
{
    return received.size() <= 2 * KEPT_CHARS
               ? received
               : received.left(KEPT_CHARS) + received.right(KEPT_CHARS);
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
    : m_driver(driver), m_settings(settings), m_line(device, stop, std::move(clock), settings.tap),
      m_inStep(settings.timeout), m_quiet(settings.firstQuiet), m_lastHeard(m_line.now()),
      m_owed(settings.timeout)
{
    m_echo.mode = settings.echo;
}

PollLoop::Step PollLoop::step()
{
    if (m_line.isStopped())
        return Step::Stopped;
    if (m_line.isLost())
        return Step::LineLost;
    do {
        if (m_driver.getSendFrame(&m_frame) == 0)
            return idle();
        if (!isNextPassedOver())
            return exchange();
    } while (!m_line.isStopped());
    return Step::Stopped;
}

bool PollLoop::isNextPassedOver()
{
    m_turn = m_turnOf ? m_turnOf(m_frame) : Turn::Ask;
    if (m_turn != Turn::PassOver)
        return false;
    m_isRetry = false;
    Exchange exchange{m_frame, ++m_number};
    exchange.outcome = Exchange::Outcome::PassedOver;
    exchange.fault = ReplyFault::Silence;
    giveUp(m_driver, exchange.driverText);
    tell(exchange);
    return true;
}

PollLoop::Step PollLoop::exchange()
{
    Exchange exchange{m_frame, ++m_number};
    const bool isRetry = std::exchange(m_isRetry, false);
    if (m_frame.frameLen == 0) {
        exchange.fault = ReplyFault::NotSendable;
        handIn(exchange, QByteArray());
        return Step::Exchanged;
    }
    const QByteArray frame(m_frame.frame, m_frame.frameLen);
    const Check check = isRetry || !m_settings.inStep ? Check::Answered : checkBefore(frame);
    if (check == Check::Broken)
        return broken();
    if (check == Check::Unanswered) { // so would be the request
        exchange.fault = ReplyFault::Silence;
        handIn(exchange, QByteArray());
        return Step::Exchanged;
    }
    const Answer answer = talk(frame, m_frame.replyLen, isRetry);
    if (answer.end == Answer::End::NotSent)
        return broken();
    exchange.received = answer.received;
    exchange.receivedChars = answer.receivedChars;
    exchange.length = answer.length;
    exchange.roundTrip = answer.roundTrip;
    exchange.fault = answer.fault;
    exchange.exceptionCode = answer.exceptionCode;
    if (answer.end == Answer::End::BrokenOff) {
        tell(exchange);
        return broken();
    }
    handIn(exchange, answer.reply);
    quietAfter(exchange.fault, m_isRetry);
    return Step::Exchanged;
}

// Sends a frame once, when the line has settled, and collects the answer.
PollLoop::Answer PollLoop::talk(const QByteArray &frame, int replyChars, bool isRetry)
{
    Answer answer;
    emptyLine();
    if (!settle(modbus::stationOf(frame), isRetry) || m_line.isStopped() || m_line.isLost())
        return answer;
    noteSent(frame, isRetry);
    const TimePoint begin = m_line.now();
    ReplyFilter filter(frame, m_echo);
    ReplyFilter::Verdict verdict = ReplyFilter::Verdict::MoreWanted;
    if (m_line.send(frame, m_settings.timeout + m_settings.characterTime * frame.size())) {
        const auto wireTime = m_settings.characterTime * (frame.size() + replyChars);
        verdict = collect(filter, frame, m_line.now() + m_settings.timeout + wireTime, answer);
    }
    answer.end =
        verdict == ReplyFilter::Verdict::MoreWanted ? Answer::End::BrokenOff : Answer::End::Over;
    if (answer.end == Answer::End::BrokenOff)
        return answer;
    answer.roundTrip = m_line.now() - begin;
    answer.reply = filter.reply();
    answer.fault = filter.fault();
    answer.exceptionCode = filter.exceptionCode();
    answer.length = filter.length();
    noteEnd(frame, answer.fault);
    return answer;
}

// Asks what must be asked before a new request. Unanswered: its station does not answer.
PollLoop::Check PollLoop::checkBefore(const QByteArray &frame)
{
    const QByteArray request = modbus::decodeLine(frame).message;
    const QByteArray waiting = m_inStep.waitingSince(m_line.now() - LONGEST_DOUBT);
    if (!waiting.isEmpty() && waiting != request.left(1) &&
        check(waiting, {}, CHECK_ATTEMPTS) == Check::Broken)
        return Check::Broken;
    // A second one when the first is refused like the request before it.
    for (int i = 0; i < 2 && m_inStep.needsCheck(request); ++i) {
        const int attempts = m_inStep.hasUnconfirmed(request.left(1)) ? CHECK_ATTEMPTS : 1;
        const Check result = check(request.left(1), request, attempts);
        if (result != Check::Answered)
            return result;
    }
    return Check::Answered;
}

// `next`: the request that follows, or empty.
PollLoop::Check PollLoop::check(const QByteArray &station, const QByteArray &next, int attempts)
{
    const QByteArray question = m_inStep.checkQuestion(station, next);
    const QByteArray frame = modbus::encodeLine(question);
    m_isRetry = false;
    for (int attempt = 0; attempt < attempts; ++attempt) {
        const Answer answer =
            talk(frame, READ_REPLY_OVERHEAD + 2 * answerBytes(question), attempt > 0);
        if (answer.end != Answer::End::Over)
            return Check::Broken;
        const bool isAnswered = answer.fault == ReplyFault::None;
        if (m_checkObserver)
            m_checkObserver(isAnswered ? answer.roundTrip : std::chrono::nanoseconds(0));
        quietAfter(answer.fault, attempt + 1 < attempts);
        if (!isAnswered)
            continue;
        tellConfirmed(station,
                      m_inStep.noteCheckAnswer(question, answer.exceptionCode != 0, m_line.now()));
        return Check::Answered;
    }
    m_inStep.noteCheckGiveUp(station);
    tell(StepNews{StepNews::Kind::Unanswered, stationNumber(station)});
    return Check::Unanswered;
}

PollLoop::Step PollLoop::confirm(bool isToTheLast)
{
    for (bool isOver = !m_settings.inStep; !isOver; isOver = !isToTheLast || !isHeld()) {
        if (!checkAll() || (isToTheLast && !waitForLate()))
            return broken();
    }
    return m_line.isStopped() ? Step::Stopped : Step::Exchanged;
}

bool PollLoop::isHeld() const
{
    return !m_inStep.waitingSince(TimePoint::max()).isEmpty();
}

// Twice for each station at most: a refused check question may prove nothing. False when broken
// off.
bool PollLoop::checkAll()
{
    QByteArray last;
    for (QByteArray station; !(station = m_inStep.waitingSince(m_line.now())).isEmpty();) {
        const bool isSecond = station == last;
        if (check(station, {}, CHECK_ATTEMPTS) == Check::Broken)
            return false;
        if (isSecond && m_inStep.hasUnconfirmed(station))
            noteGiveUp(station);
        last = station;
    }
    return true;
}

// Until all that is in step can be confirmed. False when broken off.
bool PollLoop::waitForLate()
{
    for (;;) {
        switch (m_line.waitUntil(m_inStep.heldUntil())) {
        case Wait::Characters:
            takeStrays(m_line.receive());
            break;
        case Wait::TimeOver:
            return true;
        case Wait::Broken:
            return false;
        }
    }
}

void PollLoop::noteGiveUp(const QByteArray &station)
{
    m_inStep.noteGiveUp(station);
    tell(StepNews{StepNews::Kind::Unanswered, stationNumber(station)});
}

void PollLoop::tellConfirmed(const QByteArray &station, std::uint64_t upTo) const
{
    if (upTo > 0)
        tell(StepNews{StepNews::Kind::Confirmed, stationNumber(station), upTo});
}

// What an exchange means for those before it.
void PollLoop::noteSteps(const Exchange &exchange, bool isAnswered)
{
    const QByteArray request =
        modbus::decodeLine(QByteArray(m_frame.frame, m_frame.frameLen)).message;
    if (isAnswered)
        tellConfirmed(request.left(1), m_inStep.noteAnswer(request, exchange.exceptionCode != 0,
                                                           exchange.number, m_line.now()));
    else if (exchange.outcome == Exchange::Outcome::GivenUp)
        noteGiveUp(request.left(1));
}

// The driver takes an empty reply for silence.
void PollLoop::handIn(Exchange &exchange, QByteArray reply)
{
    const bool isAnswered = !reply.isEmpty();
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
    if (exchange.outcome == Exchange::Outcome::SentAgain &&
        (m_turn == Turn::AskOnce || isRefusedForGood(exchange.exceptionCode))) {
        QString ofSilence;
        giveUp(m_driver, ofSilence);
        exchange.outcome = Exchange::Outcome::GivenUp;
    }
    m_isRetry = exchange.outcome == Exchange::Outcome::SentAgain;
    if (m_settings.inStep && exchange.fault != ReplyFault::NotSendable)
        noteSteps(exchange, isAnswered);
    tell(exchange);
    if (!m_settings.inStep)
        tell(StepNews{StepNews::Kind::Confirmed, m_frame.var.station, exchange.number});
}

// A read of what the controller doesn't have; a write may have been carried out before.
bool PollLoop::isRefusedForGood(int exceptionCode) const
{
    const QByteArray request =
        modbus::decodeLine(QByteArray(m_frame.frame, m_frame.frameLen)).message;
    return (exceptionCode == modbus::ILLEGAL_DATA_ADDRESS ||
            exceptionCode == modbus::ILLEGAL_DATA_VALUE) &&
           modbus::isRead(modbus::byteAt(request, 1));
}

PollLoop::Step PollLoop::idle()
{
    const Step confirmed = confirm(false);
    if (confirmed != Step::Exchanged)
        return confirmed;
    if (m_line.waitUntil(m_line.now() + IDLE_WAIT) == Wait::Broken)
        return broken();
    emptyLine();
    return Step::Idle;
}

// Waits until the line has been quiet as long as it must, and for the answers that the station
// owes. False when the wait was broken off.
bool PollLoop::settle(const QByteArray &station, bool isRetry)
{
    const TimePoint begin = m_line.now();
    for (;;) {
        TimePoint end = std::min(m_lastHeard + m_quiet, begin + MAX_QUIET_TIMES * m_quiet);
        if (!isRetry)
            end = std::max(end, m_owed.until(station));
        if (m_line.now() >= end)
            break;
        const Wait wait = m_line.waitUntil(end);
        if (wait == Wait::Broken)
            return false;
        if (wait == Wait::Characters) {
            takeStrays(m_line.receive());
            m_lastHeard = m_line.now();
        }
    }
    m_quiet = milliseconds(0);
    return true;
}

// What comes between requests.
void PollLoop::takeStrays(const QByteArray &bytes)
{
    for (const QByteArray &line : m_strays.take(bytes))
        noteStray(line, 0);
}

// What came along with an answer, or in its place. `reply`: if it is in `bytes`.
void PollLoop::takeStraysAround(const QByteArray &bytes, const QByteArray &reply,
                                const QByteArray &frame)
{
    bool isReplySeen = false;
    for (const QByteArray &line : m_strays.take(bytes)) {
        if (line == reply && !std::exchange(isReplySeen, true))
            continue;
        if (line != frame)
            noteStray(line, modbus::stationOf(line) == modbus::stationOf(frame) ? 1 : 0);
    }
}

// `awaited`: answers that its station owes to the request in flight.
void PollLoop::noteStray(const QByteArray &line, int awaited)
{
    const QByteArray message = modbus::decodeLine(line).message;
    const QByteArray station = modbus::stationOf(line);
    if (message.isEmpty() || !m_owed.isAsked(station))
        return;
    const auto late = m_inStep.noteStray(message, m_line.now());
    if (!m_owed.noteStray(station, awaited, m_line.now()) && awaited == 0 &&
        station == m_lastStation) {
        m_quiet = std::max(m_quiet, m_settings.timeout);
        m_lastHeard = m_line.now();
    }
    tell(StepNews{StepNews::Kind::Stray, stationNumber(message.left(1)), 0, message, late});
}

void PollLoop::noteSent(const QByteArray &frame, bool isRetry)
{
    m_inStep.noteSent(modbus::decodeLine(frame).message, m_line.now());
    m_lastStation = modbus::stationOf(frame);
    m_owed.noteSent(m_lastStation, isRetry, m_line.now());
}

void PollLoop::noteEnd(const QByteArray &frame, ReplyFault fault)
{
    const bool isAnswered = wasAnswered(fault);
    m_owed.noteEnd(modbus::stationOf(frame), isAnswered, m_line.now());
    if (!isAnswered)
        m_inStep.noteSilence(modbus::decodeLine(frame).message);
}

void PollLoop::quietAfter(ReplyFault fault, bool isRetry)
{
    m_lastHeard = m_line.now();
    switch (fault) {
    case ReplyFault::None:
    case ReplyFault::NotSendable:
        m_quiet = m_settings.gap;
        break;
    case ReplyFault::TooLong:
    case ReplyFault::NotHex:
    case ReplyFault::WrongLrc:
        m_quiet = std::max(m_settings.gap, std::min(DAMAGED_QUIET, m_settings.timeout));
        break;
    case ReplyFault::WrongStation:
    case ReplyFault::WrongFunction:
    case ReplyFault::WrongLength:
    case ReplyFault::WrongAcknowledgement:
        m_quiet = std::max(m_settings.gap, m_settings.timeout);
        m_lastHeard = m_line.heard();
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
    const TimePoint latest = m_line.now() + m_settings.timeout;
    do {
        takeStrays(m_line.receive());
    } while (!m_line.isStopped() && m_line.hasMore() && m_line.now() < latest);
}

// MoreWanted when the wait was broken off.
ReplyFilter::Verdict PollLoop::collect(ReplyFilter &filter, const QByteArray &frame,
                                       TimePoint deadline, Answer &answer)
{
    for (;;) {
        switch (m_line.waitUntil(deadline)) {
        case Wait::Characters: {
            const QByteArray bytes = m_line.receive();
            answer.receivedChars += bytes.size();
            answer.received = withinLimit(answer.received + bytes);
            const ReplyFilter::Verdict verdict = filter.take(bytes);
            takeStraysAround(bytes, filter.reply(), frame);
            if (verdict != ReplyFilter::Verdict::MoreWanted)
                return verdict;
            if (m_line.now() >= deadline) // also on a line that never falls silent
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

PollLoop::Step PollLoop::broken() const
{
    return m_line.isStopped() ? Step::Stopped : Step::LineLost;
}

void PollLoop::tell(const Exchange &exchange) const
{
    if (m_observer)
        m_observer(exchange);
}

void PollLoop::tell(const StepNews &news) const
{
    if (m_stepObserver)
        m_stepObserver(news);
}

} // namespace kmr
