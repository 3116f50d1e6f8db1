// SPDX-License-Identifier: Apache-2.0
//
// An SMBus multiplexer with one control register, written by a send-byte whose bits are the
// channels to open (PCA9548 and its kin); 0 closes all.
#pragma once

#include "Components/HardwareDevice.hpp"
#include "Components/Mux.hpp"

namespace Drivers {

class GenericSmbusMux : public Component::HardwareDevice {
 public:
  class Mux;

  static Component::HardwareDevice* create(const DriverArgs& args, Ham::Ham* ham);

  // The low 8 bits of `channel` are what selects it.
  Component::LogicalDevice::Mux* newMux(const DriverArgs& args, unsigned int channel) override;
};

class GenericSmbusMux::Mux : public Component::LogicalDevice::Mux {
 public:
  Mux(Component::HardwareDevice* device, uint8_t channel) : device_(device), channel_(channel) {}

  // Each is one request.
  int selectRequest(Ham::Ham* ham) override;
  int resetRequest(Ham::Ham* ham) override;
  pl_status executeMuxRequest() override;
  Component::HardwareDevice* device() const override { return device_; }

 private:
  Component::HardwareDevice* device_;  // borrowed
  uint8_t channel_;
};

}  // namespace Drivers
