// Random hosts: sessions of calls whose arguments really collide, a few stations, areas and
// addresses each, near every boundary that the driver knows. A seed chooses, or the bytes of a
// fuzzer do.
#pragma once

#include "tests/properties/call.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

// Chooses a number from 0 to `limit` - 1.
using Choice = std::function<int(int limit)>;

// The same numbers with every compiler.
Choice chosenBySeed(std::uint64_t seed);

// `bytes` must outlive the choice. It is always 0 when they are used up.
Choice chosenByBytes(const std::uint8_t *bytes, std::size_t size);

enum class Scope {
    Defined, // calls of which the model knows what is right
    Anything // any numbers and texts, which the driver has to survive, and every build alike
};

class Generator {
public:
    explicit Generator(Choice choice, Scope scope = Scope::Defined);

    // A whole session of about a hundred calls, loading to unloading; one in two hundred fills a
    // queue and empties it, in more than a thousand calls.
    std::vector<Call> session();

private:
    int below(int limit)
    {
        return choose(limit);
    }
    bool anything(int percent);
    int anyNumber();
    bool chance(int percent);
    template <typename T> T pick(const std::vector<T> &values);

    int station();
    int area();
    int address(int area);
    int count();
    Call run(Kind kind);
    Call runNear(const Call &first);

    Call init();
    Call merge();
    Call recipe();
    Call setData();
    Call getData();
    Call readOnce();
    Call reply();
    Call prepares();
    Call editor();
    Call hostAsks();
    Call other();
    std::string addressText(int area);
    std::vector<Call> mixedSession();
    std::vector<Call> queueSession();
    void addTransfer(std::vector<Call> &calls);
    void addExchanges(std::vector<Call> &calls, int number);

    Choice choose;
    Scope scope;
    std::vector<int> stations; // that this session prefers
    std::vector<int> areas;
    std::vector<int> addresses;
};
