// Tells the answer to a request from everything else that a line may bring: the driver takes any
// characters for the answer, so only a true one may reach it.
#pragma once

#include "modbus/ascii.h"

#include <QByteArray>
#include <QString>

namespace kmr {

// Whether the line hands back what we send, as two-wire lines do.
enum class EchoMode { On, Off, Auto };

// What is known of the echo. With EchoMode::Auto it is learned from requests whose answer can't
// equal them: the request in front of the answer proves an echo, an answer without it disproves it
// until an echo is seen. A proven echo stays.
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
    Silence,    // nothing, or nothing but the echo
    Noise,      // characters, but no line
    Incomplete, // a line without its end
    TooLong,    // a line beyond modbus::MAX_LINE_CHARS
    NotHex,     // a line with other characters than hexadecimal digits
    WrongLrc,
    WrongStation,         // another station's line
    WrongFunction,        // a line about another function
    WrongLength,          // a line shorter or longer than the request's answer
    WrongAcknowledgement, // a write acknowledged that isn't ours
    NoExceptionCode,      // an exception with code 0, which stands for none
    SeveralAnswers,       // two different answers came at once
    MissingEcho,          // an answer came, but not the echo that was certain to precede it
    UnexpectedEcho,       // the request came back although EchoMode::Off rules that out
    EchoOrAnswer, // a bit write came back once, and no one knows yet whether the line echoes
    NotSendable,  // the request fits no frame and was not sent
    NotConfirmed  // an answer came, but what came after it leaves in doubt whether it was the true
                  // one
};

// Bytes of data that an answer should have had, and that it had; 0 and 0 unless its length is
// wrong.
struct AnswerLength {
    int expected = 0;
    int received = 0;
};

// The fault in words: "an answer of the wrong length: expected 16 bytes of data, received 14".
QString toText(ReplyFault fault, const AnswerLength &length = {});

// Judges what arrives after one request. Has no device and no clock.
//
// A line that answers something else is passed over, since the answer may follow it. When none
// does, the fault is that of the first such line.
//
// The answer to a bit write equals the request, so there an echo can only be told by counting.
// While nothing is known about the echo, one equal line proves nothing: only a second one makes the
// exchange good, and without it the fault is EchoOrAnswer.
//
// Where the echo is certain, no answer counts without it: a damaged echo may look like an answer.
// A read of 32 bits from X0 whose doubled "00" passes every other check is one:
// ":010204000020D9" comes back as ":01020400000020D9".
class ReplyFilter {
public:
    enum class Verdict { MoreWanted, Good, Bad };

    // `request`: the frame as sent, ':' to LF. `echo` is lent and learns.
    ReplyFilter(const QByteArray &request, Echo &echo);

    // Takes the next characters, in pieces of any size. After Good or Bad nothing may follow.
    Verdict take(const QByteArray &bytes);

    // The time for an answer is over: Bad, with the fault that explains it best.
    Verdict end();

    // After Good: the answer, ':' to LF; the code it carries if it is an exception, else 0. After
    // Bad: nothing, and 0.
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
    AnswerLength m_length;                      // likewise
};

} // namespace kmr
