#include "host/project/project_file.h"

#include "host/error.h"
#include "host/tags/nearest.h"

#include <toml++/toml.h>

#include <algorithm>

namespace kmr {

namespace {

QString toQString(std::string_view text)
{
    return QString::fromUtf8(text.data(), static_cast<int>(text.size()));
}

// False for dates and tables, which are not valid settings.
bool appendScalar(const toml::node &node, QStringList &values)
{
    if (const auto *text = node.as_string())
        values.append(toQString(text->get()));
    else if (const auto *number = node.as_integer())
        values.append(QString::number(number->get()));
    else if (const auto *real = node.as_floating_point())
        values.append(QString::number(real->get(), 'g', 15));
    else if (const auto *flag = node.as_boolean())
        values.append(flag->get() ? "true" : "false");
    else
        return false;
    return true;
}

bool readValues(const toml::node &node, bool isList, QStringList &values)
{
    const toml::array *const array = node.as_array();
    if (array == nullptr)
        return appendScalar(node, values);
    return isList && std::all_of(array->begin(), array->end(), [&values](const toml::node &item) {
               return appendScalar(item, values);
           });
}

bool isSection(const QString &key, const QStringList &known)
{
    return std::any_of(known.begin(), known.end(),
                       [&key](const QString &one) { return one.startsWith(key + '.'); });
}

// `section`: "publish." or empty.
void appendEntries(const toml::table &table, const QString &section, const QStringList &known,
                   const QStringList &lists, std::vector<ConfigEntry> &entries)
{
    for (const auto &[name, node] : table) {
        const int line = static_cast<int>(name.source().begin.line);
        ConfigEntry entry{section + toQString(name.str()), {}, line, {}};
        const toml::table *const inner = node.as_table();
        if (inner != nullptr && isSection(entry.key, known)) {
            appendEntries(*inner, entry.key + '.', known, lists, entries);
            continue;
        }
        const bool isList = lists.contains(entry.key);
        if (!known.contains(entry.key))
            entry.fault = QString("unknown key \"%1\"%2; the keys are %3")
                              .arg(entry.key, didYouMean(entry.key, known), known.join(", "));
        else if (!readValues(node, isList, entry.values))
            entry.fault =
                QString("%1: expected %2")
                    .arg(entry.key, isList ? "text or a list of texts" : "one text or number");
        entries.push_back(entry);
    }
}

} // namespace

std::vector<ConfigEntry> parseConfig(const QString &text, const QString &file,
                                     const QStringList &known, const QStringList &lists)
{
    toml::table table;
    try {
        table = toml::parse(text.toStdString());
    } catch (const toml::parse_error &error) {
        throw Error(ErrorKind::Usage, QString("%1:%2: not TOML: expected lines such as link = "
                                              "\"tcp://192.168.0.10:8888\" or station = 2 (%3)")
                                          .arg(file)
                                          .arg(error.source().begin.line)
                                          .arg(toQString(error.description())));
    }
    std::vector<ConfigEntry> entries;
    appendEntries(table, {}, known, lists, entries);
    std::sort(entries.begin(), entries.end(),
              [](const ConfigEntry &a, const ConfigEntry &b) { return a.line < b.line; });
    return entries;
}

} // namespace kmr
