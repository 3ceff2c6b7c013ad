// A tool that uses the host library: prints a tag's values whenever they change.
//
//     own_tool LIBRARY LINK TAG [COUNT]
//     own_tool libostrel_kmr.so.1 tcp://192.168.0.10:8888 D100x2 10
//
// Ends after COUNT lines, when the line is lost, or with Ctrl-C.
#include "host/driver_library.h"
#include "host/error.h"
#include "host/line/link.h"
#include "host/session/request_ranges.h"
#include "host/session/session.h"
#include "host/tags/tag.h"
#include "host/tags/values.h"

#include <QCoreApplication>
#include <QStringList>

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>

namespace {

std::atomic<bool> g_stop{false};

void watch(kmr::Session &session, const kmr::Tag &tag, int count)
{
    session.poll(session.ranges({tag}));
    kmr::Values shown;
    while (count > 0 && session.step() == kmr::PollLoop::Step::Exchanged) {
        // The driver also returns written and old values: only a good one was just read.
        if (session.state(tag).quality != kmr::Quality::Good)
            continue;
        const kmr::Values values = session.values(tag);
        if (values == shown)
            continue;
        std::puts(qPrintable(kmr::formatValues(tag, values)));
        std::fflush(stdout);
        shown = values;
        --count;
    }
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() < 4) {
        std::fputs("usage: own_tool LIBRARY LINK TAG [COUNT]\n", stderr);
        return 2;
    }
    std::signal(SIGINT, [](int) { g_stop = true; });
    try {
        const kmr::DriverLibrary library(arguments[1]);
        const kmr::Tag tag = kmr::TagReader(library.functions(), 1).read(arguments[3]);
        const kmr::LinkAddress address = kmr::parseLink(arguments[2]);
        kmr::SessionSettings settings;
        settings.poll.characterTime = kmr::characterTime(address);
        const auto device = kmr::openLink(address, settings.poll.timeout, g_stop);
        kmr::Session session(library.functions(), *device, settings, g_stop);
        watch(session, tag, arguments.size() > 4 ? arguments[4].toInt() : 1000000);
    } catch (const kmr::Error &error) {
        std::fprintf(stderr, "own_tool: %s\n", error.what());
        return error.kind() == kmr::ErrorKind::Usage ? 2 : 1;
    }
    return 0;
}
