#include "tests/properties/generator.h"

#include <algorithm>
#include <climits>
#include <memory>
#include <random>
#include <utility>

namespace {

const std::vector<int> allStations = {0, 1, 1, 1, 2, 12, 255, 256, 300, -1};

const std::vector<int> boundaries = {
    0,    1,    2,    3,    6,     7,     8,       9,       10,      14,      15,
    16,   17,   18,   20,   31,    32,    33,      47,      48,      77,      78,
    100,  177,  198,  199,  200,   201,   207,     208,     250,     254,     255,
    256,  257,  1520, 1534, 1535,  1536,  1537,    1777,    4080,    4094,    4095,
    4096, 4097, 9998, 9999, 11998, 11999, 23416,   23417,   65535,   65536,   65537,
    -1,   -15,  -16,  -17,  -32,   -4096, INT_MAX, INT_MAX, INT_MIN, INT_MIN, 777777};

const std::vector<int> commonCounts = {1, 1, 1, 1, 2, 2, 3, 4, 5, 7, 8, 9, 12, 15, 16, 17, 20};
const std::vector<int> oddCounts = {-1, 0, 0, 24, 31, 32, 33, 48, 63, 64, 65, 70};

bool endsInside32Bits(const Call &run)
{
    return run.address + (run.count - 1LL) <= INT_MAX;
}

// Areas that are numbered bit by bit from zero on: there is no bit before zero.
bool isLinearBitArea(int area)
{
    return area == M || area == S || area == T || area == C || area == TV_BIT;
}

} // namespace

Choice chosenBySeed(std::uint64_t seed)
{
    const auto random = std::make_shared<std::mt19937_64>(seed);
    return [random](int limit) {
        return static_cast<int>((*random)() % static_cast<std::uint64_t>(limit));
    };
}

Choice chosenByBytes(const std::uint8_t *bytes, std::size_t size)
{
    const std::uint8_t *const end = bytes + size;
    return [bytes, end](int limit) mutable {
        unsigned number = 0;
        for (int covered = 1; covered < limit && bytes != end; covered *= 256)
            number = number * 256 + *bytes++;
        return static_cast<int>(number % static_cast<unsigned>(limit));
    };
}

Generator::Generator(Choice choice, Scope given) : choose(std::move(choice)), scope(given)
{
    for (int i = 0; i < 2; ++i)
        stations.push_back(pick(allStations));
    for (int i = 0; i < 3; ++i)
        areas.push_back(below(100) < 92 ? below(KNOWN_AREAS)
                                        : below(static_cast<int>(areaNames().size())));
    for (int i = 0; i < 3; ++i)
        addresses.push_back(pick(boundaries));
}

// Chooses nothing where only what is defined is asked for.
bool Generator::anything(int percent)
{
    return scope == Scope::Anything && chance(percent);
}

int Generator::anyNumber()
{
    const unsigned high = static_cast<unsigned>(below(1 << 16));
    return static_cast<int>(high << 16 | static_cast<unsigned>(below(1 << 16)));
}

bool Generator::chance(int percent)
{
    return below(100) < percent;
}

template <typename T> T Generator::pick(const std::vector<T> &values)
{
    return values[static_cast<std::size_t>(below(static_cast<int>(values.size())))];
}

int Generator::station()
{
    if (anything(5))
        return anyNumber();
    return chance(90) ? pick(stations) : pick(allStations);
}

int Generator::area()
{
    return chance(90) ? pick(areas) : below(static_cast<int>(areaNames().size()));
}

int Generator::address(int area)
{
    if (anything(5))
        return anyNumber();
    if (area == CV2 && chance(60))
        return 200 + below(12);
    if (chance(15))
        return pick(boundaries);
    const long long near = pick(addresses);
    return static_cast<int>(std::min<long long>(near + (chance(50) ? 0 : below(20)), INT_MAX));
}

int Generator::count()
{
    if (below(1000) == 0)
        return 520 + below(80);
    return chance(90) ? pick(commonCounts) : pick(oddCounts);
}

// A run that ends inside 32 bits.
Call Generator::run(Kind kind)
{
    Call call;
    call.kind = kind;
    call.station = station();
    call.area = area();
    call.address = address(call.area);
    call.count = count();
    call.option = chance(40) ? -1 : 1;
    call.salt = static_cast<unsigned>(below(1 << 20));
    if (scope == Scope::Defined && !endsInside32Bits(call))
        call.count = 1;
    return call;
}

// A short run near `first`, so that the two touch, overlap or leave a gap.
Call Generator::runNear(const Call &first)
{
    Call call = first;
    const long long near = first.address + (below(24) - 12LL);
    call.count = 1 + below(6);
    call.address = static_cast<int>(std::clamp<long long>(near, -16, INT_MAX - call.count));
    return call;
}

Call Generator::init()
{
    static const std::vector<std::string> limits = {"8",  "8",  "8", "8",           "12",
                                                    "3",  "1",  "0", "-1",          " 5 ",
                                                    "+7", "x4", "",  "-2147483648", "-536870911"};
    static const std::vector<std::string> shorts = {"", "1", "#", "1#2#3#4", "####", "#1#2#3#4"};
    Call call;
    call.kind = Kind::Init;
    for (const int null : {NO_STATUS, NO_RECIPE, NO_MUTEX, NO_PROPERTY})
        call.option += chance(3) ? null : 0;
    // One draw in a statement: compilers differ in what they evaluate first.
    call.text = std::to_string(1 + below(2));
    call.text += chance(8) ? "#1#7#" : "#0#7#";
    call.text += std::to_string(below(4)) + "#";
    call.text += pick(limits);
    call.text += chance(5) ? "#9" : "";
    if (chance(4))
        call.text = pick(shorts);
    return call;
}

