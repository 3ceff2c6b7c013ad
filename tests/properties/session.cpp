#include "tests/properties/session.h"

#include "tests/properties/controller.h"
#include "tests/properties/internal_state.h"
#include "tests/properties/side.h"

#include <algorithm>

namespace {

bool fails(const std::vector<Call> &calls)
{
    return !firstDifference(calls).empty();
}

// Drops pieces of `items`, large ones first, as long as `stillFails` holds for what is left.
template <typename Predicate>
void dropNeedless(std::vector<Call> &items, const Predicate &stillFails)
{
    for (size_t size = std::max<size_t>(items.size() / 2, 1); size > 0; size /= 2) {
        for (size_t start = items.size(); start > 0;) {
            start -= std::min(start, size);
            std::vector<Call> fewer = items;
            const auto from = fewer.begin() + static_cast<std::ptrdiff_t>(start);
            const size_t number = std::min(size, items.size() - start);
            fewer.erase(from, from + static_cast<std::ptrdiff_t>(number));
            if (stillFails(fewer))
                items = fewer;
        }
    }
}

} // namespace

std::string firstDifference(const std::vector<Call> &calls)
{
    RealSide real;
    ModelSide reference;
    Controller controller;
    for (size_t i = 0; i < calls.size(); ++i) {
        const Call &call = calls[i];
        std::string reply;
        const std::optional<model::Frame> &inFlight = reference.state().inFlight;
        if (call.kind == Kind::Reply)
            reply = controller.reply(inFlight ? inFlight->text : "", call);
        else if (call.kind == Kind::ControllerMoves)
            controller.move(call.salt);
        reference.perform(call, reply);
        real.perform(call, reply);
        std::string difference = real.difference(reference);
        if (difference.empty())
            difference = internalDifference(reference.state());
        if (!difference.empty())
            return "at call " + std::to_string(i + 1) + ", " + printed(call) + ":\n  " + difference;
    }
    return real.differenceOfMemory(reference);
}

std::uint64_t traceOf(const std::vector<Call> &calls)
{
    RealSide real;
    Controller controller;
    std::uint64_t hash = 0xCBF29CE484222325U; // FNV-1a, 64 bits
    for (const Call &call : calls) {
        std::string reply;
        if (call.kind == Kind::Reply)
            reply = controller.reply(real.frameOut(), call);
        else if (call.kind == Kind::ControllerMoves)
            controller.move(call.salt);
        real.perform(call, reply);
        for (const char character : real.seen())
            hash = (hash ^ static_cast<unsigned char>(character)) * 0x100000001B3U;
    }
    return hash;
}

std::vector<Call> shrunk(std::vector<Call> calls)
{
    dropNeedless(calls, fails);
    for (size_t i = 0; i < calls.size(); ++i) {
        std::vector<Call> list = calls[i].list;
        dropNeedless(list, [&calls, i](const std::vector<Call> &fewer) {
            std::vector<Call> changed = calls;
            changed[i].list = fewer;
            return fails(changed);
        });
        calls[i].list = list;
    }
    dropNeedless(calls, fails);
    return calls;
}

long exportedCalls(const std::vector<Call> &calls)
{
    return std::count_if(calls.begin(), calls.end(), isExported);
}
