#include "host/tags/element_range.h"

#include <algorithm>
#include <climits>

namespace kmr {

namespace {

constexpr int BLOCK_BITS = 16;

bool isOctalArea(const QString &area)
{
    return area == "X" || area == "Y";
}

} // namespace

bool operator==(const ElementRange &left, const ElementRange &right)
{
    return left.station == right.station && left.area == right.area && left.first == right.first &&
           left.count == right.count;
}

bool isBitArea(const QString &area)
{
    return area == "X" || area == "Y" || area == "M" || area == "S" || area == "T" || area == "C";
}

bool isCounterArea(const QString &area)
{
    return area == "CV2";
}

int toDriverAddress(const QString &area, int number)
{
    return isOctalArea(area) ? QString::number(number, 8).toInt() : number;
}

int fromDriverAddress(const QString &area, int address)
{
    if (!isOctalArea(area))
        return address;
    bool isOctal = false;
    const int number = QString::number(address).toInt(&isOctal, 8);
    return isOctal ? number : -1;
}

QString elementName(const QString &area, int number)
{
    return area + QString::number(toDriverAddress(area, number));
}

QString runName(const ElementRange &run)
{
    const QString name = elementName(run.area, run.first);
    const int last = toDriverAddress(run.area, run.end() - 1);
    return run.count == 1 ? name : QString("%1..%2").arg(name).arg(last);
}

int nextBorder(const QString &area, int number)
{
    static const struct {
        const char *area;
        int border;
    } BORDERS[] = {{"M", 1536}, {"M", 22016}, {"D", 4096}};
    for (const auto &entry : BORDERS) {
        if (area == entry.area && number < entry.border)
            return entry.border;
    }
    return INT_MAX;
}

KEY_ADDRESS toKey(const ElementRange &run)
{
    KEY_ADDRESS key;
    key.station = run.station;
    key.area = run.area;
    key.address = toDriverAddress(run.area, run.first);
    key.elemKind = isBitArea(run.area) ? -1 : 0;
    key.count = run.count;
    return key;
}

ElementRange storedBy(const FRAME_PRO &frame)
{
    const VARIABLE &request = frame.var;
    const int first = std::max(0, fromDriverAddress(request.area, request.address));
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
