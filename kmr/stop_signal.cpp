#include "kmr/stop_signal.h"

#include <algorithm>
#include <csignal>
#include <fcntl.h>
#include <thread>
#include <unistd.h>

namespace kmr {

namespace {

std::atomic<bool> g_stop{false};
int g_pipe[2] = {-1, -1};

extern "C" void noteStop(int)
{
    g_stop = true;
    const char byte = 0;
    const ssize_t written = write(g_pipe[1], &byte, 1);
    static_cast<void>(written); // a full pipe also wakes the reader
}

} // namespace

void catchStopSignals()
{
    if (pipe2(g_pipe, O_CLOEXEC | O_NONBLOCK) != 0)
        return; // the signal then ends the program
    struct sigaction action = {};
    action.sa_handler = noteStop;
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
    // A closed terminal sends SIGHUP more than once, and nohup ignores it.
    struct sigaction hangUp = {};
    if (sigaction(SIGHUP, nullptr, &hangUp) == 0 && hangUp.sa_handler != SIG_IGN) {
        action.sa_flags = 0;
        sigaction(SIGHUP, &action, nullptr);
    }
    action.sa_handler = SIG_IGN; // print() notices it
    sigaction(SIGPIPE, &action, nullptr);
}

std::atomic<bool> &stopFlag()
{
    return g_stop;
}

void sleepUnlessStopped(std::chrono::milliseconds time)
{
    using std::chrono::steady_clock;
    constexpr std::chrono::milliseconds STOP_CHECK(50);
    const auto end = steady_clock::now() + time;
    for (auto now = steady_clock::now(); now < end && !g_stop; now = steady_clock::now())
        std::this_thread::sleep_for(std::min<steady_clock::duration>(end - now, STOP_CHECK));
}

int stopDescriptor()
{
    return g_pipe[0];
}

} // namespace kmr
