// The part of the command line that belongs to diagnosis.h.
#include "host/tags/tag.h"
#include "kmr/commands/diagnosis.h"

#include <CLI/CLI.hpp>
#include <QRegularExpression>

#include <memory>
#include <string>
#include <vector>

namespace kmr {

namespace {

void addDecode(CLI::App &app, Command &chosen)
{
    const auto frames = std::make_shared<std::vector<std::string>>();
    CLI::App *command = app.add_subcommand("decode", "Explain lines of text from the wire");
    command->add_option("FRAME", *frames, "a line, ':' to LRC; the end may be left out")
        ->required();
    command->footer("An answer to a read does not say what it answers: give the request before "
                    "it.\nEnds with 1 when a line is no good frame.\n\n"
                    "Examples:\n  kmr decode :01031064000880\n"
                    "  kmr decode :01031064000286 :01030400FA0001FD");
    command->callback([frames, &chosen] {
        chosen = [frames](const Options &options) {
            return runDecode(options, toQStrings(*frames));
        };
    });
}

void addTrace(CLI::App &app, Command &chosen)
{
    const auto file = std::make_shared<std::string>();
    CLI::App *command = app.add_subcommand("trace", "Explain the traffic of a capture");
    command->add_option("FILE", *file, "what --capture has written")->required();
    command->footer(
        "Each line: time, direction (> sent, < received), frame, meaning. With --trace "
        "any\ncommand explains its traffic while it runs. A last line that breaks off is told and "
        "left\nout; the command then ends with 1.\n\n"
        "Examples:\n  kmr read D100 --capture field.jsonl --link "
        "serial:///dev/ttyUSB0\n  kmr trace field.jsonl");
    command->callback([file, &chosen] {
        chosen = [file](const Options &options) { return runTrace(options, toQString(*file)); };
    });
}

void addCheck(CLI::App &app, Command &chosen)
{
    const auto texts = std::make_shared<std::vector<std::string>>();
    CLI::App *command = app.add_subcommand("check", "Ask the driver whether addresses are valid");
    command->add_option("TAG", *texts, "what to ask about")->required();
    command->footer("Results: 0 valid, 1 wrong kind, 2 out of range, 3 unknown area, 4 no address."
                    "\nEnds with 1 when one is not valid.\n\n"
                    "Examples:\n  kmr check D100 X17 TV5.3\n  kmr check D11999x2 2#M0..17");
    command->callback([texts, &chosen] {
        chosen = [texts](const Options &options) { return runCheck(options, toQStrings(*texts)); };
    });
}

void addSeries(CLI::App &app, Command &chosen)
{
    struct Line {
        std::string area;
        int start = 0;
        int count = 1;
        int step = 1;
    };
    const auto line = std::make_shared<Line>();
    CLI::App *command = app.add_subcommand("series", "List addresses at equal distances");
    command->add_option("AREA", line->area, "device area")->required();
    command->add_option("START", line->start, "first address (X and Y: its octal digits)")
        ->required();
    command->add_option("COUNT", line->count, "how many")->required()->check(CLI::Range(1, 65537));
    command->add_option("STEP", line->step, "distance")->required();
    command->footer("An address behind the area's end is replaced by the end, and the command ends "
                    "with 1.\n\n"
                    "Examples:\n  kmr series D 100 4 2\n  kmr series X 0 10 1");
    command->callback([line, &chosen] {
        chosen = [line](const Options &options) {
            return runSeries(options,
                             {toQString(line->area), line->start, line->count, line->step});
        };
    });
}

void addPing(CLI::App &app, Command &chosen)
{
    struct Line {
        std::uint64_t count = 0;
        double interval = 1;
        std::string tag = "D0";
    };
    const auto line = std::make_shared<Line>();
    CLI::App *command = app.add_subcommand("ping", "Measure round trips to a station");
    command->add_option("COUNT", line->count, "requests (default: until Ctrl-C)")
        ->check(aboveZero(1e9));
    command->add_option("--interval", line->interval, "seconds between requests")
        ->check(CLI::Range(0.0, 3600.0))
        ->capture_default_str();
    command->add_option("--tag", line->tag, "what is read")->capture_default_str();
    command->footer(
        "Nothing is sent again, so each loss is seen. A refusal is an answer, too. Ends "
        "with 0 when\nall were answered, 1 when some were lost, 4 when all were.\n\n"
        "Examples:\n  kmr ping 10 --link tcp://192.168.0.10:8888\n"
        "  kmr ping --interval 0.1 --station 2 --link serial:///dev/ttyUSB0");
    command->callback([line, &chosen] {
        chosen = [line](const Options &options) {
            PingOptions ping;
            if (line->count > 0)
                ping.count = line->count;
            ping.interval = std::chrono::milliseconds(static_cast<qint64>(line->interval * 1000));
            ping.tag = toQString(line->tag);
            return runPing(options, ping);
        };
    });
}

// Reads "1..31" or "5".
std::string parseStations(const std::string &text, ScanOptions &scan)
{
    static const QRegularExpression RANGE("^([0-9]{1,2})(?:\\.\\.([0-9]{1,2}))?$");
    const QRegularExpressionMatch match = RANGE.match(toQString(text));
    scan.first = match.captured(1).toInt();
    scan.last = match.captured(2).isEmpty() ? scan.first : match.captured(2).toInt();
    const bool isGood = match.hasMatch() && scan.first >= MIN_STATION && scan.first <= scan.last;
    return isGood ? std::string() : "expected stations from 1 to 99, for example 1..31";
}

void addScan(CLI::App &app, Command &chosen)
{
    const auto scan = std::make_shared<ScanOptions>();
    CLI::App *command = app.add_subcommand("scan", "Find the stations that answer");
    command
        ->add_option_function<std::string>(
            "--stations",
            [scan](const std::string &text) {
                const std::string fault = parseStations(text, *scan);
                if (!fault.empty())
                    throw CLI::ValidationError("--stations", fault);
            },
            "which to ask, FIRST..LAST")
        ->default_str("1..31");
    command->footer("Each is asked once and given --timeout to answer. Ends with 4 when none does."
                    "\n\nExamples:\n  kmr scan --link tcp://192.168.0.10:8888\n"
                    "  kmr scan --stations 1..99 --timeout 200 --link serial:///dev/ttyUSB0");
    command->callback([scan, &chosen] {
        chosen = [scan](const Options &options) { return runScan(options, *scan); };
    });
}

void addDoctor(CLI::App &app, Command &chosen)
{
    struct Line {
        bool tryFramings = false;
        std::string tag = "D0";
    };
    const auto line = std::make_shared<Line>();
    CLI::App *command = app.add_subcommand("doctor", "Say what is wrong with the line");
    command->add_flag("--try", line->tryFramings,
                      "try the usual speeds and frame formats of a serial link");
    command->add_option("--tag", line->tag, "what is read")->capture_default_str();
    command->footer(
        "Opens the link, asks the station three times and says what is wrong and what "
        "to do. A silent\nstation is asked once more and given five times --timeout. With "
        "--try it asks once in each\nusual framing until one is answered, and names that "
        "link.\nEnds with 0 when the line is good, 1 when only some "
        "requests are answered, 3 when the link\ncould not be opened, 4 when nothing "
        "answers as it should, 5 when what is asked is refused.\n\n"
        "Examples:\n  kmr doctor --link serial:///dev/ttyUSB0?baud=19200\n"
        "  kmr doctor --try --timeout 300 --link serial:///dev/ttyUSB0");
    command->callback([line, &chosen] {
        chosen = [line](const Options &options) {
            return runDoctor(options, {line->tryFramings, toQString(line->tag)});
        };
    });
}

void addPlan(CLI::App &app, Command &chosen)
{
    struct Line {
        std::vector<std::string> tags;
        int baud = 0;
        bool isRaw = false;
    };
    const auto line = std::make_shared<Line>();
    CLI::App *command = app.add_subcommand("plan", "Show the requests that polling tags takes");
    command->add_option("TAG", line->tags, "what to poll (default: the tags of the project file)");
    command->add_option("--baud", line->baud, "bits a second (default: the link's, else 9600)")
        ->check(aboveZero(4e6));
    command->add_flag("--raw", line->isRaw, "the list as typed, as another host hands it over");
    command->footer("Opens no link. Times are those of the characters, in the link's frame "
                    "format or 7E1, and of\n--gap. Ends with 1 when an element would never be "
                    "refreshed or read "
                    "wrongly.\n\n" +
                    std::string(TAG_HELP) +
                    "\n\nExamples:\n  kmr plan D100 D103 X0x8\n"
                    "  kmr plan --raw M0x40 D4095x2 --baud 19200");
    command->callback([line, &chosen] {
        chosen = [line](const Options &options) {
            PlanOptions plan{toQStrings(line->tags), {}, line->isRaw};
            if (line->baud > 0)
                plan.baud = line->baud;
            return runPlan(options, plan);
        };
    });
}

} // namespace

void addDiagnosis(CLI::App &app, Command &chosen)
{
    addDecode(app, chosen);
    addTrace(app, chosen);
    addCheck(app, chosen);
    addSeries(app, chosen);
    addPing(app, chosen);
    addScan(app, chosen);
    addDoctor(app, chosen);
    addPlan(app, chosen);
}

} // namespace kmr
