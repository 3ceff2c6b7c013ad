#include "host/session/poll_cycle.h"

#include "modbus/ascii.h"

#include <algorithm>
#include <set>
#include <tuple>

namespace kmr {

namespace {

using Element = std::tuple<int, QString, int>; // station, area, number
using Elements = std::set<Element>;

void insert(const ElementRange &run, Elements &elements)
{
    for (int number = run.first; number < run.end(); ++number)
        elements.insert({run.station, run.area, number});
}

bool contains(const ElementRange &run, const Element &element)
{
    const auto &[station, area, number] = element;
    return run.station == station && run.area == area && number >= run.first && number < run.end();
}

// The elements that the driver stores from a good answer.
ElementRange believedBy(const FRAME_PRO &frame)
{
    const VARIABLE &request = frame.var;
    return {request.station, request.area, std::max(0, linearNumber(request.area, request.address)),
            request.count};
}

bool isReadRequest(const FRAME_PRO &frame)
{
    return frame.var.area != WORD_BIT_AREA && isRead(frame);
}

QByteArray goodReply(const FRAME_PRO &frame)
{
    const int bytes = frame.replyDataLen / 2;
    return modbus::encodeLine(QByteArray::fromHex(QByteArray(frame.frame + 1, 4)) +
                              static_cast<char>(bytes) + QByteArray(bytes, '\0'));
}

// Why no block reads `element` correctly.
QString reasonFor(const Element &element, const std::vector<FRAME_PRO> &frames)
{
    for (const FRAME_PRO &frame : frames) {
        if (frame.var.area == WORD_BIT_AREA && std::get<1>(element) == "TV" &&
            contains({frame.var.station, "TV", frame.var.address, frame.var.count}, element))
            return "never refreshed: the driver's request for single bits of TV words reads "
                   "nothing";
        if (contains(storedBy(frame), element)) {
            const ElementRange run = refreshedBy(frame);
            return QString("read wrongly: the block from %1 continues in other memory after the "
                           "border at %2, where the area's base address changes")
                .arg(elementName(run.area, run.first), elementName(run.area, run.end()));
        }
        if (contains(believedBy(frame), element))
            return QString("never refreshed: the block from %1 has %2 bits, and one read covers 32 "
                           "at most")
                .arg(elementName(frame.var.area, believedBy(frame).first))
                .arg(frame.var.count);
    }
    if (isCounterArea(std::get<1>(element)))
        return "never refreshed: the driver treats the number of counters in a block as a number "
               "of words, "
               "and reads half of them";
    return "never refreshed: no block contains it, since the driver counts octal numbers in "
           "decimal";
}

std::vector<FRAME_PRO> oneCycle(const DriverFunctions &driver, const QList<KEY_ADDRESS> &keys,
                                int groupLimit)
{
    qint32 result = 0;
    const QByteArray property = QString("1#0#0#1#%1").arg(groupLimit).toLatin1();
    driver.setAddrValueChangeCallBack(nullptr);
    driver.initProperty(nullptr, nullptr, nullptr, &result, property.constData(), nullptr);
    std::vector<FRAME_PRO> frames(static_cast<std::size_t>(driver.addrMerge(keys)));
    for (FRAME_PRO &frame : frames) {
        driver.getSendFrame(&frame);
        QByteArray reply = goodReply(frame);
        QString errorInfo;
        driver.dealRcvFrame(reply, errorInfo);
    }
    driver.initProperty(nullptr, nullptr, nullptr, &result, "", nullptr);
    return frames;
}

} // namespace

PollCycle pollCycleOf(const DriverFunctions &driver, const QList<KEY_ADDRESS> &keys,
                      const std::vector<Tag> &asked, int groupLimit)
{
    Elements missing;
    for (const Tag &tag : asked)
        insert(tag.elements, missing);
    const Elements wanted = missing;
    const std::vector<FRAME_PRO> frames = oneCycle(driver, keys, groupLimit);

    PollCycle cycle;
    for (const FRAME_PRO &frame : frames) {
        PollBlock block;
        block.frame = QByteArray(frame.frame, frame.frameLen);
        if (isReadRequest(frame)) {
            block.replyChars = frame.replyLen;
            block.refreshed = refreshedBy(frame);
        } else {
            block.refreshed = {frame.var.station, frame.var.area, frame.var.address, 0};
        }
        Elements read;
        insert(block.refreshed, read);
        for (const Element &element : read) {
            if (wanted.count(element) == 0)
                ++block.unasked;
            missing.erase(element);
        }
        cycle.blocks.push_back(block);
    }
    for (const auto &element : missing) {
        const auto &[station, area, number] = element;
        const QString reason = reasonFor(element, frames);
        PollGap *last = cycle.gaps.empty() ? nullptr : &cycle.gaps.back();
        if (last != nullptr && last->reason == reason && last->elements.station == station &&
            last->elements.area == area && last->elements.end() == number)
            ++last->elements.count;
        else
            cycle.gaps.push_back({{station, area, number, 1}, reason});
    }
    return cycle;
}

QList<KEY_ADDRESS> toRawKeys(const std::vector<Tag> &tags)
{
    QList<KEY_ADDRESS> keys;
    for (const Tag &tag : tags) {
        KEY_ADDRESS key = toKey(tag.elements);
        if (tag.kind == ElementKind::WordBit && key.area == "TV") {
            key.area = WORD_BIT_AREA;
            key.address = key.address * WORD_BITS + tag.firstBit;
            key.elemKind = -1;
            key.count = tag.count;
        }
        keys.append(key);
    }
    return keys;
}

} // namespace kmr
