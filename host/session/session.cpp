#include "host/session/session.h"

#include "host/error.h"
#include "host/session/request_ranges.h"

#include <QMutexLocker>

#include <algorithm>
#include <set>
#include <utility>

namespace kmr {

namespace {

constexpr int READ_BLOCK_TAG = 4; // the driver's tag of what it polls

// A longer entry's read would ask for another number: its quantity travels in decimal digits, and a
// controller takes them for hexadecimal ones.
constexpr int MAX_RECIPE_ENTRY_WORDS = 9;

constexpr int MOST_UPLOADS = 3; // of a recipe whose answers are not confirmed

ElementRange writtenBy(const VARIABLE &request)
{
    const int words = isCounterArea(request.area) ? 2 : 1;
    return {request.station, request.area, linearNumber(request.area, request.address),
            std::max(1, request.count / words)};
}

int bytesEach(const QString &area)
{
    return isBitArea(area) ? 1 : isCounterArea(area) ? 4 : 2;
}

// The driver counts counters in words.
int driverCount(const ElementRange &run)
{
    return isCounterArea(run.area) ? 2 * run.count : run.count;
}

std::vector<quint8> toBytes(const ElementRange &run, const Values &values)
{
    std::vector<quint8> bytes;
    for (const std::uint32_t value : values) {
        for (int i = 0; i < bytesEach(run.area); ++i)
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
    m_loop.setObserver([this](const Exchange &exchange) { note(exchange); });
    m_loop.setStepObserver([this](const StepNews &news) { noteStep(news); });
    m_loop.setCheckObserver([this](auto roundTrip) { m_statistics.countCheck(roundTrip); });
    m_loop.setTurnOf([this](const FRAME_PRO &request) { return turnOf(request); });
    m_driver.setAddrValueChangeCallBack(nullptr);
    configureDriver();
}

void Session::restart()
{
    m_values = {};
    m_held.clear();
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
    // The driver forgets what it has borrowed.
    qint32 result = 0;
    m_driver.initProperty(nullptr, nullptr, nullptr, &result, "", nullptr);
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

std::vector<ElementRange> Session::ranges(const std::vector<Tag> &tags) const
{
    return readRanges(tags, m_settings.groupLimit,
                      m_settings.poll.inStep ? Neighbours::Unlike : Neighbours::Any);
}

PollLoop::Step Session::step()
{
    return m_loop.step();
}

PollLoop::Step Session::confirm(bool isToTheLast)
{
    return m_loop.confirm(isToTheLast);
}

RequestResult Session::readOnce(const ElementRange &run)
{
    beginRead(run);
    return await(true);
}

RequestResult Session::ask(const ElementRange &run)
{
    beginRead(run);
    return await(false);
}

void Session::beginRead(const ElementRange &run)
{
    keepPolling(run);
    beginRequest(std::nullopt);
    KEY_ADDRESS key = requestKey(run);
    m_driver.addConditionRead(key, m_request->tag());
}

RequestResult Session::write(const ElementRange &run, const Values &values)
{
    keepPolling(run);
    // Only what can be told from an echo counts as confirmed, and reading teaches the difference.
    if (isBitArea(run.area) && echo().isUnknown()) {
        const RequestResult lesson = ask({run.station, "D", 0, 1});
        if (!lesson.isDone() && lesson.outcome != RequestResult::Outcome::Refused)
            return {RequestResult::Outcome::NotSent, lesson.failure};
    }
    const ElementRange disturbed = disturbedBy(run);
    beginRequest(disturbed);
    forget(disturbed);
    std::vector<quint8> bytes = toBytes(run, values);
    m_driver.setData(run.station, run.area, shownNumber(run.area, run.first), driverCount(run),
                     bytes.data(), m_request->tag());
    return await(true);
}

void Session::forget(const ElementRange &run)
{
    m_values.set(run, {});
    m_held.spoil(run);
}

Values Session::values(const Tag &tag) const
{
    const Values elements = m_values.values(tag.elements);
    if (tag.kind != ElementKind::WordBit)
        return elements;
    Values bits;
    for (int bit = tag.firstBit; bit < tag.firstBit + tag.count; ++bit)
        bits.push_back(elements[static_cast<std::size_t>(bit / 16)] >> (bit % 16) & 1U);
    return bits;
}

Values Session::driverValues(const ElementRange &run) const
{
    const int each = bytesEach(run.area);
    std::vector<quint8> bytes(static_cast<std::size_t>(run.count * each));
    m_driver.getData(run.station, run.area, shownNumber(run.area, run.first), driverCount(run),
                     bytes.data());
    Values values;
    for (auto element = bytes.begin(); element != bytes.end(); element += each) {
        std::uint32_t value = 0;
        for (int i = each - 1; i >= 0; --i)
            value = value << 8 | element[i];
        values.push_back(value);
    }
    return values;
}

RequestResult Session::transferRecipe(const QVector<_RCP_VAR_PRO> &entries, Transfer direction,
                                      RecipeProgress &progress)
{
    checkEntries(entries);
    progress = {};
    if (entries.isEmpty()) // the driver would repeat its last request for ever
        return {RequestResult::Outcome::Done, {}};

    const int most = direction == Transfer::Upload ? MOST_UPLOADS : 1;
    for (int i = 0; i < most; ++i) {
        runTransfer(entries, direction);
        if (!m_recipeTransfer->isInDoubt())
            break;
    }
    return std::exchange(m_recipeTransfer, std::nullopt)->result(progress);
}

void Session::runTransfer(const QVector<_RCP_VAR_PRO> &entries, Transfer direction)
{
    PollLoop::Step last = PollLoop::Step::Exchanged;
    while (last == PollLoop::Step::Exchanged && m_isRetrying) // not an entry's exchange
        last = step();
    m_recipeTransfer.emplace(entries);
    m_driver.setRcpAddress(m_recipeTransfer->entries());
    const int position =
        direction == Transfer::Download ? STATUS_RECIPE_DOWNLOAD : STATUS_RECIPE_UPLOAD;
    setRequestByte(position, 1);
    while (last == PollLoop::Step::Exchanged && isRequestByteSet(position))
        last = step();
    if (last == PollLoop::Step::Exchanged)
        confirm();
    else
        abandonRecipe(position);
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
    if (m_recipeTransfer)
        m_recipeTransfer->note(exchange);
    if (m_request)
        m_request->note(exchange);
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
    const ElementState failed{Quality::Stale,
                              {exchange.fault, exchange.exceptionCode, exchange.length}};
    if (exchange.outcome == Exchange::Outcome::GivenUp && m_pauses.isSilent(station))
        m_values.setStation(station, failed);
    if (!isRead(exchange.request)) {
        forget(disturbedBy(writtenBy(exchange.request.var)));
        return;
    }
    const ElementRange run = refreshedBy(exchange.request);
    if (exchange.outcome == Exchange::Outcome::Good)
        m_held.add({exchange.number, run, {Quality::Good, {}}, driverValues(run), {}});
    else if (exchange.outcome == Exchange::Outcome::GivenUp && exchange.exceptionCode != 0)
        m_held.add({exchange.number, run, failed, {}, {}});
    else if (exchange.outcome == Exchange::Outcome::GivenUp ||
             exchange.outcome == Exchange::Outcome::PassedOver)
        m_values.set(run, failed);
    if (m_request && m_request->disturbed())
        forget(*m_request->disturbed()); // the driver still shows the written value there
}

void Session::noteStep(const StepNews &news)
{
    if (news.kind == StepNews::Kind::Stray)
        m_statistics.countStray(news.late);
    if (news.kind == StepNews::Kind::Confirmed) {
        for (const HeldAnswer &answer : m_held.take(news.station, news.upTo))
            commit(answer);
        if (m_request)
            m_request->noteConfirmed(news);
        if (m_recipeTransfer)
            m_recipeTransfer->noteConfirmed(news);
    } else if (m_settings.poll.inStep) {
        m_held.drop(news.station);
        if (m_request)
            m_request->noteDoubt(news);
        if (m_recipeTransfer)
            m_recipeTransfer->noteDoubt(news);
    } else if (news.kind == StepNews::Kind::Stray && !news.late) {
        m_values.setStation(news.station, {});
    }
    if (m_stepObserver)
        m_stepObserver(news);
}

void Session::commit(const HeldAnswer &answer)
{
    for (int number = answer.run.first; number < answer.run.end(); ++number) {
        const auto &[station, area, first, count] = answer.run;
        if (answer.spoilt.count(number) > 0)
            continue;
        if (answer.state.quality != Quality::Good)
            m_values.set({station, area, number, 1}, answer.state);
        else if (m_values.confirm(station, area, number,
                                  answer.values[static_cast<std::size_t>(number - first)]) &&
                 m_changeObserver)
            m_changeObserver(station, area, shownNumber(area, number));
    }
    if (m_confirmObserver)
        m_confirmObserver(answer.run);
}

void Session::keepPolling(const ElementRange &run)
{
    if (!m_hasPlan)
        plan({run});
}

void Session::beginRequest(const std::optional<ElementRange> &disturbed)
{
    m_request.emplace(++m_lastRequestTag, disturbed);
}

RequestResult Session::await(bool isToBeConfirmed)
{
    PollLoop::Step last = PollLoop::Step::Exchanged;
    while (!m_request->isOver() && last == PollLoop::Step::Exchanged)
        last = step();
    if (m_request->isAnswered() && isToBeConfirmed)
        confirm();
    const RequestResult result = m_request->result(isToBeConfirmed);
    m_request.reset();
    return result;
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
