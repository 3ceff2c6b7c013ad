// Writes what a trend shows to files.
#pragma once

#include "view/trend_plot.h"

#include <QString>

#include <vector>

namespace kmr {

// The samples from `from` to `to` in the form of 'kmr log': a line for each time at which a tag was
// measured, where all others are "not read". Throws Error (Output).
void writeCsv(const QString &path, const History &history, const std::vector<TrendStyle> &styles,
              double from, double to);

// A .png or .svg of the plot. Throws Error (Output).
void writePicture(const QString &path, TrendPlot &plot);

} // namespace kmr
