#include "ostrel_kmr.h"

#include <cstddef>

// The layout of the records, checked for 32 and 64 bits. QString is one pointer in Qt 4 and 5 and
// three words in Qt 6; with 64 bits there is a gap before a QString that follows an odd number of
// 32-bit fields.
namespace layout {
const size_t TEXT = sizeof(QString);
const size_t GAP = sizeof(void *) == 8 ? 4 : 0;
static_assert(TEXT == (QT_VERSION < 0x060000 ? 1 : 3) * sizeof(void *), "QString");

static_assert(offsetof(VARIABLE, area) == 8, "VARIABLE");
static_assert(offsetof(VARIABLE, address) == 8 + TEXT, "VARIABLE");
static_assert(offsetof(VARIABLE, count) == 12 + TEXT, "VARIABLE");
static_assert(offsetof(VARIABLE, data) == 16 + TEXT, "VARIABLE");
static_assert(sizeof(VARIABLE) == 1040 + TEXT, "VARIABLE");

static_assert(offsetof(FRAME_PRO, frameLen) == 1024, "FRAME_PRO");
static_assert(offsetof(FRAME_PRO, replyLen) == 1028, "FRAME_PRO");
static_assert(offsetof(FRAME_PRO, replyDataPos) == 1032, "FRAME_PRO");
static_assert(offsetof(FRAME_PRO, replyDataLen) == 1036, "FRAME_PRO");
static_assert(offsetof(FRAME_PRO, frameSpare) == 1040, "FRAME_PRO");
static_assert(offsetof(FRAME_PRO, var) == 1044 + GAP, "FRAME_PRO");
static_assert(sizeof(FRAME_PRO) == offsetof(FRAME_PRO, var) + sizeof(VARIABLE), "FRAME_PRO");

static_assert(offsetof(_RCP_VAR_PRO, station) == 4, "_RCP_VAR_PRO");
static_assert(offsetof(_RCP_VAR_PRO, area) == 8, "_RCP_VAR_PRO");
static_assert(offsetof(_RCP_VAR_PRO, address) == 8 + TEXT, "_RCP_VAR_PRO");
static_assert(offsetof(_RCP_VAR_PRO, count) == 12 + TEXT, "_RCP_VAR_PRO");
static_assert(offsetof(_RCP_VAR_PRO, bufWord) == 16 + TEXT, "_RCP_VAR_PRO");
static_assert(offsetof(_RCP_VAR_PRO, rcpSpare) == 20 + TEXT, "_RCP_VAR_PRO");
static_assert(sizeof(_RCP_VAR_PRO) == 24 + TEXT, "_RCP_VAR_PRO");

static_assert(offsetof(_DATA_, writePending) == 1, "_DATA_");
static_assert(offsetof(_DATA_, dataSpare) == 4, "_DATA_");
static_assert(offsetof(_DATA_, wordMonitor) == 8, "_DATA_");
static_assert(offsetof(_DATA_, bitMonitor) == 12, "_DATA_");
static_assert(offsetof(_DATA_, station) == 16, "_DATA_");
static_assert(offsetof(_DATA_, area) == 20 + GAP, "_DATA_");
static_assert(offsetof(_DATA_, index) == offsetof(_DATA_, area) + TEXT, "_DATA_");
static_assert(offsetof(_DATA_, readValue) == offsetof(_DATA_, area) + TEXT + 4, "_DATA_");
static_assert(offsetof(_DATA_, writtenValue) == offsetof(_DATA_, area) + TEXT + 8, "_DATA_");
static_assert(sizeof(_DATA_) == 32 + TEXT + 2 * GAP, "_DATA_");

static_assert(offsetof(KEY_ADDRESS, hostWord1) == TEXT, "KEY_ADDRESS");
static_assert(offsetof(KEY_ADDRESS, hostWord2) == 4 + TEXT, "KEY_ADDRESS");
static_assert(offsetof(KEY_ADDRESS, station) == 8 + TEXT, "KEY_ADDRESS");
static_assert(offsetof(KEY_ADDRESS, area) == 12 + TEXT + GAP, "KEY_ADDRESS");
static_assert(offsetof(KEY_ADDRESS, hostText) == offsetof(KEY_ADDRESS, area) + TEXT, "KEY_ADDRESS");
static_assert(offsetof(KEY_ADDRESS, address) == offsetof(KEY_ADDRESS, area) + 2 * TEXT,
              "KEY_ADDRESS");
static_assert(offsetof(KEY_ADDRESS, elemKind) == offsetof(KEY_ADDRESS, address) + 4, "KEY_ADDRESS");
static_assert(offsetof(KEY_ADDRESS, count) == offsetof(KEY_ADDRESS, address) + 8, "KEY_ADDRESS");
static_assert(offsetof(KEY_ADDRESS, data) == offsetof(KEY_ADDRESS, address) + 12, "KEY_ADDRESS");
static_assert(sizeof(KEY_ADDRESS) == 1048 + 3 * TEXT + 2 * GAP, "KEY_ADDRESS");
} // namespace layout

