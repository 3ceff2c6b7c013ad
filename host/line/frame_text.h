// What one line of text between a host and a controller says, in words for a person.
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace kmr {

enum class FrameKind {
    Request,
    Answer,
    RequestOrAnswer, // the answer to the write of a bit repeats its request
    Refusal,         // an answer that is an exception
    Unreadable       // no frame, or one whose length fits no function
};

struct FrameText {
    FrameKind kind = FrameKind::Unreadable;
    bool isGood = false;  // a whole frame with the right LRC
    QString station;      // its two digits: "12"
    QString function;     // "03 read holding registers"
    QString elements;     // "D100 to D107"; empty where the line does not tell
    QStringList aliases;  // further names of the same elements
    QString addressRange; // "8 registers from 1064", the address in hexadecimal digits
    QString values;       // "1 2 3", "on: X0, X5", "on"; empty where it carries none
    QString exception;    // of a refusal: "illegal data address (exception 02)"
    QString lrc;          // "8C right", "8C wrong, 8D would be right"
    QString fault;        // what keeps it from being good, else empty
};

// Explains `line`, ':' to CR LF. An answer to a read does not say what it answers: `request`, the
// line before it, tells its elements; it is ignored where it doesn't fit. A line whose LRC is wrong
// is explained all the same.
FrameText explainLine(const QByteArray &line, const QByteArray &request = QByteArray());

// All of it in one line: "station 01 answers D100 to D101: 1 2".
QString toText(const FrameText &frame);

// What a person types for a line, without its invisible end or with "\r\n" spelled out, as a line.
QByteArray lineFromText(const QString &text);

// Characters for display: control characters and those beyond ASCII as \r, \n or \xFF.
QString visible(const QByteArray &characters);

} // namespace kmr
