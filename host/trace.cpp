#include "host/trace.h"

#include "host/frame_text.h"

namespace kmr {

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
    const FrameText frame = explainLine(line, isSent ? QByteArray() : m_request);
    QString meaning = toText(frame);
    if (!isSent && line == m_request)
        meaning +=
            frame.kind == FrameKind::RequestOrAnswer ? " (its answer, or an echo)" : " (an echo)";
    m_sink(QString("%1 %2 %3  %4")
               .arg(time.toString("HH:mm:ss.zzz"), isSent ? ">" : "<", visible(line), meaning));
}

} // namespace kmr
