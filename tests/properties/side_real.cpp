#include "tests/properties/side.h"

#include <algorithm>
#include <utility>

namespace {

RealSide *active = nullptr; // the callback carries no pointer of the host's

QString areaOf(const Call &call)
{
    static const std::vector<QString> names = [] {
        std::vector<QString> all;
        for (const std::string &name : areaNames())
            all.push_back(QString::fromStdString(name));
        return all;
    }();
    return names.at(static_cast<size_t>(call.area));
}

// Fields that the driver only carries along are set to something that would be noticed.
KEY_ADDRESS keyOf(const Call &call)
{
    KEY_ADDRESS key;
    key.label = QString::fromLatin1("label");
    key.hostWord1 = -1;
    key.station = call.station;
    key.area = areaOf(call);
    key.hostText = QString::fromLatin1("text");
    key.address = call.address;
    key.elemKind = call.option;
    key.count = call.count;
    return key;
}

model::Variable plain(const VARIABLE &var)
{
    return {var.reqTag,
            var.station,
            var.area.toStdString(),
            var.address,
            var.count,
            model::trimmed(std::string(reinterpret_cast<const char *>(var.data), VALUE_BYTES))};
}

model::Frame plain(const FRAME_PRO &frame)
{
    const bool fits = frame.frameLen >= 0 && frame.frameLen <= FRAME_CHARS;
    return {fits ? std::string(frame.frame, static_cast<size_t>(frame.frameLen))
                 : "frameLen " + std::to_string(frame.frameLen),
            frame.replyLen,
            frame.replyDataPos,
            frame.replyDataLen,
            frame.frameSpare,
            plain(frame.var)};
}

} // namespace

RealSide::RealSide()
{
    active = this;
}

RealSide::~RealSide()
{
    active = nullptr;
}

qint32 RealSide::reported(qint32 devId, qint32 station, QString area, qint32 address)
{
    active->report(devId, station, area.toStdString(), address);
    return 7; // means nothing to the driver
}

Outcome RealSide::exported(const Call &call, const std::string &reply)
{
    Outcome outcome;
    switch (call.kind) {
    case Kind::SendFrame:
        outcome = frameToSend(call.option == 0);
        break;
    case Kind::Reply: {
        QByteArray bytes(reply.data(), static_cast<int>(reply.size()));
        QString info = QString::fromLatin1("left over");
        outcome.result = kmr.dealRcvFrame(bytes, info);
        outcome.text = info.toStdString();
        break;
    }
    case Kind::GetData: {
        std::string out(static_cast<size_t>(std::max(call.count, 0)) * 2 + 8, '\xEE');
        outcome.result =
            kmr.getData(call.station, areaOf(call), call.address, call.count,
                        call.option ? nullptr : reinterpret_cast<quint8 *>(out.data()));
        outcome.text = out;
        break;
    }
    case Kind::SetData: {
        std::vector<quint8> data(static_cast<size_t>(std::max(call.count, 0)) * 2 + 1);
        for (size_t i = 0; i < data.size(); ++i)
            data[i] = valueByte(call.salt, static_cast<int>(i));
        outcome.result = kmr.setData(call.station, areaOf(call), call.address, call.count,
                                     data.data(), static_cast<int>(call.salt));
        break;
    }
    case Kind::Init:
    case Kind::Callback:
    case Kind::Recipe:
    case Kind::Merge:
    case Kind::ReadOnce:
        outcome = polling(call);
        break;
    default:
        outcome = editor(call);
    }
    if (mutex.tryLock())
        mutex.unlock();
    else
        outcome.text += " the driver keeps the mutex";
    return outcome;
}

Outcome RealSide::polling(const Call &call)
{
    Outcome outcome;
    if (call.kind == Kind::Init) {
        qint32 result = -77;
        outcome.result =
            kmr.initProperty(call.option & NO_STATUS ? nullptr : status.data(), this,
                             call.option & NO_RECIPE ? nullptr : recipe.data(), &result,
                             call.option & NO_PROPERTY ? nullptr : call.text.c_str(),
                             call.option & NO_MUTEX ? nullptr : &mutex);
        outcome.numbers = {result};
    } else if (call.kind == Kind::Callback) {
        kmr.setAddrValueChangeCallBack(call.option ? reported : nullptr);
    } else if (call.kind == Kind::Recipe) {
        QVector<_RCP_VAR_PRO> list;
        for (const Call &e : call.list) {
            _RCP_VAR_PRO entry;
            entry.devId = static_cast<int>(e.salt);
            entry.station = e.station;
            entry.area = areaOf(e);
            entry.address = e.address;
            entry.count = e.count;
            entry.bufWord = e.option;
            list.append(entry);
        }
        outcome.result = kmr.setRcpAddress(call.option < 0 ? nullptr : &list);
    } else if (call.kind == Kind::Merge) {
        QList<KEY_ADDRESS> list;
        for (const Call &entry : call.list)
            list.append(keyOf(entry));
        outcome.result = kmr.addrMerge(list);
    } else {
        KEY_ADDRESS key = keyOf(call);
        outcome.result = kmr.addConditionRead(key, static_cast<int>(call.salt));
    }
    return outcome;
}

Outcome RealSide::frameToSend(bool withOutput)
{
    static FRAME_PRO frame;
    frame.frameLen = -77;
    frame.frame[0] = '#';
    frame.var.station = -77;
    Outcome outcome;
    outcome.result = kmr.getSendFrame(withOutput ? &frame : nullptr);
    const bool touched = frame.frameLen != -77 || frame.frame[0] != '#' || frame.var.station != -77;
    if (outcome.result == 1 && withOutput) {
        outcome.frame = plain(frame);
        lastFrame = outcome.frame->text;
        if (std::any_of(frame.frame + qBound(0, frame.frameLen, +FRAME_CHARS),
                        frame.frame + FRAME_CHARS, [](char c) { return c != 0; }))
            outcome.text = "characters stand after the frame";
    } else if (touched)
        outcome.text = "the output was written";
    return outcome;
}

Outcome RealSide::editor(const Call &call)
{
    Outcome outcome;
    qint32 number = -77;
    const QString text = QString::fromStdString(call.text);
    if (call.kind == Kind::CheckValidity) {
        outcome.result =
            kmr.checkAddrValidity(areaOf(call), text, &number, call.count, call.option);
        outcome.numbers = {number};
    } else if (call.kind == Kind::CheckAddr) {
        outcome.result = kmr.checkAddr(areaOf(call), text, &number, call.option, call.count);
        outcome.numbers = {number};
    } else {
        QVector<QString> texts{QString::fromLatin1("kept")};
        QVector<qint32> numbers{-77};
        outcome.result =
            kmr.multiCopy(areaOf(call), call.address, call.count, call.option, &texts, &numbers);
        for (const QString &entry : std::as_const(texts))
            outcome.texts.push_back(entry.toStdString());
        outcome.numbers.assign(numbers.begin(), numbers.end());
    }
    return outcome;
}
