#include "host/commands/commands.h"
#include "host/commands/connection.h"
#include "host/poll_plan.h"
#include "host/reading.h"

#include <algorithm>

namespace kmr {

namespace {

struct Assignment {
    Tag tag;
    Values values;
};

Assignment parseAssignment(const QString &text, const TagReader &reader)
{
    const int equals = static_cast<int>(text.indexOf('='));
    if (equals < 0) {
        throw Error(ExitCode::Usage, QString("\"%1\" assigns nothing: expected TAG=VALUE, for "
                                             "example D100=250 or M0x3=1,0,1")
                                         .arg(text));
    }
    Assignment assignment;
    assignment.tag = reader.read(text.left(equals));
    const Tag &tag = assignment.tag;
    if (tag.kind == ElementKind::WordBit) {
        throw Error(ExitCode::Usage,
                    QString("%1 can't be written: the controller offers no write of "
                            "single bits of TV words; write the whole word")
                        .arg(tag.text));
    }
    if (!tag.isWritable)
        throw Error(ExitCode::Usage,
                    QString("%1 can't be written: %2 are inputs").arg(tag.text, tag.elements.area));
    assignment.values = parseValues(tag, text.mid(equals + 1));
    return assignment;
}

std::vector<Assignment> parseAll(const QStringList &texts, const TagReader &reader)
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
        throw Error(ExitCode::Usage, faults.join('\n'));
    return assignments;
}

// Writes piece by piece and stops at the first that fails.
RequestResult write(Session &session, const Assignment &assignment)
{
    auto next = assignment.values.begin();
    for (const Run &run : writeRuns(assignment.tag, session.groupLimit())) {
        const RequestResult result = session.write(run, Values(next, next + run.count));
        if (!result.isDone()) {
            if (assignment.tag.count > 1)
                printError(QString("%1: stopped at %2")
                               .arg(assignment.tag.text, elementName(run.area, run.first)));
            return result;
        }
        next += run.count;
    }
    return {RequestResult::Outcome::Done, {}};
}

void report(const Tag &tag, const RequestResult &result)
{
    if (result.outcome == RequestResult::Outcome::NoAnswer)
        printError(QString("%1: not confirmed (it may have been written all the same): %2")
                       .arg(tag.text, toText(result)));
    else
        printError(QString("%1: %2").arg(tag.text, toText(result)));
}

// The order of writes matters, so nothing is written behind one that failed.
void reportUnwritten(const std::vector<Assignment> &assignments, std::size_t from)
{
    for (std::size_t i = from; i < assignments.size(); ++i)
        printError(
            QString("%1: not written, because of the failure before").arg(assignments[i].tag.text));
}

ExitCode verifyAll(Session &session, const std::vector<Assignment> &assignments)
{
    std::vector<Tag> tags;
    for (const Assignment &assignment : assignments)
        tags.push_back(assignment.tag);
    const std::vector<Reading> readings = readNow(session, tags);

    ExitCodes codes;
    for (std::size_t i = 0; i < tags.size(); ++i) {
        const Reading &reading = readings[i];
        if (!reading.result.isDone()) {
            codes.add(exitCodeOf(reading.result));
            printError(QString("%1: not read back: %2").arg(tags[i].text, toText(reading.result)));
        } else if (reading.values != assignments[i].values) {
            codes.add(ExitCode::Unknown);
            printError(QString("%1: wrote %2, read back %3")
                           .arg(tags[i].text, formatValues(tags[i], assignments[i].values),
                                formatValues(tags[i], reading.values)));
        } else {
            print(QString("%1 %2 verified").arg(tags[i].text, formatValues(tags[i], reading.values)));
        }
    }
    return codes.total();
}

} // namespace

ExitCode runWrite(const Options &options, const QStringList &texts, bool verify)
{
    Connection connection(options);
    const std::vector<Assignment> assignments = parseAll(texts, connection.tags());
    Session &session = connection.open();
    std::vector<Tag> tags;
    for (const Assignment &assignment : assignments)
        tags.push_back(assignment.tag);
    session.poll(readRuns(tags, session.groupLimit()));

    ExitCodes codes;
    std::vector<Assignment> confirmed;
    for (const Assignment &assignment : assignments) {
        const RequestResult result = write(session, assignment);
        codes.add(exitCodeOf(result));
        if (!result.isDone()) {
            report(assignment.tag, result);
            reportUnwritten(assignments, confirmed.size() + 1);
            break;
        }
        confirmed.push_back(assignment);
        if (!verify)
            print(QString("%1 %2 confirmed")
                      .arg(assignment.tag.text, formatValues(assignment.tag, assignment.values)));
    }
    if (verify && !confirmed.empty())
        codes.add(verifyAll(session, confirmed));
    return codes.total();
}

} // namespace kmr
