// SPDX-License-Identifier: Apache-2.0
//
// The PCA9555 beside the two power supplies: their power and AC lines, two-colour LEDs, and the
// reset lines of their EEPROMs, which are held at 0.
//
//   pin 1   in  PSU 1 power good      pins  8,  9  out  EEPROM resets
//   pin 4   in  PSU 2 power good      pins 10, 11  out  PSU 1 LED green, red
//   pin 6   in  PSU 1 AC good         pins 12, 13  out  PSU 2 LED green, red
//   pin 7   in  PSU 2 AC good         pins 14, 15  out  fan LED green, red
#pragma once

#include "Drivers/GPIOExpander.hpp"
#include "Drivers/Halvorsa/ExpanderLed.hpp"

namespace Drivers {

class HalvPsuPCA9555 : public GPIOExpander {
 public:
  class Led;
  class PsuLed;
  class MultiFanLed;

  static Component::HardwareDevice* create(const DriverArgs& args, Ham::Ham* ham);

  void init() override;
  // "id" 1 or 2; "type" "psu", or "multifan" for the fans' shared LED.
  Component::LogicalDevice::Led* newLed(const DriverArgs& args) override;
  Utils::ExpectedVals* expectedValues() override { return &values; }

  // A line of supply 1 or 2, as the pin reads: true is good. At most 2 s old.
  pl_status getPowerOk(uint8_t psuId, bool* ok);
  pl_status getAcOk(uint8_t psuId, bool* ok);

  static Utils::ExpectedVals values;

 private:
  HalvPsuPCA9555();
};

class HalvPsuPCA9555::Led : public ExpanderLed {
 public:
  // A toggle that fails is traced, and the LED goes on blinking.
  bool handleBlinkTimer(bool on) override;

  // These change the pins and leave writing them to the caller.
  virtual void setLedGreen() { setPins(true, false); }
  virtual void setLedRed() { setPins(false, true); }
  virtual void setLedOff() { setPins(false, false); }

 protected:
  Led(HalvPsuPCA9555* device, uint8_t index, uint8_t greenPin, uint8_t redPin);

 private:
  pl_status show(Light light) override;
  void setPins(bool green, bool red);

  HalvPsuPCA9555* device_;  // borrowed
  uint8_t greenPin_;
  uint8_t redPin_;
};

class HalvPsuPCA9555::PsuLed : public Led {
 public:
  PsuLed(HalvPsuPCA9555* device, uint8_t index);
};

class HalvPsuPCA9555::MultiFanLed : public Led {
 public:
  MultiFanLed(HalvPsuPCA9555* device, uint8_t index);
};

}  // namespace Drivers
