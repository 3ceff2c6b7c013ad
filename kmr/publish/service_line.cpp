#include "kmr/publish/service_line.h"

#include "host/error.h"
#include "kmr/stop_signal.h"

#include <algorithm>

namespace kmr {

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr milliseconds FIRST_PAUSE(500); // before opening the line again; doubled up to the longest
constexpr milliseconds LONGEST_PAUSE(30000);

// Keeps saying that the service is alive.
void rest(milliseconds pause, ServiceNotice &notice)
{
    constexpr milliseconds STOP_CHECK(50);
    const steady_clock::time_point end = steady_clock::now() + pause;
    while (steady_clock::now() < end && !stopFlag()) {
        notice.alive();
        sleepUnlessStopped(STOP_CHECK);
    }
}

} // namespace

Session &openLine(Connection &connection, ServiceNotice &notice,
                  const std::function<void(const QString &)> &report)
{
    milliseconds pause = FIRST_PAUSE;
    for (;;) {
        try {
            return connection.open();
        } catch (const Error &error) {
            if (error.kind() != ErrorKind::Link || !notice.isListening())
                throw;
            if (pause == FIRST_PAUSE)
                report(error.text() + "; trying again until it works");
            notice.ready();
            rest(pause, notice);
            if (stopFlag())
                throw;
            pause = std::min(2 * pause, LONGEST_PAUSE);
        }
    }
}

} // namespace kmr
