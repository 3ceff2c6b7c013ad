#include "kmr/options.h"

#include "host/line/link.h"
#include "host/project/text_file.h"
#include "host/tags/tag.h"
#include "kmr/command_definition.h"
#include "kmr/output.h"

#include <CLI/CLI.hpp>
#include <QDir>
#include <QFileInfo>

#include <algorithm>

namespace kmr {

namespace {

const char *const DEFAULT_FILE = "kmr.toml";
const char *const TAGS = "tags"; // only in the file
const char *const COMMAND_LINE = "command line";

const std::vector<std::pair<std::string, EchoMode>> ECHO_MODES = {
    {"on", EchoMode::On}, {"off", EchoMode::Off}, {"auto", EchoMode::Auto}};
const std::vector<std::pair<std::string, bool>> ON_OFF = {{"on", true}, {"off", false}};
const std::vector<std::pair<std::string, WordOrder>> WORD_ORDERS = {{"low", WordOrder::LowFirst},
                                                                    {"high", WordOrder::HighFirst}};
const std::vector<std::pair<std::string, ByteOrder>> BYTE_ORDERS = {{"low", ByteOrder::LowFirst},
                                                                    {"high", ByteOrder::HighFirst}};
const std::vector<std::pair<std::string, Format>> FORMATS = {{"plain", Format::Plain},
                                                             {"table", Format::Table},
                                                             {"csv", Format::Csv},
                                                             {"json", Format::Json},
                                                             {"jsonl", Format::JsonLines}};

QString checkedLink(const QString &value, const QString &)
{
    parseLink(value);
    return value;
}

// A path in the file, relative to the folder in which kmr runs.
QString besideFile(const QString &value, const QString &file)
{
    return QDir::cleanPath(QDir(QFileInfo(file).path()).filePath(value));
}

QString readableFile(const QString &value, const QString &file)
{
    const QString path = besideFile(value, file);
    readTextFile(path);
    return path;
}

// A bare name is for the system's loader.
QString libraryPath(const QString &value, const QString &file)
{
    return value.contains('/') ? besideFile(value, file) : value;
}

QString placeOf(const ConfigEntry &entry, const QString &file)
{
    return QString("%1:%2").arg(file).arg(entry.line);
}

} // namespace

OptionReader::OptionReader(CLI::App &app) : m_app(app)
{
    Options &o = m_options;
    app.add_option("--config", m_file,
                   std::string("project file (default: ") + DEFAULT_FILE +
                       " in the current folder)");
    add("link", o.link, "serial:///dev/ttyUSB0?baud=9600&frame=7E1 or tcp://host:port", "KMR_LINK")
        .fromFile = checkedLink;
    add("driver", o.driver,
        "driver library to load (default: libostrel_kmr.so.1 beside kmr, else the system's)",
        "KMR_DRIVER")
        .fromFile = libraryPath;
    add("station", o.station, "station of tags without a station", MIN_STATION, MAX_STATION);
    add("timeout", o.timeout, "milliseconds to wait for an answer", 1, 600000);
    add("retries", o.retries, "times that a request is sent again before it is given up", 0, 1000);
    add("group-limit", o.groupLimit, "words that a request may carry", 1, 8);
    add("gap", o.gap, "milliseconds of silence before each request", 0, 60000);
    add("echo", o.echo, "whether the line echoes requests, as two-wire lines do: on, off or auto",
        ECHO_MODES);
    add("in-step", o.inStep,
        "whether an answer counts only when the next exchange confirms it: on or off", ON_OFF);
    add("word-order", o.wordOrder, "word of a 32 or 64-bit value that comes first: low or high",
        WORD_ORDERS);
    add("byte-order", o.byteOrder,
        "byte of a word that holds a text's first character: low or high", BYTE_ORDERS);
    add("format", o.format, "records as plain, table, csv, json or jsonl", FORMATS);
    app.add_flag("--trace", o.trace, "explain all traffic on stderr");
    CLI::Option *capture = app.add_option_function<std::string>(
        "--capture", [&o](const std::string &path) { o.capture = toQString(path); },
        "write every character with its time to this new file, for 'kmr trace FILE'");
    CLI::Option *captureLimit = app.add_option(
        "--capture-limit", o.captureLimit,
        "megabytes that FILE may hold; a full FILE is renamed to FILE.1 and a new one begins");
    captureLimit->needs(capture);
    Argument(captureLimit).between(1, 100000);
    add("names", o.names, "file of names for tags; 'kmr tags check --help' explains it").fromFile =
        readableFile;
}

OptionReader::Entry &OptionReader::add(const char *key, QString &value, std::string help,
                                       const char *variable)
{
    if (variable != nullptr)
        help += std::string("; also from kmr.toml or environment variable ") + variable;
    CLI::Option *option = m_app.add_option_function<std::string>(
        std::string("--") + key, [&value](const std::string &text) { value = toQString(text); },
        help);
    m_entries.push_back({key, option, variable});
    return m_entries.back();
}

void OptionReader::add(const char *key, int &value, const char *help, std::uint64_t least,
                       std::uint64_t most)
{
    CLI::Option *option = m_app.add_option(std::string("--") + key, value, help);
    Argument(option).showDefault().between(least, most);
    m_entries.push_back({key, option});
}

void OptionReader::add(const char *key, std::chrono::milliseconds &value, const char *help,
                       std::uint64_t least, std::uint64_t most)
{
    CLI::Option *option = m_app.add_option_function<int>(
        std::string("--") + key,
        [&value](int number) { value = std::chrono::milliseconds(number); }, help);
    Argument(option).showDefault(std::to_string(value.count())).between(least, most);
    m_entries.push_back({key, option});
}

template <typename Choice>
void OptionReader::add(const char *key, Choice &value, const char *help,
                       const std::vector<std::pair<std::string, Choice>> &choices)
{
    std::vector<std::string> names;
    std::string usual;
    for (const auto &[name, choice] : choices) {
        names.push_back(name);
        if (choice == value)
            usual = name;
    }
    const auto choose = [&value, &choices](const std::string &typed) {
        for (const auto &[name, choice] : choices) {
            if (name == typed)
                value = choice;
        }
    };
    CLI::Option *option =
        m_app.add_option_function<std::string>(std::string("--") + key, choose, help);
    Argument(option).showDefault(usual).oneOf(names);
    m_entries.push_back({key, option});
}

void OptionReader::addSection(const char *section, const CommandDefinition &command,
                              const QStringList &keys, const QStringList &paths,
                              const char *variable)
{
    for (const QString &key : keys) {
        Entry entry;
        entry.key = QString(section) + '.' + key;
        entry.option = command.option("--" + key.toStdString());
        if (paths.contains(key))
            entry.fromFile = besideFile;
        entry.variable = key == keys.front() ? variable : nullptr;
        entry.isOfCommand = true;
        m_entries.push_back(entry);
    }
}

Options OptionReader::read()
{
    for (Entry &entry : m_entries) {
        if (entry.option->count() > 0)
            entry.source = COMMAND_LINE;
    }
    if (m_app.get_option("--config")->count() > 0)
        readFile(toQString(m_file));
    else if (QFileInfo::exists(DEFAULT_FILE))
        readFile(DEFAULT_FILE);
    readEnvironment();
    m_options.isFormatAsked = m_app.get_option("--format")->count() > 0;
    return m_options;
}

std::vector<OptionReader::Row> OptionReader::rows() const
{
    std::vector<Row> rows;
    for (const Entry &entry : m_entries) {
        if (entry.isOfCommand && entry.option->count() == 0)
            continue;
        const QString value = entry.option->count() > 0
                                  ? toQString(entry.option->results().back())
                                  : toQString(entry.option->get_default_str());
        rows.push_back({entry.key, value, entry.source});
    }
    const QStringList &tags = m_options.tags;
    rows.push_back({TAGS, tags.join(' '), tags.isEmpty() ? "default" : m_options.tagsSource});
    return rows;
}

void OptionReader::readEnvironment()
{
    for (Entry &entry : m_entries) {
        if (entry.variable == nullptr || qEnvironmentVariableIsEmpty(entry.variable) ||
            entry.source == COMMAND_LINE)
            continue;
        const std::string value = qgetenv(entry.variable).toStdString();
        if (entry.option->count() == 0) {
            entry.option->add_result(value);
            entry.option->run_callback();
            entry.source = QString("environment variable %1").arg(entry.variable);
        } else if (entry.option->results().back() != value) {
            printError(QString("kmr: %1 is %2, from %3; %4=%5 of the environment is not used")
                           .arg(entry.key, toQString(entry.option->results().back()), entry.source,
                                entry.variable, toQString(value)));
        }
    }
}

void OptionReader::readFile(const QString &path)
{
    QStringList known;
    for (const Entry &entry : m_entries)
        known.append(entry.key);
    known.append(TAGS);
    QStringList faults;
    for (const ConfigEntry &entry : parseConfig(readTextFile(path), path, known, {TAGS})) {
        const QString place = placeOf(entry, path);
        try {
            readEntry(entry, path);
        } catch (const Error &error) {
            faults.append(QString("%1: %2").arg(place, error.text()));
        } catch (const CLI::Error &error) {
            const QString option = "--" + entry.key.section('.', -1);
            const QString text = toQString(error.what()).replace(option, entry.key);
            faults.append(QString("%1: %2").arg(place, text));
        }
    }
    if (!faults.isEmpty())
        throw Error(ErrorKind::Usage, faults.join('\n'));
}

// The file's values pass the same checks as those of the command line.
void OptionReader::readEntry(const ConfigEntry &found, const QString &path)
{
    if (!found.fault.isEmpty())
        throw Error(ErrorKind::Usage, found.fault);
    if (found.key == TAGS) {
        m_options.tags = found.values;
        m_options.tagsSource = placeOf(found, path);
        return;
    }
    const auto entry = std::find_if(m_entries.begin(), m_entries.end(),
                                    [&found](const Entry &own) { return own.key == found.key; });
    if (entry->option->count() > 0)
        return;
    const QString value = found.values.front();
    const QString meant = entry->fromFile ? entry->fromFile(value, path) : value;
    entry->option->add_result(meant.toLocal8Bit().toStdString());
    entry->option->run_callback();
    entry->source = placeOf(found, path);
}

} // namespace kmr
