// SPDX-License-Identifier: Apache-2.0
//
// The board's PSoC: fan speeds, one PWM duty cycle for all fans, fan stall flags, temperatures.
//
//   0x20-0x25  r  8   temperatures, whole degrees Celsius, unsigned
//   0x30       w  8   configuration, 0x01
//   0x31       w  8   configuration, 0xFF
//   0x32       r  8   fan stall flags: bit n for the fan with index n
//   0x33       w  8   configuration, 0x01
//   0x3C       w  16  duty cycle in hundredths of a percent, 0 to 9900
//   0x40+2n    r  16  speed of a fan in RPM, n the fan's "registerOffset"
//
// 16-bit registers have their most significant byte first, so the bytes of an SMBus word are
// swapped. The stall flags are polled every 1000 ms; a fan flagged there reports a fault, not a
// speed.
#pragma once

#include "Components/Fan.hpp"
#include "Components/PollingDevice.hpp"
#include "Components/TempSensor.hpp"

namespace Drivers {

class HalvorsaPsoc : public Component::PollingDevice<Component::HardwareDevice> {
 public:
  class Fan;
  class TempSensor;

  static Component::HardwareDevice* create(const DriverArgs& args, Ham::Ham* ham);

  void init() override;
  Component::LogicalDevice::TempSensor* newTempSensor(const DriverArgs& args) override;
  Component::LogicalDevice::Fan* newFan(const DriverArgs& args) override;
  Utils::ExpectedVals* expectedValues() override { return &values; }
  void pollCallback() override { readFanStallReg(); }

  static Utils::ExpectedVals values;

 private:
  void readFanStallReg();
  pl_status getFanRpm(const Fan& fan, int* rpm);
  pl_status setFanRpm(const Fan& fan, int rpm);
  pl_status getTemperature(const TempSensor& sensor, float* celsius);

  uint8_t fanStall_ = 0;  // as last polled
};

// A fan. The device is borrowed and outlives it.
class HalvorsaPsoc::Fan : public Component::LogicalDevice::Fan {
 public:
  // `index` counts from 0 and is the fan's stall bit. "registerOffset" and "pwmMaster" come from
  // the arguments.
  Fan(HalvorsaPsoc* device, uint8_t index, int32_t maxRpm, ArgMap args);

  pl_status getRpm(int* rpm) override { return device_->getFanRpm(*this, rpm); }
  // All fans share one duty cycle, which the PWM master alone sets; the others accept and ignore.
  // The percentage of maxRpm is cut to 8 bits before it is limited to 99, so 300 % is 44 %, and
  // anything just below 0 is 99 %.
  pl_status setRpm(int rpm) override;

 private:
  friend class HalvorsaPsoc;

  HalvorsaPsoc* device_;
  uint8_t id_;
  int32_t maxRpm_;
  uint8_t speedRegister_;
  bool pwmMaster_;
};

class HalvorsaPsoc::TempSensor : public Component::LogicalDevice::TempSensor {
 public:
  TempSensor(HalvorsaPsoc* device, uint8_t id, uint8_t reg)
      : device_(device), id_(id), register_(reg) {}

  pl_status getTemperature(float* celsius) override {
    return device_->getTemperature(*this, celsius);
  }
  uint8_t id() const override { return id_; }
  uint8_t reg() const override { return register_; }

 private:
  HalvorsaPsoc* device_;
  uint8_t id_;
  uint8_t register_;
};

}  // namespace Drivers
