// SPDX-License-Identifier: Apache-2.0
//
// Requests of a message: where they go, whether two are the same, and how messages call them.
#pragma once

#include <optional>
#include <string>

#include "NimboUtil/Smbus.pb.h"
#include "smbus/service/BusKey.hpp"

namespace SmbusService::Recording {

// Nothing, when the request does not say.
[[nodiscard]] std::optional<BusKey> busOf(const Smbus::Request& request);

// Whether both ask for the same; an absent field is like its zero where the service takes it so.
[[nodiscard]] bool same(const Smbus::Request& a, const Smbus::Request& b);

// "Write of 01 at register 0x33 of device 0x4e on SCD bus 0"
[[nodiscard]] std::string describe(const Smbus::Request& request);

}  // namespace SmbusService::Recording
