// A recipe transfer that the driver carries out.
#pragma once

#include "host/session/request_result.h"

#include <QByteArray>
#include <QVector>

#include <cstdint>
#include <optional>
#include <vector>

namespace kmr {

// The progress of a recipe transfer.
struct RecipeProgress {
    int finished = 0; // entries with a confirmed answer
    int unsure = 0;   // entries after these that were sent
    int failed = 0;   // index of the entry that ended the transfer, when it failed
};

class PendingRecipe {
public:
    explicit PendingRecipe(const QVector<_RCP_VAR_PRO> &entries) : m_entries(entries) {}

    // What the driver borrows until the transfer is over.
    QVector<_RCP_VAR_PRO> *entries()
    {
        return &m_entries;
    }

    // To be called with every exchange and all news; those of other requests are ignored.
    void note(const Exchange &exchange);
    void noteConfirmed(const StepNews &news);
    void noteDoubt(const StepNews &news);

    // An answer is in doubt for ever, though no entry failed: only a new transfer helps.
    bool isInDoubt() const
    {
        return m_isInDoubt && !m_failed;
    }

    // To be called when the transfer is over.
    RequestResult result(RecipeProgress &progress) const;

private:
    struct Answered {
        QByteArray message;       // the entry's request
        std::uint64_t number = 0; // Exchange::number
        bool isConfirmed = false;
    };

    int confirmed() const; // entries answered before the first that is not confirmed

    QVector<_RCP_VAR_PRO> m_entries;
    std::vector<Answered> m_answered;      // the first ones of the entries
    bool m_isInDoubt = false;              // an answered entry, for ever
    bool m_wasSent = false;                // the entry after those answered
    bool m_wasUnanswered = false;          // the same entry, when it was sent before
    std::optional<RequestResult> m_failed; // the result of the entry that failed
};

} // namespace kmr
