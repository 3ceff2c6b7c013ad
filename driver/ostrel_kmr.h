/// \file
/// Communication driver for operator panels: Modbus ASCII to controllers of the Ostrel KMR line.
///
/// A host needs only this header. Conventions of the whole interface:
///
///  1. Order of calls. When a link opens: intf_setAddrValueChangeCallBack, intf_initProperty,
///     intf_addrMerge, intf_setRcpAddress. Then, for as long as the link is up: intf_getSendFrame,
///     transmit, collect the reply, intf_dealRcvFrame. Values may be read, written and queued
///     between any two calls. The editor's services (identity, address checks, catalogue, series)
///     may be called at any time and change no state.
///  2. Threads. The driver starts no thread and has no lock of its own: no two calls may overlap.
///     Only the recipe request bytes of the status block are shared with other host threads; the
///     driver accesses them while it holds the host's mutex.
///  3. Callback. It runs synchronously inside intf_dealRcvFrame and intf_setData. It may read,
///     write and queue; it may not call intf_getSendFrame, intf_dealRcvFrame, intf_initProperty or
///     intf_addrMerge.
///  4. Ownership. The driver copies every record that it receives. The status block, the recipe
///     buffer, the mutex and the callback are lent: they must stay valid until the next
///     intf_initProperty (the callback: until it is replaced) or until the library is unloaded.
///     Nothing that the driver returns refers to memory of the library.
///  5. Results. Small integers with the names below, never exceptions. Outputs are written only
///     if the function's comment says so.
///  6. Null pointers. Nothing is written through a null output; a null input counts as empty.
///     Without status block or mutex no recipe request is seen; without callback no change is
///     reported.
///  7. Addresses. "X" and "Y" are numbered in octal; their addresses are passed as the decimal
///     number with the same digits (X17 is 17).
#ifndef OSTREL_KMR_H
#define OSTREL_KMR_H

#include <QByteArray>
#include <QList>
#include <QMutex>
#include <QString>
#include <QStringList>
#include <QVector>
#include <QtGlobal>

#include <cstring>

/// Called when a watched value changes, as (devId, station, area, address), and for two events:
///  - (0, -1, "RWI", word): a word of the recipe buffer was uploaded
///  - (-1, -1, "-1", 0 or -1): the last queued one-shot read succeeded (0) or was given up (-1)
///
/// Its result is ignored.
typedef qint32 (*ValueChangedCallback)(qint32 devId, qint32 station, QString area, qint32 address);

enum {
    VALUE_BYTES = 1024, ///< size of the value buffers of VARIABLE and KEY_ADDRESS, bytes
    FRAME_CHARS = 1024  ///< size of the text buffer of FRAME_PRO, characters
};

/// Copies `size` bytes of a record's buffer by a call to the C library. Without it, GCC 12 copies
/// byte by byte at -O2 or, if it sees that the two don't overlap, uses string instructions, which
/// take twice as long.
inline void copyBuffer(void *to, const void *from, size_t size)
{
    __asm__("" : "+r"(to)); // the compiler no longer knows what `to` is
    memmove(to, from, size);
}

/// Copies a text, unless both already share it: another reference costs two locked instructions.
inline void copyText(QString &to, const QString &from)
{
    if (to.constData() != from.constData() || to.size() != from.size())
        to = from;
}

// The records with large buffers copy themselves with these.

/// The target of one read or write request.
struct VARIABLE {
    qint32 reqTag;            ///< set by the host for its request, kept as it is; read blocks: 4
    qint32 station;           ///< controller station number, as the host counts it
    QString area;             ///< device area name
    qint32 address;           ///< first element inside the area
    qint32 count;             ///< bits, 16-bit words or, of a framed "CV2" read, counters
    quint8 data[VALUE_BYTES]; ///< payload of a write, words high-order byte first

