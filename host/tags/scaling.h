// The value shown for a number in the controller: the number times a factor, plus an offset. All
// are decimal numbers as text, "0.1" or "-4e1", and are computed exactly. Floating-point numbers
// can't represent 0.1 exactly.
#pragma once

#include <QString>

namespace kmr {

// True for digits with an optional sign, decimal point and exponent of up to three digits.
bool isDecimal(const QString &text);

// Compares two decimal numbers exactly: less than 0 if `left` is the smaller one, 0 if they are
// equal, more than 0 if it is the larger one.
int compareDecimals(const QString &left, const QString &right);

class Scaling {
public:
    // Both must be decimal numbers, the factor other than 0.
    explicit Scaling(QString factor, QString offset = "0");

    // The value shown for `number`, which must be a decimal number without an exponent.
    QString shown(const QString &number) const;

    // The number whose shown value is nearest to `text`, which must be a decimal number. `places`:
    // digits after the point.
    QString held(const QString &text, int places) const;

private:
    QString m_factor;
    QString m_offset;
};

} // namespace kmr
