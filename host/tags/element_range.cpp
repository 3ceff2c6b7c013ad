#include "host/tags/element_range.h"

#include "modbus/protocol.h"

#include <QByteArray>

#include <algorithm>

namespace kmr {

bool operator==(const ElementRange &left, const ElementRange &right)
{
    return left.station == right.station && left.area == right.area && left.first == right.first &&
           left.count == right.count;
}

bool overlap(const ElementRange &left, const ElementRange &right)
{
    return left.station == right.station && left.area == right.area && left.first < right.end() &&
           right.first < left.end();
}

QString runName(const ElementRange &run)
{
    const QString name = elementName(run.area, run.first);
    const int last = shownNumber(run.area, run.end() - 1);
    return run.count == 1 ? name : QString("%1..%2").arg(name).arg(last);
}

KEY_ADDRESS toKey(const ElementRange &run)
{
    KEY_ADDRESS key;
    key.station = run.station;
    key.area = run.area;
    key.address = shownNumber(run.area, run.first);
    key.elemKind = isBitArea(run.area) ? -1 : 0;
    key.count = run.count;
    return key;
}

bool isRead(const FRAME_PRO &request)
{
    return modbus::isRead(QByteArray(request.frame + 3, 2).toInt(nullptr, 16));
}

ElementRange storedBy(const FRAME_PRO &frame)
{
    const VARIABLE &request = frame.var;
    const int first = std::max(0, linearNumber(request.area, request.address));
    ElementRange run{request.station, request.area, first, 0};
    if (isBitArea(run.area)) {
        run.first = first / BLOCK_BITS * BLOCK_BITS;
        run.count = frame.replyDataLen / 4 * BLOCK_BITS;
    } else {
        run.count = frame.replyDataLen / (isCounterArea(run.area) ? 8 : 4);
    }
    return run;
}

ElementRange refreshedBy(const FRAME_PRO &frame)
{
    ElementRange run = storedBy(frame);
    run.count = std::min(run.count, nextBorder(run.area, run.first) - run.first);
    return run;
}

} // namespace kmr
