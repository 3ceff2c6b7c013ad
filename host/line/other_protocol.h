// Peers over TCP that speak another Modbus protocol than Modbus ASCII over raw TCP.
#pragma once

#include "host/line/link.h"

#include <QByteArray>

#include <atomic>
#include <chrono>
#include <optional>

namespace kmr {

enum class OtherProtocol {
    ModbusTcp, // Modbus Messaging on TCP/IP V1.0b, section 3.1
    ModbusRtu  // Modbus over Serial Line V1.02, section 2.5.1, as a gateway passes it on
};

// A request to read one holding register at address 0. `station`: 1 to 247.
QByteArray registerRequest(OtherProtocol protocol, int station);

// Whether `received` is the answer to that request or its refusal, with or without an echo before.
bool isRegisterAnswer(OtherProtocol protocol, int station, const QByteArray &received);

// Sends that request in each of these protocols, over a connection of its own, and waits up to
// `timeout` for its answer. Nothing if neither is answered or `stop` is set.
std::optional<OtherProtocol> findOtherProtocol(const LinkAddress &address, int station,
                                               std::chrono::milliseconds timeout,
                                               const std::atomic<bool> &stop);

} // namespace kmr
