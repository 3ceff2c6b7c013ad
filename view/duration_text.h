// Durations as the window shows them.
#pragma once

#include <QString>

#include <chrono>

namespace kmr {

// In milliseconds with one decimal place: "12.3".
inline QString millisecondsText(std::chrono::duration<double> time)
{
    return QString::number(std::chrono::duration<double, std::milli>(time).count(), 'f', 1);
}

} // namespace kmr
