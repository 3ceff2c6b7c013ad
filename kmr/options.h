// The options that hold for all commands, from the command line, the environment and the project's
// file, in this order of precedence.
#pragma once

#include "host/line/reply_filter.h"
#include "host/project/project_file.h"
#include "host/tags/tag_syntax.h"
#include "kmr/record_writer.h"

#include <QString>
#include <QStringList>

#include <chrono>
#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
} // namespace CLI

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

class Settings {
public:
    // Adds the options to the command line.
    explicit Settings(CLI::App &app);
    Settings(const Settings &) = delete;
    Settings &operator=(const Settings &) = delete;

    // After the command line is parsed: adds what it leaves out. Throws Error (Usage) that names
    // every bad key of the file with its line.
    Options resolve();

    // What is in force, a line for each setting: key, value and where it comes from.
    struct Row {
        QString key;
        QString value;
        QString source;
    };
    std::vector<Row> rows() const;

private:
    struct Setting {
        QString key;
        CLI::Option *option;
        const char *variable; // of the environment, or null
        QString source;
    };

    CLI::Option *add(const char *key, std::string &value, const char *help,
                     const char *variable = nullptr);
    CLI::Option *add(const char *key, int &value, const char *help);
    void applyFile(const QString &path);
    void applyEntry(const ConfigEntry &entry, const QString &path);
    Setting *find(const QString &key);

    CLI::App &m_app;
    std::vector<Setting> m_settings;
    CLI::Option *m_configOption = nullptr;
    std::string m_config;
    std::string m_link;
    std::string m_driver;
    int m_station = 1;
    int m_timeout = 1000;
    int m_retries = 2;
    int m_groupLimit = 8;
    int m_gap = 0;
    std::string m_echo = "auto";
    std::string m_inStep = "on";
    std::string m_wordOrder = "low";
    std::string m_format = "plain";
    std::string m_names;
    bool m_trace = false;
    std::string m_capture;
    QStringList m_tags; // the file's
    QString m_tagsSource;
};

} // namespace kmr
