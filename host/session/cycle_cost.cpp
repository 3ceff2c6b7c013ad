#include "host/session/cycle_cost.h"

#include "host/line/answer_form.h"
#include "host/line/in_step.h"
#include "modbus/ascii.h"

#include <vector>

namespace kmr {

namespace {

constexpr int READ_ANSWER_CHARS = 11; // that are not data

} // namespace

CycleCost costOf(const PollCycle &cycle)
{
    CycleCost cost;
    for (const PollBlock &block : cycle.blocks) {
        ++cost.requests;
        cost.sent += static_cast<int>(block.frame.size());
        cost.received += block.replyChars;
    }
    return cost;
}

CycleCost costInStep(const PollCycle &cycle)
{
    std::vector<QByteArray> requests;
    for (const PollBlock &block : cycle.blocks)
        requests.push_back(modbus::decodeLine(block.frame).message);
    CycleCost cost = costOf(cycle);
    for (const QByteArray &check : checksOfRound(requests)) {
        ++cost.requests;
        cost.sent += static_cast<int>(modbus::encodeLine(check).size());
        cost.received += READ_ANSWER_CHARS + 2 * answerBytes(check);
    }
    return cost;
}

} // namespace kmr
