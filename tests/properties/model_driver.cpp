#include "tests/properties/model_driver.h"

#include "tests/properties/model_address.h"

#include <algorithm>

namespace model {
namespace {

std::vector<std::string> splitAtHash(const std::string &text)
{
    std::vector<std::string> pieces(1);
    for (const char c : text) {
        if (c == '#')
            pieces.emplace_back();
        else
            pieces.back() += c;
    }
    return pieces;
}

// A newer request for the same target replaces the queued one, but the front is never touched; the
// 513th place takes everything that does not fit.
void enqueue(Driver::Queue &queue, const Variable &request)
{
    for (size_t i = queue.size(); i > 1; --i) {
        if (sameTarget(queue[i - 1], request)) {
            queue[i - 1] = request;
            return;
        }
    }
    if (queue.size() == 513)
        queue.back() = request;
    else
        queue.push_back(request);
}

} // namespace

// --- The store ---------------------------------------------------------------------------------

Element &Driver::at(int station, const std::string &area, long long index)
{
    const Key key(station, area, static_cast<int>(index));
    const auto [entry, created] = store.try_emplace(key);
    if (created)
        storeOrder.push_back(key);
    return entry->second;
}

void Driver::tell(int link, int station, const std::string &area, int address)
{
    if (callback)
        callback(link, station, area, address);
}

void Driver::tellChange(int station, const std::string &area, int address)
{
    if (!reportedByBits(area)) {
        if (at(station, area, address).watched)
            tell(devId, station, area, address);
        return;
    }
    const unsigned watched = at(station, area, address / 16).watchedBits;
    if (address % 16 >= 0 && (watched >> (address % 16) & 1U) != 0)
        tell(devId, station, area, area == "X" || area == "Y" ? toOctalDigits(address) : address);
}

void Driver::tellChangedBits(int station, const std::string &area, int block, Bytes old, Bytes next)
{
    const unsigned watched = at(station, area, block).watchedBits;
    for (int k = 0; k < 16; ++k) {
        const auto byte = static_cast<size_t>(k / 8);
        if ((watched >> k & 1U) != 0 && ((old[byte] ^ next[byte]) >> (k % 8) & 1) != 0)
            tell(devId, station, area,
                 area == "X" || area == "Y" ? toOctalDigits(block * 16 + k) : block * 16 + k);
    }
}

// --- Configuration and polling -----------------------------------------------------------------

void Driver::initProperty(unsigned char *statusBlock, unsigned char *recipeWords, bool withMutex,
                          const std::string &property)
{
    const std::vector<std::string> pieces = splitAtHash(property);
    if (pieces.size() >= 5) {
        devId = decimal(pieces[0]).value_or(0);
        writeQueueOff = decimal(pieces[1]).value_or(0);
        propToken3 = decimal(pieces[2]).value_or(0);
        retryLimit = decimal(pieces[3]).value_or(0);
        groupLimit = std::min(decimal(pieces[4]).value_or(0), 8);
    }
    status = withMutex ? statusBlock : nullptr;
    recipeBuffer = recipeWords;
    cyclicReads.clear();
    pendingWrites.clear();
    pendingReads.clear();
    store.clear();
    storeOrder.clear();
    state = NOTHING;
    burstCount = 0;
    retryCount = 0;
    commError = false;
    inFlight.reset();
}

int Driver::setRcpAddress(const std::vector<RecipeEntry> &list)
{
    recipe.clear();
    std::copy_if(list.begin(), list.end(), std::back_inserter(recipe),
                 [this](const RecipeEntry &entry) { return entry.devId == devId; });
    return static_cast<int>(recipe.size());
}

int Driver::addrMerge(const std::vector<Run> &runs)
{
    for (auto &entry : store) {
        entry.second.watched = false;
        entry.second.watchedBits = 0;
    }
    for (const Run &run : runs)
        watch(run);
    const std::vector<Variable> plan = pollPlan(runs, groupLimit);
    cyclicReads.assign(plan.begin(), plan.end());
    return static_cast<int>(plan.size());
}

void Driver::watch(const Run &run)
{
    for (int i = 0; i < run.count; ++i) {
        if (reportedByBits(run.area)) {
            const long long bit = static_cast<long long>(linearAddress(run.area, run.address)) + i;
            Element &element = at(run.station, run.area, bit / 16);
            if (bit % 16 >= 0)
                element.watchedBits |= 1U << (bit % 16);
        } else {
            at(run.station, run.area, static_cast<long long>(run.address) + i).watched = true;
        }
    }
}

void Driver::addConditionRead(const Run &run, int reqTag)
{
    const int limit = static_cast<int>(std::max((run.bits ? 8LL : 1LL) * groupLimit, 1LL));
    int done = 0;
    do {
        Variable piece;
        piece.reqTag = reqTag;
        piece.station = run.station;
        piece.area = run.area;
        piece.address = run.address + done;
        piece.count = std::min(run.count - done, limit);
        done += limit;
        if (holdsBits(run.area)) { // queued as words, from where the run's first word starts
            piece.address /= 16;
            piece.count = piece.count / 16 + (piece.count % 16 != 0 ? 1 : 0);
        }
        enqueue(pendingReads, piece);
        lastVar = piece;
    } while (done < run.count);
}

// --- Choosing what to send ---------------------------------------------------------------------

std::optional<Frame> Driver::getSendFrame()
{
    if (!inFlight) {
        const bool download = status && status[DOWNLOAD_FLAG] == 1;
        const bool upload = status && status[UPLOAD_FLAG] == 1;
        if (!(download || upload ? chooseRecipe(download) : chooseFromLists()))
            return {};
    }
    return inFlight;
}

bool Driver::chooseRecipe(bool download)
{
    if (recipeCursor >= static_cast<int>(recipe.size())) { // the last request again
        if (state == NOTHING)
            return false;
        send(state, curVar, state == WRITE || state == DOWNLOAD);
        return true;
    }
    const RecipeEntry &entry = recipe[static_cast<size_t>(recipeCursor)];
    Variable var;
    var.reqTag = curVar.reqTag;
    var.station = entry.station;
    var.area = entry.area;
    var.address = entry.address;
    var.count = entry.count;
    const int words = download && recipeBuffer ? std::min(entry.count, 512) : 0;
    for (int word = entry.bufWord; word < entry.bufWord + words; ++word) {
        var.data += static_cast<char>(recipeBuffer[2 * word + 1]);
        var.data += static_cast<char>(recipeBuffer[2 * word]);
    }
    var.data = trimmed(var.data);
    send(download ? DOWNLOAD : UPLOAD, var, download);
    return true;
}

bool Driver::chooseFromLists()
{
    const bool allowance = burstCount < 3;
    if (allowance && !pendingWrites.empty()) {
        ++burstCount;
        send(WRITE, pendingWrites.front(), true);
    } else if (allowance && !pendingReads.empty()) {
        ++burstCount;
        send(ONE_SHOT, pendingReads.front(), false);
    } else if (!cyclicReads.empty()) {
        burstCount = 0;
        send(CYCLIC, cyclicReads.front(), false);
    } else {
        state = NOTHING;
        return false;
    }
    return true;
}

void Driver::send(int newState, const Variable &var, bool asWrite)
{
    state = newState;
    curVar = var;
    inFlight = asWrite ? writeFrame(curVar) : readFrame(curVar);
}

// --- Values ------------------------------------------------------------------------------------

void Driver::getData(int station, const std::string &area, int address, int count,
                     unsigned char *out)
{
    if (!out)
        return;
    if (holdsBits(area)) {
        for (int i = 0; i < count; ++i) {
            const long long bit = static_cast<long long>(linearAddress(area, address)) + i;
            const auto &bytes = at(station, area, bit / 16).current();
            *out++ = (bytes[0] + 256 * bytes[1]) >> (bit % 16) & 1;
        }
    } else if (holdsWords(area) || area == "CV2") {
        const int width = area == "CV2" ? 4 : 2;
        for (int i = 0; i < (area == "CV2" ? count / 2 : count); ++i) {
            const auto &bytes = at(station, area, static_cast<long long>(address) + i).current();
            out = std::copy_n(bytes.begin(), width, out);
        }
    }
}

void Driver::setData(int station, const std::string &area, int address, int count,
                     const unsigned char *data, int reqTag)
{
    const bool bits = holdsBits(area);
    const bool words = holdsWords(area) || area == "CV2";
    const int limit = bits ? 1 : std::max(groupLimit, 1);
    for (int done = 0; (bits || words) && writeQueueOff == 0 && done < count; done += limit) {
        Variable request;
        request.reqTag = reqTag;
        request.station = station;
        request.area = area;
        request.address = address + done;
        request.count = std::min(limit, count - done);
        for (int i = done; i < done + request.count; ++i) {
            if (bits)
                request.data += static_cast<char>(data[i]);
            else
                request.data +=
                    {static_cast<char>(data[2 * i + 1]), static_cast<char>(data[2 * i])};
        }
        request.data = trimmed(request.data);
        enqueue(pendingWrites, request);
    }
    mirror(station, area, address, count, data);
}

void Driver::mirror(int station, const std::string &area, int address, int count,
                    const unsigned char *data)
{
    if (holdsBits(area)) {
        for (int i = 0; i < count; ++i) {
            const int bit = linearAddress(area, address) + i;
            Element &element = at(station, area, bit / 16);
            const auto byte = static_cast<size_t>(bit % 16 / 8);
            const int mask = 1 << (bit % 8);
            const int old = element.current()[byte];
            const int changed = data[i] == 1 ? old | mask : old & ~mask;
            if (changed != old)
                tellChange(station, area, bit);
            element.written[byte] = static_cast<unsigned char>(changed);
            element.pending = true;
        }
    } else if (holdsWords(area) || area == "CV2") {
        const int width = area == "CV2" ? 4 : 2;
        for (int i = 0; i < 2 * count / width; ++i) {
            const unsigned char *bytes = data + i * width;
            Element &element = at(station, area, static_cast<long long>(address) + i);
            if (!std::equal(bytes, bytes + width, element.current().begin()))
                tellChange(station, area, address + i);
            std::copy_n(bytes, width, element.written.begin());
            element.pending = true;
        }
    }
}

} // namespace model
