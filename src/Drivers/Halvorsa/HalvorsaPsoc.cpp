// SPDX-License-Identifier: Apache-2.0
#include "Drivers/Halvorsa/HalvorsaPsoc.hpp"

#include <string>

#include "Drivers/Args.hpp"
#include "Utils/Bytes.hpp"
#include "Utils/Check.hpp"

namespace Drivers {

namespace {

enum class Register : uint8_t {
  kConfig0 = 0x30,
  kConfig1 = 0x31,
  kFanStall = 0x32,  // r 8, bit n: fan index n is stalled
  kConfig3 = 0x33,
  kDuty = 0x3C,      // w 16, hundredths of a percent
  kFanSpeed = 0x40,  // r 16, RPM, the first of a row
};

constexpr uint32_t reg(Register r) { return static_cast<uint32_t>(r); }

constexpr uint8_t speedRegister(uint8_t offset) {
  return static_cast<uint8_t>(reg(Register::kFanSpeed) + 2u * offset);
}

struct RegisterWrite {
  Register reg;
  uint8_t value;
};

constexpr RegisterWrite kConfiguration[] = {
    {Register::kConfig3, 0x01},
    {Register::kConfig0, 0x01},
    {Register::kConfig1, 0xFF},
};

constexpr uint32_t kPollInterval = 1000;  // ms
constexpr uint8_t kLastFan = 3;
constexpr uint8_t kMaxPercent = 99;
constexpr uint16_t kDutyPerPercent = 100;

}  // namespace

// Words stand as SMBus delivers them: 0xFE1F is 8190 RPM.
Utils::ExpectedVals HalvorsaPsoc::values = {
    {0x20, {40, 1}},     {0x21, {39, 1}},     {0x22, {39, 1}},
    {0x24, {39, 1}},     {0x25, {38, 1}},     {0x32, {0x88, 1}},  // fan indexes 3 and 7 stalled
    {0x40, {0xFE1F, 2}}, {0x42, {0xFE1F, 2}}, {0x44, {0xFF56, 2}},
};

Component::HardwareDevice* HalvorsaPsoc::create(const DriverArgs&, Ham::Ham*) {
  TRACE(0, "Creating HalvorsaPsoc Device");
  return new HalvorsaPsoc;  // to the device cache
}

void HalvorsaPsoc::init() {
  ham->prepare();
  for (const RegisterWrite& write : kConfiguration) {
    ham->addWrite8(reg(write.reg), write.value, false);
  }
  if (ham->execute() != PL_STATUS_OK) {
    TRACE(0, "HalvorsaPsoc init: failed to write configuration");
  }
  pollIntervalIs(kPollInterval);
  CHECK(pollStart());
}

// A failed read counts as no fan stalled: nothing is known of any.
void HalvorsaPsoc::readFanStallReg() {
  uint8_t stall = 0;
  if (const pl_status status = ham->read8(reg(Register::kFanStall), &stall)) {
    TRACE(0, "Error status %d reading fan stall alert register", status);
  }
  fanStall_ = stall;
}

pl_status HalvorsaPsoc::getFanRpm(const Fan& fan, int* rpm) {
  if ((fanStall_ >> fan.id_ & 1) != 0) {
    TRACE(0, "Fan %d stalled", fan.id_);
    return PL_STATUS_FAULT;
  }
  uint16_t word;
  if (const pl_status status = ham->read16(fan.speedRegister_, &word)) {
    TRACE(0, "Error: failed to read from fan %d speed register %d", fan.id_, fan.speedRegister_);
    return status;
  }
  *rpm = Utils::swapBytes(word);
  TRACE(5, "HalvorsaPsoc::getFanRpm -- id: %d, rpm: %d", fan.id_, *rpm);
  return PL_STATUS_OK;
}

pl_status HalvorsaPsoc::setFanRpm(const Fan& fan, int rpm) {
  // 32-bit arithmetic that wraps, as absurd requests do.
  const auto scaled = static_cast<int32_t>(static_cast<uint32_t>(rpm) * 100u);
  const auto percent = static_cast<uint8_t>(scaled / fan.maxRpm_);
  const auto duty = static_cast<uint16_t>(percent >= kMaxPercent ? kMaxPercent * kDutyPerPercent
                                                                 : percent * kDutyPerPercent);
  TRACE(5, "Setting fan %d rpm to %d", fan.id_, rpm);
  const pl_status status = ham->write16(reg(Register::kDuty), Utils::swapBytes(duty), false);
  if (status != PL_STATUS_OK) {
    TRACE(0, "Error: setting fan %d to %d rpm failed with status %d", fan.id_, rpm, status);
  }
  return status;
}

pl_status HalvorsaPsoc::getTemperature(const TempSensor& sensor, float* celsius) {
  uint8_t degrees;
  if (const pl_status status = ham->read8(sensor.reg(), &degrees)) {
    TRACE(0, "Error status %d reading temperature from Psoc sensor %d", status, sensor.id());
    return status;
  }
  *celsius = degrees;
  return PL_STATUS_OK;
}

Component::LogicalDevice::Fan* HalvorsaPsoc::newFan(const DriverArgs& args) {
  const auto fanId = requiredByte(args.driverArgs, "fanId");
  TRACE(0, "Creating new HalvorsaPsoc Fan id %hhu", fanId);
  const auto index = static_cast<uint8_t>(fanId - 1);
  CHECK_TEXT(index <= kLastFan, "fanId >= 1 && fanId <= 4");
  const int32_t maxRpm = requiredNumber(args.driverArgs, "maxRpm");
  return new Fan(this, index, maxRpm, args.driverArgs);
}

Component::LogicalDevice::TempSensor* HalvorsaPsoc::newTempSensor(const DriverArgs& args) {
  TRACE(0, "Creating HalvorsaPsoc TempSensor Device");
  const std::string& idText =
      requiredArg(args.driverArgs, "sensorId", "idIt != args.driverArgs.end()");
  const std::string& regText =
      requiredArg(args.driverArgs, "register", "regIt != args.driverArgs.end()");
  const auto id = static_cast<uint8_t>(std::stoi(idText));
  const auto reg = static_cast<uint8_t>(std::stoi(regText));
  TRACE(5, "TempSensor id=%d, register=%d", id, reg);
  return new TempSensor(this, id, reg);
}

// A missing "registerOffset" reads as an empty text, which is no number.
HalvorsaPsoc::Fan::Fan(HalvorsaPsoc* device, uint8_t index, int32_t maxRpm, ArgMap args)
    : device_(device),
      id_(index),
      maxRpm_(maxRpm),
      speedRegister_(speedRegister(static_cast<uint8_t>(std::stoi(args["registerOffset"])))),
      pwmMaster_(args["pwmMaster"] == "true") {}

pl_status HalvorsaPsoc::Fan::setRpm(int rpm) {
  return pwmMaster_ ? device_->setFanRpm(*this, rpm) : PL_STATUS_OK;
}

}  // namespace Drivers
