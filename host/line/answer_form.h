// What can be checked of an answer. An answer does not say which request it belongs to: it can be
// taken for the answer to every request with an answer of the same form.
#pragma once

#include <QByteArray>

namespace kmr {

// The form of a request's good answer.
struct AnswerForm {
    int function = 0;
    // For a read the byte count; for a write what the acknowledgement repeats, address and value or
    // quantity.
    QByteArray content;
};

bool operator==(const AnswerForm &left, const AnswerForm &right);

// The form of the good answer to a request's message (station, function, data), as
// modbus::decodeLine() returns it.
AnswerForm answerForm(const QByteArray &request);

// True if the message `answer` may be the good answer or the exception to the message `request`.
bool isAnswerTo(const QByteArray &answer, const QByteArray &request);

// The number of data bytes in the answer to a read request. The controller reads the digits of the
// quantity as hexadecimal, although the driver writes them in decimal.
int answerBytes(const QByteArray &request);

} // namespace kmr
