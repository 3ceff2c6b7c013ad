// The model's side of replies: retries, giving up, decoding and the upkeep of the queues.
#include "tests/properties/model_address.h"
#include "tests/properties/model_driver.h"

#include <algorithm>

namespace model {
namespace {

// The 4-bit value of any character; 0 after the end.
int nibble(const std::string &reply, int position)
{
    if (position < 0 || position >= static_cast<int>(reply.size()))
        return 0;
    const int code = static_cast<unsigned char>(reply[static_cast<size_t>(position)]);
    if (code < '0' || code == 0x40)
        return 0;
    return (code < 0x40 ? code : code - 0x37) & 0x0F;
}

enum ReplyClass { BAD, READ_DATA, WRITE_ACKNOWLEDGED };

ReplyClass classify(const std::string &reply)
{
    if (reply.size() <= 4)
        return BAD;
    const std::string function = reply.substr(3, 2);
    if (function == "10" || function == "05")
        return WRITE_ACKNOWLEDGED;
    return static_cast<unsigned char>(function[0]) > '7' ? BAD : READ_DATA;
}

} // namespace

int Driver::dealRcvFrame(const std::string &reply, std::string &errorInfo)
{
    errorInfo.clear();
    if (!inFlight)
        return 0;
    const Frame frame = *inFlight;
    errorInfo = std::to_string(frame.var.station) + "#" + frame.var.area +
                std::to_string(static_cast<unsigned>(frame.var.address)) + "(" +
                std::to_string(frame.var.count) + ")(" + std::to_string(reply.size()) + ")";

    const ReplyClass kind = classify(reply);
    if (kind == BAD && ++retryCount < retryLimit)
        return 8;
    commError = kind == BAD;
    if (kind == READ_DATA)
        decode(frame, reply);
    else if (state == WRITE)
        settleWrite(frame.var, kind == WRITE_ACKNOWLEDGED);
    if (kind == BAD)
        markFailed(frame);
    inFlight.reset();
    retryCount = 0;
    finishBatch();
    return kind == BAD ? 2 : 1;
}

void Driver::decode(const Frame &frame, const std::string &reply)
{
    const Variable &var = frame.var;
    const bool counters = var.area == "CV2";
    const bool bits = reportedByBits(var.area);
    if (!counters && !bits && !holdsWords(var.area))
        return;
    const size_t width = counters ? 4 : 2; // bytes of an element
    const int digits = static_cast<int>(2 * width);
    const int first = bits ? linearAddress(var.area, var.address) / 16 : var.address;
    for (int i = 0; i < frame.replyDataLen / digits; ++i) {
        Element &element = at(var.station, var.area, first + i);
        Bytes next = element.read;
        for (size_t b = 0; b < width; ++b) {
            const int place = frame.replyDataPos + i * digits + 2 * static_cast<int>(b);
            const int byte = nibble(reply, place) * 16 + nibble(reply, place + 1);
            next[bits ? b : width - 1 - b] = static_cast<unsigned char>(byte);
        }
        element.failed = false;
        if (next != element.read) {
            element.pending = false;
            if (bits)
                tellChangedBits(var.station, var.area, first + i, element.read, next);
            else
                tellChange(var.station, var.area, first + i);
        }
        element.read = next;
        if (!bits && state == UPLOAD)
            upload(i, next, width);
    }
}

// Stores the `i`th element of a transfer in the host's recipe buffer and reports it.
void Driver::upload(int i, const Bytes &bytes, size_t width)
{
    if (!recipeBuffer || recipeCursor >= static_cast<int>(recipe.size()))
        return;
    const int bufWord = recipe[static_cast<size_t>(recipeCursor)].bufWord;
    std::copy_n(bytes.begin(), width, recipeBuffer + 2 * bufWord + i * static_cast<int>(width));
    tell(0, -1, "RWI", bufWord + i);
}

void Driver::settleWrite(const Variable &var, bool success)
{
    for (int i = 0; i < var.count; ++i) {
        if (reportedByBits(var.area)) {
            const int bit = linearAddress(var.area, var.address) + i;
            Element &element = at(var.station, var.area, bit / 16);
            element.pending = false;
            const auto byte = static_cast<size_t>(bit % 16 / 8);
            if (success)
                element.read[byte] = element.written[byte];
            if (success) // treated as a block of that number without a change: not reported
                tellChangedBits(var.station, var.area, bit, {}, {});
            else
                tellChange(var.station, var.area, bit);
        } else {
            Element &element = at(var.station, var.area, var.address + i);
            element.pending = false;
            const size_t width = var.area == "CV2" ? 4 : 2;
            if (success)
                std::copy_n(element.written.begin(), width, element.read.begin());
            tellChange(var.station, var.area, var.address + i);
        }
    }
}

void Driver::markFailed(const Frame &frame)
{
    const Variable &var = frame.var;
    int number = 0;
    if (holdsWords(var.area) || var.area == "CV2")
        number = frame.replyDataLen / 4;
    else if (reportedByBits(var.area))
        number = frame.replyDataLen / 2;
    for (int i = 0; i < number; ++i)
        at(var.station, var.area, static_cast<long long>(var.address) + i).failed = true;
}

void Driver::finishBatch()
{
    if (state == WRITE && !pendingWrites.empty()) {
        pendingWrites.pop_front();
    } else if (state == ONE_SHOT && !pendingReads.empty()) {
        if (sameTarget(pendingReads.front(), lastVar))
            tell(-1, -1, "-1", commError ? -1 : 0);
        pendingReads.erase(pendingReads.begin(),
                           commError ? pendingReads.end() : pendingReads.begin() + 1);
    } else if (state == CYCLIC && !cyclicReads.empty()) {
        std::rotate(cyclicReads.begin(), cyclicReads.begin() + 1, cyclicReads.end());
    } else if (state == DOWNLOAD || state == UPLOAD) {
        if (!commError && ++recipeCursor < static_cast<int>(recipe.size()))
            return;
        recipeCursor = 0;
        if (status)
            status[state == DOWNLOAD ? DOWNLOAD_FLAG : UPLOAD_FLAG] = 0;
    }
}

} // namespace model
