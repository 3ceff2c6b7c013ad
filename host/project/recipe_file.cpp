#include "host/project/recipe_file.h"

#include "host/error.h"
#include "host/project/csv.h"

#include <QStringList>

#include <map>
#include <tuple>

namespace kmr {

namespace {

const char *const HEADING = "tag,value";

// Numbers may be separated by commas without quotes. Spreadsheets add empty fields at the end.
Values parseFields(const Tag &tag, QStringList fields)
{
    if (fields.isEmpty())
        throw Error(ErrorKind::Usage, QString("%1 has no value").arg(tag.text));
    if (tag.type == ValueType::Text && fields.size() > 1)
        throw Error(ErrorKind::Usage, QString("%1 has %2 values, expected one text (a field with "
                                              "commas needs quotes)")
                                          .arg(tag.text)
                                          .arg(fields.size()));
    while (tag.type != ValueType::Text && !fields.isEmpty() && fields.back().trimmed().isEmpty())
        fields.removeLast();
    return parseValues(tag, fields.join(','));
}

QString valueField(const RecipeItem &item)
{
    return csvField(formatValues(item.tag, item.values));
}

void checkKind(const Tag &tag)
{
    if (!tag.isWritable) {
        throw Error(ErrorKind::Usage,
                    QString("%1 can't be part of a recipe: it can only be read").arg(tag.text));
    }
}

// The place of each element of a recipe, by station, area and number.
using Places = std::map<std::tuple<int, QString, int>, QString>;

// Throws Error (Usage) for a tag that can't be in a recipe, and for one that has an element of
// an earlier tag.
void addTag(const Tag &tag, const QString &place, Places &places)
{
    checkKind(tag);
    const ElementRange &run = tag.elements;
    for (int number = run.first; number < run.end(); ++number) {
        const auto [known, isNew] = places.insert({{run.station, run.area, number}, place});
        if (!isNew) {
            throw Error(ErrorKind::Usage, QString("%1 appears twice, first in %2")
                                              .arg(elementName(run.area, number), known->second));
        }
    }
}

} // namespace

std::vector<RecipeItem> parseRecipe(const QString &text, const QString &name,
                                    const NamedTagReader &reader, RecipeValues values)
{
    std::vector<RecipeItem> items;
    Places places;
    QStringList faults = readLines(text, name, HEADING, [&](const QString &line, int number) {
        const QStringList fields = splitCsv(line);
        RecipeItem item;
        item.tag = reader.read(fields.front());
        item.line = number;
        addTag(item.tag, QString("line %1").arg(number), places);
        if (values == RecipeValues::Needed || fields.size() > 2)
            item.values = parseFields(item.tag, fields.mid(1));
        items.push_back(item);
    });
    if (items.empty() && faults.isEmpty())
        faults.append(QString("%1: holds no tags").arg(name));
    if (!faults.isEmpty())
        throw Error(ErrorKind::Usage, faults.join('\n'));
    return items;
}

std::vector<RecipeItem> recipeOf(const std::vector<Tag> &tags)
{
    std::vector<RecipeItem> items;
    Places places;
    for (const Tag &tag : tags) {
        addTag(tag, tag.text, places);
        items.push_back({tag, {}});
    }
    return items;
}

QString formatRecipe(const std::vector<RecipeItem> &items)
{
    QString text = QString(HEADING) + '\n';
    for (const RecipeItem &item : items)
        text += item.tag.text + ',' + valueField(item) + '\n';
    return text;
}

QString withValues(const QString &text, const std::vector<RecipeItem> &items)
{
    QStringList lines = text.split('\n');
    for (const RecipeItem &item : items) {
        QString &line = lines[item.line - 1];
        const QString end = line.endsWith('\r') ? "\r" : "";
        line.chop(end.size());
        line = line.section(',', 0, 0) + ',' + valueField(item) + end; // no tag has a comma
    }
    return lines.join('\n');
}

} // namespace kmr
