// The device areas, the syntax of their addresses, and the editor's address services.
#ifndef ADDRESS_H
#define ADDRESS_H

#include "ostrel_kmr.h"

// What the elements of an area are to a host that reads and writes values.
enum ElementKind {
    NO_ELEMENTS, // known by name only, has no values
    BIT_ELEMENTS,
    WORD_ELEMENTS,   // 16 bits
    COUNTER_ELEMENTS // 32 bits
};

// How the store keeps an area, and so how changes of it are watched and reported.
enum WatchKind {
    WATCHED_AS_BITS, // bit by bit, in entries of 16 bits
    WATCHED_AS_WORDS // one entry for each address
};

// One device area.
struct DeviceArea {
    const char *name; // as the host spells it, case included
    ElementKind kind; // for reading, writing and checking addresses
    WatchKind watch;  // for polling, replies and reports
    int pollingOrder; // areas are polled in ascending order, from 0 on; -1: never polled
    bool octal;       // addresses carry octal digits
    qint32 lowest;    // first valid address
    qint32 highest;   // last valid address, also of the end of a run
    const char *mask; // input mask of the catalogue, null if the catalogue does not list the area
    bool writable;    // as the catalogue reports it
    qint32 base;      // Modbus address of element 0, for elements below `upperFrom`
    qint32 upperFrom; // first element that uses `upperBase`
    qint32 upperBase; // Modbus address that element 0 would have there
};

enum {
    BLOCK_BITS = 16 // bits that the store keeps in one entry
};

// Returns the row of `name`, or null.
const DeviceArea *findDeviceArea(const QString &name);

// The kind of an area's elements; NO_ELEMENTS for an unknown area (null).
ElementKind elementKind(const DeviceArea *area);

// True for "TV_bit": bits of "TV" words, watched by address and polled as words.
bool isTvBit(const DeviceArea &area);

// The linear number of the element that the host calls `address`.
qint32 linearAddress(const DeviceArea &area, qint32 address);

// The low 32 bits of `value`: a larger one wraps round.
qint32 wrapped(qint64 value);

// `address` + `offset`, wrapping round at 32 bits.
qint32 addressPlus(qint32 address, qint64 offset);

// The decimal digits of `digits` read as octal: 17 gives 15. 0 if a digit is 8 or 9 and for
// negative numbers.
qint32 linearFromOctalDigits(qint32 digits);

// The reverse: 15 gives 17. 0 for negative numbers and if the digits do not fit 32 bits.
qint32 octalDigitsFromLinear(qint32 linear);

// Returns 1 when no decimal digit of `value` is 8 or 9, else 0; 1 for negative numbers.
int check8Num(int value);

// Reads "word.bit" and stores word x 16 + bit in `*result`. The bit is 0 to 9 in one character or
// 10 to 15 in two. Returns 1, or -1 with `*result` untouched for any other text. A value that does
// not fit 32 bits is stored as the lowest 32-bit number, which every check finds out of range.
int a2i_ddd_DD(QString text, int *result);

// Returns 1 if `frame` has at least 2 bytes and ends in a carriage return without a '*' before it,
// else 0.
int bCheckSplitter(QByteArray frame);

// The decimal series of intf_multiCopy: `n` addresses from `start` on, those above `max` replaced
// by `max` and `endText`. Returns SERIES_INSIDE or SERIES_CLIPPED.
int multiCp_dec(qint32 start, qint32 n, qint32 step, QVector<QString> &texts,
                QVector<qint32> &numbers, qint32 max, QString endText);

#endif
