// Ctrl-C, SIGTERM and the SIGHUP of a closed terminal: a request to end cleanly.
#pragma once

#include <atomic>
#include <chrono>

namespace kmr {

// From now on these signals only set the flag. Another one half a second later, except SIGHUP, ends
// the program at once. SIGPIPE, from a reader of stdout that has gone, is ignored.
void catchStopSignals();

// From now on `act` is called before a signal ends the program at once, also a signal that reports
// a fault of the program. It may do only what a signal handler may. Null ends this.
void setLastAct(void (*act)());

// True when the program has to end.
std::atomic<bool> &stopFlag();

// Sleeps for `time`, or until the stop flag is set, which is checked every 50 ms.
void sleepUnlessStopped(std::chrono::milliseconds time);

// A descriptor that becomes readable when a signal sets the flag, for event loops. -1 before
// catchStopSignals().
int stopDescriptor();

} // namespace kmr
