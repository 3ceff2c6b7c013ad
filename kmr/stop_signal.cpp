#include "kmr/stop_signal.h"

#include <algorithm>
#include <csignal>
#include <cstdint>
#include <ctime>
#include <fcntl.h>
#include <thread>
#include <unistd.h>

namespace kmr {

namespace {

constexpr int ENDING_SIGNALS[] = {SIGQUIT, SIGABRT, SIGBUS, SIGFPE, SIGILL, SIGSEGV};

constexpr std::int64_t ONE_STOP_NS = 500000000;

std::atomic<bool> g_stop{false};
std::atomic<std::int64_t> g_firstStop{0}; // ns of the steady clock; 0 before
std::atomic<void (*)()> g_lastAct{nullptr};
int g_pipe[2] = {-1, -1};

void handle(int signal, void (*handler)(int))
{
    struct sigaction action = {};
    action.sa_handler = handler;
    sigaction(signal, &action, nullptr);
}

std::int64_t nowInNanoseconds()
{
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return std::int64_t{now.tv_sec} * 1000000000 + now.tv_nsec;
}

extern "C" void endAtOnce(int signal)
{
    if (void (*act)() = g_lastAct)
        act();
    handle(signal, SIG_DFL);
    raise(signal);
}

// timeout(1) and a shell that ends may send a signal twice at once: that is one request.
extern "C" void noteStop(int signal)
{
    const std::int64_t now = nowInNanoseconds();
    std::int64_t first = 0;
    const bool isFirst = g_firstStop.compare_exchange_strong(first, now);
    if (!isFirst && signal != SIGHUP && now - first >= ONE_STOP_NS)
        endAtOnce(signal);
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
    handle(SIGINT, noteStop);
    handle(SIGTERM, noteStop);
    // A closed terminal sends SIGHUP more than once, and nohup ignores it.
    struct sigaction hangUp = {};
    if (sigaction(SIGHUP, nullptr, &hangUp) == 0 && hangUp.sa_handler != SIG_IGN)
        handle(SIGHUP, noteStop);
    handle(SIGPIPE, SIG_IGN); // print() notices it
}

void setLastAct(void (*act)())
{
    g_lastAct = act;
    for (const int signal : ENDING_SIGNALS)
        handle(signal, act != nullptr ? endAtOnce : SIG_DFL);
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
