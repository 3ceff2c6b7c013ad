#include "tests/soak/judge.h"

#include <algorithm>
#include <utility>

namespace soak {

namespace {

constexpr int MAX_FAULTS = 5; // reported; the first is what matters
constexpr std::size_t RECENT_EXCHANGES = 12;
constexpr qint32 READ_BLOCK_TAG = 4;   // of what the driver polls
constexpr std::size_t READS_KEPT = 32; // an answer waits that may be a late one to another request

QString toText(const kmr::Exchange &exchange)
{
    static const char *const OUTCOMES[] = {"good", "sent again", "given up", "interrupted"};
    const QByteArray request(exchange.request.frame, exchange.request.frameLen);
    QByteArray received = exchange.received.left(80);
    for (char &character : received)
        character = character < ' ' ? '.' : character;
    return QString("%1 -> %2 %3 (%4)")
        .arg(QString::fromLatin1(request.trimmed()), QString::fromLatin1(received),
             OUTCOMES[static_cast<int>(exchange.outcome)], kmr::toText(exchange.fault));
}

QString hex(std::uint32_t value)
{
    return QString::number(value, 16).toUpper();
}

} // namespace

Judge::Judge(Plant &plant, const std::vector<Cell> &cells, std::vector<kmr::Tag> tags, int retries)
    : m_plant(plant), m_cells(cells), m_tags(std::move(tags)), m_retries(retries),
      m_verified(cells.size()), m_heldAtReads(cells.size())
{
}

void Judge::watch(kmr::Session &session)
{
    forget();
    m_session = &session;
    session.setObserver([this](const kmr::Exchange &exchange) { note(exchange); });
    session.setConfirmObserver([this](const kmr::ElementRange &run) { checkConfirmed(run); });
}

void Judge::forget()
{
    m_session = nullptr;
    m_repeated.clear();
    m_plant.forget();
    for (auto &reads : m_heldAtReads)
        reads.clear();
}

void Judge::begin(const std::vector<QByteArray> &writes, bool isTransfer)
{
    m_isTransfer = isTransfer;
    m_allowedWrites = writes;
    m_writesDone = 0;
    m_givenUpFrames.clear();
    m_begunBefore = m_repeated;
}

void Judge::end(const kmr::RequestResult &result, const CellValues &certain)
{
    using Outcome = kmr::RequestResult::Outcome;
    checkWrites();
    const bool hasGivenUp = !m_givenUpFrames.isEmpty();
    if (result.isDone() && hasGivenUp)
        blame("a request that was given up was reported as done");
    if (result.outcome == Outcome::NotSent && m_writesDone > 0)
        blame("a write that was reported as not sent was carried out");
    if (hasGivenUp && !result.isDone() && result.failure.fault == kmr::ReplyFault::None &&
        result.failure.exceptionCode == 0)
        blame("a request was given up and reported without a reason");
    checkCertain(certain);
    m_allowedWrites.clear();
    m_isTransfer = false;
}

void Judge::checkCertain(const CellValues &certain)
{
    for (const auto &[cell, value] : certain) {
        if (m_plant.value(cell) != value)
            blame(QString("%1 was reported as written or read with %2, the controller holds %3")
                      .arg(m_cells[cell].tag, hex(value), hex(m_plant.value(cell))));
    }
}

void Judge::demandAllCurrent()
{
    for (std::size_t i = 0; i < m_cells.size(); ++i) {
        const bool isGood = m_session->state(m_tags[i]).quality == kmr::Quality::Good;
        if (!isGood || shown(i) != m_plant.value(i))
            blame(QString("%1 is %2 %3 one poll cycle after the faults stopped, the controller "
                          "holds %4")
                      .arg(m_cells[i].tag, isGood ? "good and" : "not good,", hex(shown(i)),
                           hex(m_plant.value(i))));
    }
}

std::uint32_t Judge::shown(std::size_t cell) const
{
    return fromElements(m_session->values(m_tags[cell]));
}

void Judge::blame(const QString &what)
{
    if (m_faults.size() == MAX_FAULTS)
        return;
    QString evidence = QString("after %1 exchanges: %2").arg(m_exchanges).arg(what);
    for (const QString &exchange : m_recent)
        evidence += "\n    " + exchange;
    for (const QString &answer : m_plant.recentAnswers())
        evidence += "\n    the controller: " + answer;
    m_faults.append(evidence);
}

void Judge::note(const kmr::Exchange &exchange)
{
    ++m_exchanges;
    m_recent.push_back(toText(exchange));
    if (m_recent.size() > RECENT_EXCHANGES)
        m_recent.pop_front();
    checkRepeats(exchange);
    keepHeld(exchange);
    checkValues(exchange);
    checkWrites();
    m_plant.forget();
}

// A frame is sent until it is answered, and given up, with a report, after so many bad answers;
// what is only polled, at the first one as long as the station answers nothing.
void Judge::checkRepeats(const kmr::Exchange &exchange)
{
    using Outcome = kmr::Exchange::Outcome;
    const QByteArray frame(exchange.request.frame, exchange.request.frameLen);
    if (!m_repeated.isEmpty() && frame != m_repeated)
        blame("a request vanished without a report: " + QString::fromLatin1(m_repeated.trimmed()));
    const bool isBad =
        exchange.outcome == Outcome::SentAgain || exchange.outcome == Outcome::GivenUp;
    m_badInARow = isBad ? (frame == m_repeated ? m_badInARow : 0) + 1 : 0;
    m_repeated = exchange.outcome == Outcome::SentAgain ? frame : QByteArray();
    const bool isUsers =
        frame != m_begunBefore && (m_isTransfer || exchange.request.var.reqTag != READ_BLOCK_TAG);
    const int retries = m_isSilent && !isUsers ? 0 : m_retries;
    if (isBad && (m_badInARow > retries) != (exchange.outcome == Outcome::GivenUp))
        blame(
            QString("given up or not at the wrong time, after %1 bad exchanges").arg(m_badInARow));
    if (exchange.outcome != Outcome::SentAgain)
        m_begunBefore.clear();
    if (exchange.outcome == Outcome::Good)
        m_givenUpFrames.remove(frame); // an upload in doubt is repeated
    if (exchange.outcome == Outcome::Good || exchange.exceptionCode != 0)
        m_isSilent = false;
    if (exchange.outcome != Outcome::GivenUp)
        return;
    m_isSilent = exchange.exceptionCode == 0;
    ++m_givenUp;
    if (isUsers)
        m_givenUpFrames.insert(frame);
}

// The values of a cell during the last exchanges that read it: one of these is confirmed later. The
// answer to a request may come when it was sent again, and the second answer be lost.
void Judge::keepHeld(const kmr::Exchange &exchange)
{
    using Outcome = kmr::Exchange::Outcome;
    if (exchange.outcome != Outcome::Good && exchange.outcome != Outcome::SentAgain)
        return;
    const kmr::ElementRange run = kmr::refreshedBy(exchange.request);
    for (std::size_t i = 0; i < m_cells.size(); ++i) {
        if (!m_cells[i].isOf(run.area, run.first, run.end()))
            continue;
        m_heldAtReads[i].push_back(m_plant.heldValues(i));
        if (m_heldAtReads[i].size() > READS_KEPT)
            m_heldAtReads[i].pop_front();
    }
}

void Judge::checkConfirmed(const kmr::ElementRange &run)
{
    for (std::size_t i = 0; i < m_cells.size(); ++i) {
        if (!m_cells[i].isOf(run.area, run.first, run.end()) ||
            m_session->state(m_tags[i]).quality != kmr::Quality::Good)
            continue;
        const std::uint32_t value = shown(i);
        m_verified[i] = value;
        ++m_confirmed;
        const bool wasHeld = std::any_of(
            m_heldAtReads[i].begin(), m_heldAtReads[i].end(), [value](const auto &held) {
                return std::find(held.begin(), held.end(), value) != held.end();
            });
        if (!wasHeld)
            blame(QString("%1 is reported as good with %2, which the controller did not hold")
                      .arg(m_cells[i].tag, hex(value)));
    }
}

// A good value changes only when a read is confirmed, and elements of a read that got no answer
// are not good.
void Judge::checkValues(const kmr::Exchange &exchange)
{
    const QByteArray function(exchange.request.frame + 3, 2);
    const bool isRead = function == "02" || function == "03";
    const bool isUnanswered = isRead && exchange.exceptionCode == 0 &&
                              exchange.outcome == kmr::Exchange::Outcome::GivenUp;
    const kmr::ElementRange run = kmr::refreshedBy(exchange.request);
    for (std::size_t i = 0; i < m_cells.size(); ++i) {
        const Cell &cell = m_cells[i];
        if (m_session->state(m_tags[i]).quality != kmr::Quality::Good)
            continue;
        if (isUnanswered && cell.isOf(run.area, run.first, run.end()))
            blame(cell.tag + " is good although its read was given up");
        if (shown(i) != m_verified[i])
            blame(QString("%1 is good and changed from %2 to %3 without a read")
                      .arg(cell.tag, hex(m_verified[i]), hex(shown(i))));
    }
}

// The controller carries out only the user's current request.
void Judge::checkWrites()
{
    for (const QByteArray &write : m_plant.takeWrites()) {
        ++m_writesDone;
        if (std::find(m_allowedWrites.begin(), m_allowedWrites.end(), write) ==
            m_allowedWrites.end())
            blame("a write was carried out that nobody asked for now: " +
                  QString::fromLatin1(write.trimmed()));
    }
}

} // namespace soak
