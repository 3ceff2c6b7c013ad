#include "host/session/request_result.h"

#include "modbus/ascii.h"

namespace kmr {

RequestResult resultOf(const Exchange &exchange, bool wasUnanswered)
{
    using Outcome = RequestResult::Outcome;
    const Failure failure{exchange.fault, exchange.exceptionCode, exchange.length};
    if (exchange.outcome == Exchange::Outcome::Good)
        return {Outcome::Done, {}};
    if (failure.exceptionCode != 0)
        return {wasUnanswered && !isRead(exchange.request) ? Outcome::Unknown : Outcome::Refused,
                failure};
    if (exchange.outcome == Exchange::Outcome::Interrupted ||
        failure.fault == ReplyFault::EchoOrAnswer)
        return {Outcome::Unknown, failure};
    return {failure.fault == ReplyFault::NotSendable ? Outcome::NotSent : Outcome::NoAnswer,
            failure};
}

bool isFinal(const Exchange &exchange)
{
    return exchange.outcome != Exchange::Outcome::SentAgain;
}

QByteArray messageOf(const Exchange &exchange)
{
    const FRAME_PRO &request = exchange.request;
    return modbus::decodeLine(QByteArray(request.frame, request.frameLen)).message;
}

bool confirms(const StepNews &news, const QByteArray &request, std::uint64_t number)
{
    return stationNumber(request.left(1)) == news.station && number <= news.upTo;
}

bool putsInDoubt(const StepNews &news, const QByteArray &request, bool isRefused)
{
    return stationNumber(request.left(1)) == news.station &&
           (news.kind == StepNews::Kind::Unanswered || putsInDoubt(news.stray, request, isRefused));
}

} // namespace kmr
