// Two copies of the library in one process, as a host with two links loads them.
#include "loaded_driver.h"

class TwoCopiesFlow : public FlowTest {
protected:
    TwoCopiesFlow()
    {
        kmr.reset();
        kmr = std::make_unique<LoadedDriver>(OSTREL_KMR_LIBRARY, RTLD_GLOBAL);
        other = std::make_unique<LoadedDriver>(copy.path(), RTLD_GLOBAL);
        for (int link = 0; link < 2; ++link) {
            kmr->setAddrValueChangeCallBack(record);
            configure(link == 0 ? "1#0#0#3#8" : "2#0#0#1#1");
            kmr.swap(other);
        }
    }

    LibraryCopy copy;
    std::unique_ptr<LoadedDriver> other; // kmr.swap(other) turns to the other link
};

TEST_F(TwoCopiesFlow, SettingsAndPlansAreTheirOwn)
{
    EXPECT_EQ(watch({{1, "D", 0, 2}}), 1);
    kmr.swap(other);
    EXPECT_EQ(nextFrame(), "");
    EXPECT_EQ(watch({{1, "D", 0, 2}}), 2);
    EXPECT_EQ(nextFrame(), ":010310000001EB");
    kmr.swap(other);
    EXPECT_EQ(nextFrame(), ":010310000002EA");
}

TEST_F(TwoCopiesFlow, ValuesAndReportsAreTheirOwn)
{
    watch({{1, "D", 0, 1}});
    exchange(":0103021111D8");
    kmr.swap(other);
    EXPECT_EQ(words("D", 0, 1), (std::vector<int>{0}));
    watch({{1, "D", 0, 1}});
    exchange(":0103022222B6");
    EXPECT_EQ(takeReports(), (Reports{{1, 1, "D", 0}, {2, 1, "D", 0}}));
    kmr.swap(other);
    EXPECT_EQ(words("D", 0, 1), (std::vector<int>{0x1111}));
}

TEST_F(TwoCopiesFlow, UnloadingOneLeavesTheOtherRunning)
{
    watch({{1, "D", 0, 1}});
    nextFrame();
    other.reset();
    EXPECT_EQ(answer(":0103021234B4"), 1);
    EXPECT_EQ(words("D", 0, 1), (std::vector<int>{0x1234}));
}
