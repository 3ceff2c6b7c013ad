#include "kmr/simulation/capture_replay.h"

namespace kmr {

CaptureReplay::CaptureReplay(const Capture &capture)
{
    simulator::Plan *plan = nullptr; // of the request that was sent last
    std::int64_t last = 0;
    for (const CapturedPiece &piece : capture.pieces) {
        if (piece.isSent) {
            std::vector<simulator::Plan> &plans = m_answers[piece.characters].plans;
            plans.emplace_back();
            plan = &plans.back();
        } else if (plan != nullptr && !piece.characters.isEmpty()) {
            plan->pieces.push_back(
                {std::chrono::microseconds(piece.microseconds - last), piece.characters});
        } else {
            continue;
        }
        last = piece.microseconds;
    }
}

std::optional<simulator::Plan> CaptureReplay::answer(const QByteArray &request)
{
    const auto found = m_answers.find(request);
    if (found == m_answers.end())
        return std::nullopt;
    Answers &answers = found->second;
    const simulator::Plan &plan = answers.plans[answers.next];
    if (answers.next + 1 < answers.plans.size())
        ++answers.next;
    return plan;
}

} // namespace kmr
