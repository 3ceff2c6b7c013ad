// The host's mutex around the request bytes of recipe transfers.
#include "loaded_driver.h"

#include <sys/mman.h>
#include <unistd.h>

#include <csignal>

namespace {

// A status block whose two request bytes are in two pages. The first access to a page after
// `watch` is recorded, and whether the mutex was held.
class GuardedStatus {
public:
    explicit GuardedStatus(QMutex &mutex) : guard(mutex)
    {
        const size_t page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
        length = (STATUS_BLOCK_BYTES / page + 2) * page;
        memory = static_cast<quint8 *>(
            mmap(nullptr, length, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
        block = memory + (page - STATUS_RECIPE_UPLOAD % page);
        current = this;
        struct sigaction action = {};
        action.sa_sigaction = noteAccess;
        action.sa_flags = SA_SIGINFO;
        sigaction(SIGSEGV, &action, &before);
    }
    ~GuardedStatus()
    {
        sigaction(SIGSEGV, &before, nullptr);
        munmap(memory, length);
    }
    GuardedStatus(const GuardedStatus &) = delete;
    GuardedStatus &operator=(const GuardedStatus &) = delete;

    quint8 *data() const
    {
        return block;
    }

    void watch()
    {
        accesses.clear();
        mprotect(memory, length, PROT_NONE);
    }

    // "held" or "free" for each page touched since `watch`, lowest first.
    std::string seen()
    {
        mprotect(memory, length, PROT_READ | PROT_WRITE);
        return accesses;
    }

private:
#ifdef __i386__ // QEMU calls handlers with a stack that Qt's vector instructions can't use
    __attribute__((force_align_arg_pointer))
#endif
    static void
    noteAccess(int, siginfo_t *info, void *)
    {
        const auto *const place = static_cast<const quint8 *>(info->si_addr);
        if (place < current->memory || place >= current->memory + current->length) {
            sigaction(SIGSEGV, &current->before, nullptr); // is raised again, unhandled
            return;
        }
        const bool held = !current->guard.tryLock();
        if (!held)
            current->guard.unlock();
        current->accesses +=
            place < current->block + STATUS_RECIPE_UPLOAD ? "download " : "upload ";
        current->accesses += held ? "held " : "free ";
        const long page = sysconf(_SC_PAGESIZE);
        quint8 *const start = current->memory + (place - current->memory) / page * page;
        mprotect(start, static_cast<size_t>(page), PROT_READ | PROT_WRITE);
    }

    static inline GuardedStatus *current;

    QMutex &guard;
    quint8 *memory;
    size_t length;
    quint8 *block;
    std::string accesses;
    struct sigaction before;
};

class RecipeMutexFlow : public FlowTest {
protected:
    RecipeMutexFlow()
    {
        setRecipe({recipeEntry("D", 0, 1, 0)});
        kmr->initProperty(guarded.data(), nullptr, recipe.data(), nullptr, "1#0#0#3#8", &mutex);
    }

    GuardedStatus guarded{mutex};
};

} // namespace

TEST_F(RecipeMutexFlow, RequestBytesAreReadUnderTheMutex)
{
    guarded.watch();
    EXPECT_EQ(nextFrame(), "");
    EXPECT_EQ(guarded.seen(), "download held upload held ");
}

TEST_F(RecipeMutexFlow, RequestByteIsClearedUnderTheMutex)
{
    for (const auto &[byte, reply, access] :
         {std::tuple(STATUS_RECIPE_DOWNLOAD, ":011010000001DE", "download held "),
          std::tuple(STATUS_RECIPE_UPLOAD, ":0103020000FA", "upload held ")}) {
        guarded.data()[byte] = 1;
        nextFrame();
        guarded.watch();
        EXPECT_EQ(answer(reply), 1);
        EXPECT_EQ(guarded.seen(), access);
        EXPECT_EQ(guarded.data()[byte], 0);
    }
}

TEST_F(RecipeMutexFlow, NothingElseIsDoneWhileItIsHeld)
{
    bool free = true;
    onReport = [&](const Report &) {
        free = free && mutex.tryLock();
        mutex.unlock();
    };
    watch({{1, "D", 0, 1}});
    guarded.data()[STATUS_RECIPE_UPLOAD] = 1;
    exchange(":0103020007F3");
    readOnce({1, "D", 60, 1});
    exchange(":0103020000FA");
    EXPECT_EQ(takeReports().size(), 3U);
    EXPECT_TRUE(free);
}
