// SPDX-License-Identifier: Apache-2.0
//
// A power supply that speaks PMBus (PMBus 1.2 part II): readings, power good, fans, temperatures.
//
//   0x03 CLEAR_FAULTS    s     before every power-good check
//   0x20 VOUT_MODE       r 8   exponent and mode of READ_VOUT
//   0x3B FAN_COMMAND_1   w 16  duty cycle in percent; 0x3C for fan 2
//   0x79 STATUS_WORD     r 16  bit 11 power not good, bit 6 off
//   0x81 STATUS_FANS_1_2 r 8   bit 7 fan 1 fault, bit 6 fan 2 fault
//   0x88 READ_VIN, 0x89 READ_IIN, 0x8B READ_VOUT, 0x8C READ_IOUT, 0x8D READ_TEMPERATURE_1 (0x8E
//   for 2), 0x90 READ_FAN_SPEED_1 (0x91 for 2), 0x96 READ_POUT, 0x97 READ_PIN
//                        r 16  LINEAR11, but READ_VOUT as VOUT_MODE says
#pragma once

#include <memory>

#include "Components/Fan.hpp"
#include "Components/Gpio.hpp"
#include "Components/HardwareDevice.hpp"
#include "Components/Psu.hpp"
#include "Components/TempSensor.hpp"
#include "Utils/Check.hpp"

namespace Drivers {

// The commands, by the standard's names.
enum class PmbusCommand : uint8_t {
  CLEAR_FAULTS = 0x03,
  VOUT_MODE = 0x20,
  FAN_COMMAND_1 = 0x3B,
  FAN_COMMAND_2 = 0x3C,
  STATUS_WORD = 0x79,
  STATUS_FANS_1_2 = 0x81,
  READ_VIN = 0x88,
  READ_IIN = 0x89,
  READ_VOUT = 0x8B,
  READ_IOUT = 0x8C,
  READ_TEMPERATURE_1 = 0x8D,
  READ_TEMPERATURE_2 = 0x8E,
  READ_FAN_SPEED_1 = 0x90,
  READ_FAN_SPEED_2 = 0x91,
  READ_POUT = 0x96,
  READ_PIN = 0x97,
  MFR_MODEL = 0x9A,
  MFR_SERIAL = 0x9E,
};

constexpr uint8_t code(PmbusCommand command) { return static_cast<uint8_t>(command); }

// What a fan of a supply has of its own.
struct PmbusFanRegisters {
  PmbusCommand speed;
  PmbusCommand command;
  uint8_t faultMask;  // in STATUS_FANS_1_2
};

// What the description of a fan says.
struct PmbusFanArgs {
  uint8_t index;  // from 0
  int32_t maxFanRpm;
  bool pec;
  const PmbusFanRegisters& registers;
};

// Reads "fanId", "maxFanRpm" and "pec". What is wrong with them stops the process at `place`.
PmbusFanArgs pmbusFanArgs(const ArgMap& args, const Utils::Place& place = Utils::Place::here());

// One LINEAR11 reading.
pl_status pmbus_read_linear(Ham::Ham& ham, uint8_t command, float* value);

class Pmbus : public Component::HardwareDevice {
 public:
  class Psu;
  class Fan;
  class TempSensor;

  static Component::HardwareDevice* create(const DriverArgs& args, Ham::Ham* ham);

  Component::LogicalDevice::TempSensor* newTempSensor(const DriverArgs& args) override;
  Component::LogicalDevice::Fan* newFan(const DriverArgs& args) override;
  Component::LogicalDevice::Psu* newPsu(const DriverArgs& args) override;
  Utils::ExpectedVals* expectedValues() override { return &values; }

  // From the power-good pin when there is one, else from the status word: a supply that is off is
  // not good with status 0, one that is on and not good is status 2. Clears the supply's faults
  // first.
  pl_status get_power_ok(int* ok);
  pl_status get_input_current(float* amperes);
  pl_status get_output_current(float* amperes);
  pl_status get_input_voltage(float* volts);
  // The mantissa is signed, so words of 0x8000 and above are negative volts. A mode that is neither
  // linear nor 0xFF leaves the output alone and is no failure.
  pl_status get_output_voltage(float* volts);
  pl_status get_input_power(float* watts);
  pl_status get_output_power(float* watts);

  static Utils::ExpectedVals values;

 private:
  // Stands for the exponent that VOUT_MODE gives.
  static constexpr uint8_t kExponentFromMode = 255;

  explicit Pmbus(const ArgMap& args);

  pl_status readLinear(PmbusCommand command, float* value);
  pl_status powerOkFromPin(int* ok);
  pl_status powerOkFromStatusWord(int* ok);
  pl_status getFanRpm(const Fan& fan, int* rpm);
  pl_status setFanRpm(const Fan& fan, int rpm);
  pl_status getTemperature(const TempSensor& sensor, float* celsius);

  uint8_t voutExponent;
  std::unique_ptr<Component::LogicalDevice::Gpio> powerOkGpio_;  // null: the status word counts
  bool powerOkActiveLow;
};

}  // namespace Drivers
