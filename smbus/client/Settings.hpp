// SPDX-License-Identifier: Apache-2.0
//
// What the environment tells the client. Each is read anew on every call.
#pragma once

#include <chrono>
#include <string>

namespace PlatformLibrary {

// The service's socket: NIMBO_SMBUS_SOCKET, or /run/nimbo/smbus.sock if that is unset or empty.
[[nodiscard]] std::string servicePath();

// How long one call may take: NIMBO_SMBUS_TIMEOUT_MS, or 30 s if that is unset or is no whole
// number from 1 to INT_MAX.
[[nodiscard]] std::chrono::milliseconds callTimeout();

// There is no service, and none is needed: SIMULATION_VMID is set.
[[nodiscard]] bool inSimulation();

}  // namespace PlatformLibrary
