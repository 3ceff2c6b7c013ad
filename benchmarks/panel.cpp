#include "benchmarks/panel.h"

#include "host/error.h"

#include <array>
#include <cstdlib>
#include <iostream>
#include <utility>

namespace bench {

namespace {

int links = 0;
int reports = 0;

std::array<quint8, STATUS_BLOCK_BYTES> status;
std::array<quint8, 4096> recipe;
QMutex mutex;

} // namespace

const char *const READ_8_REPLY = ":01031000010002000300040005000600070008C8";
const char *const OTHER_READ_8_REPLY = ":0103101001100210031004100510061007100848";
const std::vector<int> READ_8_VALUES = {1, 2, 3, 4, 5, 6, 7, 8};
const std::vector<int> OTHER_READ_8_VALUES = {0x1001, 0x1002, 0x1003, 0x1004,
                                              0x1005, 0x1006, 0x1007, 0x1008};

void require(bool holds, const std::string &what)
{
    if (holds)
        return;
    std::cerr << "A benchmark does not do what it says: " << what << '\n';
    std::exit(1);
}

const kmr::DriverFunctions &intf()
{
    try {
        static const kmr::DriverLibrary library(QStringLiteral(OSTREL_KMR_LIBRARY));
        return library.functions();
    } catch (const kmr::Error &error) {
        std::cerr << error.what() << '\n';
        std::exit(1);
    }
}

QList<KEY_ADDRESS> keysOf(const std::vector<Run> &runs)
{
    QList<KEY_ADDRESS> keys;
    for (const Run &run : runs) {
        KEY_ADDRESS key;
        key.station = run.station;
        key.area = QString::fromLatin1(run.area);
        key.address = run.address;
        key.count = run.count;
        keys.append(key);
    }
    return keys;
}

void openLink()
{
    qint32 result = -1;
    intf().setAddrValueChangeCallBack(countReport);
    intf().initProperty(status.data(), nullptr, recipe.data(), &result, "1#0#0#3#8", &mutex);
    require(result == 0, "the driver is configured");
    takeReports();
    ++links;
}

void requestUpload(bool wanted)
{
    status[STATUS_RECIPE_UPLOAD] = wanted ? 1 : 0;
}

int linksOpened()
{
    return links;
}

void poll(const std::vector<Run> &runs, int blocks)
{
    const int made = intf().addrMerge(keysOf(runs));
    require(made == blocks, std::to_string(blocks) + " read blocks, not " + std::to_string(made));
}

qint32 countReport(qint32, qint32, QString, qint32)
{
    ++reports;
    return 0;
}

int takeReports()
{
    return std::exchange(reports, 0);
}

std::string nextFrame()
{
    FRAME_PRO frame;
    if (intf().getSendFrame(&frame) != 1)
        return "";
    const std::string text(frame.frame, static_cast<size_t>(frame.frameLen));
    const size_t lineEnd = text.find("\r\n");
    require(lineEnd + 2 == text.size(), "the frame ends in CR LF: " + text);
    return text.substr(0, lineEnd);
}

void exchange(const std::string &request, const std::string &reply)
{
    const std::string sent = nextFrame();
    require(sent == request, "the request is " + request + ", not " + sent);
    QByteArray bytes = received(reply);
    QString errorInfo;
    require(intf().dealRcvFrame(bytes, errorInfo) == 1, "the reply is accepted: " + reply);
}

QByteArray received(const std::string &line)
{
    return QByteArray::fromStdString(line) + "\r\n";
}

std::vector<int> words(int station, const char *area, int address, int count)
{
    std::vector<quint8> bytes(static_cast<size_t>(count) * 2, 0xEE);
    intf().getData(station, QString::fromLatin1(area), address, count, bytes.data());
    std::vector<int> values;
    for (size_t i = 0; i < bytes.size(); i += 2)
        values.push_back(bytes[i] + 256 * bytes[i + 1]);
    return values;
}

} // namespace bench
