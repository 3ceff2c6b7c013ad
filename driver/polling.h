// The polling plan: read blocks, watch marks, and the queues of one-shot requests.
#ifndef POLLING_H
#define POLLING_H

#include "ostrel_kmr.h"

enum {
    READ_BLOCK_TAG = 4, // reqTag of every read block
    QUEUE_MOST = 513    // requests that a queue holds
};

// Queues `request`: the newest queued request of the same target (station, area, address, count) is
// overwritten in place, never the front one, which may be in flight. A full queue keeps its first
// 512 requests and overwrites its last.
void queueRequest(QList<VARIABLE> &queue, const VARIABLE &request);

// `value` with bit `bit` set or cleared; a `bit` of 32 and more changes nothing.
int _setBitValue(int value, quint8 bit, bool on);

// Marks `count` elements from `address` on as watched. Returns the last mark word written, or 0.
int _setDataAreaMonitorFlag(int station, QString area, int address, int count);

// The rule for cutting runs: takes the first elements off `rest`, at most `maxCount` (below 1
// counts as 1), and returns them with the whole of its data. A run without elements is one piece.
// One-shot reads are cut with it piece by piece, since all pieces of an absurdly long run would not
// fit the memory.
KEY_ADDRESS cutFront(KEY_ADDRESS &rest, qint32 maxCount);

// Appends all the pieces that `cutFront` makes of `key` to `out`, in ascending order. `copyData` 1
// asks for a piece's first elements of the data, which it holds in any case. Nothing in the driver
// calls it: change the rule in `cutFront`.
void groupingKey(KEY_ADDRESS &key, qint32 maxCount, QList<KEY_ADDRESS> &out, qint32 copyData);

#endif
