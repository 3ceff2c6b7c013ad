// The options that hold for all commands: from the command line, else from the project's file, else
// from the environment. A project's folder talks to its own controller, whatever was exported
// elsewhere.
#pragma once

#include "host/line/reply_filter.h"
#include "host/project/project_file.h"
#include "host/tags/tag_syntax.h"
#include "kmr/record_writer.h"

#include <CLI/CLI.hpp>
#include <QString>
#include <QStringList>

#include <chrono>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace kmr {

// Their values; here those that hold when nothing else is said.
struct Options {
    QString link;
    QString driver; // empty: findDriver()
    int station = 1;
    std::chrono::milliseconds timeout{1000};
    int retries = 2;
    int groupLimit = 8;
    std::chrono::milliseconds gap{0}; // silence before each request
    EchoMode echo = EchoMode::Auto;
    bool inStep = true; // answers count once they are confirmed
    WordOrder wordOrder = WordOrder::LowFirst;
    ByteOrder byteOrder = ByteOrder::LowFirst;
    Format format = Format::Plain;
    bool isFormatAsked = false; // on the command line or in the file
    bool trace = false;         // explain all traffic on stderr
    QString capture;            // file that receives every character; empty: none
    int captureLimit = 0;       // megabytes that one of its two files may hold; 0: one, any size
    QString names;              // file of names; empty: none
    QStringList tags;           // of the project's file, for commands that are given none
    QString tagsSource;         // their place: "kmr.toml:3"
};

class OptionReader {
public:
    // Adds the options to the command line.
    explicit OptionReader(CLI::App &app);
    OptionReader(const OptionReader &) = delete;
    OptionReader &operator=(const OptionReader &) = delete;

    // Lets the project's file hold options of a command too, in the section [SECTION]. `paths`:
    // those that name files, relative to the project's. `variable`: of the environment, for the
    // first of `keys`, or null.
    void addSection(const char *section, CLI::App &command, const QStringList &keys,
                    const QStringList &paths, const char *variable = nullptr);

    // After the command line is parsed: adds what it leaves out. Throws Error (Usage) that names
    // every bad key of the file with its line. Where the environment says something else than the
    // file, a line on stderr says what holds.
    Options read();

    // After read(): a line for each option that the project's file may hold.
    struct Row {
        QString key;
        QString value;
        QString source;
    };
    std::vector<Row> rows() const;

private:
    // An option that the project's file may hold.
    struct Entry {
        QString key; // in the file: "link", or "publish.broker" of a section
        CLI::Option *option = nullptr;
        const char *variable = nullptr; // of the environment, or null
        // What a value in the file stands for; throws Error for a bad one. Empty: for itself.
        std::function<QString(const QString &value, const QString &file)> fromFile = nullptr;
        QString source = "default";
        bool isOfCommand = false; // not an option of all commands
    };

    // Each adds an option that sets `value`, which holds its default.
    Entry &add(const char *key, QString &value, std::string help, const char *variable = nullptr);
    void add(const char *key, int &value, const char *help, int least, int most);
    void add(const char *key, std::chrono::milliseconds &value, const char *help, int least,
             int most);
    template <typename Choice> // of named ones, which must outlive this
    void add(const char *key, Choice &value, const char *help,
             const std::vector<std::pair<std::string, Choice>> &choices);

    void readEnvironment();
    void readFile(const QString &path);
    void readEntry(const ConfigEntry &entry, const QString &path);

    CLI::App &m_app;
    std::vector<Entry> m_entries;
    std::string m_file; // as --config names it
    Options m_options;
};

} // namespace kmr
