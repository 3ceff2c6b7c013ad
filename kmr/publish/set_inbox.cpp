#include "kmr/publish/set_inbox.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace kmr {

void SetInbox::add(std::vector<Incoming> requests)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_waiting.size() + requests.size() <= MOST_WAITING) {
        std::move(requests.begin(), requests.end(), std::back_inserter(m_waiting));
        m_change.notify_all();
        return;
    }
    m_refusedCount += requests.size();
    for (Incoming &request : requests) {
        if (m_refused.size() < MOST_REFUSED)
            m_refused.push_back(std::move(request));
    }
}

std::optional<Incoming> SetInbox::take()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_waiting.empty())
        return std::nullopt;
    Incoming request = std::move(m_waiting.front());
    m_waiting.pop_front();
    return request;
}

std::vector<Incoming> SetInbox::takeRefused()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return std::exchange(m_refused, {});
}

std::uint64_t SetInbox::refused() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_refusedCount;
}

void SetInbox::await(std::chrono::nanoseconds time)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    m_change.wait_for(lock, time, [this] { return !m_waiting.empty(); });
}

} // namespace kmr
