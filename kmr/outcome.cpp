#include "kmr/outcome.h"

#include "host/line/line_trace.h"
#include "kmr/record_writer.h"
#include "kmr/stop_signal.h"

#include <QDateTime>

namespace kmr {

namespace {

using Outcome = RequestResult::Outcome;

QString hintFor(ReplyFault fault)
{
    switch (fault) {
    case ReplyFault::MissingEcho:
        return ": if it no longer echoes, start again or try --echo off";
    case ReplyFault::UnexpectedEcho:
        return " Try --echo on";
    case ReplyFault::EchoOrAnswer:
        return ": say --echo on or --echo off";
    default:
        return {};
    }
}

QString stopCause()
{
    return stopFlag() ? "stopped" : "the line was lost";
}

QString failureText(const Failure &failure)
{
    if (failure.fault == ReplyFault::NotConfirmed && stopFlag())
        return "stopped before the answer was confirmed";
    return toTextWithHint(failure);
}

} // namespace

ExitCode exitCodeOf(const RequestResult &result)
{
    switch (result.outcome) {
    case Outcome::Done:
        return ExitCode::Ok;
    case Outcome::Refused:
        return ExitCode::Refused;
    case Outcome::Unknown:
        return ExitCode::Unknown;
    case Outcome::NoAnswer:
    case Outcome::NotSent:
        break;
    }
    return result.failure.exceptionCode != 0 ? ExitCode::Refused : ExitCode::NoAnswer;
}

QString toText(const RequestResult &result)
{
    const QString cause = stopCause();
    const bool hasFailure =
        result.failure.fault != ReplyFault::None || result.failure.exceptionCode != 0;
    switch (result.outcome) {
    case Outcome::Done:
        return "done";
    case Outcome::Refused:
        return toTextWithHint(result.failure);
    case Outcome::NoAnswer:
        return hasFailure ? failureText(result.failure) : "no answer: " + cause;
    case Outcome::NotSent:
        return "not sent: " + (hasFailure ? toTextWithHint(result.failure) : cause);
    case Outcome::Unknown:
        break;
    }
    if (result.failure.exceptionCode != 0)
        return "unknown: an earlier attempt got no answer, the last was " +
               toTextWithHint(result.failure);
    return "unknown: " +
           (hasFailure ? failureText(result.failure) : cause + " before the answer came");
}

QString readErrorText(const Reading &reading, const Tag &tag)
{
    if (reading.result.outcome != Outcome::NotSent)
        return toText(reading.result);
    if (reading.silentTag.isEmpty())
        return "not asked: " + stopCause();
    return QString("not asked: station %1 did not answer %2")
        .arg(tag.elements.station)
        .arg(reading.silentTag);
}

QString toTextWithHint(const Failure &failure)
{
    return failure.exceptionCode != 0 ? toText(failure) : toText(failure) + hintFor(failure.fault);
}

QString outcomeName(const RequestResult &result)
{
    switch (result.outcome) {
    case Outcome::Done:
        return "done";
    case Outcome::Refused:
        return "refused";
    case Outcome::NoAnswer:
        return "no answer";
    case Outcome::NotSent:
        return "not sent";
    case Outcome::Unknown:
        break;
    }
    return "unknown";
}

QString now()
{
    return timeText(QDateTime::currentDateTime());
}

void ExitCodes::add(ExitCode code)
{
    if (code == ExitCode::Ok)
        return;
    m_total = m_total == ExitCode::Ok || m_total == code ? code : ExitCode::ItemFailed;
}

} // namespace kmr
