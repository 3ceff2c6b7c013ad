// The values that a capture's answers confirmed, with their times, for trends.
#pragma once

#include "view/recording.h"

namespace kmr {

// Of the traffic of a capture. Each element that was read is a tag; an attempt that failed is a
// gap, a confirmed write a mark. Returns whether there is any value.
bool readValues(const std::vector<TrafficNews> &traffic, Recording &recording,
                const ReadProgress &progress = {});

} // namespace kmr
