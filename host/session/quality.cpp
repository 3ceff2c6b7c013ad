#include "host/session/quality.h"

#include "modbus/protocol.h"

namespace kmr {

QString toText(const Failure &failure)
{
    if (failure.exceptionCode != 0)
        return "refused: " + modbus::exceptionText(failure.exceptionCode);
    return toText(failure.fault, failure.length);
}

ElementRange disturbedBy(const ElementRange &written)
{
    ElementRange run = written;
    if (isBitArea(run.area)) {
        run.first = written.first / BLOCK_BITS * BLOCK_BITS;
        run.count = (written.end() + BLOCK_BITS - 1) / BLOCK_BITS * BLOCK_BITS - run.first;
    } else if (isCounterArea(run.area)) {
        ++run.count;
    }
    return run;
}

} // namespace kmr
