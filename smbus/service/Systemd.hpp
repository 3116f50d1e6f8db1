// SPDX-License-Identifier: Apache-2.0
//
// What the service and systemd tell each other. Without systemd each does nothing.
#pragma once

#include <optional>
#include <string>

#include "smbus/service/Descriptor.hpp"

namespace SmbusService::Systemd {

// Every bus is open and clients are accepted.
void notifyReady();
void notifyStopping();

// One feeding of the watchdog, and what "systemctl status" shows. While a bus hangs the watchdog is
// not fed.
void notifyAlive();
void notifyHung(const std::string& bus);

// The listening socket of socket activation; absent: the service makes its own. Throws
// std::runtime_error for what is not one listening Unix-domain stream socket.
[[nodiscard]] std::optional<Descriptor> inheritedSocket();

}  // namespace SmbusService::Systemd
