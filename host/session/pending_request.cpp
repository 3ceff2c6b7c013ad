#include "host/session/pending_request.h"

#include "modbus/ascii.h"
#include "modbus/protocol.h"

namespace kmr {

void PendingRequest::note(const Exchange &exchange)
{
    if (exchange.request.var.reqTag != m_tag)
        return;
    m_wasSent = true;
    m_message = messageOf(exchange);
    m_number = exchange.number;
    if (isFinal(exchange))
        m_result = resultOf(exchange, m_wasUnanswered);
    else if (exchange.exceptionCode == 0)
        m_wasUnanswered = true;
}

void PendingRequest::noteConfirmed(const StepNews &news)
{
    if (m_result && confirms(news, m_message, m_number))
        m_isConfirmed = !m_isInDoubt;
}

void PendingRequest::noteDoubt(const StepNews &news)
{
    if (m_result && !m_isConfirmed && putsInDoubt(news, m_message, !m_result->isDone()))
        m_isInDoubt = true;
}

RequestResult PendingRequest::result(bool mustBeConfirmed) const
{
    using Outcome = RequestResult::Outcome;
    if (!m_result)
        return {m_wasSent ? Outcome::Unknown : Outcome::NotSent, {}};
    if (isAnswered() && mustBeConfirmed && !m_isConfirmed)
        return {modbus::isRead(modbus::byteAt(m_message, 1)) ? Outcome::NoAnswer : Outcome::Unknown,
                {ReplyFault::NotConfirmed, 0}};
    return *m_result;
}

} // namespace kmr
