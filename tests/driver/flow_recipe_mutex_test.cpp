// The host's mutex around the request bytes of recipe transfers.
#include "loaded_driver.h"

#include <unistd.h>

#include <atomic>
#include <fstream>
#include <thread>

namespace {

// Whether a thread of this process sleeps, as it does on a locked mutex.
bool sleeps(pid_t thread)
{
    std::ifstream file("/proc/self/task/" + std::to_string(thread) + "/stat");
    std::string line;
    std::getline(file, line);
    const size_t end = line.rfind(") ");
    return end != std::string::npos && line.at(end + 2) == 'S';
}

// Runs `call` in another thread; the constructor returns once the call has ended or sleeps.
class Background {
public:
    explicit Background(std::function<void()> call)
        : thread([this, call] {
              id = gettid();
              call();
              ended = true;
          })
    {
        while (!ended && !(id && sleeps(id)))
            std::this_thread::yield();
    }
    ~Background()
    {
        thread.join();
    }

private:
    std::atomic<pid_t> id{0};
    std::atomic<bool> ended{false};
    std::thread thread; // last: it uses the others
};

class RecipeMutexFlow : public FlowTest {
protected:
    RecipeMutexFlow()
    {
        _RCP_VAR_PRO entry;
        entry.devId = entry.station = entry.count = 1;
        entry.area = QStringLiteral("D");
        const QVector<_RCP_VAR_PRO> list{entry};
        kmr->setRcpAddress(&list);
    }
};

} // namespace

TEST_F(RecipeMutexFlow, RequestBytesAreReadUnderTheMutex)
{
    std::string text;
    mutex.lock();
    {
        Background call([&] { text = nextFrame(); });
        status[STATUS_RECIPE_UPLOAD] = 1; // must be seen, since the driver has to wait for us
        mutex.unlock();
    }
    EXPECT_EQ(text, ":010310000001EB");
}

TEST_F(RecipeMutexFlow, DownloadRequestIsClearedUnderTheMutex)
{
    status[STATUS_RECIPE_DOWNLOAD] = 1;
    nextFrame();
    mutex.lock();
    {
        Background call([&] { answer(":011010000001DE"); });
        EXPECT_EQ(status[STATUS_RECIPE_DOWNLOAD], 1);
        mutex.unlock();
    }
    EXPECT_EQ(status[STATUS_RECIPE_DOWNLOAD], 0);
}

TEST_F(RecipeMutexFlow, UploadRequestIsClearedUnderTheMutex)
{
    status[STATUS_RECIPE_UPLOAD] = 1;
    nextFrame();
    mutex.lock();
    {
        Background call([&] { answer(":0103020000FA"); });
        EXPECT_EQ(status[STATUS_RECIPE_UPLOAD], 1);
        mutex.unlock();
    }
    EXPECT_EQ(status[STATUS_RECIPE_UPLOAD], 0);
}

TEST_F(RecipeMutexFlow, NothingElseIsDoneWhileItIsHeld)
{
    bool free = true;
    onReport = [&](const Report &) {
        free = free && mutex.tryLock();
        mutex.unlock();
    };
    watch({{1, "D", 0, 1}});
    status[STATUS_RECIPE_UPLOAD] = 1;
    exchange(":0103020007F3");
    readOnce({1, "D", 60, 1});
    exchange(":0103020000FA");
    EXPECT_EQ(takeReports().size(), 3U);
    EXPECT_TRUE(free);
}

TEST_F(RecipeMutexFlow, OnlyTheChoiceOfARequestTakesIt)
{
    watch({{1, "D", 0, 1}});
    nextFrame();
    mutex.lock(); // none of these may wait for it
    EXPECT_EQ(nextFrame(), ":010310000001EB");
    EXPECT_EQ(answer(":0103020001F9"), 1);
    writeWords("D", 0, {2});
    readOnce({1, "D", 5, 1});
    EXPECT_EQ(words("D", 0, 1), (std::vector<int>{2}));
    mutex.unlock();
}
