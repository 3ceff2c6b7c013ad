#include "host/line/in_step.h"

#include "host/line/answer_form.h"
#include "modbus/protocol.h"

#include <algorithm>

namespace kmr {

namespace {

// What a check question reads. The bits fill an odd number of bytes, unlike any request of the
// driver. The words are for stations that do not answer the bits.
struct Question {
    int function;
    int address;
    int quantity;
};

constexpr int BITS = 4; // questions for bits
constexpr Question QUESTIONS[] = {
    {modbus::READ_DISCRETE_INPUTS, 0x0400, 8}, // X0 and on
    // Not 24: its answer has the length of a request.
    {modbus::READ_DISCRETE_INPUTS, 0x0400, 40},
    {modbus::READ_DISCRETE_INPUTS, 0x0400, 56},
    {modbus::READ_DISCRETE_INPUTS, 0x0400, 72},
    {modbus::READ_HOLDING_REGISTERS, 0x1000, 1}, // D0 and on
    {modbus::READ_HOLDING_REGISTERS, 0x1000, 2},
    {modbus::READ_HOLDING_REGISTERS, 0x1000, 3},
    {modbus::READ_HOLDING_REGISTERS, 0x1000, 4},
};
constexpr int LONGEST_LATENESS = 25; // timeouts; what comes later is not recognised as late
constexpr int WORDS = static_cast<int>(std::size(QUESTIONS)) - BITS;

QByteArray messageOf(const QByteArray &station, const Question &question)
{
    QByteArray message = station;
    message += static_cast<char>(question.function);
    for (const int word : {question.address, question.quantity}) {
        message += static_cast<char>(word >> 8);
        message += static_cast<char>(word & 0xFF);
    }
    return message;
}

int functionOf(const QByteArray &message)
{
    return message.size() > 1 ? static_cast<unsigned char>(message.at(1)) : 0;
}

QByteArray stationOf(const QByteArray &message)
{
    return message.left(1);
}

// Whether the answer to `earlier`, good or an exception, can be taken for the answer to `later`.
bool looksLike(const QByteArray &earlier, bool isRefused, const QByteArray &later)
{
    return answerForm(earlier) == answerForm(later) ||
           (isRefused && functionOf(earlier) == functionOf(later));
}

} // namespace

bool InStep::needsCheck(const QByteArray &request) const
{
    const auto found = m_stations.find(stationOf(request));
    if (found == m_stations.end() || found->second.last.isEmpty())
        return false;
    const Station &station = found->second;
    return station.untilCheck <= 0 ||
           (station.doubtful > 0 && hasUnconfirmed(stationOf(request))) ||
           looksLike(station.last, station.isRefused, request);
}

QByteArray InStep::checkQuestion(const QByteArray &station, const QByteArray &next)
{
    Station &asked = m_stations[station];
    const auto isLateOne = [](const QByteArray &question) {
        return [&question](const Late &late) { return looksLike(late.request, false, question); };
    };
    ++asked.question;
    QByteArray question;
    for (int i = 0; i < BITS + WORDS; ++i) {
        const bool isWords = asked.asksWords == (i < WORDS);
        const int turn = asked.question + i;
        question = messageOf(station, QUESTIONS[isWords ? BITS + turn % WORDS : turn % BITS]);
        if (!looksLike(asked.last, asked.isRefused, question) &&
            !(answerForm(question) == answerForm(next)) &&
            std::none_of(asked.late.begin(), asked.late.end(), isLateOne(question)))
            break;
    }
    return question;
}

void InStep::noteSent(const QByteArray &request, TimePoint now)
{
    Station &station = m_stations[stationOf(request)];
    station.last = request;
    station.lastSent = now;
    station.isRefused = false;
    const auto isLost = [&](const Late &late) {
        return late.sent + LONGEST_LATENESS * m_timeout < now;
    };
    station.late.erase(std::remove_if(station.late.begin(), station.late.end(), isLost),
                       station.late.end());
}

// What an answer in step confirms. One that could belong to an earlier request proves nothing.
InStep::Number InStep::confirm(Station &station, const QByteArray &request, bool isRefused,
                               TimePoint now)
{
    std::vector<Unconfirmed> &unconfirmed = station.unconfirmed;
    const auto couldAnswer = [&](const Unconfirmed &earlier) {
        return !earlier.isInStep &&
               (isRefused ? functionOf(earlier.request) == functionOf(request)
                          : answerForm(earlier.request) == answerForm(request));
    };
    if (std::any_of(unconfirmed.begin(), unconfirmed.end(), couldAnswer))
        return 0;
    for (Unconfirmed &earlier : unconfirmed)
        earlier.isInStep = true;
    const auto firstHeld =
        std::find_if(unconfirmed.begin(), unconfirmed.end(),
                     [now](const Unconfirmed &earlier) { return earlier.notBefore > now; });
    const Number confirmed = firstHeld == unconfirmed.begin() ? 0 : std::prev(firstHeld)->number;
    unconfirmed.erase(unconfirmed.begin(), firstHeld);
    return confirmed;
}

// When the time is over for late answers that could be taken for the answer to `request`.
InStep::TimePoint InStep::timeOfLate(const Station &station, const QByteArray &request,
                                     bool isRefused) const
{
    const auto patience =
        std::max<std::chrono::nanoseconds>(PATIENCE * m_timeout, station.latest + m_timeout);
    TimePoint time;
    for (const Late &late : station.late) {
        const bool isAlike = isRefused ? functionOf(late.request) == functionOf(request)
                                       : answerForm(late.request) == answerForm(request);
        if (late.request != request && isAlike)
            time = std::max(time, late.sent + patience);
    }
    return time;
}

InStep::Number InStep::noteAnswer(const QByteArray &request, bool isRefused, Number number,
                                  TimePoint now)
{
    Station &station = m_stations[stationOf(request)];
    station.isRefused = isRefused;
    --station.untilCheck;
    const Number confirmed = station.doubtful == 0 ? confirm(station, request, isRefused, now) : 0;
    station.doubtful = std::max(0, station.doubtful - 1);
    std::vector<Unconfirmed> &unconfirmed = station.unconfirmed;
    if (!unconfirmed.empty() && !unconfirmed.back().isInStep &&
        unconfirmed.back().request == request)
        unconfirmed.pop_back();
    unconfirmed.push_back(
        {request, isRefused, number, now, timeOfLate(station, request, isRefused), false});
    return confirmed;
}

InStep::Number InStep::noteCheckAnswer(const QByteArray &question, bool isRefused, TimePoint now)
{
    Station &station = m_stations[stationOf(question)];
    station.isRefused = isRefused;
    station.untilCheck =
        std::uniform_int_distribution<int>(FEWEST_BETWEEN_CHECKS, MOST_BETWEEN_CHECKS)(m_random);
    return confirm(station, question, isRefused, now);
}

void InStep::noteSilence(const QByteArray &request)
{
    Station &station = m_stations[stationOf(request)];
    station.late.push_back({request, station.lastSent});
}

std::optional<std::chrono::nanoseconds> InStep::noteStray(const QByteArray &message, TimePoint now)
{
    const auto found = m_stations.find(stationOf(message));
    if (found == m_stations.end())
        return std::nullopt;
    Station &station = found->second;
    const auto isPutInDoubt = [&message](const Unconfirmed &earlier) {
        return putsInDoubt(message, earlier.request, earlier.isRefused);
    };
    station.unconfirmed.erase(
        std::remove_if(station.unconfirmed.begin(), station.unconfirmed.end(), isPutInDoubt),
        station.unconfirmed.end());
    station.doubtful = DOUBTFUL_REQUESTS;
    const auto late =
        std::find_if(station.late.rbegin(), station.late.rend(), [&message](const Late &silent) {
            return isAnswerTo(message, silent.request);
        });
    if (late == station.late.rend())
        return std::nullopt;
    const std::chrono::nanoseconds lateness = now - late->sent;
    station.latest = std::max(station.latest, lateness);
    station.late.erase(std::next(late).base());
    return lateness;
}

void InStep::noteGiveUp(const QByteArray &station)
{
    Station &silent = m_stations[station];
    silent.unconfirmed.clear();
    silent.doubtful = DOUBTFUL_REQUESTS;
}

void InStep::noteCheckGiveUp(const QByteArray &station)
{
    noteGiveUp(station);
    Station &silent = m_stations[station];
    silent.asksWords = !silent.asksWords;
}

bool InStep::hasUnconfirmed(const QByteArray &station) const
{
    const auto found = m_stations.find(station);
    return found != m_stations.end() && !found->second.unconfirmed.empty() &&
           !found->second.unconfirmed.back().isInStep;
}

QByteArray InStep::waitingSince(TimePoint latest) const
{
    QByteArray longest;
    for (const auto &[name, station] : m_stations) {
        for (const Unconfirmed &answer : station.unconfirmed) {
            const TimePoint since = answer.isInStep ? answer.notBefore : answer.since;
            if (since <= latest) {
                latest = since;
                longest = name;
            }
        }
    }
    return longest;
}

InStep::TimePoint InStep::heldUntil() const
{
    TimePoint until;
    for (const auto &[name, station] : m_stations) {
        for (const Unconfirmed &answer : station.unconfirmed)
            until = std::max(until, answer.notBefore);
    }
    return until;
}

std::vector<QByteArray> checksOfRound(const std::vector<QByteArray> &requests)
{
    InStep inStep(std::chrono::milliseconds(1));
    std::vector<QByteArray> checks;
    InStep::Number number = 0;
    for (int round = 0; round < 2; ++round) {
        checks.clear(); // all further rounds have those of the second one
        for (const QByteArray &request : requests) {
            if (inStep.needsCheck(request)) {
                checks.push_back(inStep.checkQuestion(stationOf(request), request));
                inStep.noteSent(checks.back(), {});
                inStep.noteCheckAnswer(checks.back(), false, {});
            }
            inStep.noteSent(request, {});
            inStep.noteAnswer(request, false, ++number, {});
        }
    }
    return checks;
}

int stationNumber(const QByteArray &station)
{
    return station.toHex().toInt();
}

bool putsInDoubt(const QByteArray &stray, const QByteArray &request, bool isRefused)
{
    if (modbus::isRead(functionOf(request)))
        return true;
    const int answered = functionOf(stray);
    return (answered & ~modbus::EXCEPTION_BIT) == functionOf(request) &&
           ((answered & modbus::EXCEPTION_BIT) != 0) != isRefused;
}

} // namespace kmr
