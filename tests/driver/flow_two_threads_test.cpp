// Two links of one program, each with a copy of the library and a thread of its own.
#include "loaded_driver.h"

#include <atomic>
#include <thread>

namespace {

constexpr int EXCHANGES = 3000;
constexpr int WRITE_EVERY = 5; // exchanges

// A link that polls D0 to D3 of its own station; each exchange reads other words.
class Link {
public:
    Link(int linkNumber, const std::string &library) : number(linkNumber), kmr(library) {}

    void configure(ValueChangedCallback callback)
    {
        const std::string property = std::to_string(number) + "#0#0#3#8";
        qint32 result = -1;
        kmr.setAddrValueChangeCallBack(callback);
        kmr.initProperty(status.data(), nullptr, nullptr, &result, property.c_str(), &mutex);
        KEY_ADDRESS words;
        words.station = number;
        words.area = area;
        words.count = 4;
        kmr.addrMerge({words});
    }

    // Stops at the first value or frame that belongs to the other link.
    void run()
    {
        thread = std::this_thread::get_id();
        for (int i = 1; i <= EXCHANGES && fault.empty(); ++i) {
            quint8 value[2] = {static_cast<quint8>(number), 0};
            if (i % WRITE_EVERY == 0)
                kmr.setData(number, area, 100, 1, value, 0);
            exchange(i);
        }
    }

    void takeReport(qint32 device, qint32 station)
    {
        ++reports;
        if (device != number || station != number || std::this_thread::get_id() != thread)
            fault = "a report of device " + std::to_string(device);
    }

    const int number;
    std::string fault;
    int reports = 0;

private:
    void exchange(int round)
    {
        FRAME_PRO frame;
        if (kmr.getSendFrame(&frame) != FRAME_TO_SEND) {
            fault = "nothing to send";
            return;
        }
        const std::string sent(frame.frame, static_cast<size_t>(frame.frameLen - 4));
        const std::string station = ":0" + std::to_string(number);
        if (sent == station + "101064000102000" + std::to_string(number))
            accept(QByteArray(sent.c_str()) + "00\r\n");
        else if (sent == station + "0310000004") // other words each time, and on each link
            pollAnswered(static_cast<quint16>(2 * round + number));
        else
            fault = "frame " + sent;
    }

    void pollAnswered(quint16 word)
    {
        const QByteArray digits = QByteArray::number(word, 16).rightJustified(4, '0').toUpper();
        accept(":0" + QByteArray::number(number) + "0308" + digits + digits + digits + digits +
               "00\r\n");
        quint8 out[8];
        kmr.getData(number, area, 0, 4, out);
        for (int i = 0; i < 8; i += 2) {
            if (out[i] + 256 * out[i + 1] != word)
                fault = "D" + std::to_string(i / 2) + " is " +
                        std::to_string(out[i] + 256 * out[i + 1]);
        }
    }

    void accept(QByteArray reply)
    {
        QString info;
        if (kmr.dealRcvFrame(reply, info) != REPLY_ACCEPTED)
            fault = "refused: " + info.toStdString();
    }

    LoadedDriver kmr;
    std::vector<quint8> status = std::vector<quint8>(STATUS_BLOCK_BYTES, 0);
    QMutex mutex;
    const QString area = QString::fromLatin1("D");
    std::thread::id thread;
};

// A callback does not learn which copy of the library calls it, so each link has its own.
Link *links[2];

template <int INDEX> qint32 record(qint32 device, qint32 station, QString, qint32)
{
    links[INDEX]->takeReport(device, station);
    return 0;
}

} // namespace

TEST(TwoThreadsFlow, NothingOfOneLinkReachesTheOther)
{
    const LibraryCopy copy;
    Link first(1, testedLibrary());
    Link second(2, copy.path());
    links[0] = &first;
    links[1] = &second;
    first.configure(record<0>);
    second.configure(record<1>);

    std::atomic<int> ready{0};
    std::vector<std::thread> threads;
    for (Link *link : links) {
        threads.emplace_back([link, &ready] {
            ++ready;
            while (ready < 2)
                std::this_thread::yield();
            link->run();
        });
    }
    for (std::thread &thread : threads)
        thread.join();
    for (const Link *link : links) {
        EXPECT_EQ(link->fault, "") << "on link " << link->number;
        EXPECT_GT(link->reports, EXCHANGES);
    }
}
