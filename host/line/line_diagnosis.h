// Finds out what is wrong with a line from what came back over it, and what to do about it.
#pragma once

#include "host/line/other_protocol.h"
#include "host/line/reply_filter.h"

#include <QByteArray>
#include <QString>

#include <vector>

namespace kmr {

// One read request, sent once and checked with EchoMode::Auto, and what came back.
struct Probe {
    QByteArray request;  // ':' to LF
    QByteArray received; // all characters, echo and noise included
    ReplyFault fault = ReplyFault::None;
    int exceptionCode = 0; // of a refusal, else 0
    AnswerLength length = {};
};

enum class Finding {
    Good,
    Refused,      // answered by an exception
    Unsteady,     // some requests were answered, others not
    Noisy,        // answered, but other characters come before the answers
    WrongEcho,    // answered, but the line echoes although the setting is off, or the reverse
    Silent,       // no character came
    Late,         // answered, but not within the timeout
    EchoOnly,     // only the requests themselves came back
    OtherHost,    // requests of another host came
    OtherStation, // good lines of a station that was not asked
    NoFit,        // good lines of the station that answer something else
    WrongParity,  // the characters are valid without their top bit
    Damaged,      // the characters of frames, but no good line
    Garbled,      // other characters
    NotOpened,    // the link could not be opened
    Lost,         // the link broke while the station was asked
    OutOfStep,    // answered, but answers come that no request waits for
    ModbusTcp,    // the other side answers Modbus TCP
    ModbusRtu     // the other side answers Modbus RTU
};

struct Diagnosis {
    Finding finding = Finding::Silent;
    QString text;          // what is wrong, in sentences
    QString advice;        // what to do, in sentences; empty if there is nothing to do
    int exceptionCode = 0; // of a refusal, else 0
};

// A word or two for records: "other station".
QString findingName(Finding finding);

// Judges the probes of one station, at least one. `echo` is what the user has set.
Diagnosis diagnose(const std::vector<Probe> &probes, EchoMode echo);

// The diagnosis of a peer over TCP that has answered in another protocol.
Diagnosis diagnose(OtherProtocol protocol);

} // namespace kmr
