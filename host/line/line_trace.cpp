#include "host/line/line_trace.h"

namespace kmr {

QString timeText(const QDateTime &time)
{
    return time.toOffsetFromUtc(time.offsetFromUtc()).toString(Qt::ISODateWithMs);
}

QString toText(const TracedLine &line)
{
    QString meaning = toText(line.frame);
    if (line.isEcho) {
        meaning += line.frame.kind == FrameKind::RequestOrAnswer ? " (its answer, or an echo)"
                                                                 : " (an echo)";
    }
    return QString("%1 %2 %3  %4")
        .arg(timeText(line.time), line.isSent ? ">" : "<", visible(line.characters), meaning);
}

void LineTrace::add(const QDateTime &time, bool isSent, const QByteArray &characters)
{
    if (isSent) {
        flush();
        m_request = characters;
        tell(time, true, characters);
        return;
    }
    for (const char character : characters) {
        if (character == ':')
            flush();
        m_received.append(character);
        m_receivedAt = time;
        if (m_received.endsWith("\r\n"))
            flush();
    }
}

void LineTrace::flush()
{
    if (m_received.isEmpty())
        return;
    tell(m_receivedAt, false, m_received);
    m_received.clear();
}

void LineTrace::tell(const QDateTime &time, bool isSent, const QByteArray &line)
{
    const bool isEcho = !isSent && line == m_request;
    m_sink({time, isSent, line, isEcho, explainLine(line, isSent ? QByteArray() : m_request)});
}

} // namespace kmr
