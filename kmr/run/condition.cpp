#include "kmr/run/condition.h"

#include <QRegularExpression>

#include <algorithm>
#include <map>
#include <optional>

namespace kmr {

namespace {

const std::map<QString, Comparison> COMPARISONS = {
    {"=", Comparison::Equal},   {"!=", Comparison::NotEqual}, {"<", Comparison::Less},
    {"<=", Comparison::AtMost}, {">", Comparison::Greater},   {">=", Comparison::AtLeast},
};

bool isHexadecimal(const QString &text)
{
    return text.startsWith("0x");
}

// A number as typed and shown, 250, -0.5 or 0x00FA, as a decimal number.
std::optional<QString> decimalOf(const QString &text)
{
    if (!isHexadecimal(text))
        return isDecimal(text) ? std::optional<QString>(text) : std::nullopt;
    bool isNumber = false;
    const qulonglong number = text.toULongLong(&isNumber, 16);
    return isNumber ? std::optional<QString>(QString::number(number)) : std::nullopt;
}

QString readBound(const QString &text)
{
    const auto number = decimalOf(text);
    if (!number)
        throw Error(ErrorKind::Usage, QString("\"%1\" is not a number").arg(text));
    return *number;
}

Condition parseRange(const QString &text, const NamedTagReader &reader)
{
    static const QRegularExpression RANGE("^(.+?)\\s+(\\S+?)\\s*\\.\\.\\s*(\\S+)$");
    const QRegularExpressionMatch match = RANGE.match(text);
    if (!match.hasMatch()) {
        throw Error(ErrorKind::Usage, QString("\"%1\" is not a condition: expected for example "
                                              "D100=250, D100>=20 or D100 20..25")
                                          .arg(text));
    }
    Condition condition{reader.read(match.captured(1)),
                        Comparison::Within,
                        {},
                        readBound(match.captured(2)),
                        readBound(match.captured(3))};
    if (compareDecimals(condition.low, condition.high) > 0) {
        throw Error(ErrorKind::Usage,
                    QString("the range %1..%2 is empty: the lower end must come first")
                        .arg(match.captured(2), match.captured(3)));
    }
    return condition;
}

bool fits(const Condition &condition, const QString &text)
{
    // Other types show a value in hexadecimal digits if it is not a number.
    if (isHexadecimal(text) && condition.tag.type != ValueType::Hex)
        return false;
    const auto number = decimalOf(text);
    if (!number)
        return false;
    const int order = compareDecimals(*number, condition.low);
    switch (condition.comparison) {
    case Comparison::Less:
        return order < 0;
    case Comparison::AtMost:
        return order <= 0;
    case Comparison::Greater:
        return order > 0;
    case Comparison::AtLeast:
        return order >= 0;
    case Comparison::Within:
        return order >= 0 && compareDecimals(*number, condition.high) <= 0;
    case Comparison::Equal:
    case Comparison::NotEqual:
        break;
    }
    return false;
}

} // namespace

Condition parseCondition(const QString &text, const NamedTagReader &reader)
{
    static const QRegularExpression OPERATOR("^([^=!<>]+?)\\s*(!=|<=|>=|=|<|>)\\s*(.*)$");
    const QRegularExpressionMatch match = OPERATOR.match(text);
    if (!match.hasMatch())
        return parseRange(text, reader);
    Condition condition;
    condition.tag = reader.read(match.captured(1));
    condition.comparison = COMPARISONS.at(match.captured(2));
    const bool isOfValues =
        condition.comparison == Comparison::Equal || condition.comparison == Comparison::NotEqual;
    if (isOfValues)
        condition.wanted = parseValues(condition.tag, match.captured(3));
    else
        condition.low = readBound(match.captured(3));
    return condition;
}

bool holds(const Condition &condition, const Values &values)
{
    const QStringList shown = valueTexts(condition.tag, values);
    if (condition.comparison == Comparison::Equal)
        return shown == valueTexts(condition.tag, condition.wanted);
    if (condition.comparison == Comparison::NotEqual)
        return shown != valueTexts(condition.tag, condition.wanted);
    return std::all_of(shown.begin(), shown.end(),
                       [&condition](const QString &text) { return fits(condition, text); });
}

} // namespace kmr
