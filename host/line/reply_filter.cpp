#include "host/line/reply_filter.h"

#include "host/line/answer_form.h"
#include "modbus/protocol.h"

#include <algorithm>

namespace kmr {

namespace {

ReplyFault toReplyFault(modbus::LineFault fault)
{
    switch (fault) {
    case modbus::LineFault::TooLong:
        return ReplyFault::TooLong;
    case modbus::LineFault::NotHex:
        return ReplyFault::NotHex;
    case modbus::LineFault::TooShort:
        return ReplyFault::WrongLength;
    case modbus::LineFault::WrongLrc:
        return ReplyFault::WrongLrc;
    case modbus::LineFault::None:
    case modbus::LineFault::NoStart:
    case modbus::LineFault::NoLineEnd:
        break;
    }
    return ReplyFault::Incomplete;
}

} // namespace

QString toText(ReplyFault fault, const AnswerLength &length)
{
    switch (fault) {
    case ReplyFault::None:
        return "no fault";
    case ReplyFault::Silence:
        return "no answer";
    case ReplyFault::Noise:
        return "only noise: is the line's speed or parity wrong?";
    case ReplyFault::Incomplete:
        return "an answer without its end";
    case ReplyFault::TooLong:
        return "an answer longer than any frame";
    case ReplyFault::NotHex:
        return "an answer with characters that are not hexadecimal digits";
    case ReplyFault::WrongLrc:
        return "an answer with a wrong LRC";
    case ReplyFault::WrongStation:
        return "another station's answer";
    case ReplyFault::WrongFunction:
        return "an answer to another function";
    case ReplyFault::WrongLength:
        return "an answer of the wrong length" +
               (length.expected == 0 ? QString()
                                     : QString(": expected %1 bytes of data, received %2")
                                           .arg(length.expected)
                                           .arg(length.received));
    case ReplyFault::WrongAcknowledgement:
        return "the acknowledgement of another write";
    case ReplyFault::NoExceptionCode:
        return "an exception without a code";
    case ReplyFault::SeveralAnswers:
        return "two different answers at once: answers are out of step";
    case ReplyFault::MissingEcho:
        return "an answer without the echo that the line gave before";
    case ReplyFault::UnexpectedEcho:
        return "the request itself came back: does the line echo?";
    case ReplyFault::EchoOrAnswer:
        return "the request came back once, as its answer or as the line's echo";
    case ReplyFault::NotSendable:
        return "the request does not fit a frame";
    case ReplyFault::NotConfirmed:
        return "the answer is not confirmed: after it, answers came out of step or none came";
    }
    return "unknown fault";
}

ReplyFilter::ReplyFilter(const QByteArray &request, Echo &echo)
    : m_request(request), m_requestMessage(modbus::decodeLine(request).message), m_echo(echo)
{
}

ReplyFilter::Verdict ReplyFilter::take(const QByteArray &bytes)
{
    m_taken += bytes.size();
    const QList<QByteArray> lines = m_collector.take(bytes);
    for (int i = 0; i < lines.size(); ++i) {
        const Verdict verdict = lines[i] == m_request ? judgeOwnText(lines[i]) : judge(lines[i]);
        if (verdict == Verdict::Good &&
            std::any_of(lines.begin() + i + 1, lines.end(),
                        [this](const QByteArray &line) { return isRival(line); }))
            return bad(ReplyFault::SeveralAnswers);
        if (verdict != Verdict::MoreWanted)
            return verdict;
    }
    return Verdict::MoreWanted;
}

// Whether `line`, after the answer, is another answer of the same station.
bool ReplyFilter::isRival(const QByteArray &line) const
{
    return line != m_reply && modbus::stationOf(line) == modbus::stationOf(m_request) &&
           modbus::decodeLine(line).fault == modbus::LineFault::None;
}

ReplyFilter::Verdict ReplyFilter::end()
{
    if (m_passedOver != ReplyFault::None)
        return bad(m_passedOver);
    if (!m_collector.partial().isEmpty())
        return bad(ReplyFault::Incomplete);
    if (m_ownTexts > 0 && isBitWrite() && m_echo.isUnknown())
        return bad(ReplyFault::EchoOrAnswer);
    return bad(m_collector.dropped() > 0 ? ReplyFault::Noise : ReplyFault::Silence);
}

ReplyFilter::Verdict ReplyFilter::judgeOwnText(const QByteArray &line)
{
    ++m_ownTexts;
    if (isBitWrite()) {
        if (m_ownTexts == 1)
            return m_echo.isCertain() || m_echo.isUnknown() ? Verdict::MoreWanted : good(line);
        if (m_echo.mode == EchoMode::Auto)
            m_echo.learned = Echo::Learned::Present;
        return good(line);
    }
    if (m_echo.mode == EchoMode::Off)
        return bad(ReplyFault::UnexpectedEcho);
    if (m_ownTexts > 1)
        return bad(
            ReplyFault::WrongLength); // no answer equals such a request, and one echo is expected
    m_echo.learned = Echo::Learned::Present;
    return Verdict::MoreWanted;
}

ReplyFilter::Verdict ReplyFilter::judge(const QByteArray &line)
{
    const modbus::DecodedLine decoded = modbus::decodeLine(line);
    if (decoded.fault != modbus::LineFault::None)
        return bad(toReplyFault(decoded.fault));
    // Characters, not numbers: the request has these characters for the station.
    if (modbus::stationOf(line) != modbus::stationOf(m_request))
        return passOver(ReplyFault::WrongStation);
    return judgeMessage(line, decoded.message);
}

ReplyFilter::Verdict ReplyFilter::judgeMessage(const QByteArray &line, const QByteArray &message)
{
    if (m_requestMessage.size() <
        6) // function, address and quantity or value: a shorter request reads nothing
        return bad(ReplyFault::WrongFunction);
    const int asked = modbus::byteAt(m_requestMessage, 1);
    const int answered = modbus::byteAt(message, 1);
    if (answered == (asked | modbus::EXCEPTION_BIT)) {
        if (message.size() != 3)
            return passOverLength(1, static_cast<int>(message.size()) - 2);
        // Codes begin with 1 (Modbus Application Protocol V1.1b3, section 7); 0 would be taken for
        // no exception, and the refused request for done.
        m_exceptionCode = modbus::byteAt(message, 2);
        return m_exceptionCode != 0 ? good(line) : bad(ReplyFault::NoExceptionCode);
    }
    if (answered != asked)
        return passOver(ReplyFault::WrongFunction);

    if (modbus::isRead(asked)) {
        const int bytes = answerBytes(m_requestMessage);
        const int counted = modbus::byteAt(message, 2);
        const int received = static_cast<int>(message.size()) - 3;
        if (received == bytes && counted == bytes)
            return good(line);
        return passOverLength(bytes, received != bytes ? std::max(0, received) : counted);
    }
    if (message.size() != 6)
        return passOverLength(4, static_cast<int>(message.size()) - 2);
    // The answer to a write repeats its address and its value or quantity.
    return message == m_requestMessage.left(6) ? good(line)
                                               : passOver(ReplyFault::WrongAcknowledgement);
}

ReplyFilter::Verdict ReplyFilter::good(const QByteArray &line)
{
    if (m_echo.isCertain() && m_ownTexts == 0)
        return bad(ReplyFault::MissingEcho);
    // Other characters may be the rest of an echo.
    const bool cameAlone = m_taken == line.size();
    if (m_echo.isUnknown() && cameAlone && !isBitWrite())
        m_echo.learned = Echo::Learned::Absent;
    m_reply = line;
    return Verdict::Good;
}

ReplyFilter::Verdict ReplyFilter::bad(ReplyFault fault)
{
    m_fault = fault;
    m_reply.clear();
    m_exceptionCode = 0;
    if (fault != ReplyFault::WrongLength)
        m_length = {};
    return Verdict::Bad;
}

// A good line that does not answer the request: the answer may follow.
ReplyFilter::Verdict ReplyFilter::passOver(ReplyFault fault)
{
    if (m_passedOver == ReplyFault::None)
        m_passedOver = fault;
    return Verdict::MoreWanted;
}

ReplyFilter::Verdict ReplyFilter::passOverLength(int expected, int received)
{
    if (m_passedOver == ReplyFault::None)
        m_length = {expected, received};
    return passOver(ReplyFault::WrongLength);
}

bool ReplyFilter::isBitWrite() const
{
    return m_requestMessage.size() > 1 &&
           modbus::byteAt(m_requestMessage, 1) == modbus::WRITE_SINGLE_COIL;
}

} // namespace kmr
