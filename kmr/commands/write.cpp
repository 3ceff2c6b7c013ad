// kmr write: writes values, in their order.
#include "host/session/read_once.h"
#include "kmr/assignment.h"
#include "kmr/command_definition.h"
#include "kmr/commands/commands.h"
#include "kmr/connection.h"
#include "kmr/simulation/simulated_line.h"

#include <algorithm>

namespace kmr {

namespace {

const char *const HELP =
    R"(Several values of one tag are separated by commas or blanks; none may be missing
between two commas.
0x and hexadecimal digits, or 0b and binary digits, are a value's bits. Bits are 0 or 1, off
or on. Values can be written as 'kmr read' shows them, also with the texts and the unit of a
name: kmr write "valve=open".
After a write that fails, nothing more is written.

)";
const char *const EXAMPLES = R"(

Examples:
  kmr write D100=250 --link tcp://192.168.0.10:8888
  kmr write M0x3=1,0,1 CV2200=70000 --verify --link serial:///dev/ttyUSB0)";

struct WriteOptions {
    std::vector<std::string> assignments; // TAG=VALUE
    bool verify = false;                  // read back and compare
    bool dryRun = false;                  // show the frames and send nothing
};

std::vector<Assignment> parseAll(const QStringList &texts, const NamedTagReader &reader)
{
    std::vector<Assignment> assignments;
    QStringList faults;
    for (const QString &text : texts) {
        try {
            assignments.push_back(parseAssignment(text, reader));
        } catch (const Error &error) {
            faults.append(error.text());
        }
    }
    if (!faults.isEmpty())
        throw Error(ErrorKind::Usage, faults.join('\n'));
    return assignments;
}

// Reports on stderr at which element a tag of several elements stopped.
RequestResult writeOne(Session &session, const Assignment &assignment)
{
    const WriteResult result = writeTag(session, assignment.tag, assignment.values);
    if (!result.stoppedAt.isEmpty())
        printError(QString("%1: stopped at %2").arg(assignment.tag.text, result.stoppedAt));
    return result.request;
}

RecordWriter makeRecords(Format format)
{
    return RecordWriter(format, "write", {"time", "tag", "values", "unit", "outcome", "error"},
                        false, print);
}

void addRecord(RecordWriter &records, const Assignment &assignment, const QString &outcome,
               const QString &error)
{
    const Tag &tag = assignment.tag;
    const QString plain =
        QString("%1 %2 %3").arg(tag.text, formatValues(tag, assignment.values), outcome);
    records.add(error.isEmpty() ? plain : QString(),
                {now(), tag.text, interpret(tag, assignment.values), textField(tag.unit), outcome,
                 textField(error)});
    if (!error.isEmpty())
        printError(QString("%1: %2").arg(tag.text, error));
}

// The order of writes matters, so nothing is written after one that failed.
void reportUnwritten(RecordWriter &records, const std::vector<Assignment> &assignments,
                     std::size_t from)
{
    for (std::size_t i = from; i < assignments.size(); ++i)
        addRecord(records, assignments[i], "not sent",
                  "not written because an earlier write failed");
}

std::vector<Tag> tagsOf(const std::vector<Assignment> &assignments)
{
    std::vector<Tag> tags;
    tags.reserve(assignments.size());
    for (const Assignment &assignment : assignments)
        tags.push_back(assignment.tag);
    return tags;
}

bool contains(const ElementRange &run, const ElementRange &element)
{
    return run.station == element.station && run.area == element.area &&
           run.first <= element.first && element.end() <= run.end();
}

// Whether an assignment after the one at `index` writes its element at `offset` again.
bool isWrittenAgain(const std::vector<Assignment> &assignments, std::size_t index, int offset)
{
    ElementRange element = assignments[index].tag.elements;
    element.first += offset;
    element.count = 1;
    return std::any_of(
        assignments.begin() + static_cast<std::ptrdiff_t>(index) + 1, assignments.end(),
        [&element](const Assignment &later) { return contains(later.tag.elements, element); });
}

// Whether an element that was not written again holds another value.
bool differs(const std::vector<Assignment> &assignments, std::size_t index, const Values &values)
{
    const Values &wanted = assignments[index].values;
    for (int i = 0; i < assignments[index].tag.count; ++i) {
        const std::size_t place = static_cast<std::size_t>(i);
        if (values[place] != wanted[place] && !isWrittenAgain(assignments, index, i))
            return true;
    }
    return false;
}

ExitCode verifyAll(Session &session, RecordWriter &records,
                   const std::vector<Assignment> &assignments)
{
    const std::vector<Reading> readings = readNow(session, tagsOf(assignments));
    ExitCodes codes;
    for (std::size_t i = 0; i < assignments.size(); ++i) {
        const Assignment &assignment = assignments[i];
        const Reading &reading = readings[i];
        if (!reading.result.isDone()) {
            codes.add(exitCodeOf(reading.result));
            addRecord(records, assignment, "confirmed",
                      "not read back: " + readErrorText(reading, assignment.tag));
        } else if (differs(assignments, i, reading.values)) {
            codes.add(ExitCode::Unknown);
            addRecord(records, assignment, "differs",
                      QString("wrote %1, read back %2")
                          .arg(formatValues(assignment.tag, assignment.values),
                               formatValues(assignment.tag, reading.values)));
        } else {
            const bool isThere = reading.values == assignment.values;
            addRecord(records, assignment, isThere ? "verified" : "confirmed", {});
        }
    }
    return codes.total();
}

ExitCode writeAll(Session &session, Format format, const std::vector<Assignment> &assignments,
                  bool verify)
{
    RecordWriter records = makeRecords(format);
    ExitCodes codes;
    std::size_t confirmed = 0;
    for (; confirmed < assignments.size(); ++confirmed) {
        const RequestResult result = writeOne(session, assignments[confirmed]);
        codes.add(exitCodeOf(result));
        if (!verify || !result.isDone())
            addRecord(records, assignments[confirmed], writeOutcome(result),
                      writeErrorText(result));
        if (!result.isDone()) {
            reportUnwritten(records, assignments, confirmed + 1);
            break;
        }
    }
    if (verify && confirmed > 0)
        codes.add(verifyAll(
            session, records,
            {assignments.begin(), assignments.begin() + static_cast<std::ptrdiff_t>(confirmed)}));
    records.end();
    return codes.total();
}

// Shows the frames of the writes; those that only read are left out.
ExitCode showFrames(Session &session, Format format, const std::vector<Assignment> &assignments)
{
    RecordWriter records(format, "write --dry-run", {"tag", "frame"}, false, print);
    QString tag;
    session.setObserver([&](const Exchange &exchange) {
        const QByteArray frame =
            QByteArray(exchange.request.frame, exchange.request.frameLen).trimmed();
        const QByteArray function = frame.mid(3, 2);
        if (function == "05" || function == "10")
            records.add(tag + ' ' + frame, {tag, QString(frame)});
    });
    for (const Assignment &assignment : assignments) {
        tag = assignment.tag.text;
        writeOne(session, assignment);
    }
    records.end();
    return ExitCode::Ok;
}

ExitCode runWrite(const Options &options, const WriteOptions &how)
{
    Connection connection(options);
    const std::vector<Assignment> parsed = parseAll(toQStrings(how.assignments), connection.tags());
    Session &session =
        how.dryRun ? connection.openOn(std::make_unique<SimulatedLine>()) : connection.open();
    session.poll(session.ranges(tagsOf(parsed)));
    return how.dryRun ? showFrames(session, options.format, parsed)
                      : writeAll(session, options.format, parsed, how.verify);
}

} // namespace

void addWrite(CLI::App &app, Command &chosen)
{
    const auto write = std::make_shared<WriteOptions>();
    CommandDefinition command(app, "write", "Write values, each acknowledged in turn");
    command.add("TAG=VALUE", write->assignments, "the values to write, in this order").required();
    command.addFlag("--verify", write->verify, "read back and compare");
    command.addFlag("--dry-run", write->dryRun, "show the frames and send nothing");
    command.setHelp(std::string(HELP) + TAG_HELP + EXAMPLES);
    command.setAction(chosen, write, runWrite);
}

} // namespace kmr