Call Generator::merge()
{
    Call call;
    call.kind = Kind::Merge;
    const bool dense = chance(40);
    const Call first = run(Kind::Merge);
    for (int i = below(chance(20) ? 16 : 5); i > 0; --i) {
        Call entry = dense && chance(90) ? runNear(first) : run(Kind::Merge);
        // The number of words of less than no bits is defined in two ways that disagree.
        const bool tvBits = scope == Scope::Defined && entry.area == TV_BIT;
        if (tvBits && entry.address % 16 + static_cast<long long>(entry.count) < 0)
            entry.count = 1;
        if (tvBits && entry.address < 0 && entry.address % 16 + entry.count < 0)
            entry.address = 0;
        call.list.push_back(entry);
    }
    return call;
}

Call Generator::recipe()
{
    Call call;
    call.kind = Kind::Recipe;
    call.option = chance(5) ? -1 : 0; // a null list
    for (int i = call.option < 0 ? 0 : below(5); i > 0; --i) {
        Call entry = run(Kind::Recipe);
        if (chance(8)) // near what a frame and a record hold
            entry.count = pick(std::vector<int>{250, 251, 251, 252, 252, 511, 512, 513, 600});
        if (scope == Scope::Defined && !endsInside32Bits(entry))
            entry.count = 1;
        if (scope == Scope::Defined && entry.area == CV2) // words after the 512th don't exist
            entry.count = std::min(entry.count, 512);
        entry.option = below(40);                               // buffer word
        entry.salt = static_cast<unsigned>(chance(80) ? 1 : 2); // device
        call.list.push_back(entry);
    }
    return call;
}

Call Generator::setData()
{
    Call call = run(Kind::SetData);
    if (scope == Scope::Defined && isLinearBitArea(call.area) && call.address < 0) {
        call.address = call.address / 16 * 16;
        call.count = std::min(call.count, 1);
    }
    return call;
}

Call Generator::getData()
{
    Call call = setData();
    call.kind = Kind::GetData;
    call.option = chance(1) ? 1 : 0;
    return call;
}

Call Generator::readOnce()
{
    Call call = run(Kind::ReadOnce);
    call.salt %= 100;
    return call;
}

Call Generator::reply()
{
    Call call;
    call.kind = Kind::Reply;
    call.option = chance(65) ? 0 : below(static_cast<int>(ReplyKind::COUNT));
    call.salt = static_cast<unsigned>(below(1 << 20));
    return call;
}

Call Generator::prepares()
{
    Call call;
    call.kind = Kind::HostPrepares;
    for (int i = 1 + below(4); i > 0; --i) {
        const int kind = below(3);
        call.list.push_back(kind == 0 ? setData() : kind == 1 ? getData() : readOnce());
    }
    return call;
}

std::string Generator::addressText(int area)
{
    static const std::string characters = "0123456789012345678901234567890123456789.. -+a\t";
    static const std::vector<std::string> longOnes = {
        "2147483647",   "2147483648", "134217727.15", "134217728.0", "00000000000017",
        "999999999999", " 12 ",       "9999.15",      "10000.0"};
    if (chance(10))
        return pick(longOnes);
    std::string text;
    if (chance(40)) {
        text = std::to_string(std::max(0, pick(boundaries)));
        text += chance(area == TV_BIT ? 90 : 10) ? "." + std::to_string(below(18)) : "";
        return text;
    }
    for (int i = below(8); i > 0; --i) {
        const auto choice = static_cast<std::size_t>(below(static_cast<int>(characters.size())));
        text += anything(20) ? static_cast<char>(below(256)) : characters[choice];
    }
    return text;
}

Call Generator::editor()
{
    Call call;
    call.kind = pick(std::vector<Kind>{Kind::CheckValidity, Kind::CheckAddr, Kind::Series});
    call.area = below(static_cast<int>(areaNames().size()));
    call.count = chance(97) ? count() : pick(std::vector<int>{INT_MAX, INT_MIN});
    if (call.kind == Kind::Series) {
        call.count = std::min(call.count, 70);
        call.address = address(call.area);
        // The last digit of a negative number is not a digit.
        if (scope == Scope::Defined && (call.area == X || call.area == Y))
            call.address = std::max(call.address, 0);
        call.option = pick(std::vector<int>{1, 1, 1, 2, 3, 5, 16, 0, -1, -2, -3, INT_MAX, 1000});
    } else if (call.kind == Kind::CheckValidity) {
        call.option = chance(50) ? 0 : pick(std::vector<int>{1, -1, 5});
        call.text = addressText(call.area);
    } else {
        call.option = chance(50) ? -1 : below(11);
        call.text = addressText(call.area);
    }
    return call;
}

Call Generator::hostAsks()
{
    Call call;
    call.kind = Kind::HostAsks;
    call.station = chance(50) ? 1 : below(3);
    call.count = chance(50) ? 1 : below(3);
    return call;
}
