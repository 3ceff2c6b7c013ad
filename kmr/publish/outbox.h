// The messages on their way to the broker, in their order. Three threads meet here: the polling
// adds, the network sends, the disk keeps what waits for long. None waits for another's work.
//
// In the order of their numbers the messages lie in three parts:
//
//   front   in memory, those that are sent next; some may be on disk as well
//   disk    only on disk, if hasMore
//   fresh   in memory, newer than those on disk; empty unless hasMore
//
// Any function may be called from any thread, but those of the network from one, and those of the
// disk from one.
#pragma once

#include "kmr/publish/message.h"

#include <chrono>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <vector>

namespace kmr {

class Outbox {
public:
    static constexpr std::size_t WINDOW = 100;      // sent, but not acknowledged
    static constexpr std::size_t KEPT = 2000;       // in memory, if the others are on disk
    static constexpr std::size_t MOST_KEPT = 20000; // in memory, if the disk fails or hangs

    // `wake` is called after each push, by the thread that pushes. `lastNumber`: the last one given
    // in earlier runs. `isEmpty`: no messages are on disk.
    Outbox(std::uint64_t lastNumber, bool isEmpty, std::function<void()> wake);

    // The number of the last message so far.
    std::uint64_t lastNumber() const;

    // The polling: adds a message. Its number is given here. Beyond MOST_KEPT the oldest that is
    // neither on disk nor on its way is dropped.
    void push(Message message);

    // The same, but it is dropped while there is no connection: it would be out of date later.
    void pushIfConnected(Message message);

    // The network: the next message to send, which then counts as sent. Nothing while WINDOW
    // messages are not acknowledged.
    std::optional<Message> next();
    void acknowledge(std::uint64_t number);

    // The network: whether messages are sent. What was not acknowledged is sent again, in its
    // order, after the connection was lost.
    void setConnected(bool isConnected);
    bool isConnected() const;

    // The disk: what is to be stored, those up to this number that still wait; and that this was
    // stored.
    std::vector<Message> toStore(std::uint64_t upTo) const;
    void noteStored(const std::vector<Message> &messages);

    // The disk: what was stored and is delivered, or dropped from memory.
    std::vector<std::uint64_t> takeDelivered();

    // The disk: the number after which more is to be loaded, if any is; then what was found.
    // `isAll`: there is no more of it.
    std::optional<std::uint64_t> wantsAfter() const;
    void load(std::vector<Message> messages, bool isAll);

    // The disk: messages up to this number have been removed from it.
    void drop(std::uint64_t upTo);

    // Messages that push() has dropped so far.
    std::uint64_t dropped() const;

    // Nothing waits in memory or on disk.
    bool isEmpty() const;

    // Messages in memory that are not on disk.
    std::size_t unstored() const;

private:
    struct Entry {
        Message message;
        bool isSent = false;
        bool isDelivered = false;
        bool isStored = false;
    };

    void removeDelivered();
    void spill();
    void dropOldest();

    const std::function<void()> m_wake;
    mutable std::mutex m_mutex;
    std::uint64_t m_lastNumber; // given
    std::uint64_t m_lastLoaded = 0;
    std::deque<Entry> m_front;
    bool m_hasMore;
    std::deque<Entry> m_fresh;
    std::size_t m_unacknowledged = 0;
    bool m_isConnected = false;
    std::uint64_t m_dropped = 0;
    std::vector<std::uint64_t> m_delivered; // stored, to be removed from disk
};

} // namespace kmr
