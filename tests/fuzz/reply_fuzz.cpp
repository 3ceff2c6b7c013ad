// Replies of any characters to every kind of request. The first five bytes choose the request, the
// rest comes over the line; a reply ends at a line feed.
#include "tests/fuzz/byte_source.h"

#include <numeric>

namespace {

enum Kind { POLL, READ_ONCE, WRITE, UPLOAD, DOWNLOAD, KINDS };

constexpr qint32 MOST_COUNT = 40;

qint32 ignoreReport(qint32, qint32, QString, qint32)
{
    return 0;
}

KEY_ADDRESS keyOf(const _RCP_VAR_PRO &run, qint32 elemKind)
{
    KEY_ADDRESS key;
    key.station = run.station;
    key.area = run.area;
    key.address = run.address;
    key.count = run.count;
    key.elemKind = elemKind;
    return key;
}

void request(Kind kind, const _RCP_VAR_PRO &run, std::vector<quint8> &status)
{
    KEY_ADDRESS key = keyOf(run, run.area.startsWith(QLatin1Char('T')) ? -1 : 1);
    std::vector<quint8> values(2 * MOST_COUNT);
    std::iota(values.begin(), values.end(), quint8(1));
    const QVector<_RCP_VAR_PRO> recipes(2, run);
    intf_addrMerge({key});
    intf_setRcpAddress(&recipes);
    switch (kind) {
    case READ_ONCE:
        intf_addConditionRead(key, 1);
        break;
    case WRITE:
        intf_setData(run.station, run.area, run.address, run.count, values.data(), 1);
        break;
    case UPLOAD:
        status[STATUS_RECIPE_UPLOAD] = 1;
        break;
    case DOWNLOAD:
        status[STATUS_RECIPE_DOWNLOAD] = 1;
        break;
    default:
        break;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static std::vector<quint8> status(STATUS_BLOCK_BYTES);
    static QMutex mutex;
    std::vector<quint8> recipe(4 * MOST_COUNT);
    ByteSource bytes(data, size);
    driver = Ostrel_kmr();
    status[STATUS_RECIPE_UPLOAD] = status[STATUS_RECIPE_DOWNLOAD] = 0;
    intf_initProperty(status.data(), nullptr, recipe.data(), nullptr, "0#0#0#2#8", &mutex);
    intf_setAddrValueChangeCallBack(ignoreReport);

    const Kind kind = static_cast<Kind>(bytes.below(KINDS));
    _RCP_VAR_PRO run;
    run.station = 1;
    run.area = bytes.area();
    run.address = bytes.byte() * 100;
    run.address += bytes.byte();
    run.count = bytes.below(MOST_COUNT);
    request(kind, run, status);
    for (QByteArray &line : bytes.rest().split('\n')) {
        FRAME_PRO frame;
        QString error;
        if (intf_getSendFrame(&frame) == 1)
            intf_dealRcvFrame(line, error);
    }
    std::vector<quint8> values(2 * MOST_COUNT);
    intf_getData(run.station, run.area, run.address, run.count, values.data());
    return 0;
}
