#include "host/session/pending_recipe.h"

#include <algorithm>

namespace kmr {

// Entries go out in their order; other requests may still be queued when a transfer begins.
void PendingRecipe::note(const Exchange &exchange)
{
    const int answered = static_cast<int>(m_answered.size());
    if (answered == m_entries.size())
        return;
    const _RCP_VAR_PRO &entry = m_entries.at(answered);
    const VARIABLE &request = exchange.request.var;
    if (request.station != entry.station || request.area != entry.area ||
        request.address != entry.address)
        return;
    m_wasSent = true;
    if (exchange.outcome == Exchange::Outcome::Good) {
        m_answered.push_back({messageOf(exchange), exchange.number, false});
        m_wasSent = false;
        m_wasUnanswered = false;
    } else if (isFinal(exchange)) {
        m_failed = resultOf(exchange, m_wasUnanswered);
    } else if (exchange.exceptionCode == 0) {
        m_wasUnanswered = true;
    }
}

void PendingRecipe::noteConfirmed(const StepNews &news)
{
    for (Answered &entry : m_answered) {
        if (!m_isInDoubt && confirms(news, entry.message, entry.number))
            entry.isConfirmed = true;
    }
}

void PendingRecipe::noteDoubt(const StepNews &news)
{
    for (const Answered &entry : m_answered) {
        if (!entry.isConfirmed && putsInDoubt(news, entry.message, false))
            m_isInDoubt = true;
    }
}

int PendingRecipe::confirmed() const
{
    const auto first = std::find_if_not(m_answered.begin(), m_answered.end(),
                                        [](const Answered &entry) { return entry.isConfirmed; });
    return static_cast<int>(first - m_answered.begin());
}

RequestResult PendingRecipe::result(RecipeProgress &progress) const
{
    using Outcome = RequestResult::Outcome;
    const int answered = static_cast<int>(m_answered.size());
    progress.finished = confirmed();
    progress.unsure = answered - progress.finished + (m_wasSent ? 1 : 0);
    progress.failed = m_failed ? answered : progress.finished;
    if (m_failed)
        return *m_failed;
    if (progress.finished == m_entries.size())
        return {Outcome::Done, {}};
    if (answered > progress.finished && !m_wasSent)
        return {Outcome::Unknown, {ReplyFault::NotConfirmed, 0}};
    return {m_wasSent ? Outcome::Unknown : Outcome::NotSent, {}};
}

} // namespace kmr
