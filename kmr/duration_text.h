// Typed times: 500ms, 5s, 2min.
#pragma once

#include <QString>

#include <chrono>

namespace kmr {

// 1 ms to 24 hours. Throws Error (Usage) for anything else.
std::chrono::milliseconds parseTime(const QString &text);

} // namespace kmr
