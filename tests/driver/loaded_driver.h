// The built library, loaded as a host loads it and used only by its exported names.
#pragma once

#include "driver/ostrel_kmr.h"

#include <gtest/gtest.h>

#include <dlfcn.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

// The library that is tested: this build's, or the one that the environment's KMR_LIBRARY names.
inline std::string testedLibrary()
{
    const char *other = std::getenv("KMR_LIBRARY");
    return other ? other : OSTREL_KMR_LIBRARY;
}

// One loaded library: loads `path`, resolves the eighteen names and unloads it at its end.
class LoadedDriver {
    struct Symbol {
        void *address;
        template <typename Function> operator Function *() const
        {
            return reinterpret_cast<Function *>(address);
        }
    };

    void *handle;

    Symbol find(const char *name) const
    {
        void *address = dlsym(handle, name);
        return address ? Symbol{address} : throw std::runtime_error(dlerror());
    }

public:
    explicit LoadedDriver(const std::string &path = testedLibrary(), int scope = RTLD_LOCAL)
        : handle(dlopen(path.c_str(), RTLD_NOW | scope))
    {
        if (!handle)
            throw std::runtime_error(dlerror());
#define OSTREL_KMR_FIND(name) name = find("intf_" #name);
        OSTREL_KMR_FUNCTIONS(OSTREL_KMR_FIND)
#undef OSTREL_KMR_FIND
    }
    ~LoadedDriver()
    {
        dlclose(handle);
    }
    LoadedDriver(const LoadedDriver &) = delete;
    LoadedDriver &operator=(const LoadedDriver &) = delete;

#define OSTREL_KMR_MEMBER(name) decltype(&intf_##name) name;
    OSTREL_KMR_FUNCTIONS(OSTREL_KMR_MEMBER)
#undef OSTREL_KMR_MEMBER
};

// A copy of the library's file for a second link in the same process, removed at its end.
class LibraryCopy {
    std::string name = (std::filesystem::temp_directory_path() / "ostrel_kmr_XXXXXX").string();

public:
    LibraryCopy()
    {
        close(mkstemp(name.data()));
        std::filesystem::copy_file(testedLibrary(), name,
                                   std::filesystem::copy_options::overwrite_existing);
    }
    ~LibraryCopy()
    {
        std::filesystem::remove(name);
    }
    LibraryCopy(const LibraryCopy &) = delete;
    LibraryCopy &operator=(const LibraryCopy &) = delete;

    const std::string &path() const
    {
        return name;
    }
};

// One report of the value-change callback: devId, station, area, address.
using Report = std::tuple<int, int, std::string, int>;
using Reports = std::vector<Report>;

// One address run of the host: station, area, address, count.
struct AddressRun {
    int station;
    const char *area;
    int address;
    int count;
};

// A host for a library that is loaded again for each test. The driver starts as device 1 with write
// queue, retry limit 3 and grouping limit 8.
class FlowTest : public testing::Test {
protected:
    FlowTest()
    {
        onReport = nullptr;
        reports.clear();
        kmr->setAddrValueChangeCallBack(record);
        configure("1#0#0#3#8");
    }

    // The driver has released the mutex, whatever happened in the test.
    void TearDown() override
    {
        EXPECT_TRUE(mutex.tryLock());
        mutex.unlock();
    }

    // Whether the library is in memory; loads nothing.
    static bool isLoaded()
    {
        void *handle = dlopen(testedLibrary().c_str(), RTLD_LAZY | RTLD_NOLOAD);
        if (handle)
            dlclose(handle);
        return handle != nullptr;
    }

    void configure(const char *property)
    {
        qint32 result = -1;
        EXPECT_EQ(
            kmr->initProperty(status.data(), nullptr, recipe.data(), &result, property, &mutex), 1);
        EXPECT_EQ(result, 0);
    }

    static KEY_ADDRESS keyOf(const AddressRun &run)
    {
        KEY_ADDRESS key;
        key.station = run.station;
        key.area = QString::fromLatin1(run.area);
        key.address = run.address;
        key.count = run.count;
        return key;
    }

    // Starts polling the runs and returns the number of read blocks.
    int watch(const std::vector<AddressRun> &runs)
    {
        QList<KEY_ADDRESS> list;
        for (const AddressRun &run : runs)
            list.append(keyOf(run));
        return kmr->addrMerge(list);
    }

    void readOnce(const AddressRun &run, int tag = 0, int elemKind = 1)
    {
        KEY_ADDRESS key = keyOf(run);
        key.elemKind = elemKind;
        EXPECT_EQ(kmr->addConditionRead(key, tag), 1);
    }

