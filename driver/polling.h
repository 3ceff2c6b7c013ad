// The polling plan: read blocks, watch marks, and the queues of one-shot requests.
#ifndef POLLING_H
#define POLLING_H

#include "ostrel_kmr.h"

enum {
    READ_BLOCK_TAG = 4, // reqTag of every read block
    QUEUE_MOST = 513    // requests that a queue holds
};

// Queues `request`. It overwrites the newest queued request with the same target (station, area,
// address, count), but never the front one, which may be in flight. A full queue keeps its first
// 512 requests and overwrites its last.
void queueRequest(QList<VARIABLE> &queue, const VARIABLE &request);

// `value` with bit `bit` set or cleared; a `bit` above 31 changes nothing.
int _setBitValue(int value, quint8 bit, bool on);

// Marks `count` elements from `address` on as watched. Returns the last mark word written, or 0.
int _setDataAreaMonitorFlag(int station, QString area, int address, int count);

// The rule for cutting runs: takes the first elements off `rest`, at most `maxCount` (below 1
// counts as 1), and returns them with all of its data. A run without elements is one piece.
// One-shot reads are cut piece by piece, since all pieces of a very long run would not fit the
// memory.
KEY_ADDRESS cutFront(KEY_ADDRESS &rest, qint32 maxCount);

// Appends all pieces that `cutFront` makes of `key` to `out`, in ascending order. `copyData` 1 asks
// for the first elements of the data in each piece, which holds all of it in any case. Nothing in
// the driver calls this function: change the rule in `cutFront`.
void groupingKey(KEY_ADDRESS &key, qint32 maxCount, QList<KEY_ADDRESS> &out, qint32 copyData);

#endif
