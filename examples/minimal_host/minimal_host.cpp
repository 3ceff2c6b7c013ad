// A minimal host: loads the driver, polls one controller over TCP, writes one word, and
// prints every change.   minimal_host LIBRARY ADDRESS PORT
// The driver matches replies by order alone, so the host keeps in step: successive requests
// differ in the length of their replies, a reply must have that length, and its values are
// shown when the next reply has its own length. A real host also checks the LRC.
#include "ostrel_kmr.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QLibrary>
#include <QTcpSocket>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace {

// The buffers that this host lends to the driver; they must exist as long as the driver is used.
quint8 statusBlock[STATUS_BLOCK_BYTES];
quint8 recipeBuffer[2 * 1000];
QMutex statusMutex;

// Runs inside intf_dealRcvFrame and intf_setData.
qint32 printChange(qint32, qint32 station, QString area, qint32 address)
{
    std::printf("%d#%s%d changed\n", station, qPrintable(area), address);
    return 0;
}

[[noreturn]] void fail(const QString &text)
{
    std::fprintf(stderr, "%s\n", qPrintable(text));
    std::exit(2);
}

// The address of an exported function, with the type that the header declares for it.
template <typename Function> Function *resolve(QLibrary &library, const char *name)
{
    auto *function = reinterpret_cast<Function *>(library.resolve(name));
    if (!function)
        fail(library.fileName() + ": no function " + name);
    return function;
}
#define RESOLVE(library, name) resolve<decltype(name)>(library, #name)

// Whether a reply has the request's station and function, and for a read its length.
bool fits(const QByteArray &reply, const FRAME_PRO &frame)
{
    const QByteArray head(frame.frame, 5);
    return reply.startsWith(head) && (!head.endsWith("03") || reply.size() == frame.replyLen);
}

// Sends a frame and collects the answer up to its line end, or nothing within one second.
QByteArray exchange(QTcpSocket &line, const FRAME_PRO &frame)
{
    line.readAll(); // the rest of an earlier answer
    line.write(frame.frame, frame.frameLen);
    QByteArray reply;
    QElapsedTimer timer;
    timer.start();
    while (!reply.endsWith("\r\n")) {
        const int left =
            1000 - static_cast<int>(timer.elapsed()); // a negative value would wait for ever
        if (left <= 0 || !line.waitForReadyRead(left))
            break;
        reply += line.readAll();
    }
    if (reply.endsWith("\r\n") && fits(reply, frame))
        return reply;
    while (line.waitForReadyRead(1000)) // out of step: drops what still comes
        line.readAll();
    return QByteArray();
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    if (argc != 4)
        fail("usage: minimal_host LIBRARY ADDRESS PORT");

    QLibrary library(QString::fromLocal8Bit(argv[1]));
    if (!library.load())
        fail(library.errorString());
    auto *setCallback = RESOLVE(library, intf_setAddrValueChangeCallBack);
    auto *initProperty = RESOLVE(library, intf_initProperty);
    auto *addrMerge = RESOLVE(library, intf_addrMerge);
    auto *getSendFrame = RESOLVE(library, intf_getSendFrame);
    auto *dealRcvFrame = RESOLVE(library, intf_dealRcvFrame);
    auto *getData = RESOLVE(library, intf_getData);
    auto *setData = RESOLVE(library, intf_setData);

    QTcpSocket line;
    line.connectToHost(QString::fromLocal8Bit(argv[2]), QString::fromLocal8Bit(argv[3]).toUShort());
    if (!line.waitForConnected(3000))
        fail(line.errorString());

    // Device 1, writes queued, three tries for a request, up to 8 words in one.
    qint32 result = -1;
    setCallback(printChange);
    initProperty(statusBlock, nullptr, recipeBuffer, &result, "1#0#0#3#8", &statusMutex);

    KEY_ADDRESS words; // D100 to D103 of station 1, polled continuously
    words.station = 1;
    words.area = QLatin1String("D");
    words.address = 100;
    words.count = 4;
    KEY_ADDRESS others = words; // a second request with a shorter reply
    others.address = 110;
    others.count = 3;
    addrMerge({words, others});

    quint8 value[2] = {0x34, 0x12}; // low-order byte first
    setData(1, QLatin1String("D"), 100, 1, value, 0);

    quint8 read[8] = {}; // D100 to D103, not confirmed yet
    quint8 good[8] = {}; // confirmed by the exchange after it
    for (int exchanges = 0; exchanges < 10; ++exchanges) {
        FRAME_PRO frame;
        if (getSendFrame(&frame) == 0)
            break; // nothing to send
        QByteArray reply = exchange(line, frame);
        QString request;
        const int outcome = dealRcvFrame(reply, request);
        if (outcome == 2)
            std::printf("given up: %s\n", qPrintable(request));
        if (outcome != 1) {
            std::copy(good, good + 8, read);
            continue;
        }
        std::copy(read, read + 8, good);
        getData(1, QLatin1String("D"), 100, 4, read);
    }

    for (int word = 0; word < 4; ++word)
        std::printf("D%d = %d\n", 100 + word, good[2 * word] + 256 * good[2 * word + 1]);
    setCallback(nullptr);
    return 0;
}
