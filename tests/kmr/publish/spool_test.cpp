#include "kmr/publish/spool.h"

#include "host/error.h"
#include "kmr/publish/spooler.h"
#include "tests/kmr/file_size_limit.h"

#include <QDateTime>
#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <functional>
#include <utility>

using namespace kmr;

namespace {

Message message(std::uint64_t number, qint64 time = 0)
{
    return {number,      time,
            "line/oven", "payload " + QByteArray::number(static_cast<qulonglong>(number)),
            true,        "c"};
}

class SpoolTest : public testing::Test {
protected:
    QString path() const
    {
        return m_directory.filePath("spool");
    }

    static std::vector<std::uint64_t> numbers(Spool &spool)
    {
        std::vector<std::uint64_t> found;
        for (const Message &one : spool.readAfter(0, 1000))
            found.push_back(one.number);
        return found;
    }

    std::string faultOfOpening() const
    {
        try {
            Spool(path(), {});
        } catch (const Error &error) {
            return error.what();
        }
        return "none";
    }

    const QTemporaryDir m_directory;
};

using Numbers = std::vector<std::uint64_t>;

std::function<void()> duringCommit; // is called once

int commit(void *)
{
    if (duringCommit)
        std::exchange(duringCommit, {})();
    return 0;
}

int watchCommits(sqlite3 *database, char **, const sqlite3_api_routines *)
{
    sqlite3_commit_hook(database, commit, nullptr);
    return SQLITE_OK;
}

} // namespace

TEST_F(SpoolTest, KeepsMessagesWholeAndInOrderOverItsEnd)
{
    {
        Spool spool(path(), {});
        EXPECT_EQ(spool.lastNumber(), 0U);
        spool.append({message(3), message(5, 1234)});
    }
    Spool spool(path(), {});
    EXPECT_EQ(spool.count(), 2U);
    EXPECT_EQ(spool.lastNumber(), 5U);
    const std::vector<Message> found = spool.readAfter(3, 9);
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found[0].time, 1234);
    EXPECT_EQ(found[0].topic, "line/oven");
    EXPECT_EQ(found[0].payload, "payload 5");
    EXPECT_TRUE(found[0].isRetained);
    EXPECT_EQ(found[0].correlation, "c");
    EXPECT_EQ(spool.readAfter(0, 1).size(), 1U);
}

TEST_F(SpoolTest, NumbersGoOnAfterAllWereRemoved)
{
    {
        Spool spool(path(), {});
        spool.append({message(1), message(2)});
        spool.remove({1, 2, 9});
        EXPECT_EQ(spool.count(), 0U);
    }
    EXPECT_EQ(Spool(path(), {}).lastNumber(), 2U);
}

TEST_F(SpoolTest, TheOldestGoFirstWhenItIsTooMuch)
{
    Spool spool(path(), {3 * (32 + 9 + 9 + 1), 1000});
    spool.append({message(1), message(2), message(3), message(4), message(5)});
    const Spool::Dropped dropped = spool.dropExcess(0);
    EXPECT_EQ(dropped.count, 2U);
    EXPECT_EQ(dropped.upTo, 2U);
    EXPECT_EQ(numbers(spool), (Numbers{3, 4, 5}));
    EXPECT_EQ(spool.dropExcess(0).count, 0U);
    spool.remove({3});
    spool.append({message(6)});
    EXPECT_EQ(spool.dropExcess(0).count, 0U);
}

TEST_F(SpoolTest, WhatIsTooOldGoes)
{
    Spool spool(path(), {64000000, 1000});
    spool.append({message(1, 99), message(2, 100), message(3, 5000)});
    EXPECT_EQ(spool.dropExcess(1100).count, 1U);
    EXPECT_EQ(numbers(spool), (Numbers{2, 3}));
}

TEST_F(SpoolTest, FileOfAnotherKindOrInUseIsRefusedAndStaysAsItIs)
{
    {
        QFile file(path());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("name,tag\nand so on, for long enough to be no database\n");
    }
    EXPECT_EQ(faultOfOpening(),
              "cannot spool to " + path().toStdString() + ": file is not a database");
    EXPECT_EQ(QFile(path()).size(), 54);
    ASSERT_TRUE(QFile::remove(path()));
    const Spool spool(path(), {});
    EXPECT_EQ(faultOfOpening().find(path().toStdString() + " is used by another program"), 0U);
}

TEST_F(SpoolTest, WhatDoesNotFitOnTheDiskIsLeftOutWhole)
{
    Spool spool(path(), {});
    spool.append({message(1)});
    {
        const FileSizeLimit limit(static_cast<rlim_t>(QFile(path() + "-wal").size()) + 100);
        EXPECT_THROW(spool.append({message(2), message(3)}), Error);
    }
    EXPECT_EQ(spool.count(), 1U);
    spool.append({message(4)});
    EXPECT_EQ(numbers(spool), (Numbers{1, 4}));
}

TEST_F(SpoolTest, SpoolerStoresWhatWaitsAndRemovesWhatWasDelivered)
{
    Spool spool(path(), {});
    Outbox outbox(0, true, [] {});
    const qint64 hour = 3600000; // by which the clock is set back after the messages are made
    for (int i = 0; i < 3; ++i)
        outbox.push(message(0, QDateTime::currentMSecsSinceEpoch() + hour));
    Spooler(spool, outbox, {}).end();
    EXPECT_EQ(numbers(spool), (Numbers{1, 2, 3}));
    outbox.setConnected(true);
    outbox.next();
    outbox.acknowledge(1);
    Spooler(spool, outbox, {}).end();
    EXPECT_EQ(numbers(spool), (Numbers{2, 3}));
}

TEST_F(SpoolTest, WhatIsDroppedWhileItIsStoredIsNotLoadedAgain)
{
    sqlite3_auto_extension(reinterpret_cast<void (*)()>(watchCommits));
    Spool spool(path(), {});
    sqlite3_reset_auto_extension();
    Outbox outbox(0, false, [] {});
    duringCommit = [&outbox] {
        for (std::size_t i = 0; i < Outbox::MOST_KEPT; ++i)
            outbox.push(message(0, QDateTime::currentMSecsSinceEpoch()));
    };
    outbox.push(message(0, QDateTime::currentMSecsSinceEpoch()));
    Spooler(spool, outbox, [](const QString &) {}).end();
    EXPECT_EQ(outbox.dropped(), 1U);
    outbox.setConnected(true);
    EXPECT_EQ(outbox.next()->number, 2U);
}

TEST_F(SpoolTest, SpoolerCountsAndReportsWhatIsDropped)
{
    Spool spool(path(), {1, 1000});
    Outbox outbox(0, true, [] {});
    for (std::size_t i = 0; i < Outbox::MOST_KEPT + 1; ++i)
        outbox.push(message(0, QDateTime::currentMSecsSinceEpoch()));
    QStringList reported;
    Spooler spooler(spool, outbox, [&reported](const QString &line) { reported.append(line); });
    spooler.end();
    reported.sort();
    EXPECT_EQ(reported,
              QStringList({"1 messages dropped, the oldest ones, because the memory is full",
                           "20000 messages dropped, the oldest ones, because the spool is at its "
                           "limit of size or age"}));
    EXPECT_EQ(spooler.dropped(), 20001U);
    EXPECT_TRUE(outbox.isEmpty());
}
