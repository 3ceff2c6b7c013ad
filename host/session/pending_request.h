// A one-shot read or a write that the driver has queued or sent.
#pragma once

#include "host/session/request_result.h"
#include "host/tags/element_range.h"

#include <QByteArray>

#include <cstdint>
#include <optional>
#include <utility>

namespace kmr {

class PendingRequest {
public:
    // `tag`: the driver's. `disturbed`: elements whose values a write leaves uncertain.
    PendingRequest(qint32 tag, std::optional<ElementRange> disturbed)
        : m_tag(tag), m_disturbed(std::move(disturbed))
    {
    }

    qint32 tag() const
    {
        return m_tag;
    }
    const std::optional<ElementRange> &disturbed() const
    {
        return m_disturbed;
    }

    // To be called with every exchange and all news; those of other requests are ignored.
    void note(const Exchange &exchange);
    void noteConfirmed(const StepNews &news);
    void noteDoubt(const StepNews &news);

    // Answered, refused or given up.
    bool isOver() const
    {
        return m_result.has_value();
    }

    // The controller answered, also with a refusal.
    bool isAnswered() const
    {
        return m_result && (m_result->isDone() || m_result->failure.exceptionCode != 0);
    }

    // `mustBeConfirmed`: an answer that is not confirmed does not count.
    RequestResult result(bool mustBeConfirmed) const;

private:
    const qint32 m_tag;
    const std::optional<ElementRange> m_disturbed;
    bool m_wasSent = false;
    bool m_wasUnanswered = false; // when it was sent before
    QByteArray m_message;         // as it was sent last
    std::uint64_t m_number = 0;   // of its last exchange, Exchange::number
    bool m_isConfirmed = false;   // the result
    bool m_isInDoubt = false;     // the result, for ever
    std::optional<RequestResult> m_result;
};

} // namespace kmr
