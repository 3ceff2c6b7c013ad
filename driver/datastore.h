// The data-area store: the cached image of controller memory, its change reports, and the host's
// reading and writing of values.
//
// A report runs the host's callback, which may read, write and queue, so any list may grow. No
// reference into a list outlives a report.
#ifndef DATASTORE_H
#define DATASTORE_H

#include "address.h"
#include "store_index.h"

// Position in `areas` of the entry (`station`, `area`, `index`): the first one from the front. An
// absent one is appended with all values 0.
int getIndexOfDataArea(int station, QString area, int index, QList<_DATA_> &areas);

// Calls the host back, if it registered a callback.
void reportToHost(qint32 devId, qint32 station, const QString &area, qint32 address);

// Byte of a 16-bit block that holds bit address `bit`: 0 or 1. Negative addresses count as byte 0.
int byteOfBit(qint32 bit);

// Reports a change of the word or counter of `entry` to the host if it is watched.
void reportElement(const _DATA_ &entry);

// Reports the watched bits of `entry`, a block of `area`, that are set in `changedBits`. The entry
// is a copy because the first of several reports may move the one in the store.
void reportBlock(const DeviceArea &area, _DATA_ entry, int changedBits);

// Looks up an element in the store and reports a change of it. `address` is a word or counter
// address or, for bit areas, a linear bit address. For a bit area with `wholeBlock` 1 it is a block
// number (bit address / 16): every watched bit in which `oldWord` and `newWord` differ is reported.
void _OnlyOneDataTypeDataChange(int station, QString area, int address, int oldWord, int newWord,
                                int wholeBlock);

// Reports a changed word, its bits (unless `noBits`) as area "_bit" and the double words that
// contain it as area "_double". Not used by this driver.
void _wordDataChange(int *oldWord, int *newWord, int station, QString area, int address,
                     int noBits);

// Puts values into the store as written and not yet acknowledged. Arguments as in intf_setData.
void write_saveDataToArea(int station, QString area, int address, int count, unsigned char *data);

#endif
