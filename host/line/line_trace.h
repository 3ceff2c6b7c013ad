// Traffic, line by line: time, direction, frame and its meaning.
//
//     2024-05-01T12:00:00.125+02:00 > :01031064000187\r\n  station 01: read D100
//     2024-05-01T12:00:00.133+02:00 < :0103020001F9\r\n  station 01 answers D100: 1
#pragma once

#include "host/line/frame_text.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>

#include <functional>

namespace kmr {

// The time according to RFC 3339, with milliseconds and the offset from UTC.
QString timeText(const QDateTime &time);

struct TracedLine {
    QDateTime time;        // when its last characters passed
    bool isSent = false;   // by the host
    QByteArray characters; // ':' to LF, or a part of a line
    bool isEcho = false;   // received and equal to the request before; for a bit write it may also
                           // be the answer
    FrameText frame;
};

// The line as above.
QString toText(const TracedLine &line);

// Own traffic, of which is known what was sent; or overheard traffic of another host, which is only
// received: then the content of a line says who sent it.
enum class Traffic { Own, Overheard };

class LineTrace {
public:
    using Sink = std::function<void(const TracedLine &line)>;

    explicit LineTrace(Sink sink, Traffic traffic = Traffic::Own)
        : m_sink(std::move(sink)), m_traffic(traffic)
    {
    }
    ~LineTrace()
    {
        flush();
    }
    LineTrace(const LineTrace &) = delete;
    LineTrace &operator=(const LineTrace &) = delete;

    // Takes the next characters of one direction, in pieces of any size. Received characters that
    // are not a whole frame are reported when the next frame begins or is sent, when they are as
    // many as a frame can have, by flush() and at the end of the trace.
    void add(const QDateTime &time, bool isSent, const QByteArray &characters);

    // Reports the received characters that are not a whole frame.
    void flush();

private:
    void tell(const QDateTime &time, bool isSent, const QByteArray &line);
    void tellOverheard(const QDateTime &time, const QByteArray &line);

    const Sink m_sink;
    const Traffic m_traffic;
    QByteArray m_request;   // sent last; overheard: until its answer
    QByteArray m_received;  // not reported yet
    QDateTime m_receivedAt; // when its newest characters came
};

} // namespace kmr
