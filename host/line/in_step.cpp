#include "host/line/in_step.h"

#include "host/line/answer_form.h"
#include "modbus/protocol.h"

#include <algorithm>

namespace kmr {

namespace {

// What a check question asks for. The bits fill an odd number of bytes, as no request of the driver
// does. The words are for stations that leave the bits unanswered.
struct Question {
    int function;
    int address;
    int quantity;
};

constexpr int BITS = 4; // questions for bits
constexpr Question QUESTIONS[] = {
    {modbus::READ_DISCRETE_INPUTS, 0x0400, 8},     // X0 and on
    {modbus::READ_DISCRETE_INPUTS, 0x0400, 24},
    {modbus::READ_DISCRETE_INPUTS, 0x0400, 40},
    {modbus::READ_DISCRETE_INPUTS, 0x0400, 56},
    {modbus::READ_HOLDING_REGISTERS, 0x1000, 1},   // D0 and on
    {modbus::READ_HOLDING_REGISTERS, 0x1000, 2},
    {modbus::READ_HOLDING_REGISTERS, 0x1000, 3},
    {modbus::READ_HOLDING_REGISTERS, 0x1000, 4},
};
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

// Whether an answer to `earlier`, good or the exception that it got, passes for that to `later`.
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
    return station.untilCheck <= 0 || (station.doubtful > 0 && !station.unconfirmed.empty()) ||
           looksLike(station.last, station.isRefused, request);
}

QByteArray InStep::checkQuestion(const QByteArray &station, const QByteArray &next)
{
    Station &asked = m_stations[station];
    ++asked.question;
    QByteArray question;
    for (int i = 0; i < BITS + WORDS; ++i) {
        const bool isWords = asked.asksWords == (i < WORDS);
        const int turn = asked.question + i;
        question = messageOf(station, QUESTIONS[isWords ? BITS + turn % WORDS : turn % BITS]);
        if (!looksLike(asked.last, asked.isRefused, question) &&
            !(answerForm(question) == answerForm(next)))
            break;
    }
    return question;
}

void InStep::noteSent(const QByteArray &request)
{
    Station &station = m_stations[stationOf(request)];
    station.last = request;
    station.isRefused = false;
}

// An answer that could be that to an earlier request proves nothing.
bool InStep::confirms(const Station &station, const QByteArray &request, bool isRefused)
{
    const auto couldAnswer = [&](const Unconfirmed &earlier) {
        return isRefused ? functionOf(earlier.request) == functionOf(request)
                         : answerForm(earlier.request) == answerForm(request);
    };
    return !station.unconfirmed.empty() &&
           std::none_of(station.unconfirmed.begin(), station.unconfirmed.end(), couldAnswer);
}

bool InStep::noteAnswer(const QByteArray &request, bool isRefused, TimePoint now)
{
    Station &station = m_stations[stationOf(request)];
    station.isRefused = isRefused;
    --station.untilCheck;
    const bool isConfirmed = station.doubtful == 0 && confirms(station, request, isRefused);
    if (isConfirmed)
        station.unconfirmed.clear();
    if (station.unconfirmed.empty())
        station.since = now;
    station.doubtful = std::max(0, station.doubtful - 1);
    if (!station.unconfirmed.empty() && station.unconfirmed.back().request == request)
        station.unconfirmed.back().isRefused = isRefused;
    else
        station.unconfirmed.push_back({request, isRefused});
    return isConfirmed;
}

bool InStep::noteCheckAnswer(const QByteArray &question, bool isRefused)
{
    Station &station = m_stations[stationOf(question)];
    station.isRefused = isRefused;
    station.untilCheck =
        std::uniform_int_distribution<int>(FEWEST_BETWEEN_CHECKS, MOST_BETWEEN_CHECKS)(m_random);
    const bool isConfirmed = confirms(station, question, isRefused);
    if (isConfirmed)
        station.unconfirmed.clear();
    return isConfirmed;
}

void InStep::noteStray(const QByteArray &station, const QByteArray &message)
{
    const auto found = m_stations.find(station);
    if (found == m_stations.end())
        return;
    std::vector<Unconfirmed> &unconfirmed = found->second.unconfirmed;
    unconfirmed.erase(std::remove_if(unconfirmed.begin(), unconfirmed.end(),
                                     [&message](const Unconfirmed &earlier) {
                                         return putsInDoubt(message, earlier.request,
                                                            earlier.isRefused);
                                     }),
                      unconfirmed.end());
    found->second.doubtful = DOUBTFUL_REQUESTS;
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
    return found != m_stations.end() && !found->second.unconfirmed.empty();
}

QByteArray InStep::waitingSince(TimePoint latest) const
{
    QByteArray longest;
    for (const auto &[name, station] : m_stations) {
        if (!station.unconfirmed.empty() && station.since <= latest) {
            latest = station.since;
            longest = name;
        }
    }
    return longest;
}

int stationNumber(const QByteArray &station)
{
    return station.toHex().toInt();
}

bool putsInDoubt(const QByteArray &stray, const QByteArray &request, bool isRefused)
{
    if (isReadRequest(request))
        return true;
    const int answered = functionOf(stray);
    return (answered & ~modbus::EXCEPTION_BIT) == functionOf(request) &&
           ((answered & modbus::EXCEPTION_BIT) != 0) != isRefused;
}

} // namespace kmr
