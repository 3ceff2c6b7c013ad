#include "host/session/recipe_transfer.h"

#include "host/error.h"
#include "host/project/csv.h"
#include "host/session/request_ranges.h"

#include <QStringList>

#include <map>
#include <tuple>

namespace kmr {

namespace {

const char *const HEADING = "tag,value";

int wordsEach(const QString &area)
{
    return isCounterArea(area) ? 2 : 1;
}

// All items' requests, one behind the other in the recipe buffer.
QVector<_RCP_VAR_PRO> layOut(const std::vector<RecipeItem> &items, int groupLimit)
{
    QVector<_RCP_VAR_PRO> entries;
    int word = 0;
    for (const ElementRange &run : recipeRanges(items, groupLimit)) {
        _RCP_VAR_PRO entry;
        entry.devId = Session::DEVICE;
        entry.station = run.station;
        entry.area = run.area;
        entry.address = toDriverAddress(run.area, run.first);
        entry.count = run.count * wordsEach(run.area);
        entry.bufWord = word;
        entries.append(entry);
        word += entry.count;
    }
    return entries;
}

void checkSize(const std::vector<RecipeItem> &items)
{
    int words = 0;
    for (const RecipeItem &item : items)
        words += item.tag.count * wordsEach(item.tag.elements.area);
    if (words > Session::RECIPE_WORDS) {
        throw Error(ExitCode::Usage, QString("the recipe has %1 words, but its buffer holds %2: "
                                             "divide it into several files")
                                         .arg(words)
                                         .arg(Session::RECIPE_WORDS));
    }
}

void fillBuffer(quint8 *buffer, const std::vector<RecipeItem> &items)
{
    for (const RecipeItem &item : items) {
        const int bytesEach = 2 * wordsEach(item.tag.elements.area);
        for (const std::uint32_t value : item.values) {
            for (int i = 0; i < bytesEach; ++i)
                *buffer++ = static_cast<quint8>(value >> (8 * i));
        }
    }
}

void takeFromBuffer(const quint8 *buffer, std::vector<RecipeItem> &items)
{
    for (RecipeItem &item : items) {
        const int bytesEach = 2 * wordsEach(item.tag.elements.area);
        item.values.clear();
        for (int k = 0; k < item.tag.count; ++k) {
            std::uint32_t value = 0;
            for (int i = 0; i < bytesEach; ++i)
                value |= std::uint32_t{*buffer++} << (8 * i);
            item.values.push_back(value);
        }
    }
}

TransferResult transfer(Session &session, const std::vector<RecipeItem> &items,
                        Session::Transfer direction)
{
    const QVector<_RCP_VAR_PRO> entries = layOut(items, session.groupLimit());
    TransferResult result;
    result.requests = static_cast<int>(entries.size());
    RecipeProgress progress;
    result.result = session.transferRecipe(entries, direction, progress);
    result.finished = progress.finished;
    result.unsure = progress.unsure;
    if (!result.result.isDone() && progress.failed < result.requests) {
        const _RCP_VAR_PRO &entry = entries.at(progress.failed);
        result.failedName = entry.area + QString::number(entry.address);
    }
    return result;
}

// Numbers may be separated by commas without quotes.
Values parseFields(const Tag &tag, const QStringList &fields)
{
    if (fields.isEmpty())
        throw Error(ExitCode::Usage, QString("%1 has no value").arg(tag.text));
    if (tag.type == ValueType::Text && fields.size() > 1)
        throw Error(ExitCode::Usage, QString("%1 has %2 values, expected one text (a field with "
                                             "commas needs quotes)")
                                         .arg(tag.text)
                                         .arg(fields.size()));
    return parseValues(tag, fields.join(','));
}

QString valueField(const RecipeItem &item)
{
    return csvField(formatValues(item.tag, item.values));
}

void checkKind(const Tag &tag)
{
    if (tag.kind != ElementKind::Word && tag.kind != ElementKind::Counter) {
        throw Error(ExitCode::Usage, QString("%1 can't be part of a recipe: recipes hold words and "
                                             "counters (TV, CV, CV2, D)")
                                         .arg(tag.text));
    }
}

// Where each element of a recipe stands, by its station, area and number.
using Places = std::map<std::tuple<int, QString, int>, QString>;

// Throws Error (Usage) for a tag that no recipe can hold, and for one that shares an element with
// an earlier tag.
void addTag(const Tag &tag, const QString &place, Places &places)
{
    checkKind(tag);
    const ElementRange &run = tag.elements;
    for (int number = run.first; number < run.end(); ++number) {
        const auto [known, isNew] = places.insert({{run.station, run.area, number}, place});
        if (!isNew) {
            throw Error(ExitCode::Usage, QString("%1 stands twice, first in %2")
                                             .arg(elementName(run.area, number), known->second));
        }
    }
}

} // namespace

std::vector<ElementRange> recipeRanges(const std::vector<RecipeItem> &items, int groupLimit)
{
    std::vector<ElementRange> runs;
    for (const RecipeItem &item : items) {
        for (const ElementRange &run : writeRanges(item.tag, groupLimit))
            runs.push_back(run);
    }
    return runs;
}

std::vector<RecipeItem> parseRecipe(const QString &text, const QString &name,
                                    const TagReader &reader, RecipeValues values)
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
        throw Error(ExitCode::Usage, faults.join('\n'));
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

TransferResult download(Session &session, const std::vector<RecipeItem> &items)
{
    checkSize(items);
    fillBuffer(session.recipeBuffer(), items);
    return transfer(session, items, Session::Transfer::Download);
}

TransferResult upload(Session &session, std::vector<RecipeItem> &items)
{
    checkSize(items);
    TransferResult result = transfer(session, items, Session::Transfer::Upload);
    if (result.result.outcome == RequestResult::Outcome::Unknown)
        result.result.outcome = RequestResult::Outcome::NoAnswer; // a read leaves nothing in doubt
    if (result.result.isDone())
        takeFromBuffer(session.recipeBuffer(), items);
    return result;
}

} // namespace kmr
