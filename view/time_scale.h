// An axis of time, seconds since 1970, that is read as a clock.
#pragma once

#include <qwt_scale_div.h>
#include <qwt_scale_draw.h>

namespace kmr {

// Ticks at whole seconds, minutes, hours or days, for a plot of so many pixels. There is none near
// the ends, where its label would take room from the plot: plots of one width stay in line.
QwtScaleDiv timeScale(double from, double to, int pixels);

// "14:05:09.250" with as many parts as the ticks need.
class TimeScaleDraw : public QwtScaleDraw {
public:
    QwtText label(double time) const override;
};

} // namespace kmr
