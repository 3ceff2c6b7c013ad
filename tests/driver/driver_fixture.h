// A newly configured driver for each test, and a host that records its reports.
#pragma once

#include "driver/frames.h"
#include "driver/ostrel_kmr.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <tuple>
#include <vector>

// One report of the value-change callback: devId, station, area, address.
using Report = std::tuple<int, int, std::string, int>;
using Reports = std::vector<Report>;

// The areas whose elements are bits, and those whose elements are words of 16 bits.
const char *const BIT_AREAS[] = {"X", "Y", "M", "S", "T", "C", "TV_bit"};
const char *const WORD_AREAS[] = {"TV", "CV", "D"};

// A request of `count` elements of station 1 from `address` on.
inline VARIABLE variable(const char *area, qint32 address, qint32 count)
{
    VARIABLE var;
    var.station = 1;
    var.area = QString::fromLatin1(area);
    var.address = address;
    var.count = count;
    return var;
}

// The same as the host passes it.
inline KEY_ADDRESS keyOf(const char *area, qint32 address, qint32 count)
{
    KEY_ADDRESS key;
    key.station = 1;
    key.area = QString::fromLatin1(area);
    key.address = address;
    key.count = count;
    return key;
}

// A write of 1 to one bit of M.
inline VARIABLE bitWrite(qint32 address)
{
    VARIABLE var = variable("M", address, 1);
    var.data[0] = 1;
    return var;
}

// A recipe variable of device 1 and station 1.
inline _RCP_VAR_PRO recipeEntry(const char *area, qint32 address, qint32 count, qint32 bufWord)
{
    _RCP_VAR_PRO entry;
    entry.devId = 1;
    entry.station = 1;
    entry.area = QString::fromLatin1(area);
    entry.address = address;
    entry.count = count;
    entry.bufWord = bufWord;
    return entry;
}

// Station, area, address and count of a request: "2#D:100x3" is 3 words of station 2 from D100 on.
inline std::string targetOf(const VARIABLE &var)
{
    return std::to_string(var.station) + "#" + var.area.toStdString() + ":" +
           std::to_string(var.address) + "x" + std::to_string(var.count);
}

// The requests of a list in turn, the number of station 1 left out: "D:0x8 2#M:5x1".
inline std::string targetsOf(const QList<VARIABLE> &list)
{
    std::string all;
    for (const VARIABLE &request : list) {
        const std::string target = targetOf(request);
        all += (all.empty() ? "" : " ") + (request.station == 1 ? target.substr(2) : target);
    }
    return all;
}

// The characters of a frame as they are sent.
inline std::string textOf(const FRAME_PRO &frame)
{
    return std::string(frame.frame, static_cast<size_t>(frame.frameLen));
}

// A copy of station 1's entry of the store, which must exist; nothing is created.
inline _DATA_ entryOf(const char *area, qint32 index)
{
    for (const _DATA_ &entry : driver.dataAreas) {
        if (entry.station == 1 && entry.area == QLatin1String(area) && entry.index == index)
            return entry;
    }
    ADD_FAILURE() << "the store has no entry " << area << " " << index;
    return _DATA_();
}

// An entry of the store for a word or counter of station 1 that the host watches.
inline _DATA_ watchedWord(const char *area, qint32 address)
{
    _DATA_ entry;
    entry.station = 1;
    entry.area = QString::fromLatin1(area);
    entry.index = address;
    entry.wordMonitor = 1;
    return entry;
}

// An entry of the store for 16 bits of station 1, of which the host watches `watchedBits`.
inline _DATA_ watchedBits(const char *area, qint32 block, qint32 watchedBits)
{
    _DATA_ entry = watchedWord(area, block);
    entry.wordMonitor = 0;
    entry.bitMonitor = watchedBits;
    return entry;
}

// Bytes of a value, byte 0 first.
using Bytes = std::vector<int>;

// `entry` with the value that was read last.
inline _DATA_ holding(_DATA_ entry, const Bytes &readValue)
{
    std::copy(readValue.begin(), readValue.end(), entry.readValue);
    return entry;
}

