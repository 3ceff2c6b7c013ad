// The index of the store against a plain search from the front, for all changes of the store.
#include "driver/store_index.h"

#include "driver_fixture.h"

#include <random>

namespace {

using StoreIndexTest = DriverTest;

struct Key {
    qint32 station;
    QString area;
    qint32 index;
};

// The first entry of `store` with that key, or its size.
int firstOf(const QList<_DATA_> &store, const Key &key)
{
    int position = 0;
    for (const _DATA_ &entry : store) {
        if (entry.station == key.station && entry.area == key.area && entry.index == key.index)
            break;
        ++position;
    }
    return position;
}

// A host, and other code that changes the list without the driver.
class Changes {
public:
    explicit Changes(unsigned seed) : random(seed) {}

    // Few keys, so that they collide. Equal texts do not always share memory.
    Key key()
    {
        static const QString names[] = {"D", "D", "d", "TV", "TV_bit", ""};
        const QString name = names[below(6)];
        return {below(3), below(2) ? name : name + QString(), below(30) - 5};
    }

    void change()
    {
        QList<_DATA_> &store = driver.dataAreas;
        const int size = static_cast<int>(store.size());
        const std::function<void()> changes[] = {
            [&] { useDriver(); },
            [&] { useDriver(); },
            [&] { store.append(entry()); },
            [&] { store.prepend(entry()); },
            [&] { kept = store; },
            [&] { store = kept; },
            [&] { seldom([&] { store.clear(); }); },
            [&] { seldom([] { driver = Ostrel_kmr(); }); },
            [&] {
                seldom([] {
                    intf_initProperty(nullptr, nullptr, nullptr, nullptr, "1#0#0#3#8", nullptr);
                });
            },
            [&] { store.swap(kept); },
            // Of a store that has entries:
            [&] { store.insert(below(size), entry()); },
            [&] { store.removeAt(below(size)); },
            [&] { store[below(size)] = entry(); },
            [&] { store[below(size)].index = key().index; },
            [&] { store.move(below(size), below(size)); },
            [&] { store.begin()->station = below(3); },
        };
        changes[below(size == 0 ? 10 : 16)]();
    }

private:
    int below(int limit)
    {
        return static_cast<int>(random() % static_cast<unsigned>(limit));
    }

    _DATA_ entry()
    {
        const Key of = key();
        _DATA_ made;
        made.station = of.station;
        made.area = of.area;
        made.index = of.index;
        return made;
    }

    template <typename Change> void seldom(const Change &make)
    {
        if (below(10) == 0)
            make();
    }

    void useDriver()
    {
        const Key of = key();
        quint8 bytes[40] = {quint8(below(256))};
        if (below(2))
            intf_setData(of.station, of.area, of.index, below(20), bytes, 0);
        for (int i = below(20); i > 0; --i)
            dataAreaToChange(of.station, of.area, of.index + i).wordMonitor = 1;
    }

    std::mt19937 random;
    QList<_DATA_> kept;
};

} // namespace

TEST_F(StoreIndexTest, FindsWhatASearchFromTheFrontFinds)
{
    for (unsigned seed = 1; seed <= 8; ++seed) {
        Changes changes(seed);
        for (int round = 0; round < 1500; ++round) {
            changes.change();
            const Key key = changes.key();
            const int expected = firstOf(driver.dataAreas, key);
            ASSERT_EQ(positionInStore(key.station, key.area, key.index), expected)
                << "seed " << seed << " round " << round;
            ASSERT_EQ(firstOf(driver.dataAreas, key), expected);
        }
    }
}

TEST_F(StoreIndexTest, FindsEveryEntryOfALargeStore)
{
    const QString area = "D";
    for (int i = 0; i < 5000; ++i)
        ASSERT_EQ(positionInStore(i % 3, area, i * 7), i);
    for (int i = 4999; i >= 0; --i)
        ASSERT_EQ(positionInStore(i % 3, area, i * 7), i);
    EXPECT_EQ(driver.dataAreas.size(), 5000);
}

// A text may be in the middle of others, without a 0 at its end.
TEST_F(StoreIndexTest, FindsAnEntryByTheCharactersOfItsNameAlone)
{
    const QChar memory[] = {QLatin1Char('x'), QLatin1Char('D'), QLatin1Char('y')};
    EXPECT_EQ(positionInStore(1, "D", 5), 0);
    EXPECT_EQ(positionInStore(1, "D", 9), 1);
    EXPECT_EQ(positionInStore(1, QString::fromRawData(memory + 1, 1), 5), 0);
}

TEST_F(StoreIndexTest, CopyOfTheStoreKeepsItsValues)
{
    dataAreaToChange(1, "D", 5).readValue[0] = 1;
    const QList<_DATA_> copy = driver.dataAreas;
    dataAreaToChange(1, "D", 5).readValue[0] = 2;
    dataAreaToChange(1, "D", 6).readValue[0] = 3;
    intf_addrMerge({});
    EXPECT_EQ(copy.size(), 1);
    EXPECT_EQ(copy.at(0).readValue[0], 1);
    EXPECT_EQ(readValueOf("D", 5), Bytes({2, 0, 0, 0}));
}

// The driver's own changes do not copy the list: a change of one value takes no time that
// grows with the store.
TEST_F(StoreIndexTest, OwnChangesMoveNothing)
{
    for (int i = 0; i < 100; ++i)
        positionInStore(1, "D", i);
    driver.dataAreas.reserve(200);
    positionInStore(1, "D", 0); // and has seen that
    const QList<_DATA_> &store = driver.dataAreas;
    const _DATA_ *const before = &store.at(50);
    positionInStore(1, "D", 100);
    EXPECT_EQ(&store.at(50), before);
    dataAreaToChange(1, "D", 50).readValue[0] = 1;
    clearWatchMarks();
    EXPECT_EQ(&store.at(50), before);
}
