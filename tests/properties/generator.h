// Random sessions whose arguments really collide: a few stations, areas and addresses each, near
// every boundary that the driver knows.
#pragma once

#include "tests/properties/call.h"

#include <cstdint>
#include <random>
#include <vector>

class Generator {
public:
    explicit Generator(std::uint64_t seed);

    // A whole session of about a hundred calls, loading to unloading; one in two hundred fills a
    // queue and empties it, in more than a thousand calls.
    std::vector<Call> session();

private:
    int below(int limit);
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

    std::mt19937_64 random;
    std::vector<int> stations; // that this session prefers
    std::vector<int> areas;
    std::vector<int> addresses;
};
