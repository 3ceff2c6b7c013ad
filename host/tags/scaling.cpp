#include "host/tags/scaling.h"

#include <QRegularExpression>

#include <algorithm>
#include <gmpxx.h>
#include <string>
#include <utility>

namespace kmr {

namespace {

const QRegularExpression &decimalParts()
{
    static const QRegularExpression PARTS(
        "^([+-]?)([0-9]*)(?:\\.([0-9]*))?(?:[eE]([+-]?[0-9]{1,3}))?$");
    return PARTS;
}

mpz_class powerOf(unsigned long base, unsigned long exponent)
{
    mpz_class power;
    mpz_ui_pow_ui(power.get_mpz_t(), base, exponent);
    return power;
}

mpq_class toRational(const QString &text)
{
    const QRegularExpressionMatch parts = decimalParts().match(text);
    const QString digits = parts.captured(2) + parts.captured(3);
    mpq_class number(digits.toStdString(), 10);
    const int exponent = parts.captured(4).toInt() - static_cast<int>(parts.capturedLength(3));
    const mpz_class power = powerOf(10, static_cast<unsigned long>(std::abs(exponent)));
    number = exponent < 0 ? mpq_class(number / power) : mpq_class(number * power);
    return parts.captured(1) == "-" ? mpq_class(-number) : number;
}

// The nearest whole number; of two that are equally near, the one farther from 0.
mpz_class rounded(const mpq_class &number)
{
    const mpq_class half(1, 2);
    const mpq_class up = abs(number) + half;
    const mpz_class whole = up.get_num() / up.get_den();
    return sgn(number) < 0 ? mpz_class(-whole) : whole;
}

// With `places` digits after the point, without zeros at the end.
QString toText(const mpq_class &number, unsigned long places)
{
    const mpz_class scaled = rounded(mpq_class(number * powerOf(10, places)));
    QString digits = QString::fromStdString(mpz_class(abs(scaled)).get_str());
    const int width = static_cast<int>(places);
    digits = digits.rightJustified(width + 1, '0');
    QString fraction = digits.right(width);
    while (fraction.endsWith('0'))
        fraction.chop(1);
    const QString whole = (sgn(scaled) < 0 ? "-" : "") + digits.left(digits.size() - width);
    return fraction.isEmpty() ? whole : whole + '.' + fraction;
}

// Digits after the point that show a decimal number exactly: its denominator is a product of twos
// and fives.
unsigned long placesOf(const mpq_class &number)
{
    mpz_class rest;
    const unsigned long twos =
        mpz_remove(rest.get_mpz_t(), number.get_den_mpz_t(), mpz_class(2).get_mpz_t());
    const unsigned long fives =
        mpz_remove(rest.get_mpz_t(), number.get_den_mpz_t(), mpz_class(5).get_mpz_t());
    return std::max(twos, fives);
}

} // namespace

bool isDecimal(const QString &text)
{
    const QRegularExpressionMatch parts = decimalParts().match(text);
    return parts.hasMatch() && parts.capturedLength(2) + parts.capturedLength(3) > 0;
}

int compareDecimals(const QString &left, const QString &right)
{
    return cmp(toRational(left), toRational(right));
}

Scaling::Scaling(QString factor, QString offset)
    : m_factor(std::move(factor)), m_offset(std::move(offset))
{
}

QString Scaling::shown(const QString &number) const
{
    const mpq_class result = toRational(number) * toRational(m_factor) + toRational(m_offset);
    return toText(result, placesOf(result));
}

QString Scaling::held(const QString &text, int places) const
{
    const mpq_class result = (toRational(text) - toRational(m_offset)) / toRational(m_factor);
    return toText(result, static_cast<unsigned long>(places));
}

} // namespace kmr
