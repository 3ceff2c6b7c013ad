#include "kmr/assignment.h"

#include "kmr/outcome.h"

namespace kmr {

void requireWritable(const Tag &tag)
{
    const QString fault = whyNotWritable(tag);
    if (!fault.isEmpty())
        throw Error(ErrorKind::Usage, fault);
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
