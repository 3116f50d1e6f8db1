// SPDX-License-Identifier: Apache-2.0
#include "Drivers/Halvorsa/HalvPsuPCA9555.hpp"

#include "Drivers/Args.hpp"
#include "Drivers/GenericPCA9555.hpp"
#include "Utils/Check.hpp"
#include "Utils/Host.hpp"

namespace Drivers {

namespace {

constexpr uint8_t kSupplies = 2;
constexpr int kUnexpectedSettingLevel = 0;

// Input lines by supply.
constexpr uint8_t kPowerOkPin[kSupplies] = {1, 4};
constexpr uint8_t kAcOkPin[kSupplies] = {6, 7};

constexpr uint8_t kEepromResetPins[] = {8, 9};
constexpr uint8_t kFanGreenPin = 14;
constexpr uint8_t kFanRedPin = 15;

constexpr uint8_t psuGreenPin(uint8_t index) { return static_cast<uint8_t>(10 + 2 * index); }
constexpr uint8_t psuRedPin(uint8_t index) { return static_cast<uint8_t>(11 + 2 * index); }

// Bank 0 is all inputs, bank 1 all outputs.
constexpr uint8_t kDirections[PCA9555::kBanks] = {0xFF, 0x00};

}  // namespace

Utils::ExpectedVals HalvPsuPCA9555::values = {
    {0, {0x34, 1}},
    {3, {0x40, 1}},
};

Component::HardwareDevice* HalvPsuPCA9555::create(const DriverArgs&, Ham::Ham*) {
  TRACE(0, "Creating Halv Psu PCA9555 Device");
  return new HalvPsuPCA9555;  // to the device cache
}

HalvPsuPCA9555::HalvPsuPCA9555()
    : GPIOExpander(PCA9555::kBanks, PCA9555::kCacheTimeout, PCA9555::kInputBankBase,
                   PCA9555::kOutputBankBase, PCA9555::kConfigBankBase) {}

void HalvPsuPCA9555::init() {
  if (writeConfig(kDirections) != PL_STATUS_OK) {
    TRACE(0, "Error: Failed to write PCA9555 pin configuration");
  }
  for (const uint8_t pin : kEepromResetPins) {
    static_cast<void>(writeBit(pin, false));
  }
  if (save() != PL_STATUS_OK) {
    TRACE(0, "Error: Failed to write default bits for PSU EEPROM Reset");
  }
}

pl_status HalvPsuPCA9555::getPowerOk(uint8_t psuId, bool* ok) {
  CHECK(1 <= psuId && psuId <= 2);
  return readBit(kPowerOkPin[psuId - 1], ok);
}

pl_status HalvPsuPCA9555::getAcOk(uint8_t psuId, bool* ok) {
  CHECK(1 <= psuId && psuId <= 2);
  return readBit(kAcOkPin[psuId - 1], ok);
}

Component::LogicalDevice::Led* HalvPsuPCA9555::newLed(const DriverArgs& args) {
  const uint8_t ledId = requiredByte(args.driverArgs, "id",
                                     "args.driverArgs.find( \"id\" ) != args.driverArgs.end()");
  const auto index = static_cast<uint8_t>(ledId - 1);
  CHECK_TEXT(index < kSupplies, "1 <= ledId && ledId <= 2");
  const std::string& type = requiredArg(args.driverArgs, "type");
  if (type != "multifan" && type != "psu") {
    TRACE(0, "Error: failed to find driverArg for HalvPsuPCA9555::newLed");
    return nullptr;
  }
  TRACE(5, "creating new HalvPCA9555 %s LED with id %hhu", type.c_str(), ledId);
  if (type == "multifan") {
    return new MultiFanLed(this, index);
  }
  return new PsuLed(this, index);
}

HalvPsuPCA9555::Led::Led(HalvPsuPCA9555* device, uint8_t index, uint8_t greenPin, uint8_t redPin)
    : ExpanderLed(index, kUnexpectedSettingLevel),
      device_(device),
      greenPin_(greenPin),
      redPin_(redPin) {}

void HalvPsuPCA9555::Led::setPins(bool green, bool red) {
  static_cast<void>(device_->writeBit(greenPin_, green));
  static_cast<void>(device_->writeBit(redPin_, red));
}

pl_status HalvPsuPCA9555::Led::show(Light light) {
  switch (light) {
    case Light::kOff:
      setLedOff();
      break;
    case Light::kGood:
      setLedGreen();
      break;
    case Light::kBad:
      setLedRed();
      break;
  }
  return device_->save();
}

bool HalvPsuPCA9555::Led::handleBlinkTimer(bool on) {
  if (on) {
    setLedGreen();
  } else {
    setLedOff();
  }
  if (device_->save() != PL_STATUS_OK) {
    TRACE(0, "Error: failed to toggle led %d for blinking", index_);
  }
  return true;
}

HalvPsuPCA9555::PsuLed::PsuLed(HalvPsuPCA9555* device, uint8_t index)
    : Led(device, index, psuGreenPin(index), psuRedPin(index)) {}

HalvPsuPCA9555::MultiFanLed::MultiFanLed(HalvPsuPCA9555* device, uint8_t index)
    : Led(device, index, kFanGreenPin, kFanRedPin) {}

}  // namespace Drivers