namespace {

const qint32 GROUP_LIMIT_MOST = 8;
const int PROPERTY_PIECES = 5;

// The number of bits in `words`. A limit far below 0 stays below 0 instead of wrapping round.
qint32 eightTimes(qint32 words)
{
    return qMax(words, -0x10000000) * 8;
}

} // namespace

Ostrel_kmr driver;

Ostrel_kmr::Ostrel_kmr()
    : valueChangedCallback(nullptr), devId(0), writeQueueOff(0), propToken3(0), retryLimit(0),
      groupLimit(0), hostStatus(nullptr), hostArg2(nullptr), recipeBuffer(nullptr),
      hostMutex(nullptr), sendState(SEND_NOTHING), burstCount(0), counterA(0), retryCount(0),
      bitGroupLimit(0), wordGroupLimit(0), commError(0), stateC(0), stateD(0), recipeCursor(0),
      spareFlag(0)
{
}

void intf_getProtocolType(qint32 *type) noexcept
{
    if (type)
        *type = 0;
}

void intf_getDriverParameter(QString &parameter) noexcept
{
    parameter = QLatin1String("0,9600,7,EVEN,1,0,1,192.168.0.10,8888,Ostrel_kmr,"
                              "X,Y,M,S,T,C,TV,CV,CV2,D");
}

void intf_getDriverPropertyPage(QString &page) noexcept
{
    page = QLatin1String("0_0");
}

void intf_SetDriverPropertyPage(QString &page) noexcept
{
    page = QLatin1String("");
}

void intf_setAddrValueChangeCallBack(ValueChangedCallback callback) noexcept
{
    driver.valueChangedCallback = callback;
}

qint32 intf_initProperty(quint8 *status, void *second, quint8 *recipe, qint32 *result,
                         const char *property, QMutex *mutex) noexcept
{
    if (result)
        *result = 0;
    const QStringList pieces = QString::fromLatin1(property).split(QLatin1Char('#'));
    if (pieces.size() >= PROPERTY_PIECES) {
        driver.devId = pieces.at(0).toInt();
        driver.writeQueueOff = pieces.at(1).toInt();
        driver.propToken3 = pieces.at(2).toInt();
        driver.retryLimit = pieces.at(3).toInt();
        driver.groupLimit = qMin(pieces.at(4).toInt(), GROUP_LIMIT_MOST);
    }
    driver.hostStatus = status;
    driver.hostArg2 = second;
    driver.recipeBuffer = recipe;
    driver.hostMutex = mutex;
    driver.cyclicReads.clear();
    driver.pendingWrites.clear();
    driver.pendingReads.clear();
    // In Qt 6 clear() would allocate, because the index shares the list's memory.
    driver.dataAreas = QList<_DATA_>();
    driver.sendState = SEND_NOTHING;
    driver.burstCount = 0;
    driver.counterA = 0;
    driver.retryCount = 0;
    driver.bitGroupLimit = eightTimes(driver.groupLimit);
    driver.wordGroupLimit = driver.groupLimit;
    driver.commError = 0;
    driver.frames.clear();
    driver.stateC = 0;
    driver.stateD = 1;
    // The recipe list and its cursor are kept: a transfer continues after a re-initialisation.
    return 1;
}

qint32 intf_setRcpAddress(const QVector<_RCP_VAR_PRO> *list) noexcept
{
    driver.recipeVars.clear();
    if (!list)
        return 0;
    for (const _RCP_VAR_PRO &entry : *list) {
        if (entry.devId == driver.devId)
            driver.recipeVars.append(entry);
    }
    return static_cast<qint32>(driver.recipeVars.size());
}

void rcpAddrToVar(_RCP_VAR_PRO entry, VARIABLE &var, int withData)
{
    var.station = entry.station;
    var.area = entry.area;
    var.address = entry.address;
    var.count = entry.count;
    memset(var.data, 0, sizeof var.data);
    if (!withData || !driver.recipeBuffer || entry.bufWord < 0)
        return;
    const quint8 *const words = driver.recipeBuffer + 2 * qint64(entry.bufWord);
    const qint32 count = qMin<qint32>(entry.count, VALUE_BYTES / 2);
    for (qint32 word = 0; word < count; ++word) {
        var.data[2 * word] = words[2 * word + 1];
        var.data[2 * word + 1] = words[2 * word];
    }
}
