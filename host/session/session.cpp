#include "host/session/session.h"

#include "host/error.h"
#include "host/session/request_ranges.h"

#include <QMutexLocker>

#include <utility>

namespace kmr {

namespace {

constexpr int READ_BLOCK_TAG = 4; // the driver's tag of what it polls

// A longer entry's read would ask for another number: its quantity travels in decimal digits, and a
// controller takes them for hexadecimal ones.
constexpr int MAX_RECIPE_ENTRY_WORDS = 9;

Session *g_session = nullptr; // whom the driver's callback is for

bool isRead(const FRAME_PRO &frame)
{
    const QByteArray function(frame.frame + 3, 2);
    return function == "02" || function == "03";
}

ElementRange writtenBy(const VARIABLE &request)
{
    const int words = isCounterArea(request.area) ? 2 : 1;
    return {request.station, request.area, linearNumber(request.area, request.address),
            std::max(1, request.count / words)};
}

// `wasUnanswered`: it was sent before and got no answer, so that a write may have been carried out
// though it is refused now.
RequestResult resultOf(const Exchange &exchange, bool wasUnanswered)
{
    using Outcome = RequestResult::Outcome;
    const Failure failure{exchange.fault, exchange.exceptionCode};
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

// Whether the station's answers may have been taken for those to other requests.
bool isOutOfStep(const Exchange &exchange)
{
    switch (exchange.fault) {
    case ReplyFault::WrongFunction:
    case ReplyFault::WrongLength:
    case ReplyFault::WrongAcknowledgement:
    case ReplyFault::SeveralAnswers:
        return true;
    default:
        return exchange.isOutOfStep;
    }
}

bool isFinal(const Exchange &exchange)
{
    return exchange.outcome != Exchange::Outcome::SentAgain;
}

std::vector<quint8> toBytes(const ElementRange &run, const Values &values)
{
    const int bytesEach = isBitArea(run.area) ? 1 : isCounterArea(run.area) ? 4 : 2;
    std::vector<quint8> bytes;
    for (const std::uint32_t value : values) {
        for (int i = 0; i < bytesEach; ++i)
            bytes.push_back(static_cast<quint8>(value >> (8 * i)));
    }
    return bytes;
}

void checkEntries(const QVector<_RCP_VAR_PRO> &entries)
{
    for (const _RCP_VAR_PRO &entry : entries) {
        const bool fits = !isBitArea(entry.area) && entry.count >= 1 &&
                          entry.count <= MAX_RECIPE_ENTRY_WORDS && entry.bufWord >= 0 &&
                          entry.bufWord <= Session::RECIPE_WORDS - entry.count;
        if (!fits) {
            throw Error(
                ErrorKind::Usage,
                QString("%1 with %2 words fits no recipe: an entry holds 1 to %3 words, and "
                        "all together %4")
                    .arg(elementName(entry.area, linearNumber(entry.area, entry.address)))
                    .arg(entry.count)
                    .arg(MAX_RECIPE_ENTRY_WORDS)
                    .arg(Session::RECIPE_WORDS));
        }
    }
}

} // namespace

Session::Session(const DriverFunctions &driver, QIODevice &device, const SessionSettings &settings,
                 const std::atomic<bool> &stop, Clock clock)
    : m_driver(driver), m_settings(settings), m_clock(std::move(clock)),
      m_loop(driver, device, settings.poll, stop, m_clock), m_pauses(settings.poll.timeout)
{
    g_session = this;
    m_loop.setObserver([this](const Exchange &exchange) { note(exchange); });
    m_loop.setTurnOf([this](const FRAME_PRO &request) { return turnOf(request); });
    m_driver.setAddrValueChangeCallBack(&Session::reportChange);
    configureDriver();
}

void Session::restart()
{
    m_quality = {};
    m_pauses.forgetAll();
    configureDriver();
}

void Session::configureDriver()
{
    // Device number, write queue on, unused, bad replies until a request is given up, group limit.
    const QByteArray property = QString("%1#0#0#%2#%3")
                                    .arg(DEVICE)
                                    .arg(m_settings.retries + 1)
                                    .arg(m_settings.groupLimit)
                                    .toLatin1();
    qint32 result = 0;
    m_driver.initProperty(m_status.data(), nullptr, m_recipe.data(), &result, property.constData(),
                          &m_mutex);
    m_hasPlan = false;
    m_isRetrying = false;
}

Session::~Session()
{
    m_driver.setAddrValueChangeCallBack(nullptr);
    // The driver forgets what it has borrowed.
    qint32 result = 0;
    m_driver.initProperty(nullptr, nullptr, nullptr, &result, "", nullptr);
    g_session = nullptr;
}

qint32 Session::reportChange(qint32, qint32 station, QString area, qint32 address)
{
    if (g_session != nullptr && g_session->m_changeObserver)
        g_session->m_changeObserver(station, area, address);
    return 0;
}

int Session::poll(const std::vector<ElementRange> &runs)
{
    m_hasPlan = !runs.empty();
    return plan(runs);
}

int Session::plan(const std::vector<ElementRange> &runs)
{
    std::set<int> stations;
    for (const ElementRange &run : runs)
        stations.insert(run.station);
    m_pauses.setStations(stations);
    return m_driver.addrMerge(toKeys(runs));
}

PollLoop::Step Session::step()
{
    return m_loop.step();
}

RequestResult Session::readOnce(const ElementRange &run)
{
    keepPolling(run);
    beginRequest(std::nullopt);
    KEY_ADDRESS key = toKey(run);
    m_driver.addConditionRead(key, m_request->tag);
    return await();
}

RequestResult Session::write(const ElementRange &run, const Values &values)
{
    keepPolling(run);
    // Only what can be told from an echo counts as confirmed, and reading teaches the difference.
    if (isBitArea(run.area) && echo().isUnknown()) {
        const RequestResult lesson = readOnce({run.station, "D", 0, 1});
        if (!lesson.isDone() && lesson.outcome != RequestResult::Outcome::Refused)
            return {RequestResult::Outcome::NotSent, lesson.failure};
    }
    const ElementRange disturbed = disturbedBy(run);
    beginRequest(disturbed);
    forget(disturbed);
    std::vector<quint8> bytes = toBytes(run, values);
    const int driverCount = isCounterArea(run.area) ? 2 * run.count : run.count; // in words there
    m_driver.setData(run.station, run.area, shownNumber(run.area, run.first), driverCount,
                     bytes.data(), m_request->tag);
    return await();
}

Values Session::values(const Tag &tag) const
{
    const ElementRange &run = tag.elements;
    const int bytesEach = tag.kind == ElementKind::Bit       ? 1
                          : tag.kind == ElementKind::Counter ? 4
                                                             : 2;
    const int driverCount = tag.kind == ElementKind::Counter ? 2 * run.count : run.count;
    std::vector<quint8> bytes(static_cast<std::size_t>(run.count * bytesEach));
    m_driver.getData(run.station, run.area, shownNumber(run.area, run.first), driverCount,
                     bytes.data());

    Values values;
    for (int i = 0; i < tag.count; ++i) {
        if (tag.kind == ElementKind::WordBit) {
            const int bit = tag.firstBit + i;
            values.push_back(bytes[static_cast<std::size_t>(bit / 8)] >> (bit % 8) & 1U);
            continue;
        }
        const quint8 *element = bytes.data() + i * bytesEach;
        std::uint32_t value = 0;
        for (int k = bytesEach - 1; k >= 0; --k)
            value = value << 8 | element[k];
        values.push_back(value);
    }
    return values;
}

RequestResult Session::transferRecipe(const QVector<_RCP_VAR_PRO> &entries, Transfer direction,
                                      int &finished)
{
    using Outcome = RequestResult::Outcome;
    checkEntries(entries);
    finished = 0;
    if (entries.isEmpty()) // the driver would repeat its last request for ever
        return {Outcome::Done, {}};

    PollLoop::Step last = PollLoop::Step::Exchanged;
    while (last == PollLoop::Step::Exchanged && m_isRetrying) // not an entry's exchange
        last = step();
    m_driver.setRcpAddress(&entries);
    m_recipeTransfer = RecipeTransfer{entries, 0, false, false, std::nullopt};
    const int position =
        direction == Transfer::Download ? STATUS_RECIPE_DOWNLOAD : STATUS_RECIPE_UPLOAD;
    setRequestByte(position, 1);
    while (last == PollLoop::Step::Exchanged && isRequestByteSet(position))
        last = step();
    if (last != PollLoop::Step::Exchanged)
        abandonRecipe(position);

    const RecipeTransfer transfer = *std::exchange(m_recipeTransfer, std::nullopt);
    finished = transfer.finished;
    if (transfer.result)
        return *transfer.result;
    if (finished == entries.size())
        return {Outcome::Done, {}};
    return {transfer.wasSent ? Outcome::Unknown : Outcome::NotSent, {}};
}

// The driver's place in the recipe outlives even intf_initProperty. Only a request that it gives up
// brings it back to the beginning, so it hears silence until then.
void Session::abandonRecipe(int position)
{
    FRAME_PRO frame;
    while (isRequestByteSet(position) && m_driver.getSendFrame(&frame) == 1) {
        QByteArray silence;
        QString errorInfo;
        m_driver.dealRcvFrame(silence, errorInfo);
    }
    setRequestByte(position, 0);
}

// A recipe's entries may carry any tag.
Turn Session::turnOf(const FRAME_PRO &request) const
{
    if (m_recipeTransfer || request.var.reqTag != READ_BLOCK_TAG)
        return Turn::Ask;
    return m_pauses.turnOf(request.var.station, m_clock());
}

void Session::note(const Exchange &exchange)
{
    m_isRetrying = !isFinal(exchange);
    count(exchange);
    noteStation(exchange);
    noteQuality(exchange);
    noteRecipe(exchange);
    noteRequest(exchange);
    if (m_observer)
        m_observer(exchange);
}

void Session::count(const Exchange &exchange)
{
    switch (exchange.outcome) {
    case Exchange::Outcome::Good:
        m_statistics.countGood(exchange.roundTrip);
        break;
    case Exchange::Outcome::SentAgain:
        m_statistics.countRetry();
        break;
    case Exchange::Outcome::GivenUp:
        m_statistics.countGiveUp();
        break;
    case Exchange::Outcome::Interrupted:
        m_statistics.countInterrupted();
        break;
    case Exchange::Outcome::PassedOver:
        break;
    }
}

void Session::noteStation(const Exchange &exchange)
{
    const int station = exchange.request.var.station;
    if (exchange.outcome == Exchange::Outcome::Good || exchange.exceptionCode != 0)
        m_pauses.noteAnswer(station);
    else if (exchange.outcome == Exchange::Outcome::GivenUp &&
             exchange.fault != ReplyFault::NotSendable)
        m_pauses.noteGiveUp(station, m_clock());
}

void Session::noteQuality(const Exchange &exchange)
{
    const int station = exchange.request.var.station;
    if (isOutOfStep(exchange))
        m_quality.setStation(station, {});
    if (exchange.outcome == Exchange::Outcome::GivenUp && m_pauses.isSilent(station))
        m_quality.setStation(station, {Quality::Stale, {exchange.fault, exchange.exceptionCode}});
    if (!isRead(exchange.request)) {
        forget(disturbedBy(writtenBy(exchange.request.var)));
        return;
    }
    const ElementRange run = refreshedBy(exchange.request);
    if (exchange.outcome == Exchange::Outcome::Good) {
        forget(storedBy(exchange.request)); // beyond a border the driver now shows other memory
        m_quality.set(run, {Quality::Good, {}});
    } else if (exchange.outcome == Exchange::Outcome::GivenUp ||
               exchange.outcome == Exchange::Outcome::PassedOver) {
        m_quality.set(run, {Quality::Stale, {exchange.fault, exchange.exceptionCode}});
    }
    if (m_request && m_request->disturbed)
        forget(*m_request->disturbed); // the driver still shows the written value there
}

void Session::noteRequest(const Exchange &exchange)
{
    if (!m_request || exchange.request.var.reqTag != m_request->tag)
        return;
    m_request->wasSent = true;
    if (isFinal(exchange))
        m_request->result = resultOf(exchange, m_request->wasUnanswered);
    else if (exchange.exceptionCode == 0)
        m_request->wasUnanswered = true;
}

// Entries go out in their order; other requests may still be on their way when a transfer begins.
void Session::noteRecipe(const Exchange &exchange)
{
    if (!m_recipeTransfer || m_recipeTransfer->finished == m_recipeTransfer->entries.size())
        return;
    const _RCP_VAR_PRO &entry = m_recipeTransfer->entries.at(m_recipeTransfer->finished);
    const VARIABLE &request = exchange.request.var;
    if (request.station != entry.station || request.area != entry.area ||
        request.address != entry.address)
        return;
    m_recipeTransfer->wasSent = true;
    if (exchange.outcome == Exchange::Outcome::Good) {
        ++m_recipeTransfer->finished;
        m_recipeTransfer->wasSent = false;
        m_recipeTransfer->wasUnanswered = false;
    } else if (isFinal(exchange)) {
        m_recipeTransfer->result = resultOf(exchange, m_recipeTransfer->wasUnanswered);
    } else if (exchange.exceptionCode == 0) {
        m_recipeTransfer->wasUnanswered = true;
    }
}

void Session::keepPolling(const ElementRange &run)
{
    if (!m_hasPlan)
        plan({run});
}

void Session::beginRequest(const std::optional<ElementRange> &disturbed)
{
    m_request = Request{++m_lastRequestTag, disturbed, false, false, std::nullopt};
}

RequestResult Session::await()
{
    PollLoop::Step last = PollLoop::Step::Exchanged;
    while (!m_request->result && last == PollLoop::Step::Exchanged)
        last = step();
    const Request request = *std::exchange(m_request, std::nullopt);
    if (request.result)
        return *request.result;
    using Outcome = RequestResult::Outcome;
    return {request.wasSent ? Outcome::Unknown : Outcome::NotSent, {}};
}

void Session::setRequestByte(int position, quint8 value)
{
    const QMutexLocker lock(&m_mutex);
    m_status[static_cast<std::size_t>(position)] = value;
}

bool Session::isRequestByteSet(int position)
{
    const QMutexLocker lock(&m_mutex);
    return m_status[static_cast<std::size_t>(position)] == 1;
}

} // namespace kmr
