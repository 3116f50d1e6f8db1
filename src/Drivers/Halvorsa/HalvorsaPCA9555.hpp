// SPDX-License-Identifier: Apache-2.0
//
// The fan trays' PCA9555: presence, airflow direction and an LED for each of the four trays.
//
//   pins  4-7    in   tray 1-4 present, 0 is present
//   pins  8-11   in   airflow of tray 1-4, 1 is back to front
//   pins 12-15   out  LED 1-4, 1 lights it (LED 5 would be pin 16, which the chip does not have)
//
// "bank-io-0" and "bank-io-1" are the direction bytes.
#pragma once

#include <string>

#include "Components/Slot.hpp"
#include "Drivers/GPIOExpander.hpp"
#include "Drivers/GenericPCA9555.hpp"
#include "Drivers/Halvorsa/ExpanderLed.hpp"
#include "Drivers/Helpers.hpp"

namespace Drivers {

class HalvorsaPCA9555 : public GPIOExpander {
 public:
  class FanSlot;
  class FanLed;

  static Component::HardwareDevice* create(const DriverArgs& args, Ham::Ham* ham);

  void init() override;
  Component::LogicalDevice::Slot* newSlot(const DriverArgs& args) override;
  Component::LogicalDevice::Led* newLed(const DriverArgs& args) override;
  Utils::ExpectedVals* expectedValues() override { return &values; }

  static Utils::ExpectedVals values;

 private:
  explicit HalvorsaPCA9555(const ArgMap& args);

  uint8_t directions_[PCA9555::kBanks];
};

// A tray. Its descriptor is the template "fanFdl" of the arguments with {airflowDirection},
// {maxRpm} ("rpmF2B" or "rpmB2F", as the air flows) and {modelName} filled in; it is kept until the
// tray is pulled or the airflow changes.
class HalvorsaPCA9555::FanSlot : public Component::LogicalDevice::Slot {
 public:
  // `index` counts from 0; the device is borrowed.
  FanSlot(HalvorsaPCA9555* device, uint8_t index, const ArgMap& args);

  pl_status getPresence(char** descriptor) override;

 private:
  std::string describe(bool backToFront);
  pl_status copyOut(char** descriptor) const;

  HalvorsaPCA9555* device_;
  uint8_t index_;
  ArgMap slotArgs_;
  FormatFdl fdl_;
  std::string cached_;  // empty: none
  bool cachedDirection_ = false;
};

class HalvorsaPCA9555::FanLed : public ExpanderLed {
 public:
  FanLed(HalvorsaPCA9555* device, uint8_t index);

  bool handleBlinkTimer(bool on) override;

 private:
  pl_status show(Light light) override;

  HalvorsaPCA9555* device_;
  uint8_t pin_;
};

}  // namespace Drivers
