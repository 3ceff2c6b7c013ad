#include "host/line/answer_form.h"

#include "modbus/protocol.h"

namespace kmr {

namespace {

constexpr int HEAD_BYTES = 6; // station, function, address and quantity or value

// The counter registers answer with four bytes each, all others with two.
constexpr int FIRST_COUNTER = 0x0EC8;
constexpr int LAST_COUNTER = 0x0EFF;

int byteAt(const QByteArray &message, int position)
{
    return static_cast<unsigned char>(message.at(position));
}

int wordAt(const QByteArray &message, int position)
{
    return byteAt(message, position) * 256 + byteAt(message, position + 1);
}

} // namespace

bool operator==(const AnswerForm &left, const AnswerForm &right)
{
    return left.function == right.function && left.content == right.content;
}

AnswerForm answerForm(const QByteArray &request)
{
    if (request.size() < HEAD_BYTES)
        return {};
    const int function = byteAt(request, 1);
    if (isReadRequest(request))
        return {function, QByteArray(1, static_cast<char>(answerBytes(request)))};
    return {function, request.mid(2, HEAD_BYTES - 2)};
}

bool isAnswerTo(const QByteArray &answer, const QByteArray &request)
{
    if (answer.size() < 3 || request.size() < HEAD_BYTES || answer.at(0) != request.at(0))
        return false;
    const AnswerForm form = answerForm(request);
    if (byteAt(answer, 1) == (form.function | modbus::EXCEPTION_BIT))
        return true;
    return byteAt(answer, 1) == form.function && answer.mid(2).startsWith(form.content);
}

int answerBytes(const QByteArray &request)
{
    const int address = wordAt(request, 2);
    const int quantity = wordAt(request, 4);
    if (byteAt(request, 1) == modbus::READ_DISCRETE_INPUTS)
        return (quantity + 7) / 8;
    return quantity * (address >= FIRST_COUNTER && address <= LAST_COUNTER ? 4 : 2);
}

bool isReadRequest(const QByteArray &request)
{
    const int function = request.size() > 1 ? byteAt(request, 1) : 0;
    return function == modbus::READ_DISCRETE_INPUTS || function == modbus::READ_HOLDING_REGISTERS;
}

} // namespace kmr
