#include "store_index.h"

namespace {

// Names are a few characters long, so a call into Qt would cost more. Most often both share one
// text.
bool sameText(const QString &left, const QString &right)
{
    const QChar *const characters = left.constData();
    const QChar *const others = right.constData();
    int rest = static_cast<int>(left.size());
    if (rest != right.size())
        return false;
    if (characters == others)
        return true;
    while (rest > 0 && characters[rest - 1] == others[rest - 1])
        --rest;
    return rest == 0;
}

bool hasKey(const _DATA_ &entry, qint32 station, const QString &area, qint32 index)
{
    return entry.index == index && entry.station == station && sameText(entry.area, area);
}

quint32 hashOf(qint32 station, const QString &area, qint32 index)
{
    quint32 hash = static_cast<quint32>(station);
    for (int i = 0; i < area.size(); ++i)
        hash = hash * 31 + area.at(i).unicode();
    hash = (hash * 0x9E3779B1u + static_cast<quint32>(index)) * 0x85EBCA6Bu;
    return hash ^ hash >> 15;
}

// The place in the hash table that holds the position of the first entry with that key, or the free
// place for it.
int placeOf(qint32 station, const QString &area, qint32 index)
{
    const QVector<qint32> &places = driver.storeIndex.places;
    const QList<_DATA_> &store = driver.dataAreas;
    const quint32 mask = static_cast<quint32>(places.size()) - 1;
    quint32 place = hashOf(station, area, index) & mask;
    for (; places.at(static_cast<int>(place)) >= 0; place = (place + 1) & mask) {
        if (hasKey(store.at(places.at(static_cast<int>(place))), station, area, index))
            break;
    }
    return static_cast<int>(place);
}

// Rebuilds the index for the present store, with room for twice as many entries.
void indexStore()
{
    StoreIndex &known = driver.storeIndex;
    const QList<_DATA_> &store = driver.dataAreas;
    const int size = static_cast<int>(store.size());
    int room = 16;
    while (room < 4 * size)
        room *= 2;
    known.places.fill(-1, room);
    known.distinct = true;
    known.lead = 0;
    for (int position = 0; position < size; ++position) {
        const _DATA_ &entry = store.at(position);
        const int place = placeOf(entry.station, entry.area, entry.index);
        if (known.places.at(place) < 0)
            known.places[place] = position;
        else
            known.distinct = false;
    }
    known.seen = store;
}

void noticeChanges()
{
    const StoreIndex &known = driver.storeIndex;
    if (known.places.isEmpty() || !known.seen.isSharedWith(driver.dataAreas))
        indexStore();
}

// The position of the entry if it is the one found last or in the same run of entries, else -1. As
// long as no key is there twice, any entry with the key is the first.
int positionNearLast(qint32 station, const QString &area, qint32 index)
{
    const QList<_DATA_> &store = driver.dataAreas;
    const qint64 position = index + driver.storeIndex.lead;
    const bool inside = position >= 0 && position < store.size();
    const bool found = inside && hasKey(store.at(static_cast<int>(position)), station, area, index);
    return found && driver.storeIndex.distinct ? static_cast<int>(position) : -1;
}

// Appends an entry whose position belongs in `place`.
int appendEntry(qint32 station, const QString &area, qint32 index, int place)
{
    StoreIndex &known = driver.storeIndex;
    const int position = static_cast<int>(driver.dataAreas.size());
    _DATA_ entry;
    entry.station = station;
    entry.area = area;
    entry.index = index;
    known.places[place] = position;
    known.seen = QList<_DATA_>();
    driver.dataAreas.append(entry);
    known.seen = driver.dataAreas;
    if (2 * (position + 1) > known.places.size())
        indexStore();
    return position;
}

// Separate from the short way, which would be slower with this code in it.
__attribute__((noinline)) int findOrAppend(qint32 station, const QString &area, qint32 index)
{
    const int place = placeOf(station, area, index);
    int position = driver.storeIndex.places.at(place);
    if (position < 0)
        position = appendEntry(station, area, index, place);
    driver.storeIndex.lead = qint64(position) - index;
    return position;
}

} // namespace

int positionInStore(qint32 station, const QString &area, qint32 index)
{
    noticeChanges();
    const int position = positionNearLast(station, area, index);
    return position >= 0 ? position : findOrAppend(station, area, index);
}

const _DATA_ &dataArea(qint32 station, const QString &area, qint32 index)
{
    const QList<_DATA_> &store = driver.dataAreas;
    return store.at(positionInStore(station, area, index));
}

_DATA_ &dataAreaToChange(qint32 station, const QString &area, qint32 index)
{
    const int position = positionInStore(station, area, index);
    driver.storeIndex.seen = QList<_DATA_>();
    _DATA_ &entry = driver.dataAreas[position];
    driver.storeIndex.seen = driver.dataAreas;
    return entry;
}

void clearWatchMarks()
{
    noticeChanges();
    driver.storeIndex.seen = QList<_DATA_>();
    for (int i = 0; i < driver.dataAreas.size(); ++i) {
        driver.dataAreas[i].wordMonitor = 0;
        driver.dataAreas[i].bitMonitor = 0;
    }
    driver.storeIndex.seen = driver.dataAreas;
}
