// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/BusKey.hpp"

#include <fmt/format.h>

namespace SmbusService {

std::string describe(const BusKey& key) {
  const std::string& master = Smbus::MasterType_Name(key.master);
  if (key.controller == 0 && key.accelerator == 0) {
    return fmt::format("{} bus {}", master, key.bus);
  }
  return fmt::format("{} 0x{:08x} accelerator {} bus {}", master, key.controller, key.accelerator,
                     key.bus);
}

}  // namespace SmbusService