    VARIABLE() : reqTag(0), station(0), address(0), count(0)
    {
        memset(data, 0, sizeof data);
    }
    /// Copies every field.
    VARIABLE(const VARIABLE &other)
        : reqTag(other.reqTag), station(other.station), area(other.area), address(other.address),
          count(other.count)
    {
        copyBuffer(data, other.data, sizeof data);
    }
    /// Copies every field.
    VARIABLE &operator=(const VARIABLE &other)
    {
        reqTag = other.reqTag;
        station = other.station;
        copyText(area, other.area);
        address = other.address;
        count = other.count;
        copyBuffer(data, other.data, sizeof data);
        return *this;
    }
};

/// One request frame ready to send, with what is needed to decode its reply.
struct FRAME_PRO {
    char frame[FRAME_CHARS]; ///< ':' to CR LF, not zero-terminated
    qint32 frameLen;         ///< characters in `frame`; 0 when the request does not fit a frame
    qint32 replyLen;         ///< characters of the expected normal reply
    qint32 replyDataPos;     ///< position of the reply's first data character: 7
    qint32 replyDataLen;     ///< data characters in the expected reply
    qint32 frameSpare;       ///< not set by the driver, kept as it is
    VARIABLE var;            ///< the request

    FRAME_PRO() : frameLen(0), replyLen(0), replyDataPos(0), replyDataLen(0), frameSpare(0)
    {
        memset(frame, 0, sizeof frame);
    }
    /// Copies every field.
    FRAME_PRO(const FRAME_PRO &other)
        : frameLen(other.frameLen), replyLen(other.replyLen), replyDataPos(other.replyDataPos),
          replyDataLen(other.replyDataLen), frameSpare(other.frameSpare), var(other.var)
    {
        copyBuffer(frame, other.frame, sizeof frame);
    }
    /// Copies every field.
    FRAME_PRO &operator=(const FRAME_PRO &other)
    {
        copyBuffer(frame, other.frame, sizeof frame);
        frameLen = other.frameLen;
        replyLen = other.replyLen;
        replyDataPos = other.replyDataPos;
        replyDataLen = other.replyDataLen;
        frameSpare = other.frameSpare;
        var = other.var;
        return *this;
    }
};

/// One recipe variable, a run of words of the host's recipe buffer.
struct _RCP_VAR_PRO {
    qint32 devId;    ///< link that it belongs to; the driver keeps those of its own device
    qint32 station;  ///< controller station number
    QString area;    ///< device area name
    qint32 address;  ///< first word inside the area
    qint32 count;    ///< 16-bit words, 1 to 251 (a longer write does not fit a frame)
    qint32 bufWord;  ///< index of the first word in the recipe buffer, from 0
    qint32 rcpSpare; ///< kept as it is

    _RCP_VAR_PRO() : devId(0), station(0), address(0), count(0), bufWord(0), rcpSpare(0) {}
};

/// One data area: the cached value of 16 bits, of one word or of one counter.
struct _DATA_ {
    quint8 commFailed;      ///< 1 after a request covering it was given up, 0 after a good read
    quint8 writePending;    ///< 1 while a host write is outstanding: `writtenValue` is current
    qint32 dataSpare;       ///< always 0
    qint32 wordMonitor;     ///< bit 0: the host watches this word
    qint32 bitMonitor;      ///< bit k (0 to 15): the host watches bit 16 x `index` + k
    qint32 station;         ///< key: controller station number
    QString area;           ///< key: device area name
    qint32 index;           ///< key: bit address / 16, word address or counter address
    quint8 readValue[4];    ///< last value read, low-order byte first
    quint8 writtenValue[4]; ///< last value written by the host, same layout

    _DATA_()
        : commFailed(0), writePending(0), dataSpare(0), wordMonitor(0), bitMonitor(0), station(0),
          index(0), readValue(), writtenValue()
    {
    }
};

/// One address run passed by the host, for polling or for a one-shot read.
struct KEY_ADDRESS {
    QString label;            ///< kept as it is
    qint32 hostWord1;         ///< kept as it is
    qint32 hostWord2;         ///< kept as it is
    qint32 station;           ///< controller station number
    QString area;             ///< device area name
    QString hostText;         ///< kept as it is
    qint32 address;           ///< first element; "TV_bit": word x 16 + bit
    qint32 elemKind;          ///< -1: bits, anything else: 16-bit elements
    qint32 count;             ///< number of elements
    quint8 data[VALUE_BYTES]; ///< kept as it is

