#include "host/session/recipe_transfer.h"

#include "host/error.h"
#include "host/session/read_once.h"
#include "host/session/request_ranges.h"

#include <algorithm>

namespace kmr {

namespace {

using Outcome = RequestResult::Outcome;
using Ranges = std::vector<ElementRange>;

bool isBits(const RecipeItem &item)
{
    return isBitArea(item.tag.elements.area);
}

// The tags of the items that are bits, or of the others.
std::vector<Tag> tagsOf(const std::vector<RecipeItem> &items, bool ofBits)
{
    std::vector<Tag> tags;
    for (const RecipeItem &item : items) {
        if (isBits(item) == ofBits)
            tags.push_back(item.tag);
    }
    return tags;
}

// Words of one element in the recipe buffer.
int wordsEach(const QString &area)
{
    return isBitArea(area) ? 0 : isCounterArea(area) ? 2 : 1;
}

// The driver's entries for the requests from `begin` to `end`; their values are in the buffer from
// `word` on.
QVector<_RCP_VAR_PRO> layOut(Ranges::const_iterator begin, Ranges::const_iterator end, int word)
{
    QVector<_RCP_VAR_PRO> entries;
    for (auto run = begin; run != end; ++run) {
        _RCP_VAR_PRO entry;
        entry.devId = Session::DEVICE;
        entry.station = run->station;
        entry.area = run->area;
        entry.address = shownNumber(run->area, run->first);
        entry.count = run->count * wordsEach(run->area);
        entry.bufWord = word;
        entries.append(entry);
        word += entry.count;
    }
    return entries;
}

int wordsOf(const QVector<_RCP_VAR_PRO> &entries)
{
    int words = 0;
    for (const _RCP_VAR_PRO &entry : entries)
        words += entry.count;
    return words;
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
        if (isBits(item))
            continue;
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

QString nameOf(const ElementRange &run)
{
    return QString("%1#%2").arg(run.station).arg(elementName(run.area, run.first));
}

// Stores the result of the requests from `finished` on.
void add(const RequestResult &result, const RecipeProgress &progress, const Ranges &runs,
         TransferResult &transfer)
{
    transfer.result = result;
    const std::size_t failed = static_cast<std::size_t>(transfer.finished + progress.failed);
    transfer.finished += progress.finished;
    transfer.unsure = progress.unsure;
    if (!result.isDone() && failed < runs.size())
        transfer.failedName = nameOf(runs[failed]);
}

// Writes one bit; the result is that of a transfer of one entry.
RequestResult writeBit(Session &session, const ElementRange &bit, std::uint32_t value,
                       RecipeProgress &progress)
{
    const RequestResult result = session.write(bit, {value});
    progress.finished = result.isDone() ? 1 : 0;
    progress.unsure =
        result.outcome == Outcome::NoAnswer || result.outcome == Outcome::Unknown ? 1 : 0;
    return result;
}

Values bitValues(const std::vector<RecipeItem> &items)
{
    Values values;
    for (const RecipeItem &item : items) {
        if (isBits(item))
            values.insert(values.end(), item.values.begin(), item.values.end());
    }
    return values;
}

// Reads the items that are bits. `requests`: the number of requests for them.
void uploadBits(Session &session, int requests, std::vector<RecipeItem> &items,
                TransferResult &transfer)
{
    const std::vector<Tag> tags = tagsOf(items, true);
    const std::vector<Reading> readings = readNow(session, tags);
    for (std::size_t i = 0; i < tags.size(); ++i) {
        if (!readings[i].result.isDone()) {
            transfer.result = readings[i].result;
            transfer.failedName = nameOf(tags[i].elements);
            return;
        }
    }
    auto reading = readings.begin();
    for (RecipeItem &item : items) {
        if (isBits(item))
            item.values = (reading++)->values;
    }
    transfer.finished += requests;
}

} // namespace

std::vector<ElementRange> downloadRanges(const Session &session,
                                         const std::vector<RecipeItem> &items)
{
    std::vector<Tag> tags;
    for (const RecipeItem &item : items)
        tags.push_back(item.tag);
    return writeRanges(tags, session.groupLimit());
}

std::vector<ElementRange> uploadRanges(const Session &session, const std::vector<RecipeItem> &items)
{
    Ranges runs = writeRanges(tagsOf(items, false), session.groupLimit(),
                              session.keepsInStep() ? Neighbours::Unlike : Neighbours::Any);
    const Ranges bits = session.ranges(tagsOf(items, true));
    runs.insert(runs.end(), bits.begin(), bits.end());
    return runs;
}

TransferResult download(Session &session, const std::vector<RecipeItem> &items)
{
    checkSize(items);
    fillBuffer(session.recipeBuffer(), items);
    const Ranges runs = downloadRanges(session, items);
    const Values bits = bitValues(items);
    TransferResult transfer;
    transfer.requests = static_cast<int>(runs.size());
    transfer.result.outcome = Outcome::Done;
    auto bit = bits.begin();
    int word = 0;
    for (auto run = runs.begin(); run != runs.end() && transfer.result.isDone();) {
        RecipeProgress progress;
        RequestResult result;
        if (isBitArea(run->area)) {
            result = writeBit(session, *run++, *bit++, progress);
        } else {
            const auto end = std::find_if(
                run, runs.end(), [](const ElementRange &other) { return isBitArea(other.area); });
            const QVector<_RCP_VAR_PRO> entries = layOut(run, end, word);
            result = session.transferRecipe(entries, Session::Transfer::Download, progress);
            word += wordsOf(entries);
            run = end;
        }
        add(result, progress, runs, transfer);
    }
    return transfer;
}

TransferResult upload(Session &session, std::vector<RecipeItem> &items)
{
    checkSize(items);
    const Ranges runs = uploadRanges(session, items);
    const auto bits = std::find_if(runs.begin(), runs.end(),
                                   [](const ElementRange &run) { return isBitArea(run.area); });
    TransferResult transfer;
    transfer.requests = static_cast<int>(runs.size());
    RecipeProgress progress;
    const RequestResult result =
        session.transferRecipe(layOut(runs.begin(), bits, 0), Session::Transfer::Upload, progress);
    add(result, progress, runs, transfer);
    std::vector<RecipeItem> found = items;
    if (transfer.result.isDone()) {
        takeFromBuffer(session.recipeBuffer(), found);
        if (bits != runs.end())
            uploadBits(session, static_cast<int>(runs.end() - bits), found, transfer);
    }
    if (transfer.result.outcome == Outcome::Unknown)
        transfer.result.outcome = Outcome::NoAnswer; // a read changes nothing
    if (transfer.result.isDone())
        items = found;
    return transfer;
}

} // namespace kmr
