// A minimal host for benchmarks: the built library, called by its exported names, and prepared
// replies instead of a controller.
#pragma once

#include "host/driver_library.h"

#include <string>
#include <vector>

namespace bench {

// Ends the program with `what` on stderr and exit code 1 unless `holds`: a benchmark must do what
// it claims to measure.
void require(bool holds, const std::string &what);

// The driver's functions, loaded on first use from the build tree.
const kmr::DriverFunctions &intf();

// One address run of the host.
struct Run {
    int station;
    const char *area;
    int address;
    int count;
};

QList<KEY_ADDRESS> keysOf(const std::vector<Run> &runs);

// Configures the driver again: device 1, retry limit 3, 8 elements a request, callback
// `countReport`. Clears store, plan and queues.
void openLink();

// Sets or clears the host's request for an upload of the recipe.
void requestUpload(bool wanted);

// How often openLink was called.
int linksOpened();

// Starts polling `runs` and requires that they make `blocks` read blocks.
void poll(const std::vector<Run> &runs, int blocks);

// The callback: counts.
qint32 countReport(qint32 devId, qint32 station, QString area, qint32 address);

// Reports since the last call.
int takeReports();

// The frame to send next, ':' to the LRC, or "" when there is none.
std::string nextFrame();

// One exchange: requires that `request` goes out and that `reply` is accepted. Both ':' to the LRC.
void exchange(const std::string &request, const std::string &reply);

// `line` as it arrives, its line end added.
QByteArray received(const std::string &line);

// `count` words as intf_getData hands them out.
std::vector<int> words(int station, const char *area, int address, int count);

// Two replies to a read of 8 words, and what they say.
extern const char *const READ_8_REPLY;
extern const char *const OTHER_READ_8_REPLY;
extern const std::vector<int> READ_8_VALUES;
extern const std::vector<int> OTHER_READ_8_VALUES;

} // namespace bench
