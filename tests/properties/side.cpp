#include "tests/properties/side.h"

#include <algorithm>
#include <tuple>

namespace {

constexpr size_t RECIPE_BYTES = 2048;

// As text if it is printable, else in hexadecimal.
std::string shown(const std::string &bytes)
{
    static const char *const digits = "0123456789ABCDEF";
    std::string text = "\"";
    for (const char c : bytes) {
        const auto code = static_cast<unsigned char>(c);
        if (code >= ' ' && code < 127)
            text += c;
        else
            text += std::string("\\x") + digits[code / 16] + digits[code % 16];
    }
    return text + "\"";
}

std::string shown(const model::Frame &frame)
{
    const auto n = [](int number) { return std::to_string(number); };
    return "frame " + shown(frame.text) + " replyLen " + n(frame.replyLen) + " replyDataPos " +
           n(frame.replyDataPos) + " replyDataLen " + n(frame.replyDataLen) + " frameSpare " +
           n(frame.frameSpare) + " var {" + n(frame.var.reqTag) + ", " + n(frame.var.station) +
           ", " + shown(frame.var.area) + ", " + n(frame.var.address) + ", " + n(frame.var.count) +
           ", " + shown(frame.var.data) + "}";
}

std::string shown(const Outcome &outcome, const std::vector<Note> &notes)
{
    std::string text = "result " + std::to_string(outcome.result) + " " + shown(outcome.text);
    for (const std::string &entry : outcome.texts)
        text += " " + shown(entry);
    for (const int number : outcome.numbers)
        text += " " + std::to_string(number);
    if (outcome.frame)
        text += " " + shown(*outcome.frame);
    for (const Note &note : notes)
        text += "\n      report (" + std::to_string(note.devId) + ", " +
                std::to_string(note.station) + ", " + shown(note.text) + ", " +
                std::to_string(note.address) + ")";
    return text;
}

} // namespace

bool operator==(const Note &a, const Note &b)
{
    return std::tie(a.devId, a.station, a.text, a.address) ==
           std::tie(b.devId, b.station, b.text, b.address);
}

bool operator==(const Outcome &a, const Outcome &b)
{
    return std::tie(a.result, a.text, a.texts, a.numbers, a.frame) ==
           std::tie(b.result, b.text, b.texts, b.numbers, b.frame);
}

Side::Side() : status(STATUS_BLOCK_BYTES, 0), recipe(RECIPE_BYTES, 0) {}

void Side::perform(const Call &call, const std::string &reply)
{
    notes.clear();
    outcome = Outcome();
    switch (call.kind) {
    case Kind::HostAsks:
        status[STATUS_RECIPE_DOWNLOAD] = static_cast<unsigned char>(call.station);
        status[STATUS_RECIPE_UPLOAD] = static_cast<unsigned char>(call.count);
        break;
    case Kind::HostFillsRecipe:
        for (size_t i = 0; i < recipe.size(); ++i)
            recipe[i] = valueByte(call.salt, static_cast<int>(i));
        break;
    case Kind::HostPrepares:
        prepared.assign(call.list.rbegin(), call.list.rend());
        break;
    case Kind::ControllerMoves:
        break;
    default:
        outcome = exported(call, reply);
    }
}

void Side::report(int devId, int station, const std::string &area, int address)
{
    notes.push_back({devId, station, area, address});
    if (prepared.empty())
        return;
    const Call call = prepared.back();
    prepared.pop_back();
    const Outcome nested = exported(call, {});
    notes.push_back({nested.result, 0, "in callback " + printed(call) + " " + nested.text, 0});
}

std::string Side::seen() const
{
    return shown(outcome, notes) + std::string(recipe.begin(), recipe.end()) +
           std::to_string(status[STATUS_RECIPE_DOWNLOAD]) +
           std::to_string(status[STATUS_RECIPE_UPLOAD]);
}

std::string Side::difference(const Side &other) const
{
    if (outcome == other.outcome && notes == other.notes) {
        if (recipe != other.recipe)
            return "the recipe buffers differ";
        for (const size_t flag : {STATUS_RECIPE_DOWNLOAD, STATUS_RECIPE_UPLOAD}) {
            if (status[flag] != other.status[flag])
                return "status byte " + std::to_string(flag) + " is " +
                       std::to_string(status[flag]) + ", the model has " +
                       std::to_string(other.status[flag]);
        }
        return {};
    }
    return "driver: " + shown(outcome, notes) + "\n  model: " + shown(other.outcome, other.notes);
}

std::string Side::differenceOfMemory(const Side &other) const
{
    return status == other.status ? "" : "the status blocks differ beside the request bytes";
}
