// Requests to write that come from a broker: the first byte says what else they have, then a line
// with the name, a line with the response topic, and the payload. All but the first byte is also
// taken as a command of Sparkplug B.
#include "host/error.h"
#include "kmr/publish/sparkplug_node.h"
#include "kmr/publish/write_desk.h"
#include "tests/fuzz/linked_tags.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <cstdlib>

namespace {

const char *const NAMES = "name,tag,unit,scale,texts,writable\n"
                          "n,D100/int16,C,0.1,,yes\n"
                          "b,M5,,,0=closed;1=not open,yes\n"
                          "l,M8x3,,,0=closed;1=not open,yes\n"
                          "t,D200x4/text,,,,yes\n"
                          "f,D0/float32,,,,yes\n"
                          "c,CV2200,,,,yes\n"
                          "no,D9,,,,no\n";

kmr::WriteOutcome write(const kmr::Tag &tag, const kmr::Values &values)
{
    if (tag.text == "no" || values.size() != static_cast<std::size_t>(tag.count))
        abort();
    return {"confirmed", {}, {}};
}

QByteArray takeLine(QByteArray &bytes)
{
    const int end = static_cast<int>(bytes.indexOf('\n'));
    const QByteArray line = bytes.left(end < 0 ? 0 : end);
    bytes.remove(0, end + 1);
    return line;
}

bool isAnswer(const QByteArray &payload)
{
    const QJsonObject object = QJsonDocument::fromJson(payload).object();
    const bool isRefused = object["outcome"] == "refused" && !object["reason"].toString().isEmpty();
    return isRefused || (object["outcome"] == "confirmed" && object["reason"].isNull());
}

std::vector<kmr::Incoming> commandsIn(const QByteArray &payload)
{
    static kmr::SparkplugNode node(kmr::Topics("p/n", {}), {}, true, "/dev/null", {});
    kmr::Incoming incoming;
    incoming.payload = payload;
    incoming.time = std::chrono::steady_clock::now();
    try {
        return node.commands(incoming).requests;
    } catch (const kmr::Error &) {
        return {};
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static const kmr::NamedTagReader reader(kmr::TagReader(linkedDriver(), 1),
                                            kmr::NameTable::parse(NAMES, "names.csv"));
    static const kmr::Topics topics("p", {"n", "b", "l", "t", "f", "c", "no"});
    static const kmr::Topics nodeTopics("p/n", {"n", "b", "l", "t", "f", "c", "no"});
    if (size == 0)
        return 0;
    QByteArray bytes(reinterpret_cast<const char *>(data + 1), static_cast<int>(size - 1));
    kmr::WriteDesk nodeDesk(reader, nodeTopics, write);
    for (const kmr::Incoming &request : commandsIn(bytes)) {
        if (!isAnswer(nodeDesk.handle(request).payload))
            abort();
    }
    kmr::Incoming incoming;
    incoming.topic = "p/" + takeLine(bytes) + "/set";
    incoming.responseTopic = takeLine(bytes);
    incoming.payload = bytes;
    incoming.isRetained = (data[0] & 1) != 0;
    incoming.time = std::chrono::steady_clock::now();
    if ((data[0] & 2) != 0)
        incoming.correlation = "c";
    if ((data[0] & 4) != 0)
        incoming.expiry = std::chrono::seconds(data[0] >> 3);
    kmr::WriteDesk desk(reader, topics, write);
    const kmr::Message first = desk.handle(incoming);
    const kmr::Message again = desk.handle(incoming);
    if (!isAnswer(first.payload) || first.topic != again.topic || first.isRetained ||
        (incoming.isRetained && first.payload.contains("\"confirmed\"")))
        abort();
    return 0;
}
