// SPDX-License-Identifier: Apache-2.0
#include "Drivers/Pmbus.hpp"

#include "Drivers/Args.hpp"
#include "Drivers/Helpers.hpp"
#include "Drivers/PmbusFormat.hpp"
#include "Ham/Ham.hpp"
#include "Utils/Check.hpp"
#include "Utils/Host.hpp"

namespace Drivers {

namespace {

constexpr uint8_t kModeMask = 0xE0;  // VOUT_MODE bits 7 to 5; 0 is linear
constexpr uint8_t kModeLinear11 = 0xFF;
constexpr uint8_t kVoutMantissaBits = 16;
constexpr uint8_t kVoutExponentBits = 5;
constexpr unsigned kPowerBadBit = 11;
constexpr unsigned kOffBit = 6;
constexpr uint16_t kMaxDuty = 100;  // percent

// What belongs to fan 1 and fan 2, and to sensor 1 and 2.
constexpr PmbusFanRegisters kFans[] = {
    {PmbusCommand::READ_FAN_SPEED_1, PmbusCommand::FAN_COMMAND_1, 0x80},
    {PmbusCommand::READ_FAN_SPEED_2, PmbusCommand::FAN_COMMAND_2, 0x40},
};
constexpr PmbusCommand kSensors[] = {
    PmbusCommand::READ_TEMPERATURE_1,
    PmbusCommand::READ_TEMPERATURE_2,
};

constexpr const char* kFanIdText = "args.driverArgs.find( \"fanId\" ) != args.driverArgs.end()";
constexpr const char* kMaxFanRpmText =
    "args.driverArgs.find( \"maxFanRpm\" ) != args.driverArgs.end()";
constexpr const char* kSensorIdText =
    "args.driverArgs.find( \"sensorId\" ) != args.driverArgs.end()";

}  // namespace

class Pmbus::Psu final : public Component::LogicalDevice::Psu {
 public:
  explicit Psu(Pmbus* device) : device_(device) {}

  pl_status get_power_ok(int* ok) override { return device_->get_power_ok(ok); }
  pl_status get_input_current(float* amperes) override {
    return device_->get_input_current(amperes);
  }
  pl_status get_output_current(float* amperes) override {
    return device_->get_output_current(amperes);
  }
  pl_status get_input_voltage(float* volts) override { return device_->get_input_voltage(volts); }
  pl_status get_output_voltage(float* volts) override { return device_->get_output_voltage(volts); }
  pl_status get_input_power(float* watts) override { return device_->get_input_power(watts); }
  pl_status get_output_power(float* watts) override { return device_->get_output_power(watts); }

 private:
  Pmbus* device_;
};

class Pmbus::Fan : public Component::LogicalDevice::Fan {
 public:
  Fan(Pmbus* device, const PmbusFanArgs& args) : device_(device), args_(args) {}

  pl_status getRpm(int* rpm) override { return device_->getFanRpm(*this, rpm); }
  pl_status setRpm(int rpm) override { return device_->setFanRpm(*this, rpm); }

 private:
  friend class Pmbus;

  Pmbus* device_;
  const PmbusFanArgs args_;
};

class Pmbus::TempSensor : public Component::LogicalDevice::TempSensor {
 public:
  TempSensor(Pmbus* device, uint8_t id) : device_(device), id_(id) {}

  pl_status getTemperature(float* celsius) override {
    return device_->getTemperature(*this, celsius);
  }
  uint8_t id() const override { return id_; }
  uint8_t reg() const override { return code(kSensors[id_ - 1]); }

