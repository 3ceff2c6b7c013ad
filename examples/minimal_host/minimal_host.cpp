// The shortest honest host: loads the driver, polls one controller over TCP, writes one word, and
// prints every change.   minimal_host LIBRARY ADDRESS PORT
// A real host also checks LRC and station of each reply before it hands it on, and waits for the
// line to be quiet after a timeout: the driver matches replies by order alone.
#include "ostrel_kmr.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QLibrary>
#include <QTcpSocket>

#include <cstdio>

namespace {

// What this host lends to the driver; it must live as long as the driver is used.
quint8 statusBlock[STATUS_BLOCK_BYTES];
quint8 recipeBuffer[2 * 1000];
QMutex statusMutex;

// Runs inside intf_dealRcvFrame and intf_setData.
qint32 printChange(qint32, qint32 station, QString area, qint32 address)
{
    std::printf("%d#%s%d changed\n", station, qPrintable(area), address);
    return 0;
}

// The address of an exported function, with the type that the header declares for it.
template <typename Function> Function *resolve(QLibrary &library, const char *name)
{
    auto *function = reinterpret_cast<Function *>(library.resolve(name));
    if (!function)
        qFatal("%s: no function %s", qPrintable(library.fileName()), name);
    return function;
}
#define RESOLVE(library, name) resolve<decltype(name)>(library, #name)

// Sends a frame and collects the answer up to its line end, or nothing within one second.
QByteArray exchange(QTcpSocket &line, const FRAME_PRO &frame)
{
    line.readAll(); // what is left of an earlier answer
    line.write(frame.frame, frame.frameLen);
    QByteArray reply;
    QElapsedTimer timer;
    timer.start();
    while (!reply.endsWith("\r\n")) {
        const int left = 1000 - static_cast<int>(timer.elapsed()); // below 0 would wait for ever
        if (left <= 0 || !line.waitForReadyRead(left))
            break;
        reply += line.readAll();
    }
    return reply.endsWith("\r\n") ? reply : QByteArray();
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    if (argc != 4)
        qFatal("usage: minimal_host LIBRARY ADDRESS PORT");

    QLibrary library(QString::fromLocal8Bit(argv[1]));
    if (!library.load())
        qFatal("%s", qPrintable(library.errorString()));
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
        qFatal("%s", qPrintable(line.errorString()));

    // Device 1, writes queued, three tries for a request, up to 8 words in one.
    qint32 result = -1;
    setCallback(printChange);
    initProperty(statusBlock, nullptr, recipeBuffer, &result, "1#0#0#3#8", &statusMutex);

    KEY_ADDRESS words; // D100 to D103 of station 1, polled all the time
    words.station = 1;
    words.area = QLatin1String("D");
    words.address = 100;
    words.count = 4;
    addrMerge({words});

    quint8 value[2] = {0x34, 0x12}; // low-order byte first
    setData(1, QLatin1String("D"), 100, 1, value, 0);

    for (int exchanges = 0; exchanges < 10; ++exchanges) {
        FRAME_PRO frame;
        if (getSendFrame(&frame) == 0)
            break; // nothing to send
        QByteArray reply = exchange(line, frame);
        QString request;
        if (dealRcvFrame(reply, request) == 2)
            std::printf("given up: %s\n", qPrintable(request));
    }

    quint8 words4[8] = {};
    getData(1, QLatin1String("D"), 100, 4, words4);
    for (int word = 0; word < 4; ++word)
        std::printf("D%d = %d\n", 100 + word, words4[2 * word] + 256 * words4[2 * word + 1]);
    setCallback(nullptr);
    return 0;
}
