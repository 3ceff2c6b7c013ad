#include "host/project/project_edit.h"

#include "host/error.h"
#include "host/project/project_file.h"
#include "host/project/project_settings.h"

#include <QRegularExpression>

#include <algorithm>
#include <vector>

namespace kmr {

namespace {

const QString TAGS("tags");
const QStringList PATHS = {"driver",       "names",
                           "publish.ca",   "publish.certificate",
                           "publish.key",  "publish.credentials",
                           "publish.spool"};

struct Edit {
    TextSpan span; // that is replaced
    QString text;
};

QString apply(QString text, std::vector<Edit> edits)
{
    std::stable_sort(edits.begin(), edits.end(), [](const Edit &left, const Edit &right) {
        return left.span.begin < right.span.begin;
    });
    for (auto edit = edits.rbegin(); edit != edits.rend(); ++edit)
        text.replace(edit->span.begin, edit->span.end - edit->span.begin, edit->text);
    return text;
}

QString listOf(const QStringList &tags)
{
    QString text = "[\n";
    for (const QString &tag : tags)
        text += "    " + quoted(tag) + ",\n";
    return text + ']';
}

// Edits a list of tags that has a line for each tag, or for some.
class LongList {
public:
    LongList(const QString &text, const ConfigEntry &list) : m_text(text), m_list(list) {}

    std::vector<Edit> edits(const QStringList &tags)
    {
        const int count = static_cast<int>(m_list.values.size());
        int old = 0;
        for (int next = 0; next < tags.size(); ++next) {
            const auto isGone = [&] {
                return old < count && !tags.mid(next).contains(m_list.values[old]) &&
                       m_list.values.mid(old).contains(tags[next]);
            };
            while (isGone())
                remove(old++);
            if (old == count)
                append(tags[next]);
            else if (m_list.values[old] == tags[next])
                ++old;
            else if (tags.mid(next).contains(m_list.values[old]))
                insert(old, tags[next]);
            else
                m_edits.push_back({item(old++), quoted(tags[next])});
        }
        while (old < count)
            remove(old++);
        finish();
        return std::move(m_edits);
    }

private:
    TextSpan item(int number) const
    {
        return m_list.items[static_cast<std::size_t>(number)];
    }

    int lineBegin(int place) const
    {
        return static_cast<int>(m_text.lastIndexOf('\n', place - 1)) + 1;
    }

    // What stands before a place in its line.
    QString before(int place) const
    {
        return m_text.mid(lineBegin(place), place - lineBegin(place));
    }

    // The end of the comma that follows an item, or of the item.
    int endWithComma(int number) const
    {
        static const QRegularExpression comma("\\G\\s*,[ \\t]*");
        const auto match = comma.match(m_text, item(number).end);
        return match.hasMatch() ? static_cast<int>(match.capturedEnd()) : item(number).end;
    }

    void remove(int number)
    {
        static const QRegularExpression rest("\\G[ \\t]*(#[^\\n]*)?\\n");
        TextSpan gone{item(number).begin, endWithComma(number)};
        const auto match = rest.match(m_text, gone.end);
        if (match.hasMatch() && before(gone.begin).trimmed().isEmpty())
            gone = {lineBegin(gone.begin), static_cast<int>(match.capturedEnd())};
        m_edits.push_back({gone, {}});
        m_isLastKept = m_isLastKept && number + 1 < m_list.values.size();
    }

    void insert(int number, const QString &tag)
    {
        const QString indent = before(item(number).begin);
        const QString gap = indent.trimmed().isEmpty() ? '\n' + indent : " ";
        m_edits.push_back({{item(number).begin, item(number).begin}, quoted(tag) + ',' + gap});
    }

    void append(const QString &tag)
    {
        m_appended += "    " + quoted(tag) + ",\n";
    }

    // Appended tags stand on lines of their own before the bracket.
    void finish()
    {
        if (m_appended.isEmpty())
            return;
        const int last = static_cast<int>(m_list.values.size()) - 1;
        if (last >= 0 && m_isLastKept && endWithComma(last) == item(last).end)
            m_edits.push_back({{item(last).end, item(last).end}, ","});
        const int bracket = m_list.span.end - 1;
        const bool isAlone = before(bracket).trimmed().isEmpty();
        const int place = isAlone ? lineBegin(bracket) : bracket;
        m_edits.push_back({{place, place}, isAlone ? m_appended : '\n' + m_appended});
    }

    const QString &m_text;
    const ConfigEntry &m_list;
    std::vector<Edit> m_edits;
    QString m_appended;
    bool m_isLastKept = true;
};

// Where a key may be added: before the first section and the comment over it.
int endOfKeys(const QString &text, const std::vector<ConfigEntry> &entries)
{
    const auto section = std::find_if(entries.begin(), entries.end(),
                                      [](const ConfigEntry &entry) { return entry.isSection; });
    if (section == entries.end())
        return static_cast<int>(text.size());
    int place = 0;
    int end = 0;
    for (int line = 1; line < section->line; ++line) {
        const int next = static_cast<int>(text.indexOf('\n', place)) + 1;
        if (text[place] != '#')
            end = next;
        place = next;
    }
    return end;
}

bool hasTags(const QString &text, const QStringList &tags)
{
    try {
        for (const ConfigEntry &entry : parseConfig(text, {}, {TAGS}, {TAGS})) {
            if (entry.key == TAGS)
                return entry.values == tags;
        }
    } catch (const Error &) { // not TOML
    }
    return false;
}

// A list is written anew if the lines of its tags can't be edited alone, for example because a
// comment stands between a tag and its comma.
std::vector<Edit> tagEdits(const QString &text, const std::vector<ConfigEntry> &entries,
                           const QStringList &tags)
{
    const auto list = std::find_if(entries.begin(), entries.end(),
                                   [](const ConfigEntry &entry) { return entry.key == TAGS; });
    if (list == entries.end()) {
        const int place = endOfKeys(text, entries);
        const bool isLineOpen = place > 0 && text[place - 1] != '\n';
        const QString gap = place < text.size() ? "\n" : "";
        return {
            {{place, place}, (isLineOpen ? "\n" : "") + TAGS + " = " + listOf(tags) + '\n' + gap}};
    }
    std::vector<Edit> whole = {{list->span, listOf(tags)}};
    const bool isLong =
        list->items.size() == static_cast<std::size_t>(list->values.size()) &&
        text.mid(list->span.begin, list->span.end - list->span.begin).contains('\n');
    if (!isLong)
        return whole;
    std::vector<Edit> edits = LongList(text, *list).edits(tags);
    return hasTags(apply(text, edits), tags) ? edits : whole;
}

} // namespace

QString editProject(const QString &text, const QString &from, const QStringList &tags,
                    const QString &to)
{
    const ProjectSettings old = parseProject(text, from);
    const std::vector<ConfigEntry> entries = parseConfig(text, from, {TAGS}, {TAGS});
    std::vector<Edit> edits;
    if (old.tags != tags)
        edits = tagEdits(text, entries, tags);
    for (const ConfigEntry &entry : parseConfig(text, from, PATHS, {})) {
        const QString value = entry.values.value(0); // of other keys there is none
        if (value.isEmpty() || (entry.key == "driver" && !value.contains('/')))
            continue;
        const QString path = absolutePathIn(value, from);
        if (absolutePathIn(value, to) != path)
            edits.push_back({entry.span, quoted(asSeenFrom(to, path))});
    }
    return apply(text, edits);
}

} // namespace kmr
