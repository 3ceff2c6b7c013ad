#include "view/line_doctor.h"

#include "host/error.h"
#include "host/line/other_protocol.h"
#include "host/session/line_examination.h"

namespace kmr {

namespace {

constexpr int PROBES = 3;
constexpr int PATIENCE = 5; // times the timeout, for a station that stays silent

std::optional<Diagnosis> ask(const DriverFunctions &driver, const LineSetup &setup,
                             const ElementRange &element, int count, const std::atomic<bool> &stop)
{
    SessionSettings settings = setup.settings;
    const EchoMode echo = settings.poll.echo;
    settings.poll.echo = EchoMode::Auto; // or a wrong setting would hide the answers
    settings.poll.tap = {};
    settings.retries = 0;
    try {
        const std::unique_ptr<QIODevice> device = openLink(setup.address, CONNECT_LIMIT, stop);
        Session session(driver, *device, settings, stop);
        return askLine(session, element, count, echo);
    } catch (const Error &error) {
        return Diagnosis{Finding::NotOpened, error.text(), {}};
    }
}

// Silence may only be slowness.
std::optional<Diagnosis> askPatiently(const DriverFunctions &driver, LineSetup setup,
                                      const ElementRange &element, const Diagnosis &silence,
                                      const std::atomic<bool> &stop)
{
    const auto timeout = setup.settings.poll.timeout;
    setup.settings.poll.timeout = PATIENCE * timeout;
    const std::optional<Diagnosis> patient = ask(driver, setup, element, 1, stop);
    if (!patient || !isAnswered(patient->finding))
        return patient ? std::make_optional(silence) : patient;
    const QString longer = QString::number(setup.settings.poll.timeout.count());
    return Diagnosis{
        Finding::Late,
        LineThread::tr("The station answers, but late: not within %1 ms, but within %2 ms.")
            .arg(timeout.count())
            .arg(longer),
        adviceForLate(longer)};
}

} // namespace

std::optional<Diagnosis> examine(const DriverFunctions &driver, const LineSetup &setup,
                                 const std::atomic<bool> &stop)
{
    ElementRange element{MIN_STATION, "D", 0, 1};
    if (!setup.tags.empty())
        element = setup.tags.front().tag.elements;
    element.count = 1;
    std::optional<Diagnosis> diagnosis = ask(driver, setup, element, PROBES, stop);
    if (diagnosis &&
        (diagnosis->finding == Finding::Silent || diagnosis->finding == Finding::EchoOnly))
        diagnosis = askPatiently(driver, setup, element, *diagnosis, stop);
    const bool isStrange =
        diagnosis && setup.address.kind == LinkAddress::Kind::Tcp &&
        (diagnosis->finding == Finding::Silent || diagnosis->finding == Finding::Lost ||
         diagnosis->finding == Finding::Garbled);
    if (!isStrange)
        return diagnosis;
    const auto protocol =
        findOtherProtocol(setup.address, element.station, setup.settings.poll.timeout, stop);
    return protocol ? diagnose(*protocol) : diagnosis;
}

} // namespace kmr
