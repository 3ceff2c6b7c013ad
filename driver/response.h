// Replies: classifying and decoding them, retries and giving up, and the end of requests.
#ifndef RESPONSE_H
#define RESPONSE_H

#include "ostrel_kmr.h"

enum ReplyKind { REPLY_BAD = 0, REPLY_DATA = 1, REPLY_WRITE_ACKNOWLEDGED = 2 };

// What a reply of `length` characters counts as, by its function code alone: a ReplyKind. The host
// is expected to have checked station, LRC and the length that fits its request: here any reply of
// more than 4 characters has one.
qint32 check_rcv_data(const quint8 *text, qint32 length);

// "station#areaAddress(count)(reply length)" of the frame in flight; there must be one.
QString getErrorInfo(QByteArray reply);

// Settles `count` written elements from `address` on: nothing is pending any longer, with `success`
// 1 the written values become the read ones, and watched elements are reported either way. Of a
// counter write `count` is in words, so as many counters again after the written ones are settled.
void write_FailOrSuc(qint32 station, QString area, qint32 address, qint32 count, qint32 success);

// Closes the batch of frames that has just ended: removes the finished write or one-shot read,
// turns the cyclic blocks, or steps the recipe on and clears the host's request byte at its end.
void dealListWhenFinish();

#endif
