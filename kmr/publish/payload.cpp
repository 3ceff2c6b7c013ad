#include "kmr/publish/payload.h"

#include "host/line/line_trace.h"
#include "kmr/json_value.h"

#include <QDateTime>
#include <QStringList>

namespace kmr {

namespace {

Json valueField(const Tag &tag, const Values &values)
{
    if (values.empty())
        return nullptr;
    const std::vector<Value> shown = interpret(tag, values);
    if (shown.size() == 1)
        return toJson(shown.front());
    return toJson(shown);
}

QByteArray jsonPayload(const Tag &tag, const Sample &sample)
{
    Json object = Json::object();
    object["value"] = valueField(tag, sample.values);
    object["unit"] = textOrNull(tag.unit);
    object["quality"] = qualityName(sample.quality).toStdString();
    object["time"] = textOrNull(sample.values.empty() ? QString() : utcText(sample.time));
    object["cause"] = textOrNull(sample.cause);
    return QByteArray::fromStdString(object.dump());
}

QByteArray plainPayload(const Tag &tag, const Sample &sample)
{
    QStringList fields(qualityName(sample.quality));
    if (sample.values.empty())
        fields << QString() << QString();
    else
        fields << utcText(sample.time) << formatValues(tag, sample.values);
    fields << tag.unit << sample.cause;
    return fields.join('\t').toUtf8();
}

} // namespace

QByteArray valuePayload(PayloadForm form, const Tag &tag, const Sample &sample)
{
    return form == PayloadForm::Json ? jsonPayload(tag, sample) : plainPayload(tag, sample);
}

QString utcText(qint64 time)
{
    return timeText(QDateTime::fromMSecsSinceEpoch(time, Qt::UTC));
}

QString qualityName(Quality quality)
{
    switch (quality) {
    case Quality::Good:
        return "good";
    case Quality::Stale:
        return "stale";
    case Quality::Unread:
        break;
    }
    return "pending";
}

} // namespace kmr
