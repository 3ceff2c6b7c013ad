// The library as a plugin of another process: it unloads completely and does not affect others.
#include "loaded_driver.h"

#include <malloc.h>

#include <algorithm>
#include <iterator>

namespace {

class PluginFlow : public FlowTest {
protected:
    // A short life of the library: configured, polling, with a write and a one-shot read queued.
    void liveOnce()
    {
        kmr = std::make_unique<LoadedDriver>();
        kmr->setAddrValueChangeCallBack(record);
        configure("1#0#0#3#8");
        watch({{1, "D", 100, 1}, {1, "X", 0, 8}});
        exchange(":0103021234B4");
        writeWords("D", 0, {1, 2});
        readOnce({1, "CV2", 200, 1});
        nextFrame();
        kmr.reset();
        takeReports();
    }
};

} // namespace

TEST_F(PluginFlow, ThousandsOfLoadsLeaveNoLibraryAndNoMemoryBehind)
{
    kmr.reset();
    for (int round = 0; round < 100; ++round)
        liveOnce(); // what the loader and the C library keep permanently
    const size_t before = mallinfo2().uordblks;
    for (int round = 0; round < LOAD_ROUNDS; ++round) {
        liveOnce();
        ASSERT_FALSE(isLoaded()) << "after round " << round;
        ASSERT_FALSE(HasFailure()) << "in round " << round;
    }
    EXPECT_LE(mallinfo2().uordblks, before + 4096);
}

TEST_F(PluginFlow, LibraryWithTheSameNamesInFrontOfItChangesNothing)
{
    kmr.reset();
    void *namesake = dlopen(NAMESAKE_LIBRARY, RTLD_NOW | RTLD_GLOBAL);
    ASSERT_NE(namesake, nullptr) << dlerror();
    char *const itsDriver = static_cast<char *>(dlsym(namesake, "driver"));
    ASSERT_NE(itsDriver, nullptr);
    std::fill_n(itsDriver, 65536, '\x5A');

    kmr = std::make_unique<LoadedDriver>(testedLibrary(), RTLD_GLOBAL);
    configure("1#0#0#3#8");
    watch({{1, "D", 100, 1}});
    EXPECT_EQ(exchange(":0103021234B4"), ":01031064000187");
    EXPECT_EQ(words("D", 100, 1), (std::vector<int>{0x1234}));
    EXPECT_TRUE(std::all_of(itsDriver, itsDriver + 65536, [](char c) { return c == '\x5A'; }));
    kmr.reset();
    dlclose(namesake);
}

TEST_F(PluginFlow, CopyHasItsOwnSettingsAndMayLeaveFirst)
{
    kmr.reset(); // both with global symbols
    kmr = std::make_unique<LoadedDriver>(testedLibrary(), RTLD_GLOBAL);
    configure("1#0#0#3#8");
    const LibraryCopy copy;
    auto other = std::make_unique<LoadedDriver>(copy.path(), RTLD_GLOBAL);
    kmr.swap(other);
    configure("2#0#0#1#1");
    EXPECT_EQ(watch({{1, "D", 0, 2}}), 2);
    EXPECT_EQ(nextFrame(), ":010310000001EB");
    EXPECT_EQ(answer(""), 2);
    kmr.swap(other);
    EXPECT_EQ(nextFrame(), "");
    EXPECT_EQ(watch({{1, "D", 0, 2}}), 1);
    EXPECT_EQ(nextFrame(), ":010310000002EA");
    other.reset();
    EXPECT_EQ(answer(":0103041234000CA6"), 1);
    EXPECT_EQ(words("D", 0, 2), (std::vector<int>{0x1234, 0x000C}));
}
