#include "kmr/publish/outbox.h"

#include <gtest/gtest.h>

using namespace kmr;

namespace {

// Stands for the three threads, and for a disk.
class OutboxTest : public testing::Test {
protected:
    void push(int count)
    {
        for (int i = 0; i < count; ++i)
            m_outbox.push({});
    }

    // The numbers of the next messages that are sent.
    std::vector<std::uint64_t> send(int most)
    {
        std::vector<std::uint64_t> numbers;
        for (int i = 0; i < most; ++i) {
            if (const auto message = m_outbox.next())
                numbers.push_back(message->number);
        }
        return numbers;
    }

    void store(std::uint64_t upTo)
    {
        const std::vector<Message> messages = m_outbox.toStore(upTo);
        m_disk.insert(m_disk.end(), messages.begin(), messages.end());
        m_outbox.noteStored(messages);
    }

    void load(std::size_t most)
    {
        const auto after = m_outbox.wantsAfter();
        ASSERT_TRUE(after);
        std::vector<Message> messages;
        for (const Message &message : m_disk) {
            if (message.number > *after && messages.size() < most)
                messages.push_back(message);
        }
        const bool isAll = messages.size() < most;
        m_outbox.load(std::move(messages), isAll);
    }

    int m_wakes = 0;
    std::vector<Message> m_disk;
    Outbox m_outbox{0, true, [this] { ++m_wakes; }};
};

using Numbers = std::vector<std::uint64_t>;

} // namespace

TEST_F(OutboxTest, SendsInOrderOnceConnectedAndAgainWhatALostConnectionLeftUnacknowledged)
{
    push(4);
    EXPECT_EQ(m_wakes, 4);
    EXPECT_EQ(send(1), Numbers());
    m_outbox.setConnected(true);
    EXPECT_EQ(send(3), (Numbers{1, 2, 3}));
    m_outbox.acknowledge(2);
    m_outbox.setConnected(false);
    m_outbox.setConnected(true);
    EXPECT_EQ(send(9), (Numbers{1, 3, 4}));
}

TEST_F(OutboxTest, SendsNoMoreThanAWindowAhead)
{
    m_outbox.setConnected(true);
    push(Outbox::WINDOW + 1);
    EXPECT_EQ(send(Outbox::WINDOW + 1).size(), std::size_t{Outbox::WINDOW});
    m_outbox.acknowledge(7);
    EXPECT_EQ(send(1), Numbers{Outbox::WINDOW + 1});
}

TEST_F(OutboxTest, WhatIsOutOfDateLaterIsNotKeptWithoutAConnection)
{
    m_outbox.pushIfConnected({});
    EXPECT_TRUE(m_outbox.isEmpty());
    m_outbox.setConnected(true);
    m_outbox.pushIfConnected({});
    EXPECT_FALSE(m_outbox.isEmpty());
}

TEST_F(OutboxTest, StoresWhatWaitedOnceAndReportsItsDelivery)
{
    push(2);
    store(1);
    EXPECT_EQ(m_disk.size(), 1U);
    EXPECT_TRUE(m_outbox.toStore(1).empty());
    EXPECT_EQ(m_outbox.unstored(), 1U);
    m_outbox.setConnected(true);
    send(2);
    m_outbox.acknowledge(1);
    m_outbox.acknowledge(2);
    EXPECT_EQ(m_outbox.takeDelivered(), Numbers{1});
    EXPECT_TRUE(m_outbox.takeDelivered().empty());
    EXPECT_TRUE(m_outbox.isEmpty());
}

TEST_F(OutboxTest, WhatIsDeliveredWhileItIsStoredIsRemovedFromDisk)
{
    push(1);
    const std::vector<Message> messages = m_outbox.toStore(1);
    m_outbox.setConnected(true);
    send(1);
    m_outbox.acknowledge(1);
    m_outbox.noteStored(messages);
    EXPECT_EQ(m_outbox.takeDelivered(), Numbers{1});
}

TEST_F(OutboxTest, LeavesALongBacklogToTheDiskAndSendsAllOfItInOrder)
{
    const int count = Outbox::KEPT + 10;
    push(count);
    store(count);
    push(1); // after those on disk
    m_outbox.setConnected(true);
    Numbers sent;
    std::uint64_t acknowledged = 0;
    while (!m_outbox.isEmpty()) {
        if (m_outbox.wantsAfter())
            load(6);
        for (const std::uint64_t number : send(50)) {
            sent.push_back(number);
            m_outbox.acknowledge(number);
            ++acknowledged;
        }
        ASSERT_LE(acknowledged, static_cast<std::uint64_t>(count) + 1);
    }
    ASSERT_EQ(sent.size(), static_cast<std::size_t>(count) + 1);
    EXPECT_TRUE(std::is_sorted(sent.begin(), sent.end()));
    EXPECT_EQ(m_outbox.takeDelivered().size(), static_cast<std::size_t>(count)); // all from disk
}

TEST_F(OutboxTest, FirstSendsWhatAnEarlierRunLeftOnDisk)
{
    Outbox outbox(7, false, [] {});
    outbox.push({});
    outbox.setConnected(true);
    EXPECT_FALSE(outbox.next());
    EXPECT_EQ(outbox.wantsAfter(), 0U);
    Message left;
    left.number = 7;
    outbox.load({left}, true);
    EXPECT_EQ(outbox.next()->number, 7U);
    EXPECT_EQ(outbox.next()->number, 8U);
}

TEST_F(OutboxTest, DropsTheOldestButNotWhatIsOnItsWay)
{
    push(4);
    m_outbox.setConnected(true);
    send(1);
    m_outbox.drop(3);
    m_outbox.setConnected(false);
    m_outbox.setConnected(true);
    EXPECT_EQ(send(9), (Numbers{1, 4}));
}

TEST_F(OutboxTest, WhileTheDiskHangsTheMemoryHoldsTheNewestAndWhatIsOnDiskOrOnItsWay)
{
    push(2);
    store(2);
    m_outbox.setConnected(true);
    send(1);
    push(Outbox::MOST_KEPT);
    EXPECT_EQ(m_outbox.dropped(), 2U);
    EXPECT_TRUE(m_outbox.takeDelivered().empty());
    EXPECT_EQ(send(2), (Numbers{2, 5}));
}
