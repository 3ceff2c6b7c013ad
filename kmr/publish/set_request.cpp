#include "kmr/publish/set_request.h"

#include "host/error.h"
#include "host/tags/nearest.h"
#include "kmr/json_value.h"

#include <QDateTime>
#include <QStringList>

#include <algorithm>
#include <cmath>

namespace kmr {

namespace {

using Item = SetRequest::Item;

constexpr double LARGEST_EXACT = 9007199254740992.0; // of whole numbers in a double: 2^53

Error usage(const QString &text)
{
    return Error(ErrorKind::Usage, text);
}

QString textOf(const Json &json)
{
    return QString::fromStdString(json.get_ref<const std::string &>());
}

// Programs write whole numbers as 5.0, too.
QString numberText(const Json &json)
{
    const double number = json.get<double>();
    if (json.is_number_float() && number == std::trunc(number) && std::abs(number) < LARGEST_EXACT)
        return QString::number(static_cast<qint64>(number));
    return QString::fromStdString(json.dump());
}

Item itemOf(const Json &json)
{
    if (json.is_boolean())
        return {Item::Kind::Truth, json.get<bool>() ? "1" : "0"};
    if (json.is_number())
        return {Item::Kind::Number, numberText(json)};
    if (json.is_string())
        return {Item::Kind::Text, textOf(json)};
    throw usage(QString("a value is a number, a text, true or false, not %1")
                    .arg(QString::fromStdString(json.dump()).left(40)));
}

std::vector<Item> itemsOf(const Json &json)
{
    std::vector<Item> items;
    if (!json.is_array())
        return {itemOf(json)};
    for (const Json &one : json)
        items.push_back(itemOf(one));
    return items;
}

QString idOf(const Json &json)
{
    if (json.is_string() || json.is_number_integer())
        return json.is_string() ? textOf(json) : QString::fromStdString(json.dump());
    throw usage("an id is a text or a whole number");
}

qint64 timeOf(const Json &json)
{
    const QDateTime time =
        json.is_string() ? QDateTime::fromString(textOf(json), Qt::ISODate) : QDateTime();
    if (!time.isValid() || time.timeSpec() == Qt::LocalTime)
        throw usage("expires is a time with its offset, for example \"2026-11-22T04:30:00Z\"");
    return time.toMSecsSinceEpoch();
}

void readMember(const QString &key, const Json &json, SetRequest &request)
{
    static const QStringList KEYS = {"value", "id", "expires"};
    if (key == "value")
        request.items = itemsOf(json);
    else if (key == "id")
        request.id = idOf(json);
    else if (key == "expires")
        request.expires = timeOf(json);
    else
        throw usage(QString("unknown key \"%1\"%2; the keys are %3")
                        .arg(key.left(40), didYouMean(key.left(40), KEYS), KEYS.join(", ")));
}

SetRequest parseJson(const QByteArray &payload)
{
    const Json json = Json::parse(payload.begin(), payload.end(), nullptr, false);
    if (json.is_discarded())
        throw usage("not valid JSON, although it begins with { or [");
    SetRequest request;
    if (json.is_array()) {
        request.items = itemsOf(json);
    } else {
        for (const auto &[key, member] : json.items())
            readMember(QString::fromStdString(key), member, request);
    }
    if (request.items.empty())
        throw usage("no value");
    return request;
}

bool isDecimalText(const QString &text)
{
    return isDecimal(text.trimmed());
}

QString typed(const Item &item, const Tag &tag)
{
    const bool isText = tag.type == ValueType::Text;
    if (item.kind == Item::Kind::Number && isText)
        throw usage(QString("%1 is a text, not a number such as %2").arg(tag.text, item.text));
    if (item.kind == Item::Kind::Truth && tag.kind != ElementKind::Bit)
        throw usage(QString("%1 is not a bit, which true and false are for").arg(tag.text));
    if (item.kind == Item::Kind::Text && !isText && isDecimalText(item.text))
        throw usage(QString("%1 is a number, not a text such as \"%2\"").arg(tag.text, item.text));
    const bool isQuoted =
        item.kind == Item::Kind::Text && !tag.texts.empty() && tag.count > elementsPerNumber(tag);
    return isQuoted ? '"' + item.text + '"' : item.text;
}

} // namespace

SetRequest parseSetRequest(const QByteArray &payload)
{
    if (payload.size() > LONGEST_SET_REQUEST)
        throw usage(QString("longer than %1 bytes").arg(LONGEST_SET_REQUEST));
    const QString text = QString::fromUtf8(payload);
    if (text.toUtf8() != payload)
        throw usage("not in UTF-8");
    const QString trimmed = text.trimmed();
    if (trimmed.isEmpty())
        throw usage("no value");
    if (trimmed.startsWith('{') || trimmed.startsWith('['))
        return parseJson(payload);
    return {{{Item::Kind::Typed, text}}, {}, {}};
}

QString typedValues(const SetRequest &request, const Tag &tag)
{
    if (tag.type == ValueType::Text && request.items.size() > 1)
        throw usage(QString("%1 is one text, not a list").arg(tag.text));
    QStringList texts;
    for (const Item &item : request.items)
        texts.append(typed(item, tag));
    return texts.join(' ');
}

} // namespace kmr
