// SPDX-License-Identifier: Apache-2.0
//
// The board's Emerson supplies. They speak PMBus, but their power-good lines come from the PCA9555
// labelled "PsuPCA", their input current and output power are computed, their output voltage has
// the exponent -6 whatever VOUT_MODE says, and their fans are commanded in RPM, as LINEAR11.
#pragma once

#include "Components/HardwareDevice.hpp"
#include "Components/Psu.hpp"
#include "Drivers/Halvorsa/HalvPsuPCA9555.hpp"

namespace Drivers {

class EmersonPmbus : public Component::HardwareDevice {
 public:
  class Psu;
  class Fan;

  static Component::HardwareDevice* create(const DriverArgs& args, Ham::Ham* ham);

  void init() override;
  Component::LogicalDevice::Fan* newFan(const DriverArgs& args) override;
  Component::LogicalDevice::Psu* newPsu(const DriverArgs& args) override;
  Utils::ExpectedVals* expectedValues() override { return &values; }

  static Utils::ExpectedVals values;

 private:
  explicit EmersonPmbus(uint8_t id) : psuId(id) {}

  uint8_t psuId;                      // 1 or 2
  HalvPsuPCA9555* psuPca_ = nullptr;  // from init() on; borrowed
};

}  // namespace Drivers
