#include "kmr/stop_signal.h"

#include <algorithm>
#include <csignal>
#include <fcntl.h>
#include <thread>
#include <unistd.h>

namespace kmr {

namespace {

constexpr int ENDING_SIGNALS[] = {SIGQUIT, SIGABRT, SIGBUS, SIGFPE, SIGILL, SIGSEGV};

std::atomic<bool> g_stop{false};
std::atomic<void (*)()> g_lastAct{nullptr};
int g_pipe[2] = {-1, -1};

void handle(int signal, void (*handler)(int))
{
    struct sigaction action = {};
    action.sa_handler = handler;
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    sigaction(signal, &action, nullptr);
}

extern "C" void endAtOnce(int signal)
{
    if (void (*act)() = g_lastAct)
        act();
    raise(signal);
}

extern "C" void noteStop(int signal)
{
    g_stop = true;
    if (signal != SIGHUP)
        handle(signal, endAtOnce);
    const char byte = 0;
    const ssize_t written = write(g_pipe[1], &byte, 1);
    static_cast<void>(written); // a full pipe wakes the reader as well
}

} // namespace

void catchStopSignals()
{
    if (pipe2(g_pipe, O_CLOEXEC | O_NONBLOCK) != 0)
        return; // the program then ends at the signal, as without us
    handle(SIGINT, noteStop);
    handle(SIGTERM, noteStop);
    // A closed terminal sends it more than once, and nohup has it ignored.
    struct sigaction hangUp = {};
    if (sigaction(SIGHUP, nullptr, &hangUp) == 0 && hangUp.sa_handler != SIG_IGN) {
        hangUp.sa_handler = noteStop;
        sigaction(SIGHUP, &hangUp, nullptr);
    }
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
