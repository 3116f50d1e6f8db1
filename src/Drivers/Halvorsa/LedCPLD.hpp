// SPDX-License-Identifier: Apache-2.0
//
// The CPLDs of the front panel's port LEDs.
//
// HalvCLedCPLD switches its enable registers once, at start: 0 to 5 and 8 to 11 are written 0x00,
// then 6 and 7 0xFF. The Z and T variants, which are not drivers of this board, offer single bits
// as active-low lines: setting one writes 0 and clearing one writes 1, and reading gives the bit as
// it is.
#pragma once

#include <cstdint>
#include <span>

#include "Components/Gpio.hpp"
#include "Components/HardwareDevice.hpp"

namespace Drivers {

class HalvCLedCPLD : public Component::HardwareDevice {
 public:
  static Component::HardwareDevice* create(const DriverArgs& args, Ham::Ham* ham);

  void init() override;
  // Writes both lists, a transaction a register; failures are traced and passed over.
  virtual void setLedsRegister();

 private:
  std::span<const uint8_t> disable_;
  std::span<const uint8_t> enable_;
};

class HalvZLedCPLD : public Component::HardwareDevice {
 public:
  class RegGpio;

  static Component::HardwareDevice* create(const DriverArgs& args, Ham::Ham* ham);

  Component::LogicalDevice::Gpio* newGpio(const DriverArgs& args) override;
  virtual void setLedsRegister() {}
};

class HalvTLedCPLD : public Component::HardwareDevice {
 public:
  class RegGpio;

  static Component::HardwareDevice* create(const DriverArgs& args, Ham::Ham* ham);

  Component::LogicalDevice::Gpio* newGpio(const DriverArgs& args) override;
  virtual void setLedsRegister() {}
};

}  // namespace Drivers
