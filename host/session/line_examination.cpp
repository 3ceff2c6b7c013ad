#include "host/session/line_examination.h"

#include <chrono>

namespace kmr {

namespace {

// What answers say that no request waited for.
Diagnosis diagnoseStrays(const Statistics &statistics)
{
    if (statistics.late() > 0) {
        const double seconds = std::chrono::duration<double>(statistics.latest()).count();
        return {
            Finding::Late,
            QString("Answers come late, by up to %1 s: after their request was given up.")
                .arg(seconds, 0, 'f', 1),
            adviceForLate(QString::number(
                std::chrono::ceil<std::chrono::milliseconds>(statistics.latest()).count() + 100))};
    }
    return {Finding::OutOfStep,
            QString("Answers come twice: %1 that no request waited for.").arg(statistics.strays()),
            "Look for a repeater, radio, modem or serial server that sends characters twice, and "
            "for a second host. No value is shown that such an answer puts in doubt; it is asked "
            "again."};
}

} // namespace

bool isAnswered(Finding finding)
{
    return finding == Finding::Good || finding == Finding::Noisy || finding == Finding::Refused ||
           finding == Finding::WrongEcho;
}

QString adviceForLate(const QString &milliseconds)
{
    return QString(
               "Set the timeout to %1 ms, or find what slows down the controller or its gateway.")
        .arg(milliseconds);
}

std::optional<Diagnosis> askLine(Session &session, const ElementRange &element, int count,
                                 EchoMode echo)
{
    std::vector<Probe> probes;
    session.setObserver([&probes](const Exchange &exchange) {
        probes.push_back({QByteArray(exchange.request.frame, exchange.request.frameLen),
                          exchange.received, exchange.fault, exchange.exceptionCode,
                          exchange.length});
    });
    session.poll({element});
    for (int i = 0; i < count; ++i) {
        switch (session.step()) {
        case PollLoop::Step::LineLost:
            return Diagnosis{
                Finding::Lost, "The other side closed the link, or the adapter was unplugged.",
                "Check that no other host is connected, since some gateways accept only one, and "
                "that the other side speaks Modbus ASCII."};
        case PollLoop::Step::Stopped:
            return std::nullopt;
        default:
            break;
        }
    }
    session.confirm();
    const Diagnosis diagnosis = diagnose(probes, echo);
    const bool isAnswering = isAnswered(diagnosis.finding) ||
                             diagnosis.finding == Finding::Unsteady ||
                             diagnosis.finding == Finding::NoFit;
    return isAnswering && session.statistics().strays() > 0 ? diagnoseStrays(session.statistics())
                                                            : diagnosis;
}

} // namespace kmr
