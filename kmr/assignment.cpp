#include "kmr/assignment.h"

#include "host/session/request_ranges.h"
#include "kmr/outcome.h"

namespace kmr {

void requireWritable(const Tag &tag)
{
    if (tag.kind == ElementKind::WordBit) {
        throw Error(ErrorKind::Usage, QString("%1 can't be written: the controller has no write of "
                                              "single bits of %2 words; write the whole word")
                                          .arg(tag.text, tag.elements.area));
    }
    if (!tag.isWritable)
        throw Error(ErrorKind::Usage,
                    QString("%1 can't be written: %2 are inputs").arg(tag.text, tag.elements.area));
}

Assignment parseAssignment(const QString &text, const NamedTagReader &reader)
{
    const int equals = static_cast<int>(text.indexOf('='));
    if (equals < 0) {
        throw Error(ErrorKind::Usage,
                    QString("\"%1\" is not an assignment: expected TAG=VALUE, for "
                            "example D100=250 or M0x3=1,0,1")
                        .arg(text));
    }
    Assignment assignment;
    assignment.tag = reader.read(text.left(equals));
    requireWritable(assignment.tag);
    assignment.values = parseValues(assignment.tag, text.mid(equals + 1));
    return assignment;
}

WriteResult write(Session &session, const Assignment &assignment)
{
    auto next = assignment.values.begin();
    for (const ElementRange &run : writeRanges({assignment.tag}, session.groupLimit())) {
        const RequestResult result = session.write(run, Values(next, next + run.count));
        if (!result.isDone()) {
            const QString place =
                QString("%1#%2").arg(run.station).arg(elementName(run.area, run.first));
            return {result, assignment.tag.count > 1 ? place : QString()};
        }
        next += run.count;
    }
    return {{RequestResult::Outcome::Done, {}}, {}};
}

QString writeOutcome(const RequestResult &result)
{
    if (result.isDone())
        return "confirmed";
    return result.outcome == RequestResult::Outcome::NoAnswer ? QString("given up")
                                                              : outcomeName(result);
}

QString writeErrorText(const RequestResult &result)
{
    if (result.isDone())
        return {};
    return result.outcome == RequestResult::Outcome::NoAnswer
               ? "not confirmed (it may have been written): " + toText(result)
               : toText(result);
}

} // namespace kmr