 private:
  Pmbus* device_;
  uint8_t id_;
};

Utils::ExpectedVals Pmbus::values = {
    {0x20, {0x17, 1}},    // linear mode, exponent -9
    {0x79, {0x2C4B, 2}},  // power bad, off
    {0x88, {0xC800, 2}}, {0x89, {0xA800, 2}}, {0x8B, {0, 1}},
    {0x8C, {0xE000, 2}}, {0x8D, {0xF84C, 2}},  // 38.0
    {0x8E, {0xF800, 2}}, {0x90, {0x1B69, 2}},  // 6984 RPM
    {0x96, {0xD800, 2}}, {0x97, {0xD800, 2}},
};

PmbusFanArgs pmbusFanArgs(const ArgMap& args, const Utils::Place& place) {
  const auto index = static_cast<uint8_t>(requiredNumber(args, "fanId", kFanIdText, place) - 1);
  if (index >= std::size(kFans)) {
    Utils::checkFailed("fanId == 1 || fanId == 2", place);
  }
  const int32_t maxFanRpm = requiredNumber(args, "maxFanRpm", kMaxFanRpmText, place);
  return {index, maxFanRpm, argOr(args, "pec", "false") == "true", kFans[index]};
}

pl_status pmbus_read_linear(Ham::Ham& ham, uint8_t command, float* value) {
  uint16_t word;
  if (const pl_status status = ham.read16(command, &word)) {
    return status;
  }
  *value = linear11ToReal(word);
  return PL_STATUS_OK;
}

Component::HardwareDevice* Pmbus::create(const DriverArgs& args, Ham::Ham*) {
  TRACE(0, "Creating Pmbus Device");
  return new Pmbus(args.driverArgs);  // to the device cache
}

Pmbus::Pmbus(const ArgMap& args)
    : voutExponent(static_cast<uint8_t>(numberOr(args, "voutExponent", kExponentFromMode))),
      powerOkActiveLow(argOr(args, "powerOkActiveLow", "true") == "true") {
  const auto label = args.find("gpioDevice");
  if (label != args.end()) {
    const auto reg = static_cast<uint32_t>(std::stoi(args.at("powerOkReg")));
    const auto bit = static_cast<uint32_t>(std::stoi(args.at("powerOkBit")));
    powerOkGpio_.reset(getRegGpioForDevice(label->second.c_str(), reg, bit));
  }
}

Component::LogicalDevice::Psu* Pmbus::newPsu(const DriverArgs&) {
  TRACE(0, "Creating Pmbus Psu Device");
  return new Psu(this);
}

Component::LogicalDevice::Fan* Pmbus::newFan(const DriverArgs& args) {
  TRACE(0, "Creating Pmbus Fan Device");
  return new Fan(this, pmbusFanArgs(args.driverArgs));
}

Component::LogicalDevice::TempSensor* Pmbus::newTempSensor(const DriverArgs& args) {
  TRACE(0, "Creating Pmbus TempSensor Device");
  const uint8_t id = requiredByte(args.driverArgs, "sensorId", kSensorIdText);
  CHECK_TEXT(id == 1 || id == 2, "id == 1 || id == 2");
  return new TempSensor(this, id);
}

pl_status Pmbus::readLinear(PmbusCommand command, float* value) {
  return pmbus_read_linear(*ham, code(command), value);
}

pl_status Pmbus::get_input_current(float* amperes) {
  return readLinear(PmbusCommand::READ_IIN, amperes);
}
pl_status Pmbus::get_output_current(float* amperes) {
  return readLinear(PmbusCommand::READ_IOUT, amperes);
}
pl_status Pmbus::get_input_voltage(float* volts) {
  return readLinear(PmbusCommand::READ_VIN, volts);
}
pl_status Pmbus::get_input_power(float* watts) { return readLinear(PmbusCommand::READ_PIN, watts); }
pl_status Pmbus::get_output_power(float* watts) {
  return readLinear(PmbusCommand::READ_POUT, watts);
}

pl_status Pmbus::get_output_voltage(float* volts) {
  ham->prepare();
  const auto modeId = ham->addRead8(code(PmbusCommand::VOUT_MODE));
  const auto wordId = ham->addRead16(code(PmbusCommand::READ_VOUT));
  if (const pl_status status = ham->execute()) {
    return status;
  }
  const uint8_t mode = ham->get8(modeId);
  const uint16_t word = ham->get16(wordId);
  if ((mode & kModeMask) == 0) {
    const uint8_t exponent = voutExponent != kExponentFromMode ? voutExponent : mode;
    *volts = linearToReal(word, exponent, kVoutMantissaBits, kVoutExponentBits);
  } else if (mode == kModeLinear11) {
    *volts = linear11ToReal(word);
  }
  return PL_STATUS_OK;
}

pl_status Pmbus::get_power_ok(int* ok) {
  TRACE(4, "pl_status Drivers::Pmbus::get_power_ok(int*)");
  TRACE(4, "Issuing CLEAR_FAULTS PMBus command");
  if (const pl_status status = ham->sendByte(code(PmbusCommand::CLEAR_FAULTS), false)) {
    TRACE(3, "CLEAR_FAULTS PMBus command failed: %d", status);
  }
  return powerOkGpio_ != nullptr ? powerOkFromPin(ok) : powerOkFromStatusWord(ok);
}

pl_status Pmbus::powerOkFromPin(int* ok) {
  TRACE(4, "Checking power OK using powerOkGpio_");
  unsigned level;
  if (const pl_status status = powerOkGpio_->bitRead(&level)) {
    return status;
  }
  *ok = (level != 0) != powerOkActiveLow ? 1 : 0;
  return PL_STATUS_OK;
}

pl_status Pmbus::powerOkFromStatusWord(int* ok) {
  TRACE(4, "Checking power OK using STATUS_WORD_REG");
  uint16_t statusWord;
  if (const pl_status status = ham->read16(code(PmbusCommand::STATUS_WORD), &statusWord)) {
    return status;
  }
  const int powerBad = statusWord >> kPowerBadBit & 1;
  const int off = statusWord >> kOffBit & 1;
  TRACE(4, "statusWord: 0x%x, powerBad: 0b%d, off: 0b%d", statusWord, powerBad, off);
  if (powerBad == 1 && off == 0) {
    return PL_STATUS_FAULT;
  }
  *ok = powerBad == 0 ? 1 : 0;
  return PL_STATUS_OK;
}

pl_status Pmbus::getFanRpm(const Fan& fan, int* rpm) {
  uint8_t faults;
  if (const pl_status status = ham->read8(code(PmbusCommand::STATUS_FANS_1_2), &faults)) {
    return status;
  }
  if ((faults & fan.args_.registers.faultMask) != 0) {
    return PL_STATUS_FAULT;
  }
  float speed;
  if (const pl_status status = readLinear(fan.args_.registers.speed, &speed)) {
    return status;
  }
  *rpm = static_cast<int>(speed);
  return PL_STATUS_OK;
}

pl_status Pmbus::setFanRpm(const Fan& fan, int rpm) {
  const auto scaled = static_cast<int32_t>(static_cast<uint32_t>(rpm) * 100u);
  const auto requested = static_cast<uint16_t>(scaled / fan.args_.maxFanRpm);
  TRACE(6, "Setting fan %d duty cycle to %d", fan.args_.index, requested);
  const uint16_t duty = requested > kMaxDuty ? kMaxDuty : requested;
  const pl_status status = ham->write16(code(fan.args_.registers.command), duty, fan.args_.pec);
  if (status != PL_STATUS_OK) {
    TRACE(0, "Failed to set fan%d duty cycle to %d", fan.args_.index, duty);
  }
  return status;
}

// The clamp looks at what stands in the output, also when nothing could be read.
pl_status Pmbus::getTemperature(const TempSensor& sensor, float* celsius) {
  const pl_status status = pmbus_read_linear(*ham, sensor.reg(), celsius);
  if (*celsius < 0.0f) {
    *celsius = 0.0f;
  }
  return status;
}

}  // namespace Drivers
