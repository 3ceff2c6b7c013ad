#include "host/project/project_settings.h"

#include "host/error.h"
#include "host/project/project_file.h"
#include "host/project/text_file.h"

#include <functional>
#include <utility>
#include <vector>

namespace kmr {

namespace {

using std::chrono::milliseconds;

const char *const TAGS = "tags";

template <typename Choice> using Choices = std::vector<std::pair<QString, Choice>>;

const Choices<EchoMode> ECHO_MODES = {
    {"on", EchoMode::On}, {"off", EchoMode::Off}, {"auto", EchoMode::Auto}};
const Choices<bool> ON_OFF = {{"on", true}, {"off", false}};
const Choices<WordOrder> WORD_ORDERS = {{"low", WordOrder::LowFirst},
                                        {"high", WordOrder::HighFirst}};
const Choices<ByteOrder> BYTE_ORDERS = {{"low", ByteOrder::LowFirst},
                                        {"high", ByteOrder::HighFirst}};
const QStringList FORMATS = {"plain", "table", "csv", "json", "jsonl"};

int readNumber(const QString &value, int least, int most)
{
    bool isNumber = false;
    const int number = value.toInt(&isNumber);
    if (!isNumber || number < least || number > most) {
        throw Error(
            ErrorKind::Usage,
            QString("\"%1\" is not a number from %2 to %3").arg(value).arg(least).arg(most));
    }
    return number;
}

template <typename Choice> Choice readChoice(const QString &value, const Choices<Choice> &choices)
{
    QStringList names;
    for (const auto &[name, choice] : choices) {
        if (name == value)
            return choice;
        names.append(name);
    }
    throw Error(ErrorKind::Usage, QString("\"%1\" is none of %2").arg(value, names.join(", ")));
}

template <typename Choice> QString nameOf(Choice value, const Choices<Choice> &choices)
{
    for (const auto &[name, choice] : choices) {
        if (choice == value)
            return name;
    }
    return {};
}

// One key of the file.
struct Key {
    QString name;
    std::function<void(ProjectSettings &, const QString &value, const QString &file)> read;
    // The value as TOML.
    std::function<QString(const ProjectSettings &, const QString &file)> write;
};

Key numberKey(const QString &name, int ProjectSettings::*member, int least, int most)
{
    return {name,
            [=](ProjectSettings &s, const QString &value, const QString &) {
                s.*member = readNumber(value, least, most);
            },
            [=](const ProjectSettings &s, const QString &) { return QString::number(s.*member); }};
}

Key timeKey(const QString &name, milliseconds ProjectSettings::*member, int least, int most)
{
    return {name,
            [=](ProjectSettings &s, const QString &value, const QString &) {
                s.*member = milliseconds(readNumber(value, least, most));
            },
            [=](const ProjectSettings &s, const QString &) {
                return QString::number((s.*member).count());
            }};
}

template <typename Choice>
Key choiceKey(const QString &name, Choice ProjectSettings::*member, const Choices<Choice> &choices)
{
    return {name,
            [=](ProjectSettings &s, const QString &value, const QString &) {
                s.*member = readChoice(value, choices);
            },
            [=](const ProjectSettings &s, const QString &) {
                return quoted(nameOf(s.*member, choices));
            }};
}

std::vector<Key> pathKeys()
{
    return {
        {"link",
         [](ProjectSettings &s, const QString &value, const QString &) {
             parseLink(value);
             s.link = value;
         },
         [](const ProjectSettings &s, const QString &) { return quoted(s.link); }},
        {"driver",
         [](ProjectSettings &s, const QString &value, const QString &file) {
             s.driver = value.contains('/') ? absolutePathIn(value, file) : value;
         },
         [](const ProjectSettings &s, const QString &file) {
             return quoted(s.driver.contains('/') ? asSeenFrom(file, s.driver) : s.driver);
         }},
        {"names",
         [](ProjectSettings &s, const QString &value, const QString &file) {
             s.names = absolutePathIn(value, file);
             readTextFile(s.names);
         },
         [](const ProjectSettings &s, const QString &file) {
             return quoted(asSeenFrom(file, s.names));
         }},
        {"format",
         [](ProjectSettings &s, const QString &value, const QString &) {
             if (!FORMATS.contains(value))
                 throw Error(ErrorKind::Usage,
                             QString("\"%1\" is none of %2").arg(value, FORMATS.join(", ")));
             s.format = value;
         },
         [](const ProjectSettings &s, const QString &) { return quoted(s.format); }},
    };
}

// All but the tags, in the order in which a file is written.
const std::vector<Key> &keys()
{
    static const std::vector<Key> all = [] {
        std::vector<Key> list = pathKeys();
        list.push_back(numberKey("station", &ProjectSettings::station, MIN_STATION, MAX_STATION));
        list.push_back(timeKey("timeout", &ProjectSettings::timeout, 1, 600000));
        list.push_back(numberKey("retries", &ProjectSettings::retries, 0, 1000));
        list.push_back(numberKey("group-limit", &ProjectSettings::groupLimit, 1, 8));
        list.push_back(timeKey("gap", &ProjectSettings::gap, 0, 60000));
        list.push_back(choiceKey("echo", &ProjectSettings::echo, ECHO_MODES));
        list.push_back(choiceKey("in-step", &ProjectSettings::inStep, ON_OFF));
        list.push_back(choiceKey("word-order", &ProjectSettings::wordOrder, WORD_ORDERS));
        list.push_back(choiceKey("byte-order", &ProjectSettings::byteOrder, BYTE_ORDERS));
        return list;
    }();
    return all;
}

void readEntry(const ConfigEntry &entry, const QString &path, ProjectSettings &settings)
{
    if (!entry.fault.isEmpty())
        throw Error(ErrorKind::Usage, entry.fault);
    if (entry.key == TAGS) {
        settings.tags = entry.values;
        return;
    }
    for (const Key &key : keys()) {
        if (key.name == entry.key)
            key.read(settings, entry.values.front(), path);
    }
}

} // namespace

ProjectSettings parseProject(const QString &text, const QString &path)
{
    QStringList known;
    for (const Key &key : keys())
        known.append(key.name);
    known.append(TAGS);
    ProjectSettings settings;
    QStringList faults;
    for (const ConfigEntry &entry : parseConfig(text, path, known, {TAGS})) {
        if (entry.isSection)
            continue; // of a command
        try {
            readEntry(entry, path, settings);
        } catch (const Error &error) {
            const QString key = entry.fault.isEmpty() ? entry.key + ": " : QString();
            faults.append(QString("%1:%2: %3%4").arg(path).arg(entry.line).arg(key, error.text()));
        }
    }
    if (!faults.isEmpty())
        throw Error(ErrorKind::Usage, faults.join('\n'));
    return settings;
}

ProjectSettings readProject(const QString &path)
{
    return parseProject(readTextFile(path), path);
}

QString formatProject(const ProjectSettings &settings, const QString &path)
{
    QString text;
    for (const Key &key : keys()) {
        const QString value = key.write(settings, path);
        if (value != key.write(ProjectSettings(), path))
            text += QString("%1 = %2\n").arg(key.name, value);
    }
    if (!settings.tags.isEmpty())
        text += "tags = [\n";
    for (const QString &tag : settings.tags)
        text += QString("    %1,\n").arg(quoted(tag));
    if (!settings.tags.isEmpty())
        text += "]\n";
    return text;
}

SessionSettings sessionSettingsOf(const ProjectSettings &settings, const LinkAddress &address)
{
    SessionSettings session;
    session.poll.timeout = settings.timeout;
    session.poll.characterTime = characterTime(address);
    session.poll.firstQuiet = quietBeforeUse(session.poll.characterTime);
    session.poll.echo = settings.echo;
    session.poll.inStep = settings.inStep;
    session.poll.gap = settings.gap;
    session.retries = settings.retries;
    session.groupLimit = settings.groupLimit;
    return session;
}

} // namespace kmr
