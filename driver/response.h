// Replies: classifying and decoding them, retries and giving up, and the end of requests.
#ifndef RESPONSE_H
#define RESPONSE_H

#include "ostrel_kmr.h"

enum ReplyKind { REPLY_BAD = 0, REPLY_DATA = 1, REPLY_WRITE_ACKNOWLEDGED = 2 };

// Returns the ReplyKind of a reply of `length` characters, from its function code alone. The host
// must have checked station, LRC and length: here any reply of more than 4 characters has a
// function code.
qint32 check_rcv_data(const quint8 *text, qint32 length);

// "station#areaAddress(count)(reply length)" of the frame in flight; there must be one.
QString getErrorInfo(QByteArray reply);

// Settles `count` written elements from `address` on: they are no longer pending, with `success` 1
// the written values become the read ones, and watched elements are reported in either case. For
// counters `count` is in words, so as many counters after the written ones are settled, too.
void write_FailOrSuc(qint32 station, QString area, qint32 address, qint32 count, qint32 success);

// Closes the batch of frames that has just ended: removes the finished write or one-shot read,
// moves the front cyclic block to the back, or advances the recipe and clears the host's request
// byte at its end.
void dealListWhenFinish();

#endif
