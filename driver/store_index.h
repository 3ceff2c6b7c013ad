// The position of each key in the store, so that the cost of finding an entry does not depend on
// the size of the store. The result is that of a search from the front: the first entry with the
// key; an absent one is appended.
//
// The store stays a plain list that any code may change. The index therefore keeps a copy of it,
// `StoreIndex::seen`, which shares the list's memory. A change of the list by any of its functions
// detaches it. The index then sees that the two no longer share memory and is rebuilt. The
// functions below release the copy while they change an entry, so that the driver's own changes
// neither copy the list nor rebuild the index. One change is not seen: that of a key through a
// reference or an iterator that was taken before the driver looked up an entry and is used after
// it.
#ifndef STORE_INDEX_H
#define STORE_INDEX_H

#include "ostrel_kmr.h"

// Position in the store of the entry with that key, which is created if absent.
int positionInStore(qint32 station, const QString &area, qint32 index);

// The entry of the store with that key, created if absent. Valid until the store grows.
const _DATA_ &dataArea(qint32 station, const QString &area, qint32 index);

// The same, to change its values.
_DATA_ &dataAreaToChange(qint32 station, const QString &area, qint32 index);

// Clears all watch marks of the store.
void clearWatchMarks();

#endif
