// SPDX-License-Identifier: Apache-2.0
//
// What names a bus: the kind of controller above it, the controller, the accelerator in it and the
// bus's number there.
#pragma once

#include <compare>
#include <cstdint>
#include <string>

#include "NimboUtil/Smbus.pb.h"

namespace SmbusService {

struct BusKey {
  Smbus::MasterType master = Smbus::I2C;
  uint32_t controller = 0;
  uint32_t accelerator = 0;
  uint32_t bus = 0;

  auto operator<=>(const BusKey&) const = default;
};

// As log lines and failure reasons name it: "I2C bus 5", and with a controller or an accelerator
// "SCD 0x00000700 accelerator 1 bus 5".
[[nodiscard]] std::string describe(const BusKey& key);

}  // namespace SmbusService
