// A message to the broker.
#pragma once

#include <QByteArray>

#include <cstdint>

namespace kmr {

struct Message {
    std::uint64_t number = 0; // its place in the order of delivery, from 1; Outbox gives it
    qint64 time = 0;          // when it was made, milliseconds since 1970 UTC
    QByteArray topic;
    QByteArray payload;
    bool isRetained = true;
    QByteArray correlation; // of the request that it answers (MQTT 5), or empty
};

} // namespace kmr
