// kmr doctor: says in sentences what is wrong with the line and what to do.
#include "host/line/line_diagnosis.h"
#include "host/line/link.h"
#include "host/session/line_examination.h"
#include "kmr/command_definition.h"
#include "kmr/commands/commands.h"
#include "kmr/connection.h"
#include "kmr/stop_signal.h"

namespace kmr {

namespace {

const char *const HELP =
    R"(Opens the link, sends three requests to the station and says what is wrong and what to do.
If the station is silent, it sends one more and waits five times --timeout. If a peer over TCP still
does not answer, it tries Modbus TCP and Modbus RTU and reports if the peer speaks one of these.
With --try it sends one request in each usual framing until one is answered, and names that link.
Ends with 0 if the line is good, 1 if only some requests are answered or something else comes as
well, 3 if the link could not be opened, 4 if there is no good answer, 5 if the requests are refused.

Examples:
  kmr doctor --link serial:///dev/ttyUSB0?baud=19200
  kmr doctor --try --timeout 300 --link serial:///dev/ttyUSB0)";

struct DoctorOptions {
    bool tryFramings = false; // the usual speeds and frame formats of a serial line
    std::string tag = "D0";   // to be read
};

constexpr int PROBES = 3;
constexpr int PATIENCE = 5; // times the timeout, for a station that stays silent
constexpr int BAUDS[] = {9600, 19200, 38400, 57600, 115200};
const char *const FRAMES[] = {"7E1", "7N2", "7O1", "8N1", "8E1", "8O1"};

ExitCode exitCodeOf(Finding finding)
{
    switch (finding) {
    case Finding::Good:
        return ExitCode::Ok;
    case Finding::Refused:
        return ExitCode::Refused;
    case Finding::Unsteady:
    case Finding::Noisy:
    case Finding::OutOfStep:
        return ExitCode::ItemFailed;
    case Finding::NotOpened:
        return ExitCode::LinkFailed;
    default:
        return ExitCode::NoAnswer;
    }
}

// Opens the link and sends `count` requests. Throws Error for wrong usage and for a driver that
// does not load.
std::optional<Diagnosis> examine(Options options, const QString &tag, int count)
{
    const EchoMode echo = options.echo;
    options.echo = EchoMode::Auto; // a wrong setting would hide the answers
    options.retries = 0;
    Connection connection(options);
    ElementRange element = connection.readTags({tag}).front().elements;
    element.count = 1;
    try {
        return askLine(connection.open(), element, count, echo);
    } catch (const Error &error) {
        if (error.kind() != ErrorKind::Link)
            throw;
        return Diagnosis{Finding::NotOpened, error.text(), {}};
    }
}

// A silent station may only be slow: sends one more request and waits longer.
std::optional<Diagnosis> examineSilence(Options options, const QString &tag,
                                        const Diagnosis &silence)
{
    const QString timeout = QString::number(options.timeout.count());
    options.timeout *= PATIENCE;
    options.capture.clear(); // the file is already written
    const QString longer = QString::number(options.timeout.count());
    printError(QString("no answer within %1 ms: waiting %2 ms for one").arg(timeout, longer));
    const std::optional<Diagnosis> patient = examine(options, tag, 1);
    if (!patient || !isAnswered(patient->finding))
        return patient ? silence : patient;
    return Diagnosis{Finding::Late,
                     QString("The station answers, but late: not within %1 ms, but within %2 ms.")
                         .arg(timeout, longer),
                     adviceForLate(longer)};
}

// A peer over TCP that doesn't answer may speak another Modbus protocol.
Diagnosis examineProtocol(const Options &options, const QString &tag, const Diagnosis &diagnosis)
{
    const LinkAddress address = linkOf(options);
    const bool isStrange = diagnosis.finding == Finding::Silent ||
                           diagnosis.finding == Finding::Lost ||
                           diagnosis.finding == Finding::Garbled;
    if (address.kind != LinkAddress::Kind::Tcp || !isStrange)
        return diagnosis;
    printError("no Modbus ASCII: trying Modbus TCP and Modbus RTU");
    const int station = Connection(options).readTags({tag}).front().elements.station;
    const auto protocol = findOtherProtocol(address, station, options.timeout, stopFlag());
    return protocol ? diagnose(*protocol) : diagnosis;
}

// The options and commands for the advice.
QString hintFor(const Diagnosis &diagnosis)
{
    switch (diagnosis.finding) {
    case Finding::Refused:
        return diagnosis.exceptionCode == 2 ? " --tag names the element to read." : "";
    case Finding::Unsteady:
        return " --timeout sets how long an answer may take. 'kmr ping' measures the losses.";
    case Finding::Late:
        return " The option is --timeout.";
    case Finding::WrongEcho:
        return " The option is --echo.";
    case Finding::Silent:
        return " 'kmr scan' asks other stations, --try other speeds and frames.";
    case Finding::OtherStation:
        return " --station names the station to ask.";
    case Finding::NoFit:
        return " --timeout sets how long an answer may take.";
    case Finding::WrongParity:
        return " In --link it is frame=.";
    case Finding::Garbled:
        return " On a serial link --try finds them.";
    default:
        return {};
    }
}

void tell(RecordWriter &records, const QString &link, const Diagnosis &diagnosis)
{
    const QString advice =
        diagnosis.advice.isEmpty() ? QString() : diagnosis.advice + hintFor(diagnosis);
    records.add(link + ": " + diagnosis.text + (advice.isEmpty() ? advice : '\n' + advice),
                {now(), link, findingName(diagnosis.finding), diagnosis.text, textField(advice)});
}

ExitCode stopped()
{
    printError("stopped before the diagnosis was complete");
    return ExitCode::NoAnswer;
}

// The links to try: the same device, in each usual frame format at each usual speed.
QStringList usualLinks(const Options &options)
{
    if (linkOf(options).kind != LinkAddress::Kind::Serial) {
        throw Error(ErrorKind::Usage, "--try needs a serial link: over TCP speed and frame are set "
                                      "in the gateway");
    }
    if (!options.capture.isEmpty())
        throw Error(ErrorKind::Usage,
                    "--capture holds the traffic of one link: leave it out with --try");
    const QString device = options.link.section('?', 0, 0);
    QStringList links;
    for (const char *frame : FRAMES) {
        for (const int baud : BAUDS)
            links.append(
                QString("%1?baud=%2&frame=%3").arg(device, QString::number(baud), QString(frame)));
    }
    return links;
}

// Sends one request over each link until one is answered, or can't be opened.
ExitCode tryFramings(Options options, const QString &tag, RecordWriter &records)
{
    const QStringList links = usualLinks(options);
    for (const QString &link : links) {
        options.link = link;
        const std::optional<Diagnosis> diagnosis = examine(options, tag, 1);
        if (!diagnosis)
            return stopped();
        const ExitCode code = exitCodeOf(diagnosis->finding);
        const bool isFound = code != ExitCode::NoAnswer || diagnosis->finding == Finding::WrongEcho;
        if (isFound) {
            tell(records, link, *diagnosis);
            return code;
        }
        const QString name = findingName(diagnosis->finding);
        printError(link + ": " + name);
        records.add({}, {now(), link, name, {}, {}}); // no advice for framings that don't fit
    }
    printError(QString("none of %1 usual framings is answered: check that the controller is on, "
                       "its station number, the cable and its two wires")
                   .arg(links.size()));
    return ExitCode::NoAnswer;
}

ExitCode examineOnce(const Options &options, const QString &tag, RecordWriter &records)
{
    std::optional<Diagnosis> diagnosis = examine(options, tag, PROBES);
    if (diagnosis &&
        (diagnosis->finding == Finding::Silent || diagnosis->finding == Finding::EchoOnly))
        diagnosis = examineSilence(options, tag, *diagnosis);
    if (!diagnosis)
        return stopped();
    diagnosis = examineProtocol(options, tag, *diagnosis);
    tell(records, options.link, *diagnosis);
    return exitCodeOf(diagnosis->finding);
}

ExitCode runDoctor(const Options &options, const DoctorOptions &doctor)
{
    RecordWriter records(options.format, "doctor", {"time", "link", "finding", "text", "advice"},
                         true, print);
    const QString tag = toQString(doctor.tag);
    const ExitCode code = doctor.tryFramings ? tryFramings(options, tag, records)
                                             : examineOnce(options, tag, records);
    records.end();
    return code;
}

} // namespace

void addDoctor(CLI::App &app, Command &chosen)
{
    const auto doctor = std::make_shared<DoctorOptions>();
    CommandDefinition command(app, "doctor", "Say what is wrong with the line");
    command.addFlag("--try", doctor->tryFramings,
                    "try the usual speeds and frame formats of a serial link");
    command.add("--tag", doctor->tag, "the element to read").showDefault();
    command.setHelp(HELP);
    command.setAction(chosen, doctor, runDoctor);
}

} // namespace kmr
