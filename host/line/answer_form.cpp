#include "host/line/answer_form.h"

#include "modbus/areas.h"
#include "modbus/ascii.h"
#include "modbus/protocol.h"

namespace kmr {

namespace {

constexpr int HEAD_BYTES = 6; // station, function, address and quantity or value

} // namespace

bool operator==(const AnswerForm &left, const AnswerForm &right)
{
    return left.function == right.function && left.content == right.content;
}

AnswerForm answerForm(const QByteArray &request)
{
    if (request.size() < HEAD_BYTES)
        return {};
    const int function = modbus::byteAt(request, 1);
    if (modbus::isRead(function))
        return {function, QByteArray(1, static_cast<char>(answerBytes(request)))};
    return {function, request.mid(2, HEAD_BYTES - 2)};
}

bool isAnswerTo(const QByteArray &answer, const QByteArray &request)
{
    if (answer.size() < 3 || request.size() < HEAD_BYTES || answer.at(0) != request.at(0))
        return false;
    const AnswerForm form = answerForm(request);
    if (modbus::byteAt(answer, 1) == (form.function | modbus::EXCEPTION_BIT))
        return true;
    return modbus::byteAt(answer, 1) == form.function && answer.mid(2).startsWith(form.content);
}

int answerBytes(const QByteArray &request)
{
    const int address = modbus::wordAt(request, 2);
    const int quantity = modbus::wordAt(request, 4);
    if (modbus::byteAt(request, 1) == modbus::READ_DISCRETE_INPUTS)
        return (quantity + 7) / 8;
    return quantity * modbus::registerBytes(address);
}

} // namespace kmr
