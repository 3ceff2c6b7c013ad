// A freshly configured driver for each test, and a host that records what it is told.
#pragma once

#include "driver/ostrel_kmr.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

// One report of the value-change callback: devId, station, area, address.
using Report = std::tuple<int, int, std::string, int>;

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

// The characters of a frame as they go out.
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

// Configures `driver` anew before each test with the property text of `configure` and a status block,
// a recipe buffer and a mutex of its own, and records the reports of the callback.
class DriverTest : public testing::Test {
protected:
    void SetUp() override
    {
        reports().clear();
        driver = Ostrel_kmr();
        configure("1#0#0#3#8");
        intf_setAddrValueChangeCallBack(record);
    }

    void TearDown() override { driver = Ostrel_kmr(); }

    void configure(const char *property)
    {
        qint32 result = -1;
        intf_initProperty(status.data(), nullptr, recipe.data(), &result, property, &mutex);
    }

    static std::vector<Report> &reports()
    {
        static std::vector<Report> all;
        return all;
    }

    static qint32 record(qint32 devId, qint32 station, QString area, qint32 address)
    {
        reports().emplace_back(devId, station, area.toStdString(), address);
        return 0;
    }

    std::vector<quint8> status = std::vector<quint8>(STATUS_BLOCK_BYTES, 0);
    std::vector<quint8> recipe = std::vector<quint8>(4096, 0);
    QMutex mutex;
};
