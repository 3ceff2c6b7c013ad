// Separates the answer to a request from everything else that comes over a line: the driver takes
// any characters for the answer, so only a correct one may reach it.
#pragma once

#include "modbus/ascii.h"

#include <QByteArray>
#include <QString>

namespace kmr {

// Whether the line echoes what is sent, as two-wire lines do.
enum class EchoMode { On, Off, Auto };

// What is known about the echo. With EchoMode::Auto it is learned from requests whose answer can't
// equal them: the request before the answer proves an echo; an answer without it disproves the echo
// until one is seen. A proven echo stays.
struct Echo {
    enum class Learned { Nothing, Present, Absent };

    EchoMode mode = EchoMode::Auto;
    Learned learned = Learned::Nothing;

    bool isCertain() const
    {
        return mode == EchoMode::On || learned == Learned::Present;
    }
    bool isUnknown() const
    {
        return mode == EchoMode::Auto && learned == Learned::Nothing;
    }
};

// Why an exchange brought no good reply.
enum class ReplyFault {
    None,
    Silence,    // nothing, or only the echo
    Noise,      // characters, but no line
    Incomplete, // a line without its end
    TooLong,    // a line of more than modbus::MAX_LINE_CHARS characters
    NotHex,     // a line with other characters than hexadecimal digits
    WrongLrc,
    WrongStation,         // another station's line
    WrongFunction,        // a line with another function
    WrongLength,          // a line shorter or longer than the request's answer
    WrongAcknowledgement, // the acknowledgement of another write
    NoExceptionCode,      // an exception with code 0, which is not a valid code
    SeveralAnswers,       // two different answers came at once
    MissingEcho,          // an answer came without the echo that must precede it
    UnexpectedEcho,       // the request came back although EchoMode::Off excludes that
    EchoOrAnswer,         // a bit write came back once, and it is not known whether the line echoes
    NotSendable,          // the request does not fit a frame and was not sent
    NotConfirmed          // an answer came, but what came after it does not confirm it
};

// The data bytes that an answer should have had, and those that it had; 0 and 0 unless its length
// is wrong.
struct AnswerLength {
    int expected = 0;
    int received = 0;
};

// The fault in words: "an answer of the wrong length: expected 16 bytes of data, received 14".
QString toText(ReplyFault fault, const AnswerLength &length = {});

// Checks what arrives after one request. Has no device and no clock.
//
// A line that answers something else is skipped, since the answer may follow it. If no answer
// follows, the fault is that of the first such line.
//
// The answer to a bit write equals the request, so an echo can only be found by counting. While
// nothing is known about the echo, one equal line proves nothing: only a second one makes the
// exchange good, and without it the fault is EchoOrAnswer.
//
// If the echo is certain, no answer counts without it: a damaged echo may look like an answer. A
// read of 32 bits from X0 with a doubled "00" passes every other check: ":010204000020D9" comes
// back as ":01020400000020D9".
class ReplyFilter {
public:
    enum class Verdict { MoreWanted, Good, Bad };

    // `request`: the frame as sent, ':' to LF. `echo` is lent and updated.
    ReplyFilter(const QByteArray &request, Echo &echo);

    // Takes the next characters, in pieces of any size. After Good or Bad nothing may follow.
    Verdict take(const QByteArray &bytes);

    // To be called when the time for an answer is over: Bad, with the fault that explains it best.
    Verdict end();

    // After Good: the answer, ':' to LF, and its code if it is an exception, else 0. After Bad:
    // empty, and 0.
    const QByteArray &reply() const
    {
        return m_reply;
    }
    int exceptionCode() const
    {
        return m_exceptionCode;
    }

    // After Bad: what was wrong.
    ReplyFault fault() const
    {
        return m_fault;
    }
    const AnswerLength &length() const
    {
        return m_length;
    }

private:
    bool isRival(const QByteArray &line) const;
    Verdict judge(const QByteArray &line);
    Verdict judgeOwnText(const QByteArray &line);
    Verdict judgeMessage(const QByteArray &line, const QByteArray &message);
    Verdict good(const QByteArray &line);
    Verdict bad(ReplyFault fault);
    Verdict passOver(ReplyFault fault);
    Verdict passOverLength(int expected, int received);
    bool isBitWrite() const;

    const QByteArray m_request;
    const QByteArray m_requestMessage; // its station, function and data; empty if it can't be read
    Echo &m_echo;
    modbus::LineCollector m_collector;
    qint64 m_taken = 0; // characters so far
    int m_ownTexts = 0; // lines so far that equal the request
    QByteArray m_reply;
    int m_exceptionCode = 0;
    ReplyFault m_fault = ReplyFault::None;
    ReplyFault m_passedOver = ReplyFault::None; // of the first line that answers something else
    AnswerLength m_length;                      // of the same line
};

} // namespace kmr
