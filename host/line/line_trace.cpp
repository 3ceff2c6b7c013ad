#include "host/line/line_trace.h"

#include "modbus/ascii.h"

namespace kmr {

namespace {

constexpr int SHORTEST_REQUEST = 17; // characters, ':' to LF

} // namespace

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
        if (m_received.endsWith("\r\n") || m_received.size() == modbus::MAX_LINE_CHARS)
            flush();
    }
}

void LineTrace::flush()
{
    if (m_received.isEmpty())
        return;
    if (m_traffic == Traffic::Own)
        tell(m_receivedAt, false, m_received);
    else
        tellOverheard(m_receivedAt, m_received);
    m_received.clear();
}

void LineTrace::tell(const QDateTime &time, bool isSent, const QByteArray &line)
{
    const bool isEcho = !isSent && line == m_request;
    m_sink({time, isSent, line, isEcho, explainLine(line, isSent ? QByteArray() : m_request)});
}

void LineTrace::tellOverheard(const QDateTime &time, const QByteArray &line)
{
    const FrameText frame = explainLine(line, m_request);
    const bool isBitWrite = frame.kind == FrameKind::RequestOrAnswer;
    const bool isRepeated = isBitWrite && line == m_request;
    const bool isSent = frame.kind == FrameKind::Request || (isBitWrite && !isRepeated);
    m_sink({time, isSent, line, isRepeated, frame});
    // A few characters of noise may precede an answer. More may be another request.
    if (isSent && frame.isGood)
        m_request = line;
    else if (frame.kind != FrameKind::Unreadable || line.size() >= SHORTEST_REQUEST)
        m_request.clear();
}

} // namespace kmr