    KEY_ADDRESS() : hostWord1(0), hostWord2(0), station(0), address(0), elemKind(0), count(0)
    {
        memset(data, 0, sizeof data);
    }
    /// Copies every field.
    KEY_ADDRESS(const KEY_ADDRESS &other)
        : label(other.label), hostWord1(other.hostWord1), hostWord2(other.hostWord2),
          station(other.station), area(other.area), hostText(other.hostText),
          address(other.address), elemKind(other.elemKind), count(other.count)
    {
        copyBuffer(data, other.data, sizeof data);
    }
    /// Copies every field.
    KEY_ADDRESS &operator=(const KEY_ADDRESS &other)
    {
        label = other.label;
        hostWord1 = other.hostWord1;
        hostWord2 = other.hostWord2;
        station = other.station;
        area = other.area;
        hostText = other.hostText;
        address = other.address;
        elemKind = other.elemKind;
        count = other.count;
        copyBuffer(data, other.data, sizeof data);
        return *this;
    }
};

/// How the driver finds an entry of its store without searching it; see store_index.h.
struct StoreIndex {
    QVector<qint32> places; ///< hash table of positions in the store, -1: free
    QList<_DATA_> seen;     ///< shares the memory of the store until other code changes it
    bool distinct;          ///< no key is in the store twice
    qint64 lead;            ///< position found last minus the index of its entry

    StoreIndex() : distinct(true), lead(0) {}
};

/// All state of the driver. There is one object, `driver`, built when the library is loaded.
class Ostrel_kmr {
public:
    Ostrel_kmr();

    ValueChangedCallback valueChangedCallback; ///< may be null
    qint32 devId;                              ///< this link's device number
    qint32 writeQueueOff;                      ///< not 0: writes are mirrored but never queued
    qint32 propToken3;                         ///< stored only
    qint32 retryLimit;             ///< bad replies in a row after which a request is given up
    qint32 groupLimit;             ///< words a request may carry, at most 8; bits: 8 times as many
    quint8 *hostStatus;            ///< lent: status block with the recipe request bytes
    void *hostArg2;                ///< stored only
    quint8 *recipeBuffer;          ///< lent: recipe words, low-order byte first
    QMutex *hostMutex;             ///< lent: guards the request bytes of `hostStatus`
    QList<VARIABLE> cyclicReads;   ///< read blocks, polled in turn
    QList<VARIABLE> pendingWrites; ///< at most 513; the front one may be in flight
    QList<VARIABLE> pendingReads;  ///< one-shot reads, at most 513; the front one may be in flight
    QList<_DATA_> dataAreas;       ///< the store, in order of creation; entries are only added
    QVector<_RCP_VAR_PRO> recipeVars; ///< recipe variables of this device
    VARIABLE lastVar;                 ///< the one-shot read queued last: its end is reported
    VARIABLE curVar;                  ///< the request being framed
    qint32 sendState;                 ///< SendState of the request chosen last
    qint32 burstCount;                ///< writes and one-shot reads sent since the last cyclic read
    qint32 counterA;                  ///< 0 after intf_initProperty, stored only
    qint32 retryCount;                ///< bad replies in a row to the frame in flight
    qint32 bitGroupLimit;             ///< groupLimit x 8: bits a piece or chunk may hold
    qint32 wordGroupLimit;            ///< groupLimit: words a piece, chunk or write may hold
    qint32 commError;                 ///< 1 after a request was given up, 0 after any good reply
    qint32 stateC;                    ///< 0 after intf_initProperty, stored only
    qint32 stateD;                    ///< 1 after intf_initProperty, stored only
    QList<FRAME_PRO> frames;          ///< frames ready to send; the front one is in flight
    qint32 recipeCursor;              ///< index in `recipeVars` of the next transfer
    quint8 spareFlag;                 ///< always 0
    StoreIndex storeIndex;            ///< of `dataAreas`
    FRAME_PRO nextFrame;              ///< a frame is built here before it is appended to `frames`
};

