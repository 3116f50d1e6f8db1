// SPDX-License-Identifier: Apache-2.0
//
// A plain PCA9555 16-pin GPIO expander (NXP PCA9555 data sheet): its pins as GPIO lines.
//
//   0, 1  r   input banks          4, 5  polarity, not used
//   2, 3  rw  output banks         6, 7  w   configuration banks, 1 is an input
#pragma once

#include "Components/Gpio.hpp"
#include "Drivers/GPIOExpander.hpp"

namespace Drivers {

// The geometry of the chip, and how long its inputs are cached unless said otherwise.
struct PCA9555 {
  static constexpr int32_t kBanks = 2;
  static constexpr uint8_t kCacheTimeout = 2;  // seconds
  static constexpr uint8_t kInputBankBase = 0;
  static constexpr uint8_t kOutputBankBase = 2;
  static constexpr uint8_t kConfigBankBase = 6;
};

class GenericPCA9555 : public GPIOExpander {
 public:
  class ExpGpio;

  static Component::HardwareDevice* create(const DriverArgs& args, Ham::Ham* ham);

  explicit GenericPCA9555(const ArgMap& args);

  // Sets the directions. What the outputs hold is left as it is.
  void init() override;
  Component::LogicalDevice::Gpio* newGpio(const DriverArgs& args) override;

 private:
  uint8_t directions_[PCA9555::kBanks];
};

// A pin, by "bank" and "bit" of the arguments.
class GenericPCA9555::ExpGpio : public Component::LogicalDevice::Gpio {
 public:
  ExpGpio(GPIOExpander* expander, const ArgMap& args);

  // A bank that cannot be read is left alone without a word; the status is that of writing back.
  pl_status bitClear() override;
  pl_status bitSet() override;
  // 0 when the pin cannot be read.
  pl_status bitRead(unsigned int* level) override;

 private:
  pl_status write(bool value);

  GPIOExpander* expander_;  // borrowed
  uint32_t bank_;
  uint32_t bit_;
};

}  // namespace Drivers
