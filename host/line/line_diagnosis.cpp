#include "host/line/line_diagnosis.h"

#include "host/line/frame_text.h"
#include "modbus/ascii.h"
#include "modbus/protocol.h"

#include <algorithm>
#include <bitset>
#include <map>

namespace kmr {

namespace {

constexpr int MAX_SHOWN_CHARS = 60;

const char *const CHECK_WIRES =
    "Check plugs, shield and terminators, and that no two controllers have the same station "
    "number.";

bool isAnswered(const Probe &probe)
{
    return probe.fault == ReplyFault::None;
}

bool isEchoed(const Probe &probe)
{
    return probe.received.contains(probe.request);
}

// What came before the answer and is not the echo.
QByteArray noiseOf(const Probe &probe)
{
    QByteArray characters = probe.received;
    const auto echo = characters.indexOf(probe.request);
    if (echo >= 0)
        characters.remove(echo, probe.request.size());
    characters.truncate(std::max(0, static_cast<int>(characters.lastIndexOf(':'))));
    return characters.trimmed(); // the answer before may have ended without its line feed
}

QByteArray allReceived(const std::vector<Probe> &probes)
{
    QByteArray bytes;
    for (const Probe &probe : probes)
        bytes += probe.received;
    return bytes;
}

// The good lines in `bytes` that are not one of the requests.
QList<QByteArray> goodLines(const QByteArray &bytes, const std::vector<Probe> &probes)
{
    QList<QByteArray> lines;
    modbus::LineCollector collector;
    for (const QByteArray &line : collector.take(bytes)) {
        const bool isRequest =
            std::any_of(probes.begin(), probes.end(),
                        [&line](const Probe &probe) { return probe.request == line; });
        if (!isRequest && modbus::decodeLine(line).fault == modbus::LineFault::None)
            lines.append(line);
    }
    return lines;
}

QByteArray withoutTopBits(QByteArray bytes)
{
    for (char &byte : bytes)
        byte = static_cast<char>(byte & 0x7F);
    return bytes;
}

// The frame format with seven data bits whose parity or second stop bit is the eighth bit of
// `bytes`.
QString frameOfTopBits(const QByteArray &bytes)
{
    const auto isSet = [](char byte) { return (byte & 0x80) != 0; };
    const auto isEven = [](char byte) {
        return std::bitset<8>(static_cast<unsigned char>(byte)).count() % 2 == 0;
    };
    if (std::all_of(bytes.begin(), bytes.end(), isSet))
        return "7N2";
    return std::all_of(bytes.begin(), bytes.end(), isEven) ? "7E1" : "7O1";
}

// True if at least three in four characters occur in frames. At a wrong speed they are random.
bool isMostlyFrames(const QByteArray &bytes)
{
    const auto frames = std::count_if(bytes.begin(), bytes.end(), [](char byte) {
        return QByteArray("0123456789ABCDEF:\r\n").contains(byte);
    });
    return 4 * frames >= 3 * bytes.size();
}

QString shown(const QByteArray &bytes)
{
    const QString text = visible(bytes.left(MAX_SHOWN_CHARS));
    return bytes.size() > MAX_SHOWN_CHARS ? text + "..." : text;
}

// "2" for "02"; other characters than decimal digits as they are.
QString stationText(const QByteArray &line)
{
    const QByteArray digits = modbus::stationOf(line);
    bool isNumber = false;
    const int number = digits.toInt(&isNumber);
    return isNumber ? QString::number(number) : QString::fromLatin1(digits);
}

QString refusalAdvice(int exceptionCode)
{
    switch (exceptionCode) {
    case 2: // illegal data address
        return "Name an element that this controller has.";
    case 6: // server device busy
        return "Ask again later.";
    case 10: // gateway path unavailable
    case 11: // gateway target device failed to respond
        return "This is the gateway's answer: check the controller behind the gateway, its station "
               "number, "
               "and speed and frame in the gateway's settings.";
    default:
        return "Look at the controller's own diagnosis for the cause.";
    }
}

Diagnosis diagnoseEcho(bool isEchoed, EchoMode echo)
{
    if (isEchoed && echo == EchoMode::Off) {
        return {Finding::WrongEcho,
                "The station answers, but the line echoes what is sent although the "
                "setting is off.",
                "Set the echo to auto or on."};
    }
    if (!isEchoed && echo == EchoMode::On) {
        return {Finding::WrongEcho,
                "The station answers, but the line does not echo what is sent although "
                "the setting is on.",
                "Set the echo to auto or off."};
    }
    QString text = "The station answers, the line is good.";
    if (isEchoed)
        text += " It echoes what is sent; the echo is ignored.";
    return {Finding::Good, text, {}};
}

// Reports the refused requests; Good if none was refused.
Diagnosis diagnoseRefusals(const std::vector<Probe> &probes)
{
    std::map<int, int> counts; // by exception code
    for (const Probe &probe : probes)
        counts[probe.exceptionCode] += 1;
    const int answered = counts[0];
    counts.erase(0);
    if (counts.empty())
        return {Finding::Good, {}, {}};
    QStringList reasons;
    for (const auto &[code, count] : counts)
        reasons.append(modbus::exceptionText(code));
    const std::size_t refused = probes.size() - static_cast<std::size_t>(answered);
    const QString what = answered == 0 ? QString("the requests are refused")
                                       : QString("%1 of %2 requests %3 refused")
                                             .arg(refused)
                                             .arg(probes.size())
                                             .arg(refused == 1 ? "was" : "were");
    const int code = counts.begin()->first;
    return {Finding::Refused,
            QString("The line is good, but %1: %2.").arg(what, reasons.join(", ")),
            refusalAdvice(code), code};
}

Diagnosis diagnoseAnswers(const std::vector<Probe> &probes, std::size_t answered, EchoMode echo)
{
    if (answered < probes.size()) {
        const auto bad = std::find_if_not(probes.begin(), probes.end(), isAnswered);
        return {
            Finding::Unsteady,
            QString("The station answers only %1 of %2 requests; the first failure: %3.")
                .arg(answered)
                .arg(probes.size())
                .arg(toText(bad->fault, bad->length)),
            QString(CHECK_WIRES) +
                " Check that no second host uses the line. Late answers need a longer timeout."};
    }
    const auto noisy = std::find_if(probes.begin(), probes.end(),
                                    [](const Probe &probe) { return !noiseOf(probe).isEmpty(); });
    if (noisy != probes.end()) {
        return {
            Finding::Noisy,
            QString("The station answers, but other characters come before its answers: %1.")
                .arg(shown(noiseOf(*noisy))),
            QString(CHECK_WIRES) +
                " Between two frames the line needs a definite level: check its bias resistors."};
    }
    const Diagnosis refusal = diagnoseRefusals(probes);
    if (refusal.finding == Finding::Refused)
        return refusal;
    return diagnoseEcho(std::any_of(probes.begin(), probes.end(), isEchoed), echo);
}

// "It is an answer of the wrong length: ..." if one of the probes got such an answer.
QString lengthText(const std::vector<Probe> &probes)
{
    for (const Probe &probe : probes) {
        if (probe.length.expected > 0)
            return " It is " + toText(probe.fault, probe.length) + '.';
    }
    return {};
}

Diagnosis diagnoseLine(const std::vector<Probe> &probes, const QByteArray &line)
{
    const QString asked = stationText(probes.front().request);
    const QString other = stationText(line);
    if (explainLine(line).kind == FrameKind::Request) {
        return {Finding::OtherHost,
                QString("Requests of another host come: %1.").arg(toText(explainLine(line))),
                "Only one host may ask on a line: disconnect the other one."};
    }
    if (other != asked) {
        const QString advice = QString("set the controller's station number to %1.").arg(asked);
        const bool canBeAsked = other.toInt() != 0; // "0A" can't
        return {Finding::OtherStation,
                QString("Station %1 answers, but station %2 was asked.").arg(other, asked),
                canBeAsked ? QString("Ask station %1, or ").arg(other) + advice
                           : "No host can ask such a station: " + advice};
    }
    return {Finding::NoFit,
            QString("The station answers something that was not asked: %1.")
                    .arg(toText(explainLine(line))) +
                lengthText(probes),
            "Check that no second host uses the line and that the controller is one of this line. "
            "Late answers need a longer timeout."};
}

Diagnosis diagnoseCharacters(const std::vector<Probe> &probes, const QByteArray &received)
{
    const QByteArray stripped = withoutTopBits(received);
    if (stripped != received && !goodLines(stripped, probes).isEmpty()) {
        return {Finding::WrongParity,
                "Each character has an eighth bit that does not belong to it: the other side sends "
                "seven data bits.",
                QString("Set the frame format %1 for the link, or in the gateway's settings.")
                    .arg(frameOfTopBits(received))};
    }
    if (isMostlyFrames(received)) {
        return {Finding::Damaged,
                QString("Answers come, but damaged, such as %1.").arg(shown(received)),
                CHECK_WIRES};
    }
    return {Finding::Garbled,
            QString("Characters come, but no answer: %1. Speed or parity is wrong.")
                .arg(shown(received)),
            "Set baud and frame as the controller has them, for the link or in the gateway's "
            "settings."};
}

} // namespace

QString findingName(Finding finding)
{
    static const char *const NAMES[] = {
        "good",   "refused",      "unsteady",   "noisy",      "wrong echo",
        "silent", "late",         "echo only",  "other host", "other station",
        "no fit", "wrong parity", "damaged",    "garbled",    "not opened",
        "lost",   "out of step",  "modbus tcp", "modbus rtu"};
    return NAMES[static_cast<std::size_t>(finding)];
}

Diagnosis diagnose(const std::vector<Probe> &probes, EchoMode echo)
{
    const auto answered = std::count_if(probes.begin(), probes.end(), isAnswered);
    if (answered > 0)
        return diagnoseAnswers(probes, static_cast<std::size_t>(answered), echo);
    const QByteArray received = allReceived(probes);
    if (received.isEmpty()) {
        return {Finding::Silent, "Nothing answers: no character came back.",
                "Check that the controller is on, its station number, the cable and its two wires, "
                "and the link's baud and frame."};
    }
    if (std::all_of(probes.begin(), probes.end(),
                    [](const Probe &probe) { return probe.received == probe.request; })) {
        return {Finding::EchoOnly, "The line echoes what is sent, but nothing answers.",
                "The adapter works. Check that the controller is on, its station number, and that "
                "its two wires are not exchanged."};
    }
    const QList<QByteArray> lines = goodLines(received, probes);
    if (!lines.isEmpty())
        return diagnoseLine(probes, lines.front());
    return diagnoseCharacters(probes, received);
}

Diagnosis diagnose(OtherProtocol protocol)
{
    const QString ours = " A tcp:// link is Modbus ASCII over raw TCP.";
    if (protocol == OtherProtocol::ModbusTcp) {
        return {Finding::ModbusTcp, "The other side speaks Modbus TCP." + ours,
                "Set the gateway's port to raw TCP (also called transparent or TCP server) instead "
                "of Modbus TCP, and its serial side to the controller's speed and frame; or name "
                "the port that does this."};
    }
    return {Finding::ModbusRtu, "The other side speaks Modbus RTU." + ours,
            "Set the controller's port to Modbus ASCII; if the gateway translates, set its port to "
            "raw TCP (transparent)."};
}

} // namespace kmr