/// Values of Ostrel_kmr::sendState.
enum SendState {
    SEND_NOTHING = 0,
    SEND_WRITE = 2,
    SEND_ONE_SHOT_READ = 3,
    SEND_CYCLIC_READ = 4,
    SEND_RECIPE_DOWNLOAD = 5,
    SEND_RECIPE_UPLOAD = 6
};

/// Positions in the host's status block. A byte of exactly 1 asks for the transfer; the driver sets
/// it to 0 when the transfer is over. The block has at least STATUS_BLOCK_BYTES bytes.
enum { STATUS_RECIPE_DOWNLOAD = 60115, STATUS_RECIPE_UPLOAD = 60116, STATUS_BLOCK_BYTES = 60117 };

/// What the address checks return.
enum AddressCheck {
    ADDRESS_VALID = 0,
    ADDRESS_KIND_MISMATCH = 1,     ///< bits wanted from a word area, or words from a bit area
    ADDRESS_OUT_OF_RANGE = 2,      ///< the run leaves the area, or a digit of "X" or "Y" is 8 or 9
    ADDRESS_UNKNOWN_AREA = 3,      ///< no area has that name
    ADDRESS_SYNTAX_ERROR = 4,      ///< the text is not an address
    ADDRESS_DATA_TYPE_MISMATCH = 5 ///< "CV2" with a data type other than 1, 3, 5, 6 and 9
};

/// What intf_multiCopy returns.
enum SeriesResult {
    SERIES_UNKNOWN_AREA = 0, ///< no area has that name, nothing was appended
    SERIES_INSIDE = 1,       ///< all addresses are inside the area
    SERIES_CLIPPED = 2       ///< at least one was replaced by the area's end
};

/// What intf_getSendFrame returns.
enum SendResult { NOTHING_TO_SEND = 0, FRAME_TO_SEND = 1 };

/// What intf_dealRcvFrame returns.
enum ReplyResult {
    REPLY_UNEXPECTED = 0, ///< no frame was out, nothing changed
    REPLY_ACCEPTED = 1,   ///< the request is answered
    REPLY_GIVEN_UP = 2,   ///< bad for the last time: the request is dropped
    REPLY_SEND_AGAIN = 8  ///< bad: the same frame is to be sent again
};

/// Marks a function that the library exports by its plain C name.
#define OSTREL_KMR_EXPORT extern "C" __attribute__((visibility("default")))

/// Marks a function that throws no exception, also in C++98.
#if __cplusplus >= 201103L
#define OSTREL_KMR_NOEXCEPT noexcept
#else
#define OSTREL_KMR_NOEXCEPT throw()
#endif

/// The exported functions in the order of this header, for hosts that look them up by name:
/// calls `entry(name)` for each intf_`name`.
// clang-format off
#define OSTREL_KMR_FUNCTIONS(entry) \
    entry(getProtocolType) \
    entry(getDriverParameter) \
    entry(getDriverPropertyPage) \
    entry(SetDriverPropertyPage) \
    entry(setAddrValueChangeCallBack) \
    entry(initProperty) \
    entry(setRcpAddress) \
    entry(checkAddrValidity) \
    entry(checkAddr) \
    entry(getRegDiscription) \
    entry(getRegListByType) \
    entry(multiCopy) \
    entry(addrMerge) \
    entry(addConditionRead) \
    entry(getSendFrame) \
    entry(dealRcvFrame) \
    entry(getData) \
    entry(setData)
// clang-format on

// --- Identity and configuration ---

/// Writes the protocol type code, 0, to `*type`.
OSTREL_KMR_EXPORT void intf_getProtocolType(qint32 *type) OSTREL_KMR_NOEXCEPT;

/// Sets `parameter` to the default settings of a new link: 20 fields separated by commas, among
/// them 9600 baud, 7 data bits, even parity, 1 stop bit, the driver's name and its ten device
/// areas.
OSTREL_KMR_EXPORT void intf_getDriverParameter(QString &parameter) OSTREL_KMR_NOEXCEPT;

