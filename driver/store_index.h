// Where each key of the store stands, so that the cost of finding an entry does not depend on the
// size of the store. What is found is what a search from the front finds: the first entry with the
// key, and an absent one is appended.
//
// The store stays a plain list that anyone may change. The index therefore keeps a copy of it,
// `StoreIndex::seen`, which shares the list's memory: whoever changes the list by any of its
// functions gets memory of his own first, and the index, which then sees that the two are shared no
// longer, is made anew. The functions below let go of the copy while they change an entry, so that
// the driver's own changes cost neither. Only one change goes unseen: that of a key by a reference
// or an iterator that was taken before the driver looked up an entry and is used after.
#ifndef STORE_INDEX_H
#define STORE_INDEX_H

#include "ostrel_kmr.h"

// Position in the store of the entry with that key, created when absent.
int positionInStore(qint32 station, const QString &area, qint32 index);

// The entry of the store with that key, created when absent. Valid until the store grows.
const _DATA_ &dataArea(qint32 station, const QString &area, qint32 index);

// The same, to change its values.
_DATA_ &dataAreaToChange(qint32 station, const QString &area, qint32 index);

// Takes back all watch marks of the store.
void clearWatchMarks();

#endif
