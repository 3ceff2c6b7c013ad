// What can be checked of an answer. Answers carry no mark of their request: a good answer of one
// form passes for the answer to every request of that form.
#pragma once

#include <QByteArray>

namespace kmr {

// The form of a request's good answer.
struct AnswerForm {
    int function = 0;
    // Of a read the byte count; of a write what the acknowledgement repeats, address and value or
    // quantity.
    QByteArray content;
};

bool operator==(const AnswerForm &left, const AnswerForm &right);

// Of a request's message (station, function, data) as modbus::decodeLine() returns it.
AnswerForm answerForm(const QByteArray &request);

// Whether `answer`, a message too, may be the good answer or the exception to a request.
bool isAnswerTo(const QByteArray &answer, const QByteArray &request);

// The data bytes that a controller answers to a read request. It takes the quantity's digits for
// hexadecimal ones, though the driver writes them in decimal.
int answerBytes(const QByteArray &request);

} // namespace kmr
