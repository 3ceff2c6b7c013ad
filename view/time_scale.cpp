#include "view/time_scale.h"

#include <QDateTime>

#include <algorithm>
#include <cmath>

namespace kmr {

namespace {

constexpr int LABEL_PIXELS = 96; // of a label, with the room around it

const double STEPS[] = {0.001, 0.002, 0.005, 0.01,   0.02,   0.05,    0.1,     0.2,
                        0.5,   1,     2,     5,      10,     15,      30,      60,
                        120,   300,   600,   900,    1800,   3600,    7200,    14400,
                        21600, 43200, 86400, 172800, 604800, 2592000, 31536000};

} // namespace

QwtScaleDiv timeScale(double from, double to, int pixels)
{
    const double pixel = (to - from) / std::max(1, pixels);
    const double wanted = pixel * LABEL_PIXELS;
    const double edge = pixel * LABEL_PIXELS / 2;
    const auto *found = std::lower_bound(std::begin(STEPS), std::end(STEPS), wanted);
    const double step = found == std::end(STEPS) ? STEPS[std::size(STEPS) - 1] : *found;
    // Round in local time.
    const double offset =
        QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(from * 1000)).offsetFromUtc();
    QList<double> ticks;
    for (double tick = std::ceil((from + edge + offset) / step); tick * step - offset <= to - edge;
         ++tick)
        ticks.append(tick * step - offset);
    return QwtScaleDiv(from, to, {}, {}, ticks);
}

QwtText TimeScaleDraw::label(double time) const
{
    const QList<double> ticks = scaleDiv().ticks(QwtScaleDiv::MajorTick);
    const double step = ticks.size() > 1 ? ticks[1] - ticks[0] : 1;
    const char *const format = step < 0.999   ? "HH:mm:ss.zzz"
                               : step < 86399 ? "HH:mm:ss"
                                              : "yyyy-MM-dd";
    return QDateTime::fromMSecsSinceEpoch(std::llround(time * 1000))
        .toString(QString::fromLatin1(format));
}

} // namespace kmr
