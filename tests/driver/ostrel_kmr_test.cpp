// The records and the driver object: construction and copies. Their layout is pinned where they are
// compiled.
#include "driver/ostrel_kmr.h"

#include "driver_fixture.h"

#include <algorithm>
#include <new>

namespace {

// --- Construction and copies ---------------------------------------------------------------------

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

template <size_t SIZE> bool allZero(const quint8 (&bytes)[SIZE])
{
    return std::all_of(bytes, bytes + SIZE, [](quint8 byte) { return byte == 0; });
}

TEST(Construction, VariableIsZero)
{
    const InDirtyMemory<VARIABLE> var;
    EXPECT_EQ(var->reqTag, 0);
    EXPECT_EQ(var->station, 0);
    EXPECT_TRUE(var->area.isEmpty());
    EXPECT_EQ(var->address, 0);
    EXPECT_EQ(var->count, 0);
    EXPECT_TRUE(allZero(var->data));
}

TEST(Construction, FrameProIsZero)
{
    const InDirtyMemory<FRAME_PRO> frame;
    EXPECT_EQ(std::count(frame->frame, frame->frame + 1024, '\0'), 1024);
    EXPECT_EQ(frame->frameLen, 0);
    EXPECT_EQ(frame->replyLen, 0);
    EXPECT_EQ(frame->replyDataPos, 0);
    EXPECT_EQ(frame->replyDataLen, 0);
    EXPECT_EQ(frame->frameSpare, 0);
    EXPECT_TRUE(allZero(frame->var.data));
}

TEST(Construction, RcpVarProIsZero)
{
    const InDirtyMemory<_RCP_VAR_PRO> entry;
    EXPECT_EQ(entry->devId, 0);
    EXPECT_EQ(entry->station, 0);
    EXPECT_TRUE(entry->area.isEmpty());
    EXPECT_EQ(entry->address, 0);
    EXPECT_EQ(entry->count, 0);
    EXPECT_EQ(entry->bufWord, 0);
    EXPECT_EQ(entry->rcpSpare, 0);
}

TEST(Construction, DataIsZero)
{
    const InDirtyMemory<_DATA_> entry;
    EXPECT_EQ(entry->commFailed, 0);
    EXPECT_EQ(entry->writePending, 0);
    EXPECT_EQ(entry->dataSpare, 0);
    EXPECT_EQ(entry->wordMonitor, 0);
    EXPECT_EQ(entry->bitMonitor, 0);
    EXPECT_EQ(entry->station, 0);
    EXPECT_EQ(entry->index, 0);
    EXPECT_TRUE(entry->area.isEmpty());
    EXPECT_TRUE(allZero(entry->readValue));
    EXPECT_TRUE(allZero(entry->writtenValue));
}

TEST(Construction, KeyAddressIsZero)
{
    const InDirtyMemory<KEY_ADDRESS> key;
    EXPECT_TRUE(key->label.isEmpty() && key->area.isEmpty() && key->hostText.isEmpty());
    EXPECT_EQ(key->hostWord1, 0);
    EXPECT_EQ(key->hostWord2, 0);
    EXPECT_EQ(key->station, 0);
    EXPECT_EQ(key->address, 0);
    EXPECT_EQ(key->elemKind, 0);
    EXPECT_EQ(key->count, 0);
    EXPECT_TRUE(allZero(key->data));
}

TEST(Construction, DriverHasNoHostMemory)
{
    const InDirtyMemory<Ostrel_kmr> object;
    EXPECT_EQ(object->valueChangedCallback, nullptr);
    EXPECT_EQ(object->hostStatus, nullptr);
    EXPECT_EQ(object->hostArg2, nullptr);
    EXPECT_EQ(object->recipeBuffer, nullptr);
    EXPECT_EQ(object->hostMutex, nullptr);
}

TEST(Construction, DriverListsAreEmpty)
{
    const InDirtyMemory<Ostrel_kmr> object;
    EXPECT_TRUE(object->cyclicReads.isEmpty());
    EXPECT_TRUE(object->pendingWrites.isEmpty());
    EXPECT_TRUE(object->pendingReads.isEmpty());
    EXPECT_TRUE(object->dataAreas.isEmpty());
    EXPECT_TRUE(object->recipeVars.isEmpty());
    EXPECT_TRUE(object->frames.isEmpty());
    EXPECT_TRUE(object->lastVar.area.isEmpty());
    EXPECT_TRUE(object->curVar.area.isEmpty());
}

TEST(Construction, DriverNumbersAreZero)
{
    const InDirtyMemory<Ostrel_kmr> object;
    for (const qint32 number :
         {object->devId, object->writeQueueOff, object->propToken3, object->retryLimit,
          object->groupLimit, object->sendState, object->burstCount, object->counterA,
          object->retryCount, object->bitGroupLimit, object->wordGroupLimit, object->commError,
          object->stateC, object->stateD, object->recipeCursor, qint32(object->spareFlag)})
        EXPECT_EQ(number, 0);
}

VARIABLE filledVariable()
{
    VARIABLE var;
    var.reqTag = 1;
    var.station = 2;
    var.area = "D";
    var.address = 3;
    var.count = 4;
    var.data[0] = 5;
    var.data[1023] = 6;
    return var;
}

TEST(RecordCopy, VariableInAFrameKeepsAllItsBytes)
{
    FRAME_PRO frame;
    frame.var = filledVariable();
    const FRAME_PRO copy(frame);
    EXPECT_EQ(copy.var.reqTag, 1);
    EXPECT_EQ(copy.var.station, 2);
    EXPECT_EQ(copy.var.area, QString("D"));
    EXPECT_EQ(copy.var.address, 3);
    EXPECT_EQ(copy.var.count, 4);
    EXPECT_EQ(copy.var.data[0], 5);
    EXPECT_EQ(copy.var.data[1023], 6);
}

TEST(RecordCopy, FrameKeepsAllItsFields)
{
    FRAME_PRO frame;
    frame.frame[0] = ':';
    frame.frame[1023] = 'Z';
    frame.frameLen = 1;
    frame.replyLen = 2;
    frame.replyDataPos = 3;
    frame.replyDataLen = 4;
    frame.frameSpare = 5;
    FRAME_PRO assigned;
    assigned = frame;
    for (const FRAME_PRO &copy : {FRAME_PRO(frame), assigned}) {
        EXPECT_EQ(copy.frame[0], ':');
        EXPECT_EQ(copy.frame[1023], 'Z');
        EXPECT_EQ(copy.frameLen * 10 + copy.replyLen, 12);
        EXPECT_EQ(copy.replyDataPos * 100 + copy.replyDataLen * 10 + copy.frameSpare, 345);
    }
}

TEST(RecordCopy, KeyAddressKeepsAllItsFields)
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
        EXPECT_EQ(copy.data[0], 7);
        EXPECT_EQ(copy.data[1023], 8);
    }
}

TEST(RecordCopy, ToItselfChangesNothing)
{
    VARIABLE var = filledVariable();
    const VARIABLE &same = var;
    var = same;
    EXPECT_EQ(var.area, QString("D"));
    EXPECT_EQ(var.data[1023], 6);
}

} // namespace