// `entry` with a value that the host wrote and that the controller has not acknowledged.
inline _DATA_ written(_DATA_ entry, const Bytes &writtenValue)
{
    std::copy(writtenValue.begin(), writtenValue.end(), entry.writtenValue);
    entry.writePending = 1;
    return entry;
}

inline Bytes readValueOf(const char *area, qint32 index)
{
    const _DATA_ entry = entryOf(area, index);
    return Bytes(entry.readValue, entry.readValue + 4);
}

inline Bytes writtenValueOf(const char *area, qint32 index)
{
    const _DATA_ entry = entryOf(area, index);
    return Bytes(entry.writtenValue, entry.writtenValue + 4);
}

// Configures `driver` again before each test with the property text of `configure` and a status
// block, a recipe buffer and a mutex of its own, and records the reports of the callback.
class DriverTest : public testing::Test {
protected:
    void SetUp() override
    {
        reports().clear();
        onReport() = nullptr;
        driver = Ostrel_kmr();
        configure("1#0#0#3#8");
        intf_setAddrValueChangeCallBack(record);
    }

    void TearDown() override
    {
        driver = Ostrel_kmr();
    }

    void configure(const char *property)
    {
        qint32 result = -1;
        intf_initProperty(status.data(), nullptr, recipe.data(), &result, property, &mutex);
    }

    // What is sent next, or an empty text when there is nothing.
    static std::string nextFrame()
    {
        FRAME_PRO frame;
        return intf_getSendFrame(&frame) == 1 ? textOf(frame) : std::string();
    }

    // What is sent next, once the reply to it has taken the frame from the list.
    static std::string nextAnswered()
    {
        const std::string text = nextFrame();
        EXPECT_LE(driver.frames.size(), 1);
        driver.frames.clear();
        return text;
    }

    // Puts the request that reads `count` elements in flight, as a cyclic block.
    static void readInFlight(const char *area, qint32 address, qint32 count)
    {
        VARIABLE var = variable(area, address, count);
        getReadFrame(var);
        driver.sendState = SEND_CYCLIC_READ;
    }

    // Puts a write of `count` elements in flight.
    static void writeInFlight(const char *area, qint32 address, qint32 count)
    {
        getWriteFrame(variable(area, address, count));
        driver.sendState = SEND_WRITE;
    }

    // Passes the reply to the frame in flight; it keeps its characters.
    qint32 answer(const QByteArray &reply)
    {
        QByteArray bytes = reply;
        const qint32 result = intf_dealRcvFrame(bytes, errorInfo);
        EXPECT_EQ(bytes, reply);
        return result;
    }

    // Reads `count` elements and passes `reply`.
    void readAnswered(const char *area, qint32 address, qint32 count, const QByteArray &reply)
    {
        readInFlight(area, address, count);
        EXPECT_EQ(answer(reply), 1) << area << address;
    }

    Bytes recipeBytes(int first, int count) const
    {
        return Bytes(recipe.begin() + first, recipe.begin() + first + count);
    }

    static Reports &reports()
    {
        static Reports all;
        return all;
    }

    // The reports in turn: "D:100" for D100 of station 1 by device 1, else "0/-1#RWI:10".
    static std::string told()
    {
        std::string all;
        for (const auto &[devId, station, area, address] : reports()) {
            const bool usual = devId == 1 && station == 1;
            const std::string sender = std::to_string(devId) + "/" + std::to_string(station) + "#";
            all += (all.empty() ? "" : " ") + (usual ? "" : sender) + area + ":" +
                   std::to_string(address);
        }
        return all;
    }

    // What else the host does in a report; empty if it only records.
    static std::function<void()> &onReport()
    {
        static std::function<void()> reaction;
        return reaction;
    }

    static qint32 record(qint32 devId, qint32 station, QString area, qint32 address)
    {
        reports().emplace_back(devId, station, area.toStdString(), address);
        if (const std::function<void()> reaction = onReport())
            reaction();
        return 0;
    }

    std::vector<quint8> status = std::vector<quint8>(STATUS_BLOCK_BYTES, 0);
    std::vector<quint8> recipe = std::vector<quint8>(4096, 0);
    QMutex mutex;
    QString errorInfo; // of the last answer
};
