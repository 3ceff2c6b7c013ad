// Anything that may come over a line after a request, for the host's reply filter. The
// first byte chooses request and echo, the second the size of the pieces that arrive.
#include "host/line/reply_filter.h"

#include <cstdlib>
#include <iterator>

namespace {

const char *const REQUESTS[] = {
    ":01031064000880\r\n",       // read D 100 to 107
    ":010208000010E5\r\n",       // read M 0 to 15
    ":01050800FF00F3\r\n",       // set M 0
    ":01101064000102123432\r\n", // write D 100
    ":0",                        // no request
};

// Only a whole line with the right LRC may pass, and an exception only with its code.
void requireTrueReply(const kmr::ReplyFilter &filter)
{
    const modbus::DecodedLine line = modbus::decodeLine(filter.reply());
    const bool exception = !line.message.isEmpty() && (line.message.at(1) & 0x80) != 0;
    if (line.fault != modbus::LineFault::None || exception != (filter.exceptionCode() != 0))
        abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    if (size < 2)
        return 0;
    kmr::Echo echo;
    echo.mode = static_cast<kmr::EchoMode>(data[0] / 16 % 3);
    kmr::ReplyFilter filter(REQUESTS[data[0] % 16 % std::size(REQUESTS)], echo);
    const int piece = data[1] % 16 + 1;
    const QByteArray arriving(reinterpret_cast<const char *>(data + 2), static_cast<int>(size) - 2);
    kmr::ReplyFilter::Verdict verdict = kmr::ReplyFilter::Verdict::MoreWanted;
    for (int at = 0; at < arriving.size(); at += piece) {
        if (verdict == kmr::ReplyFilter::Verdict::MoreWanted)
            verdict = filter.take(arriving.mid(at, piece));
    }
    if (verdict == kmr::ReplyFilter::Verdict::Good)
        requireTrueReply(filter);
    else if (verdict == kmr::ReplyFilter::Verdict::MoreWanted)
        filter.end();
    return 0;
}
