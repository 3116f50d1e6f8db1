// SPDX-License-Identifier: Apache-2.0
//
// A transaction, translated: what is to be done on which bus, in order.
#pragma once

#include <chrono>
#include <vector>

#include "smbus/service/Bus.hpp"

namespace SmbusService {

class BusSlot;

struct Step {
  Operation operation;  // its data belongs to the request message
  BusSlot* bus = nullptr;
  std::chrono::milliseconds pause{0};  // after the operation, the bus still held

  [[nodiscard]] bool sameDevice(const Step& other) const {
    return bus == other.bus && operation.address == other.operation.address;
  }
};

using Transaction = std::vector<Step>;

}  // namespace SmbusService
