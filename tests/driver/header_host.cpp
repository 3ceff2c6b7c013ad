// Uses the public header as a host does, in C++98: compiled, never run, in every version of C++
// that a host may use (CMakeLists.txt).
#include "ostrel_kmr.h"

namespace {

qint32 reported(qint32, qint32, QString, qint32)
{
    return 0;
}

// Records are made, copied and kept in lists.
template <typename Record> Record copied()
{
    Record first;
    Record second(first);
    first = second;
    QList<Record> list;
    list.append(first);
    return list.takeFirst();
}

} // namespace

bool useRecords()
{
    const FRAME_PRO frame = copied<FRAME_PRO>();
    const _RCP_VAR_PRO entry = copied<_RCP_VAR_PRO>();
    const _DATA_ area = copied<_DATA_>();
    const KEY_ADDRESS key = copied<KEY_ADDRESS>();
    return frame.frameLen + entry.count + area.index + key.count == NOTHING_TO_SEND;
}

void useFunctions()
{
    static quint8 status[STATUS_BLOCK_BYTES];
    QMutex mutex;
    qint32 result = -1;
    intf_setAddrValueChangeCallBack(reported);
    intf_initProperty(status, 0, 0, &result, "1#0#0#3#8", &mutex);
    QList<KEY_ADDRESS> runs;
    intf_addrMerge(runs);
    FRAME_PRO frame;
    QByteArray reply;
    QString info;
    if (intf_getSendFrame(&frame) == FRAME_TO_SEND)
        intf_dealRcvFrame(reply, info);
}

// Each function has the type that the header declares, also when looked up by name.
#define OSTREL_KMR_COUNT(name) +(&intf_##name != 0)
int countFunctions()
{
    return 0 OSTREL_KMR_FUNCTIONS(OSTREL_KMR_COUNT);
}
