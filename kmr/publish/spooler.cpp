#include "kmr/publish/spooler.h"

#include "host/error.h"

#include <QDateTime>

#include <utility>

namespace kmr {

namespace {

constexpr std::size_t BATCH = 500;                // messages loaded at once
constexpr std::chrono::seconds TRY_AGAIN(5);      // after a failure of the disk
constexpr std::chrono::seconds BETWEEN_LINES(10); // about dropped messages

} // namespace

Spooler::Spooler(Spool &spool, Outbox &outbox, std::function<void(const QString &)> report)
    : m_spool(spool), m_outbox(outbox), m_report(std::move(report)), m_stored(spool.count()),
      m_thread([this] { run(); })
{
}

Spooler::~Spooler()
{
    end();
}

void Spooler::end()
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_isEnding = true;
    }
    m_change.notify_all();
    if (m_thread.joinable())
        m_thread.join();
}

void Spooler::run()
{
    std::uint64_t seen = 0; // the last message at the look before
    while (!isEnding(m_isFailing ? TRY_AGAIN : PERIOD)) {
        const std::uint64_t last = m_outbox.lastNumber();
        work(seen);
        seen = last;
    }
    work(m_outbox.lastNumber());
}

bool Spooler::isEnding(std::chrono::milliseconds wait)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    return m_change.wait_for(lock, wait, [this] { return m_isEnding; });
}

// Stores what waits up to this number, whatever times the messages have: clocks are set.
void Spooler::work(std::uint64_t upTo)
{
    try {
        removeDelivered();
        const std::vector<Message> waiting = m_outbox.toStore(upTo);
        if (!waiting.empty()) {
            m_spool.append(waiting);
            m_outbox.noteStored(waiting);
            removeDelivered(); // else what was dropped meanwhile would be loaded again
        }
        const Spool::Dropped dropped = m_spool.dropExcess(QDateTime::currentMSecsSinceEpoch());
        if (dropped.count > 0)
            m_outbox.drop(dropped.upTo);
        m_dropped += dropped.count;
        reportDropped(m_fromSpool, dropped.count);
        loadMore();
        if (std::exchange(m_isFailing, false))
            m_report("the spool can be written again");
    } catch (const Error &error) {
        noteFailure(error.text());
    }
    const std::uint64_t seen = std::exchange(m_seenInMemory, m_outbox.dropped());
    reportDropped(m_fromMemory, m_seenInMemory - seen);
    m_stored = m_spool.count();
    m_storedBytes = m_spool.bytes();
}

void Spooler::removeDelivered()
{
    for (const std::uint64_t number : m_outbox.takeDelivered())
        m_toRemove.push_back(number);
    if (m_toRemove.empty())
        return;
    m_spool.remove(m_toRemove);
    m_toRemove.clear();
}

void Spooler::loadMore()
{
    while (const std::optional<std::uint64_t> number = m_outbox.wantsAfter()) {
        std::vector<Message> messages = m_spool.readAfter(*number, BATCH);
        const bool isAll = messages.size() < BATCH;
        m_outbox.load(std::move(messages), isAll);
    }
}

void Spooler::noteFailure(const QString &text)
{
    if (!std::exchange(m_isFailing, true))
        m_report(text + "; what the broker has not taken yet stays in memory");
}

// A line for the first ones, then one for all in each ten seconds.
void Spooler::reportDropped(Drops &drops, std::uint64_t count)
{
    drops.unreported += count;
    const auto now = std::chrono::steady_clock::now();
    if (drops.unreported == 0 || now < drops.nextReport)
        return;
    m_report(QString("%1 messages dropped, the oldest ones, because %2")
                 .arg(drops.unreported)
                 .arg(drops.why));
    drops.unreported = 0;
    drops.nextReport = now + BETWEEN_LINES;
}

} // namespace kmr
