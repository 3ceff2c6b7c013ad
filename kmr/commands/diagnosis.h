// The commands of kmr that explain and test: frames, lines, addresses and poll plans. As those of
// commands.h.
#pragma once

#include "kmr/command_line.h"

namespace CLI {
class App;
}

namespace kmr {

// Adds these commands to the command line; the one that it names sets `chosen`.
void addDiagnosis(CLI::App &app, Command &chosen);

// Explains lines of text one by one; an answer is explained by the request before it.
ExitCode runDecode(const Options &options, const QStringList &frames);

// Explains a capture's traffic.
ExitCode runTrace(const Options &options, const QString &file);

// Asks the driver whether addresses are valid.
ExitCode runCheck(const Options &options, const QStringList &texts);

struct SeriesOptions {
    QString area;
    int start = 0; // as the driver takes it: for X and Y the octal digits
    int count = 1;
    int step = 1;
};

// Prints the driver's series of addresses.
ExitCode runSeries(const Options &options, const SeriesOptions &series);

struct PingOptions {
    std::optional<std::uint64_t> count; // requests; none: until Ctrl-C
    std::chrono::milliseconds interval{1000};
    QString tag = "D0"; // what is read
};

// Reads one element again and again, each time once, and tells the round trips.
ExitCode runPing(const Options &options, const PingOptions &ping);

struct ScanOptions {
    int first = 1; // stations
    int last = 31;
    QString tag = "D0"; // what is read
};

// Asks each station once.
ExitCode runScan(const Options &options, const ScanOptions &scan);

struct DoctorOptions {
    bool tryFramings = false; // the usual speeds and frame formats of a serial line
    QString tag = "D0";       // what is read
};

// Says in sentences what is wrong with the line and what to do.
ExitCode runDoctor(const Options &options, const DoctorOptions &doctor);

struct PlanOptions {
    QStringList tags;
    std::optional<int> baud; // bits a second; none: the link's
    bool isRaw = false;      // the tags as typed, not as kmr polls them
};

// Shows the read requests that the driver builds for tags.
ExitCode runPlan(const Options &options, const PlanOptions &request);

} // namespace kmr
