// Captures: every character on a line with its time, in a file that can be explained or replayed
// later.
//
// JSON lines. The first line names the format, the others are pieces of traffic in order:
//
//     {"kmr_capture":1,"begin":"2024-05-01T12:00:00.000+02:00","link":"tcp://192.168.0.10:8888"}
//     {"us":1250,"sent":":01031064000187\r\n"}
//     {"us":9870,"received":":0103020001F9\r\n"}
//
// "us" is microseconds since "begin". Characters that arrive together have one time. A character
// beyond ASCII is the byte with the same number (Latin-1).
#pragma once

#include "host/error.h"
#include "host/project/text_file.h"

#include <QByteArray>
#include <QDateTime>
#include <QElapsedTimer>
#include <QFile>
#include <QString>

#include <cstdint>
#include <vector>

namespace kmr {

// Writes a capture while the traffic passes; each piece is in the file at once.
class CaptureWriter {
public:
    // Begins a new file. Throws Error (Usage) if it can't be written, or is not empty: an earlier
    // capture may be the only evidence of a fault.
    //
    // `limit`: bytes that the file may hold, 0 for any number. A full file is renamed to "PATH.1",
    // which replaces the one that this capture renamed before, and a new file begins: both are
    // whole captures and hold the newest traffic. A single piece may exceed the limit.
    CaptureWriter(const QString &path, const QString &link, qint64 limit = 0);

    // Appends a piece. Throws Error (Output) if it can't be written, for example on a full disk.
    // The file then ends with the previous piece, and nothing more may be added.
    void add(bool isSent, const QByteArray &characters);

private:
    void begin();
    void goOnAnew();
    void writeLine(const QByteArray &line, ErrorKind failure);

    const QString m_path;
    const QString m_link;
    const qint64 m_limit;
    QFile m_file;
    QElapsedTimer m_clock;
};

struct CapturedPiece {
    std::int64_t microseconds = 0; // since the beginning
    bool isSent = false;           // by the host
    QByteArray characters;
};

struct Capture {
    QDateTime begin;
    QString link; // as typed
    std::vector<CapturedPiece> pieces;
    QString cut; // names an incomplete last line, which is left out; else empty
};

// Reads a capture's text. Throws Error (Usage) that names the bad line; `name` is the file's. Only
// the last line may be incomplete, as after a power failure or a kill.
Capture parseCapture(const QByteArray &text, const QString &name,
                     const ReadProgress &progress = {});

// Reads a capture's file. Throws Error (Usage).
Capture readCapture(const QString &path, const ReadProgress &progress = {});

} // namespace kmr
