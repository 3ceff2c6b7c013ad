// The editor's services: addresses as a user may type them, the catalogue and series of addresses.
#include "tests/fuzz/byte_source.h"

#include "driver/address.h"

#include <cstdlib>

namespace {

void requireOctalThereAndBack(qint32 digits)
{
    const bool octal = digits > 0 && check8Num(digits) == 1;
    if (octal && octalDigitsFromLinear(linearFromOctalDigits(digits)) != digits)
        abort();
}

// A text that is valid in an area is accepted as the address that it gave.
void requireSameAgain(const QString &area, qint32 address, qint32 count)
{
    qint32 again = -1;
    const bool bits = findDeviceArea(area)->kind == BIT_ELEMENTS;
    if (area == QLatin1String("TV_bit"))
        return;
    if (intf_checkAddrValidity(area, QString::number(address), &again, count, bits ? 0 : 1) != 0 ||
        again != address)
        abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    ByteSource bytes(data, size);
    const QString area = bytes.area();
    const qint32 count = bytes.number();
    const qint32 type = bytes.below(12) - 1;
    const qint32 start = bytes.number();
    const qint32 step = bytes.number();
    const qint32 length =
        bytes.numberUpTo(64); // a series of a billion addresses would fill the memory
    const QString text = QString::fromUtf8(bytes.rest());

    qint32 address = 0;
    if (intf_checkAddrValidity(area, text, &address, count, type + 1) == 0)
        requireSameAgain(area, address, count);
    intf_checkAddr(area, text, &address, type, count);
    intf_checkAddr(text, area, nullptr, type, count);

    QStringList catalogue;
    intf_getRegDiscription(area, catalogue);
    intf_getRegDiscription(text, catalogue);
    intf_getRegListByType(type, catalogue);

    QVector<QString> texts;
    QVector<qint32> numbers;
    intf_multiCopy(area, start, length, step, &texts, &numbers);
    if (texts.size() != numbers.size())
        abort();

    requireOctalThereAndBack(start);
    requireOctalThereAndBack(address);
    a2i_ddd_DD(text, &address);
    bCheckSplitter(text.toUtf8());
    return 0;
}
