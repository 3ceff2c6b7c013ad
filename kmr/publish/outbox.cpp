#include "kmr/publish/outbox.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace kmr {

using Lock = std::lock_guard<std::mutex>;

Outbox::Outbox(std::uint64_t lastNumber, bool isEmpty, std::function<void()> wake)
    : m_wake(std::move(wake)), m_lastNumber(lastNumber), m_hasMore(!isEmpty)
{
}

std::uint64_t Outbox::lastNumber() const
{
    const Lock lock(m_mutex);
    return m_lastNumber;
}

void Outbox::push(Message message)
{
    {
        const Lock lock(m_mutex);
        message.number = ++m_lastNumber;
        (m_hasMore ? m_fresh : m_front).push_back({std::move(message)});
        if (m_front.size() + m_fresh.size() > MOST_KEPT)
            dropOldest();
    }
    m_wake();
}

void Outbox::dropOldest()
{
    for (std::deque<Entry> *part : {&m_front, &m_fresh}) {
        const auto oldest = std::find_if(part->begin(), part->end(), [](const Entry &entry) {
            return !entry.isSent && !entry.isStored;
        });
        if (oldest == part->end())
            continue;
        part->erase(oldest);
        ++m_dropped;
        return;
    }
}

void Outbox::pushIfConnected(Message message)
{
    if (isConnected())
        push(std::move(message));
}

std::optional<Message> Outbox::next()
{
    const Lock lock(m_mutex);
    if (!m_isConnected || m_unacknowledged >= WINDOW)
        return std::nullopt;
    const auto entry =
        std::find_if(m_front.begin(), m_front.end(), [](const Entry &one) { return !one.isSent; });
    if (entry == m_front.end())
        return std::nullopt;
    entry->isSent = true;
    ++m_unacknowledged;
    return entry->message;
}

void Outbox::acknowledge(std::uint64_t number)
{
    const Lock lock(m_mutex);
    const auto entry = std::find_if(m_front.begin(), m_front.end(), [number](const Entry &one) {
        return one.message.number == number;
    });
    if (entry == m_front.end() || !entry->isSent || entry->isDelivered)
        return;
    entry->isDelivered = true;
    --m_unacknowledged;
    removeDelivered();
}

void Outbox::removeDelivered()
{
    while (!m_front.empty() && m_front.front().isDelivered) {
        if (m_front.front().isStored)
            m_delivered.push_back(m_front.front().message.number);
        m_lastLoaded = m_front.front().message.number;
        m_front.pop_front();
    }
}

void Outbox::setConnected(bool isConnected)
{
    const Lock lock(m_mutex);
    m_isConnected = isConnected;
    m_unacknowledged = 0;
    for (Entry &entry : m_front)
        entry.isSent = entry.isDelivered;
}

bool Outbox::isConnected() const
{
    const Lock lock(m_mutex);
    return m_isConnected;
}

std::vector<Message> Outbox::toStore(std::uint64_t upTo) const
{
    const Lock lock(m_mutex);
    std::vector<Message> messages;
    for (const std::deque<Entry> *part : {&m_front, &m_fresh}) {
        for (const Entry &entry : *part) {
            if (!entry.isStored && !entry.isDelivered && entry.message.number <= upTo)
                messages.push_back(entry.message);
        }
    }
    return messages;
}

// What was delivered or dropped in the meantime is no longer in memory.
void Outbox::noteStored(const std::vector<Message> &messages)
{
    const Lock lock(m_mutex);
    auto entry = m_front.begin();
    for (const Message &message : messages) {
        while (entry != m_front.end() && entry->message.number < message.number)
            ++entry;
        if (entry != m_front.end() && entry->message.number == message.number)
            entry->isStored = true;
        else if (!m_fresh.empty() && m_fresh.front().message.number == message.number)
            m_fresh.pop_front();
        else
            m_delivered.push_back(message.number);
    }
    spill();
}

// Leaves to the disk what need not be in memory. What was stored stands before what was not.
void Outbox::spill()
{
    if (m_hasMore || m_front.size() <= KEPT || !m_front[KEPT].isStored || m_front[KEPT].isSent)
        return;
    const auto from = m_front.begin() + static_cast<std::ptrdiff_t>(KEPT);
    std::copy_if(std::make_move_iterator(from), std::make_move_iterator(m_front.end()),
                 std::back_inserter(m_fresh), [](const Entry &entry) { return !entry.isStored; });
    m_front.erase(from, m_front.end());
    m_hasMore = true;
}

std::vector<std::uint64_t> Outbox::takeDelivered()
{
    const Lock lock(m_mutex);
    return std::exchange(m_delivered, {});
}

std::optional<std::uint64_t> Outbox::wantsAfter() const
{
    const Lock lock(m_mutex);
    if (!m_hasMore || m_front.size() > KEPT / 2)
        return std::nullopt;
    return m_front.empty() ? m_lastLoaded : m_front.back().message.number;
}

void Outbox::load(std::vector<Message> messages, bool isAll)
{
    {
        const Lock lock(m_mutex);
        for (Message &message : messages) {
            m_lastLoaded = message.number;
            m_front.push_back({std::move(message), false, false, true});
        }
        if (isAll) {
            m_hasMore = false;
            std::move(m_fresh.begin(), m_fresh.end(), std::back_inserter(m_front));
            m_fresh.clear();
        }
    }
    m_wake();
}

void Outbox::drop(std::uint64_t upTo)
{
    const Lock lock(m_mutex);
    m_front.erase(std::remove_if(m_front.begin(), m_front.end(),
                                 [upTo](const Entry &entry) {
                                     return entry.message.number <= upTo && !entry.isSent;
                                 }),
                  m_front.end());
    m_lastLoaded = std::max(m_lastLoaded, upTo);
}

std::uint64_t Outbox::dropped() const
{
    const Lock lock(m_mutex);
    return m_dropped;
}

bool Outbox::isEmpty() const
{
    const Lock lock(m_mutex);
    return m_front.empty() && m_fresh.empty() && !m_hasMore;
}

std::size_t Outbox::unstored() const
{
    const Lock lock(m_mutex);
    const auto count = std::count_if(m_front.begin(), m_front.end(),
                                     [](const Entry &entry) { return !entry.isStored; });
    return static_cast<std::size_t>(count) + m_fresh.size();
}

} // namespace kmr
