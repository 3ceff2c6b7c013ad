// Runs of elements of the controller's memory, in linear numbers, and their form for the driver.
#pragma once

#include "modbus/areas.h"
#include "ostrel_kmr.h"

#include <QString>

#include <vector>

namespace kmr {

constexpr int WORD_BITS = 16;
constexpr int BLOCK_BITS = 16; // the driver reads bits in blocks of 16, from multiples of 16 on
const char *const WORD_BIT_AREA = "TV_bit"; // the driver's name for bits of TV words

// `count` elements of an area from number `first` on. Numbers are linear: X17, octal as the panel
// shows it, is 15. Areas are the driver's, except "TV_bit".
struct ElementRange {
    int station = 1;
    QString area;
    int first = 0;
    int count = 1; // bits, words or counters

    int end() const
    {
        return first + count;
    }
};

bool operator==(const ElementRange &left, const ElementRange &right);

// True if they have an element in common.
bool overlap(const ElementRange &left, const ElementRange &right);

// From the controller's address map. The driver's addresses are shown numbers.
using modbus::elementName;
using modbus::isBitArea;
using modbus::isCounterArea;
using modbus::linearNumber;
using modbus::nextBorder;
using modbus::shownNumber;

// The run as text: "D100" or "D100..107".
QString runName(const ElementRange &run);

// The run as the driver expects it for polling and for one-shot reads.
KEY_ADDRESS toKey(const ElementRange &run);

// True for a request of the driver that reads, also with a count of 0.
bool isRead(const FRAME_PRO &request);

// The elements that the driver stores from a good answer to the read request `frame`. Bits are read
// in whole blocks of 16.
ElementRange storedBy(const FRAME_PRO &frame);

// Those of them that get their own values: beyond a border the answer has other memory.
ElementRange refreshedBy(const FRAME_PRO &frame);

} // namespace kmr
