// The commands of kmr. Each gets what the command line says and returns the exit code; what can't
// even be begun is thrown as Error. Values and records go to stdout, all else to stderr.
#pragma once

#include "host/error.h"
#include "host/line/reply_filter.h"
#include "host/tags/value_type.h"
#include "kmr/record_writer.h"

#include <QString>
#include <QStringList>

#include <chrono>
#include <cstdint>
#include <optional>

namespace kmr {

// What holds for all commands.
struct Options {
    QString link;
    QString driver; // empty: findDriver()
    int station = 1;
    std::chrono::milliseconds timeout{1000};
    int retries = 2;
    int groupLimit = 8;
    EchoMode echo = EchoMode::Auto;
    bool inStep = true;               // answers count once they are confirmed
    std::chrono::milliseconds gap{0}; // silence before each request
    WordOrder wordOrder = WordOrder::LowFirst;
    Format format = Format::Plain;
    bool isFormatAsked = false; // else a terminal may get more than plain lines
    QString names;              // file of names; empty: none
    QStringList tags;           // of the project's file, for commands that are given none
    QString tagsSource;         // where they stand: "kmr.toml:3"
    bool trace = false;         // explain all traffic on stderr
    QString capture;            // file that receives every character; empty: none
};

class Settings;

// Tells the versions of kmr and of its Qt, and which driver library it loads, built with which Qt.
// A library that is missing or does not fit is reported, and no failure.
ExitCode runVersion(const Options &options);

// Lists what is in force, and where from.
ExitCode runConfig(const Options &options, const Settings &settings);

// Checks a file of names.
ExitCode runTagsCheck(const Options &options, const QString &file);

// Lists the device areas of the driver's catalogue.
ExitCode runAreas(const Options &options);

struct WatchOptions {
    QStringList tags;
    std::optional<std::uint64_t> count;                // changes to show
    std::optional<std::chrono::milliseconds> duration; // time to watch
    std::chrono::milliseconds cycle{0};                // time to refresh all tags; 0: the shortest
};

// Prints a line for each change until the end that was asked for, or Ctrl-C.
ExitCode runWatch(const Options &options, const WatchOptions &watch);

// Reads tags once.
ExitCode runRead(const Options &options, const QStringList &tags);

struct WriteOptions {
    bool verify = false; // read back and compare
    bool dryRun = false; // show the frames and send nothing
};

// Writes assignments, TAG=VALUE, in their order.
ExitCode runWrite(const Options &options, const QStringList &assignments, const WriteOptions &how);

// Moves a recipe file to the controller, or the controller's values into a recipe file; `tags` are
// those to upload, or empty for those that the file has.
ExitCode runRecipeDownload(const Options &options, const QString &file, bool verify);
ExitCode runRecipeUpload(const Options &options, const QString &file, const QStringList &tags);

// Compares a recipe file with the controller's values; Unknown where they differ.
ExitCode runRecipeCompare(const Options &options, const QString &file);

} // namespace kmr
