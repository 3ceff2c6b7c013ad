#include "kmr/options.h"

#include "host/line/link.h"
#include "host/project/text_file.h"
#include "host/tags/tag.h"
#include "kmr/command_line.h"

#include <CLI/CLI.hpp>
#include <QDir>
#include <QFileInfo>

namespace kmr {

namespace {

const char *const DEFAULT_FILE = "kmr.toml";
const char *const TAGS = "tags";

std::string toStd(const QString &text)
{
    return text.toLocal8Bit().toStdString();
}

// A path that the file names, as seen from where kmr runs.
QString besideFile(const QString &value, const QString &file)
{
    return QDir::cleanPath(QDir(QFileInfo(file).path()).filePath(value));
}

QString placeOf(const ConfigEntry &entry, const QString &file)
{
    return QString("%1:%2").arg(file).arg(entry.line);
}

} // namespace

Settings::Settings(CLI::App &app) : m_app(app)
{
    m_configOption = app.add_option("--config", m_config,
                                    "project file (default: kmr.toml in the current folder)");
    add("link", m_link,
        "serial:///dev/ttyUSB0?baud=9600&frame=7E1 or tcp://host:port (environment: KMR_LINK)",
        "KMR_LINK");
    add("driver", m_driver,
        "driver library to load (default: KMR_DRIVER, else libostrel_kmr.so.1 beside kmr, else "
        "the system's)",
        "KMR_DRIVER");
    add("station", m_station, "station of tags that name none")
        ->check(CLI::Range(MIN_STATION, MAX_STATION));
    add("timeout", m_timeout, "milliseconds to wait for an answer")->check(CLI::Range(1, 600000));
    add("retries", m_retries, "times a request is sent again before giving up")
        ->check(CLI::Range(0, 1000));
    add("group-limit", m_groupLimit, "words that a request may carry")->check(CLI::Range(1, 8));
    add("gap", m_gap, "milliseconds of silence before each request")->check(CLI::Range(0, 60000));
    add("echo", m_echo, "does the line hand requests back, as two-wire lines do: on, off or auto")
        ->check(CLI::IsMember({"on", "off", "auto"}));
    add("in-step", m_inStep,
        "check that no answer is taken for another request's, and show only what is confirmed: on "
        "or off")
        ->check(CLI::IsMember({"on", "off"}));
    add("word-order", m_wordOrder, "word of a 32-bit value that comes first: low or high")
        ->check(CLI::IsMember({"low", "high"}));
    add("format", m_format, "records as plain, table, csv, json or jsonl")
        ->check(CLI::IsMember({"plain", "table", "csv", "json", "jsonl"}));
    app.add_flag("--trace", m_trace, "explain all traffic on stderr");
    app.add_option("--capture", m_capture,
                   "write every character with its time to this new file, for 'kmr trace FILE'");
    add("names", m_names, "file of names for tags: name,tag,unit,scale,comment");
}

CLI::Option *Settings::add(const char *key, std::string &value, const char *help,
                           const char *variable)
{
    CLI::Option *option = m_app.add_option(std::string("--") + key, value, help);
    if (!value.empty())
        option->capture_default_str();
    m_settings.push_back({key, option, variable, "default"});
    return option;
}

CLI::Option *Settings::add(const char *key, int &value, const char *help)
{
    CLI::Option *option =
        m_app.add_option(std::string("--") + key, value, help)->capture_default_str();
    m_settings.push_back({key, option, nullptr, "default"});
    return option;
}

Options Settings::resolve()
{
    for (Setting &setting : m_settings) {
        if (setting.option->count() > 0) {
            setting.source = "command line";
        } else if (setting.variable != nullptr && !qEnvironmentVariableIsEmpty(setting.variable)) {
            setting.option->add_result(qgetenv(setting.variable).toStdString());
            setting.option->run_callback();
            setting.source = QString("environment variable %1").arg(setting.variable);
        }
    }
    if (m_configOption->count() > 0)
        applyFile(toQString(m_config));
    else if (QFileInfo::exists(DEFAULT_FILE))
        applyFile(DEFAULT_FILE);

    Options options;
    options.link = toQString(m_link);
    options.driver = toQString(m_driver);
    options.station = m_station;
    options.timeout = std::chrono::milliseconds(m_timeout);
    options.retries = m_retries;
    options.groupLimit = m_groupLimit;
    options.gap = std::chrono::milliseconds(m_gap);
    options.echo = m_echo == "on" ? EchoMode::On : m_echo == "off" ? EchoMode::Off : EchoMode::Auto;
    options.inStep = m_inStep == "on";
    options.wordOrder = m_wordOrder == "high" ? WordOrder::HighFirst : WordOrder::LowFirst;
    options.format = *formatOf(toQString(m_format));
    options.isFormatAsked = find("format")->option->count() > 0;
    options.names = toQString(m_names);
    options.tags = m_tags;
    options.tagsSource = m_tagsSource;
    options.trace = m_trace;
    options.capture = toQString(m_capture);
    return options;
}

std::vector<Settings::Row> Settings::rows() const
{
    std::vector<Row> rows;
    for (const Setting &setting : m_settings) {
        const QString value = setting.option->count() > 0
                                  ? toQString(setting.option->results().back())
                                  : toQString(setting.option->get_default_str());
        rows.push_back({setting.key, value, setting.source});
    }
    rows.push_back({TAGS, m_tags.join(' '), m_tags.isEmpty() ? QString("default") : m_tagsSource});
    return rows;
}

void Settings::applyFile(const QString &path)
{
    QStringList known;
    for (const Setting &setting : m_settings)
        known.append(setting.key);
    known.append(TAGS);
    QStringList faults;
    for (const ConfigEntry &entry : parseConfig(readTextFile(path), path, known, {TAGS})) {
        const QString place = placeOf(entry, path);
        try {
            applyEntry(entry, path);
        } catch (const Error &error) {
            faults.append(QString("%1: %2").arg(place, error.text()));
        } catch (const CLI::Error &error) {
            const QString text = toQString(error.what()).replace("--" + entry.key, entry.key);
            faults.append(QString("%1: %2").arg(place, text));
        }
    }
    if (!faults.isEmpty())
        throw Error(ErrorKind::Usage, faults.join('\n'));
}

// The file's values pass the same checks as those of the command line.
void Settings::applyEntry(const ConfigEntry &entry, const QString &path)
{
    if (!entry.fault.isEmpty())
        throw Error(ErrorKind::Usage, entry.fault);
    if (entry.key == TAGS) {
        m_tags = entry.values;
        m_tagsSource = placeOf(entry, path);
        return;
    }
    Setting &setting = *find(entry.key);
    if (setting.option->count() > 0)
        return;
    QString value = entry.values.front();
    if (entry.key == "names" || (entry.key == "driver" && value.contains('/')))
        value = besideFile(value, path);
    if (entry.key == "link")
        parseLink(value);
    if (entry.key == "names")
        readTextFile(value);
    setting.option->add_result(toStd(value));
    setting.option->run_callback();
    setting.source = placeOf(entry, path);
}

Settings::Setting *Settings::find(const QString &key)
{
    for (Setting &setting : m_settings) {
        if (setting.key == key)
            return &setting;
    }
    return nullptr;
}

} // namespace kmr