/// Sets `page` to "0_0": the driver has no property page.
OSTREL_KMR_EXPORT void intf_getDriverPropertyPage(QString &page) OSTREL_KMR_NOEXCEPT;

/// Sets `page` to the empty text; the driver takes no settings this way.
OSTREL_KMR_EXPORT void intf_SetDriverPropertyPage(QString &page) OSTREL_KMR_NOEXCEPT;

/// Stores the function that is called for each change; null turns reports off.
OSTREL_KMR_EXPORT void
intf_setAddrValueChangeCallBack(ValueChangedCallback callback) OSTREL_KMR_NOEXCEPT;

/// Configures the driver and clears the poll plan, every queue and the store. The recipe list and
/// its cursor are kept, so that a transfer continues.
/// \param status    status block, at least STATUS_BLOCK_BYTES bytes, or null
/// \param second    stored only
/// \param recipe    recipe buffer, two bytes a word, low-order byte first, or null
/// \param result    receives 0
/// \param property  Latin-1 text "device#writeQueueOff#third#retryLimit#groupLimit", further
///                  pieces ignored; a piece that is not a number counts as 0; a group limit above 8
///                  is stored as 8, one below 1 makes requests of one element. With fewer than
///                  five pieces the five settings stay as they were.
/// \param mutex     guards the recipe request bytes of `status`, or null
/// \return 1, always
OSTREL_KMR_EXPORT qint32 intf_initProperty(quint8 *status, void *second, quint8 *recipe,
                                           qint32 *result, const char *property,
                                           QMutex *mutex) OSTREL_KMR_NOEXCEPT;

/// Replaces the recipe variables by those of `list` that have this link's device number, in their
/// order, and returns their number. A transfer in progress continues at its cursor.
OSTREL_KMR_EXPORT qint32 intf_setRcpAddress(const QVector<_RCP_VAR_PRO> *list) OSTREL_KMR_NOEXCEPT;

// --- The editor's address services ---

/// Checks a typed address.
/// \param area         device area name, exact spelling
/// \param addressText  the address as typed, in octal digits for "X" and "Y", "word.bit" for
///                     "TV_bit"
/// \param address      receives the numeric address if the text converts, else stays untouched
/// \param count        elements of the run
/// \param wantWord     0 if the host wants bits, else words
/// \return AddressCheck, never ADDRESS_DATA_TYPE_MISMATCH
OSTREL_KMR_EXPORT qint32 intf_checkAddrValidity(QString area, QString addressText, qint32 *address,
                                                qint32 count, qint32 wantWord) OSTREL_KMR_NOEXCEPT;

/// The same check with a data type: -1 for bits, any other for words. Note the order of the last
/// two arguments. Returns AddressCheck.
OSTREL_KMR_EXPORT qint32 intf_checkAddr(QString area, QString addressText, qint32 *address,
                                        qint32 dataType, qint32 count) OSTREL_KMR_NOEXCEPT;

/// Appends five texts about an area to `out`: input mask (one 'd' or 'o' per decimal or octal
/// digit), lowest address, highest address, "1" for words or "0" for bits, "1" for writable or "0".
/// Returns 1, or 0 with nothing appended for a name that is not in the catalogue.
OSTREL_KMR_EXPORT qint32 intf_getRegDiscription(QString area, QStringList &out) OSTREL_KMR_NOEXCEPT;

/// Appends the names of the bit areas (`type` 0, returns 0) or of the word areas (`type` 1, returns
/// 1) to `out`. Any other type appends nothing and returns 0.
OSTREL_KMR_EXPORT qint32 intf_getRegListByType(qint32 type, QStringList &out) OSTREL_KMR_NOEXCEPT;

/// Appends the `n` addresses start, start + step, ... of an area to `texts` and `numbers`; an
/// address after the area's end is replaced by the end. A `step` below 1 counts as 1, except -2,
/// which is 2 for the areas of 16-bit words and "TV_bit". Returns SeriesResult.
OSTREL_KMR_EXPORT qint32 intf_multiCopy(const QString &area, qint32 start, qint32 n, qint32 step,
                                        QVector<QString> *texts,
                                        QVector<qint32> *numbers) OSTREL_KMR_NOEXCEPT;

