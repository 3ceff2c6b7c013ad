#include "view/outcome_text.h"

#include <QCoreApplication>

namespace kmr {

namespace {

using Outcome = RequestResult::Outcome;

struct Outcomes {
    Q_DECLARE_TR_FUNCTIONS(Outcomes)
};

} // namespace

QString failureText(const RequestResult &result)
{
    const Failure &failure = result.failure;
    if (failure.fault == ReplyFault::None && failure.exceptionCode == 0) {
        return result.isDone() ? QString()
                               : Outcomes::tr("the line was lost, or the program was ended");
    }
    return toText(failure);
}

QString outcomeWord(RequestResult::Outcome outcome)
{
    switch (outcome) {
    case Outcome::Done:
        return Outcomes::tr("done");
    case Outcome::Refused:
        return Outcomes::tr("refused");
    case Outcome::NoAnswer:
        return Outcomes::tr("no answer");
    case Outcome::NotSent:
        return Outcomes::tr("not sent");
    case Outcome::Unknown:
        break;
    }
    return Outcomes::tr("unknown");
}

QString writeOutcomeText(const WriteResult &result)
{
    const QString why = failureText(result.request);
    QString text;
    switch (result.request.outcome) {
    case Outcome::Done:
        return Outcomes::tr("Written: the controller has confirmed it.");
    case Outcome::Refused:
        text = Outcomes::tr("Not written: %1.").arg(why);
        break;
    case Outcome::NoAnswer:
        text = Outcomes::tr("Not confirmed: %1. It may have been written all the same.").arg(why);
        break;
    case Outcome::NotSent:
        text = Outcomes::tr("Not written, because it was not sent: %1.").arg(why);
        break;
    case Outcome::Unknown:
        text = Outcomes::tr("Unknown whether it was written: %1.").arg(why);
        break;
    }
    if (!result.stoppedAt.isEmpty()) {
        text +=
            ' ' +
            Outcomes::tr("It stopped at %1; what precedes it was written.").arg(result.stoppedAt);
    }
    return text;
}

} // namespace kmr
