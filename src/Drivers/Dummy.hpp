// SPDX-License-Identifier: Apache-2.0
//
// A device without logical devices of its own; its registers can still be used as GPIO lines.
#pragma once

#include "Components/HardwareDevice.hpp"

namespace Drivers {

class Dummy : public Component::HardwareDevice {
 public:
  static Component::HardwareDevice* create(const DriverArgs&, Ham::Ham*) { return new Dummy; }
};

}  // namespace Drivers
