// The options of all commands: from the command line, else from the project's file, else from the
// environment. In a project's folder kmr uses the project's controller, whatever the environment
// says.
#pragma once

#include "host/line/reply_filter.h"
#include "host/project/project_file.h"
#include "host/tags/tag_syntax.h"
#include "kmr/record_writer.h"

#include <QString>
#include <QStringList>

#include <chrono>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace CLI {
class App;
class Option;
} // namespace CLI

namespace kmr {

class CommandDefinition;

// The values, with their defaults.
struct Options {
    QString link;
    QString driver; // empty: findDriver()
    int station = 1;
    std::chrono::milliseconds timeout{1000};
    int retries = 2;
    int groupLimit = 8;
    std::chrono::milliseconds gap{0}; // silence before each request
    EchoMode echo = EchoMode::Auto;
    bool inStep = true; // answers count when they are confirmed
    WordOrder wordOrder = WordOrder::LowFirst;
    ByteOrder byteOrder = ByteOrder::LowFirst;
    Format format = Format::Plain;
    bool isFormatAsked = false; // on the command line or in the file
    bool trace = false;         // explain all traffic on stderr
    QString capture;            // file that receives every character; empty: none
    int captureLimit = 0;       // megabytes that one of its two files may hold; 0: one, any size
    QString names;              // file of names; empty: none
    QStringList tags;           // of the project's file, for commands without tags
    QString tagsSource;         // their place: "kmr.toml:3"
};

class OptionReader {
public:
    // Adds the options to the command line.
    explicit OptionReader(CLI::App &app);
    OptionReader(const OptionReader &) = delete;
    OptionReader &operator=(const OptionReader &) = delete;

    // Lets the project's file also hold options of a command, in the section [SECTION]. `paths`:
    // those that name files, relative to the project's. `variable`: of the environment, for the
    // first of `keys`, or null.
    void addSection(const char *section, const CommandDefinition &command, const QStringList &keys,
                    const QStringList &paths, const char *variable = nullptr);

    // To be called after the command line is parsed: adds the file and the environment. Throws
    // Error (Usage) that names every bad key of the file with its line. If the environment differs
    // from the file, a line on stderr says which value is used.
    Options read();

    // After read(): a row for each option that the project's file may hold.
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
        // Converts a value of the file; throws Error for a bad one. Empty: the value as it is.
        std::function<QString(const QString &value, const QString &file)> fromFile = nullptr;
        QString source = "default";
        bool isOfCommand = false; // not an option of all commands
    };

    // Each adds an option that sets `value`; its present value is the default.
    Entry &add(const char *key, QString &value, std::string help, const char *variable = nullptr);
    void add(const char *key, int &value, const char *help, std::uint64_t least,
             std::uint64_t most);
    void add(const char *key, std::chrono::milliseconds &value, const char *help,
             std::uint64_t least, std::uint64_t most);
    template <typename Choice> // `choices` must outlive this object
    void add(const char *key, Choice &value, const char *help,
             const std::vector<std::pair<std::string, Choice>> &choices);

    void readEnvironment();
    void readFile(const QString &path);
    void readEntry(const ConfigEntry &entry, const QString &path);

    CLI::App &m_app;
    std::vector<Entry> m_entries;
    std::string m_file; // the value of --config
    Options m_options;
};

} // namespace kmr
