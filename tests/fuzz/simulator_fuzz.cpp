// Anything that may come to the simulated controller: any characters, and any message in a good
// line.
#include "modbus/ascii.h"
#include "simulator/controller.h"

#include <cstdlib>

namespace {

constexpr char STATION = 0x01;

simulator::Controller &controller()
{
    // One for all inputs: its memory is large, and the form of answers does not depend on it.
    static simulator::Controller *const instance = [] {
        simulator::Controller *const made = new simulator::Controller("01");
        made->setObserver([](const simulator::Exchange &exchange) { describe(exchange); });
        return made;
    }();
    return *instance;
}

void requireGoodAnswer(const QByteArray &answer)
{
    const modbus::DecodedLine line = modbus::decodeLine(answer);
    if (line.fault != modbus::LineFault::None || line.message.at(0) != STATION)
        abort();
}

void answer(const QByteArray &line)
{
    const QByteArray text = controller().answer(line);
    if (!text.isEmpty())
        requireGoodAnswer(text);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char *>(data), static_cast<int>(size));
    modbus::LineCollector collector;
    for (const QByteArray &line : collector.take(bytes))
        answer(line);
    answer(bytes);
    answer(modbus::encodeLine(STATION + bytes));
    return 0;
}
