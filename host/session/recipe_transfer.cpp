#include "host/session/recipe_transfer.h"

#include "host/error.h"
#include "host/session/request_ranges.h"

namespace kmr {

namespace {

int wordsEach(const QString &area)
{
    return isCounterArea(area) ? 2 : 1;
}

// All items' requests, one after the other in the recipe buffer.
QVector<_RCP_VAR_PRO> layOut(const std::vector<RecipeItem> &items, int groupLimit)
{
    QVector<_RCP_VAR_PRO> entries;
    int word = 0;
    for (const ElementRange &run : recipeRanges(items, groupLimit)) {
        _RCP_VAR_PRO entry;
        entry.devId = Session::DEVICE;
        entry.station = run.station;
        entry.area = run.area;
        entry.address = shownNumber(run.area, run.first);
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
        throw Error(ErrorKind::Usage, QString("the recipe has %1 words, but its buffer holds %2: "
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
        result.failedName =
            QString("%1#%2%3").arg(entry.station).arg(entry.area).arg(entry.address);
    }
    return result;
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
