// The records and the driver object: construction and copies. Their layout is checked where they
// are compiled.
#include "driver/ostrel_kmr.h"

#include "driver_fixture.h"

#include <new>

namespace {

// Memory that holds anything but zeros, in which a record is built.
template <typename Record> class InDirtyMemory {
public:
    InDirtyMemory()
    {
        memset(m_memory, 0xA5, sizeof m_memory);
        m_record = new (m_memory) Record();
    }
    ~InDirtyMemory()
    {
        m_record->~Record();
    }
    InDirtyMemory(const InDirtyMemory &) = delete;
    InDirtyMemory &operator=(const InDirtyMemory &) = delete;
    const Record *operator->() const
    {
        return m_record;
    }

private:
    alignas(Record) unsigned char m_memory[sizeof(Record)];
    Record *m_record;
};

template <typename Byte, size_t SIZE> bool allZero(const Byte (&bytes)[SIZE])
{
    return std::all_of(bytes, bytes + SIZE, [](Byte byte) { return byte == 0; });
}

bool allZero(std::initializer_list<qint32> numbers)
{
    return std::all_of(numbers.begin(), numbers.end(), [](qint32 number) { return number == 0; });
}

VARIABLE filledVariable()
{
    VARIABLE var = variable("D", 3, 4);
    var.reqTag = 1;
    var.station = 2;
    var.data[0] = 5;
    var.data[1023] = 6;
    return var;
}

} // namespace

TEST(Construction, RecordsAreZero)
{
    const InDirtyMemory<VARIABLE> var;
    EXPECT_TRUE(allZero({var->reqTag, var->station, var->address, var->count}));
    EXPECT_TRUE(allZero(var->data));
    const InDirtyMemory<FRAME_PRO> frame;
    EXPECT_TRUE(allZero(frame->frame));
    EXPECT_TRUE(allZero({frame->frameLen, frame->replyLen, frame->replyDataPos, frame->replyDataLen,
                         frame->frameSpare}));
    EXPECT_TRUE(allZero(frame->var.data));
    const InDirtyMemory<_RCP_VAR_PRO> recipe;
    EXPECT_TRUE(allZero({recipe->devId, recipe->station, recipe->address, recipe->count,
                         recipe->bufWord, recipe->rcpSpare}));
    const InDirtyMemory<_DATA_> entry;
    EXPECT_TRUE(allZero({entry->commFailed, entry->writePending, entry->dataSpare,
                         entry->wordMonitor, entry->bitMonitor, entry->station, entry->index}));
    EXPECT_TRUE(allZero(entry->readValue));
    EXPECT_TRUE(allZero(entry->writtenValue));
    const InDirtyMemory<KEY_ADDRESS> key;
    EXPECT_TRUE(allZero(
        {key->hostWord1, key->hostWord2, key->station, key->address, key->elemKind, key->count}));
    EXPECT_TRUE(allZero(key->data));
}

TEST(Construction, DriverIsEmptyAndHasNoHostMemory)
{
    const InDirtyMemory<Ostrel_kmr> object;
    EXPECT_EQ(object->valueChangedCallback, nullptr);
    EXPECT_EQ(object->hostStatus, nullptr);
    EXPECT_EQ(object->hostArg2, nullptr);
    EXPECT_EQ(object->recipeBuffer, nullptr);
    EXPECT_EQ(object->hostMutex, nullptr);
    EXPECT_TRUE(allZero({object->devId, object->writeQueueOff, object->propToken3,
                         object->retryLimit, object->groupLimit, object->sendState,
                         object->burstCount, object->counterA, object->retryCount,
                         object->bitGroupLimit, object->wordGroupLimit, object->commError,
                         object->stateC, object->stateD, object->recipeCursor, object->spareFlag}));
}

TEST(RecordCopy, KeepsAllFieldsOfAFrameAndItsVariable)
{
    FRAME_PRO frame;
    frame.frame[0] = ':';
    frame.frame[1023] = 'Z';
    frame.frameLen = 1;
    frame.replyLen = 2;
    frame.replyDataPos = 3;
    frame.replyDataLen = 4;
    frame.frameSpare = 5;
    frame.var = filledVariable();
    FRAME_PRO assigned;
    assigned = frame;
    for (const FRAME_PRO &copy : {FRAME_PRO(frame), assigned}) {
        EXPECT_EQ(copy.frame[0], ':');
        EXPECT_EQ(copy.frame[1023], 'Z');
        EXPECT_EQ(copy.frameLen * 10 + copy.replyLen, 12);
        EXPECT_EQ(copy.replyDataPos * 100 + copy.replyDataLen * 10 + copy.frameSpare, 345);
        EXPECT_EQ(copy.var.reqTag, 1);
        EXPECT_EQ(targetOf(copy.var), "2#D:3x4");
        EXPECT_EQ(copy.var.data[0] * 10 + copy.var.data[1023], 56);
    }
}

TEST(RecordCopy, KeepsAllFieldsOfAnAddressRun)
{
    KEY_ADDRESS key;
    key.label = "label";
    key.hostWord1 = 1;
    key.hostWord2 = 2;
    key.station = 3;
    key.area = "D";
    key.hostText = "text";
    key.address = 4;
    key.elemKind = 5;
    key.count = 6;
    key.data[0] = 7;
    key.data[1023] = 8;
    KEY_ADDRESS assigned;
    assigned = key;
    for (const KEY_ADDRESS &copy : {KEY_ADDRESS(key), assigned}) {
        EXPECT_EQ(copy.label + copy.area + copy.hostText, QString("labelDtext"));
        EXPECT_EQ(copy.hostWord1 * 100 + copy.hostWord2 * 10 + copy.station, 123);
        EXPECT_EQ(copy.address * 100 + copy.elemKind * 10 + copy.count, 456);
        EXPECT_EQ(copy.data[0] * 10 + copy.data[1023], 78);
    }
}

TEST(RecordCopy, ToItselfChangesNothingAndNamesInOneMemoryAreToldApart)
{
    VARIABLE var = filledVariable();
    const VARIABLE &same = var;
    var = same;
    EXPECT_EQ(targetOf(var), "2#D:3x4");
    EXPECT_EQ(var.data[1023], 6);
    const QChar memory[] = {QLatin1Char('T'), QLatin1Char('V')};
    VARIABLE timer = variable("T", 0, 1);
    timer.area = QString::fromRawData(memory, 1);
    var.area = QString::fromRawData(memory, 2);
    var = timer;
    EXPECT_EQ(targetOf(var), "1#T:0x1");
}
