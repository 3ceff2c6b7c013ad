#include "host/project/project_file.h"

#include "host/error.h"
#include "host/tags/nearest.h"

#include <QDir>
#include <QFileInfo>

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

// Finds places that the parser gives as line and column, which counts code points, from 1.
class Places {
public:
    explicit Places(const QString &text) : m_text(text)
    {
        for (int i = 0; i < text.size(); ++i) {
            if (text[i] == '\n')
                m_lines.push_back(i + 1);
        }
    }

    TextSpan of(const toml::node &node) const
    {
        return {placeOf(node.source().begin), placeOf(node.source().end)};
    }

private:
    int placeOf(const toml::source_position &position) const
    {
        int place = m_lines[std::min<std::size_t>(position.line, m_lines.size()) - 1];
        for (toml::source_index column = 1; column < position.column; ++column)
            place += place < m_text.size() && m_text[place].isHighSurrogate() ? 2 : 1;
        return place;
    }

    const QString &m_text;
    std::vector<int> m_lines = {0}; // where they begin
};

// `section`: "publish." or empty.
void appendEntries(const toml::table &table, const QString &section, const QStringList &known,
                   const QStringList &lists, const Places &places,
                   std::vector<ConfigEntry> &entries)
{
    for (const auto &[name, node] : table) {
        const int line = static_cast<int>(name.source().begin.line);
        ConfigEntry entry;
        entry.key = section + toQString(name.str());
        entry.line = line;
        entry.span = places.of(node);
        const toml::table *const inner = node.as_table();
        if (inner != nullptr && isSection(entry.key, known)) {
            appendEntries(*inner, entry.key + '.', known, lists, places, entries);
            continue;
        }
        entry.isSection = inner != nullptr || node.is_array_of_tables();
        if (const toml::array *const items = node.as_array()) {
            for (const toml::node &item : *items)
                entry.items.push_back(places.of(item));
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
    appendEntries(table, {}, known, lists, Places(text), entries);
    std::sort(entries.begin(), entries.end(),
              [](const ConfigEntry &a, const ConfigEntry &b) { return a.line < b.line; });
    return entries;
}

QString quoted(QString text)
{
    return '"' + text.replace('\\', "\\\\").replace('"', "\\\"") + '"';
}

QString absolutePathIn(const QString &value, const QString &file)
{
    return QDir::cleanPath(QDir(QFileInfo(file).absolutePath()).filePath(value));
}

QString asSeenFrom(const QString &file, const QString &path)
{
    const QString relative = QDir(QFileInfo(file).absolutePath()).relativeFilePath(path);
    return relative.startsWith("..") ? path : relative;
}

} // namespace kmr
