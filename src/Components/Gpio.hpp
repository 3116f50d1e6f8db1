// SPDX-License-Identifier: Apache-2.0
//
// GPIO lines, as drivers implement them (pl/pl_gpio.h says what the operations mean), and the line
// that every device with registers can make: one bit of one 8-bit register.
#pragma once

#include <cstdint>

#include "Drivers/Drivers.hpp"
#include "pl/pl_gpio.h"

namespace Component {

class HardwareDevice;

namespace LogicalDevice {

class Gpio {
 public:
  Gpio() : record_{0, &ops_, this} {}
  Gpio(const Gpio&) = delete;
  Gpio& operator=(const Gpio&) = delete;
  virtual ~Gpio() = default;

  virtual pl_status bitClear() = 0;
  virtual pl_status bitSet() = 0;
  virtual pl_status bitRead(unsigned int* level) = 0;

  pl_gpio* record() { return &record_; }

  static pl_status bitSetCallback(pl_gpio* gpio);
  static pl_status bitClearCallback(pl_gpio* gpio);
  static pl_status bitReadCallback(pl_gpio* gpio, unsigned int* level);
  static const pl_gpio_ops ops_;

 private:
  pl_gpio record_;
};

class RegGpio : public Gpio {
 public:
  // Reads "register" and "bitpos" of the arguments, both required; the device is borrowed.
  RegGpio(HardwareDevice* owner, const Drivers::DriverArgs& args);

  // A write first reads the register and keeps its other bits; with writeOnly it reads nothing, and
  // takes them as 0 to set a bit and as 1 to clear one.
  pl_status bitClear() override;
  pl_status bitSet() override;
  pl_status bitRead(unsigned int* level) override;

  HardwareDevice* device;
  bool writeOnly = false;
  uint32_t reg;
  uint32_t bitpos;

 private:
  // What a write starts from: the register, or `blind` with writeOnly.
  pl_status base(uint8_t blind, uint8_t* value);
};

}  // namespace LogicalDevice
}  // namespace Component
