// Runs of elements of the controller's memory, in linear numbers, and what the driver makes of
// them.
#pragma once

#include "ostrel_kmr.h"

#include <QString>

#include <vector>

namespace kmr {

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

bool isBitArea(const QString &area);
bool isCounterArea(const QString &area);

// The number by which the driver knows element `number`: the octal digits for "X" and "Y", read as
// a decimal number, else the number itself. And back; digits that are not octal give -1.
int toDriverAddress(const QString &area, int number);
int fromDriverAddress(const QString &area, int address);

// "X17" for the area "X" and the number 15.
QString elementName(const QString &area, int number);

// "D100" or "D100..107".
QString runName(const ElementRange &run);

// The first element behind `number` whose address in the controller does not follow on that of the
// element before it: the base of D changes at 4096 and that of M at 1536, and M 22016 leaves the
// controller's 16-bit addresses. A request from below to beyond such a border reads or writes other
// memory there. INT_MAX where no border follows.
int nextBorder(const QString &area, int number);

// The run as the driver takes it for polling and for one-shot reads.
KEY_ADDRESS toKey(const ElementRange &run);

// The elements whose values the driver takes from a good answer to the read request `frame`. Bits
// are read in whole blocks of 16.
ElementRange storedBy(const FRAME_PRO &frame);

// Those of them that the answer truly refreshes: what lies beyond a border is other memory.
ElementRange refreshedBy(const FRAME_PRO &frame);

} // namespace kmr
