// Sessions of random exported calls, made to the loaded library and to the model of it, compared
// call by call: results, frames field by field, error texts, values, reports of the callback in
// their order, what stands in the host's recipe buffer and status block, and that the mutex is free
// again.
//
// Not generated, because nothing says what is right:
//  - runs whose last element leaves 32 bits (an element there has no address);
//  - bits before zero read or written by the host, multiples of 16 excepted: their place in a byte
//    would be negative (polling them is compared);
//  - "TV_bit" runs that end before bit 0 of their first word: "rounded up" and "one more when there
//    is a remainder" disagree there;
//  - series of "X" and "Y" from a negative start: a negative number has no last octal digit;
//  - counter recipe entries above 512 words: a write sends their last word, which isn't there;
//  - recipe entries that leave the host's recipe buffer, which the driver can't know;
//  - runs of more than 600 elements: lengths of replies of millions of words mean nothing;
//  - stations beyond +-2^23: the order of read blocks by area and station has 32 bits;
//  - null pointers for values to write, and for a status block that is too short;
//  - calls that the header forbids in a callback, and overlapping calls;
//  - texts beyond ASCII where numbers are expected: which blanks count is Qt's affair.
// Nor are calls for the identity and the catalogue, whose few answers the driver's own tests list.
#include "tests/properties/generator.h"
#include "tests/properties/session.h"

#include <unistd.h>

#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <string>

namespace {

const char *const usage =
    "Usage: driver_property_test [--seed N] [--calls N]\n"
    "Compares the driver with a model of it over sessions of random calls.\n"
    "  --seed N   first session's seed, the next sessions take N+1, N+2...; default 1\n"
    "  --calls N  exported calls to make at least; default 100000\n"
    "Exit code: 0 they agree, 1 they differ, 2 bad arguments\n";

std::string crashNote; // names the session under way
struct sigaction handlersBefore[NSIG];

// A crash can't be shrunk, but it can be repeated. Afterwards the signal is raised again and
// handled as usual.
void noteCrash(int signalNumber)
{
    sigaction(signalNumber, &handlersBefore[signalNumber], nullptr);
    if (write(STDERR_FILENO, crashNote.data(), crashNote.size()) < 0)
        return; // nothing more can be done
}

void noteCrashes()
{
    struct sigaction action = {};
    action.sa_handler = noteCrash;
    for (const int signalNumber : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT})
        sigaction(signalNumber, &action, &handlersBefore[signalNumber]);
}

int report(std::uint64_t seed, const std::vector<Call> &calls)
{
    const std::vector<Call> few = shrunk(calls);
    std::cerr << "The driver and its model differ; repeat with --seed " << seed << " --calls 1\n";
    for (size_t i = 0; i < few.size(); ++i)
        std::cerr << "  " << i + 1 << ". " << printed(few[i]) << "\n";
    std::cerr << firstDifference(few) << "\n";
    return 1;
}

bool readNumber(const char *text, std::uint64_t &number)
{
    char *end = nullptr;
    number = std::strtoull(text, &end, 10);
    return *text >= '0' && *text <= '9' && *end == '\0';
}

} // namespace

// The sanitizers also end with a signal.
extern "C" const char *__asan_default_options()
{
    return "abort_on_error=1";
}

extern "C" const char *__ubsan_default_options()
{
    return "abort_on_error=1:print_stacktrace=1";
}

int main(int argc, char **argv)
{
    std::uint64_t seed = 1;
    std::uint64_t wanted = 100000;
    for (int i = 1; i < argc; i += 2) {
        const std::string option = argv[i];
        if (option == "--help") {
            std::cout << usage;
            return 0;
        }
        std::uint64_t &number = option == "--seed" ? seed : wanted;
        if ((option != "--seed" && option != "--calls") || i + 1 == argc ||
            !readNumber(argv[i + 1], number)) {
            std::cerr << "driver_property_test: bad argument " << option << "\n" << usage;
            return 2;
        }
    }
    noteCrashes();
    std::uint64_t made = 0;
    std::uint64_t sessions = 0;
    for (; made < wanted; ++sessions) {
        crashNote =
            "\nCrashed; repeat with --seed " + std::to_string(seed + sessions) + " --calls 1\n";
        const std::vector<Call> calls = Generator(chosenBySeed(seed + sessions)).session();
        made += static_cast<std::uint64_t>(exportedCalls(calls));
        if (!firstDifference(calls).empty())
            return report(seed + sessions, calls);
    }
    std::cout << made << " calls in " << sessions << " sessions from seed " << seed
              << ": driver and model agree\n";
    return 0;
}
