// A host with two lines, each with a driver and a thread of its own: polls four words of the
// controller on each line, writes one of them, and prints every change.
//
//     cp libostrel_kmr.so.1 libostrel_kmr_line2.so
//     two_lines ./libostrel_kmr.so.1 /dev/ttyS1 ./libostrel_kmr_line2.so 192.168.0.10:8888
//
// One object in the library holds all of a driver's state, so each line loads a file of its own:
// the same library under two names. Calls of one copy may not overlap; those of two copies may. A
// real host also checks LRC and station of each reply before it hands it in (docs/integrating.md).
#include "line.h"

#include "ostrel_kmr.h"

#include <QLibrary>
#include <QThread>

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace {

const int EXCHANGES = 10;

// The functions of one copy of the library.
struct Driver {
#define MEMBER(name) __typeof__(&intf_##name) name;
    OSTREL_KMR_FUNCTIONS(MEMBER)
#undef MEMBER

    // Returns an empty text, or what is wrong.
    QString load(const QString &file)
    {
        QLibrary library(file); // its destructor leaves the library loaded
        if (!library.load())
            return library.errorString();
        QString missing;
#define RESOLVE(name)                                                                              \
    take(library.resolve("intf_" #name), name);                                                    \
    if (!name)                                                                                     \
        missing = file + QLatin1String(": no function intf_" #name);
        OSTREL_KMR_FUNCTIONS(RESOLVE)
#undef RESOLVE
        return missing;
    }

private:
    // QLibrary returns an object pointer in Qt 4 and a function pointer in Qt 5 and later.
    template <typename Address, typename Function>
    static void take(Address address, Function &function)
    {
        std::memcpy(&function, &address, sizeof function);
    }
};

// A callback does not learn which copy calls it, and the events of a transfer name no device: each
// line has a function of its own. It runs in the line's thread.
template <int NUMBER> qint32 printChange(qint32, qint32 station, QString area, qint32 address)
{
    std::printf("line %d: %d#%s%d changed\n", NUMBER, station, qPrintable(area), address);
    return 0;
}

class LineThread : public QThread {
public:
    LineThread(int number, const Driver &driver, Line &line, ValueChangedCallback callback)
        : m_number(number), m_driver(driver), m_line(line), m_callback(callback),
          m_status(STATUS_BLOCK_BYTES), m_recipe(2 * 1000)
    {
    }

protected:
    void run()
    {
        configure();
        for (int i = 0; i < EXCHANGES; ++i)
            exchange();
        quint8 words[8];
        m_driver.getData(1, QLatin1String("D"), 100, 4, words);
        for (int i = 0; i < 4; ++i)
            std::printf("line %d: D%d = %d\n", m_number, 100 + i,
                        words[2 * i] + 256 * words[2 * i + 1]);
        m_driver.setAddrValueChangeCallBack(0);
    }

private:
    // The line's number is its device number; writes queued, three tries, up to 8 words a request.
    void configure()
    {
        const QByteArray property = QByteArray::number(m_number) + "#0#0#3#8";
        qint32 result = -1;
        m_driver.setAddrValueChangeCallBack(m_callback);
        m_driver.initProperty(m_status.data(), 0, m_recipe.data(), &result, property.constData(),
                              &m_statusMutex);
        KEY_ADDRESS words; // D100 to D103 of station 1, polled continuously
        words.station = 1;
        words.area = QLatin1String("D");
        words.address = 100;
        words.count = 4;
        m_driver.addrMerge(QList<KEY_ADDRESS>() << words);

        quint8 value[2] = {static_cast<quint8>(m_number), 0x12}; // low-order byte first
        m_driver.setData(1, QLatin1String("D"), 100, 1, value, 0);
    }

    void exchange()
    {
        FRAME_PRO frame;
        if (m_driver.getSendFrame(&frame) != FRAME_TO_SEND)
            return;
        QByteArray reply = m_line.exchange(frame.frame, frame.frameLen);
        QString request;
        if (m_driver.dealRcvFrame(reply, request) == REPLY_GIVEN_UP)
            std::printf("line %d: given up: %s\n", m_number, qPrintable(request));
    }

    const int m_number;
    const Driver &m_driver;
    Line &m_line;
    const ValueChangedCallback m_callback;
    // Lent to the driver.
    QVector<quint8> m_status;
    QVector<quint8> m_recipe;
    QMutex m_statusMutex;
};

int fail(const char *what, const char *why)
{
    std::fprintf(stderr, "two_lines: %s: %s\n", what, why);
    return 1;
}

} // namespace

int main(int argc, char **argv)
{
    if (argc != 5) {
        std::fputs("usage: two_lines LIBRARY LINE COPY_OF_LIBRARY LINE\n", stderr);
        return 2;
    }
    Driver drivers[2];
    Line lines[2];
    for (int i = 0; i < 2; ++i) {
        const QString wrong = drivers[i].load(QString::fromLocal8Bit(argv[1 + 2 * i]));
        if (!wrong.isEmpty())
            return fail("library", qPrintable(wrong));
        if (!lines[i].open(argv[2 + 2 * i]))
            return fail(argv[2 + 2 * i], std::strerror(errno));
    }
    if (drivers[0].initProperty == drivers[1].initProperty)
        return fail(argv[3], "the same file as the first; two lines need two copies of it");

    LineThread first(1, drivers[0], lines[0], printChange<1>);
    LineThread second(2, drivers[1], lines[1], printChange<2>);
    first.start();
    second.start();
    first.wait();
    second.wait();
    return 0;
}