// --- Polling ---

/// Replaces the poll plan and the watch marks by the runs of `list` (fields `station`, `area`,
/// `address`, `count`) and returns the number of read blocks. Values in the store are kept.
/// Unknown areas are watched but not polled. A run longer than the group limit (bits: 8 times it)
/// is cut in decimal steps: a piece of an "X" or "Y" run that begins at a number with a digit 8 or
/// 9 reads from 0 on.
OSTREL_KMR_EXPORT qint32 intf_addrMerge(const QList<KEY_ADDRESS> &list) OSTREL_KMR_NOEXCEPT;

/// Queues a one-shot read of a run, cut into pieces that fit a request. Bit areas are queued as
/// 16-bit words (address / 16), but that number is used as a bit address: a one-shot read from M40
/// on reads M0 to M15. Read bits by polling them. A piece that is already queued after the front is
/// replaced; the queue holds 513 pieces and then replaces its last. `reqTag` is kept with the
/// request. Returns 1.
OSTREL_KMR_EXPORT qint32 intf_addConditionRead(KEY_ADDRESS &key, qint32 reqTag) OSTREL_KMR_NOEXCEPT;

// --- The communication loop ---

/// Copies the frame to send next to `*out` and returns FRAME_TO_SEND, or returns NOTHING_TO_SEND
/// and leaves `*out` unchanged. The same frame is returned until its reply has been handed in.
OSTREL_KMR_EXPORT qint32 intf_getSendFrame(FRAME_PRO *out) OSTREL_KMR_NOEXCEPT;

/// Takes `reply`, ':' to CR LF as received or empty for silence, as the answer to the frame that
/// intf_getSendFrame returned. Checks only the function code, in at least 5 characters; the host
/// must check LRC, station and length. `errorInfo` receives
/// "station#areaAddress(count)(reply length)", or the empty text if no frame was out. Returns
/// ReplyResult.
OSTREL_KMR_EXPORT qint32 intf_dealRcvFrame(QByteArray &reply,
                                           QString &errorInfo) OSTREL_KMR_NOEXCEPT;

// --- Values ---

/// Copies values out of the store; never causes traffic. `count` is in bits (one byte each in
/// `out`), in words (two bytes, low-order first) or, for "CV2", in words, two per counter. Nothing
/// is written for unknown areas and a `count` below 1. An element that was neither read nor written
/// is 0. Returns 1.
OSTREL_KMR_EXPORT qint32 intf_getData(qint32 station, QString area, qint32 address, qint32 count,
                                      quint8 *out) OSTREL_KMR_NOEXCEPT;

/// Queues writes and copies the values into the store at once. `data` and `count` are as in
/// intf_getData; a bit is set by 1 and cleared by any other byte. A write of the same target that
/// is queued after the front is replaced; the queue holds 513 requests and then replaces its last.
/// In a run of "Y" each bit has the next decimal number: Y7 is followed by 8, which is not an octal
/// digit and counts as Y0. When a write of "CV2" counters ends, as many counters after them take
/// the value last written to them, or 0, until their next read, and their change is reported.
/// `reqTag` is kept with the request. Returns 1.
OSTREL_KMR_EXPORT qint32 intf_setData(qint32 station, QString area, qint32 address, qint32 count,
                                      quint8 *data, qint32 reqTag) OSTREL_KMR_NOEXCEPT;

// --- Inside the library ---
// Not exported: a host can't link to these, and other drivers in it also have an object `driver`.

extern Ostrel_kmr driver __attribute__((visibility("hidden")));

/// Fills `var` from a recipe entry, except its tag. If `withData` is not 0, `var.data` receives the
/// entry's words from the recipe buffer, high-order byte first, as far as they fit; the rest of
/// `var.data` is 0.
void rcpAddrToVar(_RCP_VAR_PRO entry, VARIABLE &var, int withData);

#endif