    // A recipe variable of station 1.
    static _RCP_VAR_PRO recipeEntry(const char *area, int address, int count, int bufWord,
                                    int devId = 1)
    {
        _RCP_VAR_PRO entry;
        entry.devId = devId;
        entry.station = 1;
        entry.area = QString::fromLatin1(area);
        entry.address = address;
        entry.count = count;
        entry.bufWord = bufWord;
        return entry;
    }

    int setRecipe(const QVector<_RCP_VAR_PRO> &list)
    {
        return kmr->setRcpAddress(&list);
    }

    // The text of the frame to send without its line end, or "" when there is nothing to send.
    std::string nextFrame()
    {
        if (kmr->getSendFrame(&frame) != 1)
            return "";
        const std::string text(frame.frame, static_cast<size_t>(frame.frameLen));
        if (text.size() < 2 || text.substr(text.size() - 2) != "\r\n")
            return text + " without line end";
        return text.substr(0, text.size() - 2);
    }

    // Passes a reply with its line end, or silence if it is empty. It keeps its characters.
    int answer(const std::string &reply)
    {
        const QByteArray line = reply.empty() ? QByteArray() : QByteArray(reply.c_str()) + "\r\n";
        QByteArray bytes = line;
        QString text = QString::fromLatin1("left alone");
        const int result = kmr->dealRcvFrame(bytes, text);
        EXPECT_EQ(bytes, line);
        errorInfo = text.toStdString();
        return result;
    }

    // Takes the next frame and requires that `reply` is accepted for it.
    std::string exchange(const std::string &reply)
    {
        const std::string text = nextFrame();
        EXPECT_EQ(answer(reply), 1) << "to " << text;
        return text;
    }

    // Lets the front request be given up.
    void giveUp()
    {
        nextFrame();
        EXPECT_EQ(answer(""), 8);
        EXPECT_EQ(answer(""), 8);
        EXPECT_EQ(answer(""), 2);
    }

    void writeWords(const char *area, int address, const std::vector<int> &values, int tag = 0)
    {
        std::vector<quint8> bytes;
        for (int value : values) {
            bytes.push_back(static_cast<quint8>(value & 0xFF));
            bytes.push_back(static_cast<quint8>(value >> 8));
        }
        EXPECT_EQ(kmr->setData(1, QString::fromLatin1(area), address,
                               static_cast<qint32>(values.size()), bytes.data(), tag),
                  1);
    }

    void writeBits(const char *area, int address, std::vector<quint8> values, int tag = 0)
    {
        EXPECT_EQ(kmr->setData(1, QString::fromLatin1(area), address,
                               static_cast<qint32>(values.size()), values.data(), tag),
                  1);
    }

    std::vector<int> words(const char *area, int address, int count, int station = 1)
    {
        std::vector<quint8> bytes(static_cast<size_t>(count) * 2, 0xEE);
        EXPECT_EQ(kmr->getData(station, QString::fromLatin1(area), address, count, bytes.data()),
                  1);
        std::vector<int> values;
        for (size_t i = 0; i < bytes.size(); i += 2)
            values.push_back(bytes[i] + 256 * bytes[i + 1]);
        return values;
    }

    std::vector<int> bits(const char *area, int address, int count)
    {
        std::vector<quint8> bytes(static_cast<size_t>(count), 0xEE);
        EXPECT_EQ(kmr->getData(1, QString::fromLatin1(area), address, count, bytes.data()), 1);
        return std::vector<int>(bytes.begin(), bytes.end());
    }

    // The reports since the last call.
    static Reports takeReports()
    {
        return std::exchange(reports, {});
    }

    static qint32 record(qint32 devId, qint32 station, QString area, qint32 address)
    {
        reports.emplace_back(devId, station, area.toStdString(), address);
        if (onReport)
            onReport(Report(reports.back()));
        return 0;
    }

    static inline Reports reports;
    static inline std::function<void(const Report &)> onReport; // the host's reaction, may be empty

    std::unique_ptr<LoadedDriver> kmr = std::make_unique<LoadedDriver>();
    std::vector<quint8> status = std::vector<quint8>(STATUS_BLOCK_BYTES, 0);
    std::vector<quint8> recipe = std::vector<quint8>(4096, 0);
    QMutex mutex;
    FRAME_PRO frame;       // the last frame
    std::string errorInfo; // the description of the last reply
};
