// Explains one line between a host and a controller in words.
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
    Unreadable       // not a frame, or its length fits no function
};

struct FrameText {
    FrameKind kind = FrameKind::Unreadable;
    bool isGood = false;  // a whole frame with the right LRC
    QString station;      // its two digits: "12"
    QString function;     // "03 read holding registers"
    QString elements;     // "D100 to D107"; empty if the line does not say
    QStringList aliases;  // other names of the same elements
    QString addressRange; // "8 registers from 1064", the address in hexadecimal digits
    QString values;       // "1 2 3", "on: X0, X5", "on"; empty if there are none
    QString exception;    // of a refusal: "illegal data address (exception 02)"
    QString lrc;          // "8C right", "8C wrong, 8D would be right"
    QString fault;        // why it is not good, else empty
};

// Explains `line`, ':' to CR LF. An answer to a read does not say which elements it has: they are
// taken from `request`, the line before it, which is ignored if it doesn't fit. A line with a wrong
// LRC is explained, too.
FrameText explainLine(const QByteArray &line, const QByteArray &request = QByteArray());

// The explanation in one line: "station 01 answers D100 to D101: 1 2".
QString toText(const FrameText &frame);

// The line that a person typed, with CR LF at the end. `text` has no line end or "\r\n" spelled
// out.
QByteArray lineFromText(const QString &text);

// Characters for display: control characters and those beyond ASCII as \r, \n or \xFF.
QString visible(const QByteArray &characters);

} // namespace kmr
