// Ctrl-C, SIGTERM and the SIGHUP of a closed terminal: a request to end cleanly.
#pragma once

#include <atomic>
#include <chrono>

namespace kmr {

// From now on these signals only set the flag. Half a second later another one ends the program at
// once, but for SIGHUP. A reader of stdout that has gone ends it no longer with a signal.
void catchStopSignals();

// From now on `act` is called before a signal ends the program at once, also one that says that the
// program is broken. It may do only what a handler of signals may. Null ends it.
void setLastAct(void (*act)());

// Set once the end is asked for.
std::atomic<bool> &stopFlag();

// Sleeps so long, or until the end is asked for, which it notices within 50 ms.
void sleepUnlessStopped(std::chrono::milliseconds time);

// A descriptor that becomes readable when a signal sets the flag, for event loops. -1 before
// catchStopSignals().
int stopDescriptor();

} // namespace kmr
