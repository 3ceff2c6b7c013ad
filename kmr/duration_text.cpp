#include "kmr/duration_text.h"

#include "host/error.h"

#include <QRegularExpression>

namespace kmr {

std::chrono::milliseconds parseTime(const QString &text)
{
    constexpr std::chrono::hours LONGEST_TIME(24);
    static const QRegularExpression TIME("^([0-9]+(?:\\.[0-9]+)?)\\s*(ms|s|min)$");
    const QRegularExpressionMatch match = TIME.match(text);
    const QString unit = match.captured(2);
    const double factor = unit == "ms" ? 1 : unit == "s" ? 1000 : 60000;
    const double number = match.captured(1).toDouble() * factor;
    const std::chrono::milliseconds longest(LONGEST_TIME);
    if (!match.hasMatch() || number < 1 || number > static_cast<double>(longest.count())) {
        throw Error(ErrorKind::Usage, QString("bad time \"%1\": expected 1ms to 24 hours, for "
                                              "example 500ms, 5s or 2min")
                                          .arg(text));
    }
    return std::chrono::milliseconds(static_cast<qint64>(number));
}

} // namespace kmr
