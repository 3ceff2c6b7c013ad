// How the requests on a link are answered, simulated or replayed, and when.
#pragma once

#include <QByteArray>

#include <chrono>
#include <functional>
#include <optional>
#include <vector>

namespace simulator {

// What a link does after one request.
struct Plan {
    struct Piece {
        std::chrono::nanoseconds after; // time after the previous piece, or after the request
        QByteArray bytes;               // never empty
    };

    std::vector<Piece> pieces;                          // in their order
    std::optional<std::chrono::milliseconds> closedFor; // the link closes at once, for that time
};

// Answers one line, ':' to LF. A link calls it for every line that it collects.
using Responder = std::function<Plan(const QByteArray &line)>;

} // namespace simulator
