// SPDX-License-Identifier: Apache-2.0
#include "Drivers/Halvorsa/EmersonPmbus.hpp"

#include <algorithm>

#include "Components/Fan.hpp"
#include "Drivers/Args.hpp"
#include "Drivers/Helpers.hpp"
#include "Drivers/Pmbus.hpp"
#include "Drivers/PmbusFormat.hpp"
#include "Utils/Check.hpp"
#include "Utils/Host.hpp"

namespace Drivers {

namespace {

constexpr uint8_t kVoutExponent = 26;  // -6 in 5 bits
constexpr uint8_t kVoutMantissaBits = 16;
constexpr uint8_t kVoutExponentBits = 5;

}  // namespace

class EmersonPmbus::Psu final : public Component::LogicalDevice::Psu {
 public:
  explicit Psu(EmersonPmbus* device) : device_(device) {}

  // Without AC a supply is not good and that is no error; with AC it is status 2.
  pl_status get_power_ok(int* ok) override;
  pl_status get_input_current(float* amperes) override;
  pl_status get_output_current(float* amperes) override {
    return read(PmbusCommand::READ_IOUT, amperes);
  }
  pl_status get_input_voltage(float* volts) override { return read(PmbusCommand::READ_VIN, volts); }
  pl_status get_output_voltage(float* volts) override;
  pl_status get_input_power(float* watts) override { return read(PmbusCommand::READ_PIN, watts); }
  pl_status get_output_power(float* watts) override;

 private:
  pl_status read(PmbusCommand command, float* value) {
    return pmbus_read_linear(*device_->ham, code(command), value);
  }

  EmersonPmbus* device_;
};

class EmersonPmbus::Fan : public Component::LogicalDevice::Fan {
 public:
  Fan(EmersonPmbus* device, const PmbusFanArgs& args) : device_(device), args_(args) {}

  pl_status getRpm(int* rpm) override;
  // At most maxFanRpm; of a negative speed the low 16 bits are taken as they are.
  pl_status setRpm(int rpm) override;

 private:
  EmersonPmbus* device_;
  const PmbusFanArgs args_;
};

Utils::ExpectedVals EmersonPmbus::values = {
    {0x88, {0xF3A3, 2}},  // 232.75 V
    {0x8C, {0xD2E1, 2}},  // 11.515625 A
    {0x90, {0x2A02, 2}},  // 16448 RPM
    {0x97, {0xF264, 2}},  // 153.0 W
};

Component::HardwareDevice* EmersonPmbus::create(const DriverArgs& args, Ham::Ham*) {
  TRACE(0, "Creating EmersonPmbus Device");
  const uint8_t psuId = requiredByte(args.driverArgs, "psuId");
  CHECK(psuId == 1 || psuId == 2);
  return new EmersonPmbus(psuId);  // to the device cache
}

void EmersonPmbus::init() {
  TRACE(0, "EmersonPmbus init function");
  psuPca_ = dynamic_cast<HalvPsuPCA9555*>(getHardwareDeviceByLabel("PsuPCA", "HalvPsuPCA9555"));
  CHECK(psuPca_);
}

Component::LogicalDevice::Psu* EmersonPmbus::newPsu(const DriverArgs&) {
  TRACE(0, "Creating EmersonPmbus Psu Device");
  return new Psu(this);
}

Component::LogicalDevice::Fan* EmersonPmbus::newFan(const DriverArgs& args) {
  TRACE(0, "Creating EmersonPmbus Fan Device");
  return new Fan(this, pmbusFanArgs(args.driverArgs));
}

pl_status EmersonPmbus::Psu::get_power_ok(int* ok) {
  bool powerOk;
  if (const pl_status status = device_->psuPca_->getPowerOk(device_->psuId, &powerOk)) {
    return status;
  }
  bool acOk;
  if (const pl_status status = device_->psuPca_->getAcOk(device_->psuId, &acOk)) {
    return status;
  }
  if (!powerOk && acOk) {
    return PL_STATUS_FAULT;
  }
  *ok = powerOk ? 1 : 0;
  return PL_STATUS_OK;
}

// The supply's own READ_IIN is not used.
pl_status EmersonPmbus::Psu::get_input_current(float* amperes) {
  float volts;
  if (const pl_status status = get_input_voltage(&volts)) {
    return status;
  }
  if (volts == 0.0f) {
    *amperes = 0.0f;
    return PL_STATUS_OK;
  }
  float watts;
  if (const pl_status status = get_input_power(&watts)) {
    return status;
  }
  *amperes = watts / volts;
  return PL_STATUS_OK;
}

pl_status EmersonPmbus::Psu::get_output_voltage(float* volts) {
  Ham::Ham* ham = device_->ham;
  ham->prepare();
  const auto modeId = ham->addRead8(code(PmbusCommand::VOUT_MODE));
  const auto wordId = ham->addRead16(code(PmbusCommand::READ_VOUT));
  if (const pl_status status = ham->execute()) {
    return status;
  }
  const uint8_t reg1 = ham->get8(modeId);
  CHECK_TEXT((reg1 & 0xe0) == 0, "( reg1 & 0xe0 ) == 0");
  *volts = linearToReal(ham->get16(wordId), kVoutExponent, kVoutMantissaBits, kVoutExponentBits);
  return PL_STATUS_OK;
}

pl_status EmersonPmbus::Psu::get_output_power(float* watts) {
  float volts;
  if (const pl_status status = get_output_voltage(&volts)) {
    return status;
  }
  float amperes;
  if (const pl_status status = get_output_current(&amperes)) {
    return status;
  }
  *watts = volts * amperes;
  return PL_STATUS_OK;
}

pl_status EmersonPmbus::Fan::getRpm(int* rpm) {
  float speed;
  if (const pl_status status =
          pmbus_read_linear(*device_->ham, code(args_.registers.speed), &speed)) {
    return status;
  }
  *rpm = static_cast<int>(speed);
  return PL_STATUS_OK;
}

pl_status EmersonPmbus::Fan::setRpm(int rpm) {
  const int limited = std::min(rpm, args_.maxFanRpm);
  TRACE(6, "Setting fan %d rpm to %d", args_.index, limited);
  const uint16_t word = realToLinear(static_cast<uint16_t>(limited));
  const pl_status status = device_->ham->write16(code(args_.registers.command), word, args_.pec);
  if (status != PL_STATUS_OK) {
    TRACE(0, "Failed to set fan%d rpm to %d", args_.index, limited);
  }
  return status;
}

}  // namespace Drivers
