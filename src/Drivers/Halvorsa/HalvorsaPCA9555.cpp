// SPDX-License-Identifier: Apache-2.0
#include "Drivers/Halvorsa/HalvorsaPCA9555.hpp"

#include <cstring>

#include "Drivers/Args.hpp"
#include "Utils/Check.hpp"
#include "Utils/Host.hpp"

namespace Drivers {

namespace {

constexpr uint8_t kTrays = 4;
constexpr uint8_t kLeds = 5;
constexpr int kUnexpectedSettingLevel = 6;

constexpr uint8_t presencePin(uint8_t index) { return static_cast<uint8_t>(4 + index); }
constexpr uint8_t directionPin(uint8_t index) { return static_cast<uint8_t>(8 + index); }
constexpr uint8_t ledPin(uint8_t index) { return static_cast<uint8_t>(12 + index); }

// What the direction pin says, and the arguments that go with it.
struct Airflow {
  const char* name;
  const char* maxRpmArg;
};
constexpr Airflow kFrontToBack = {"frontToBackAirflow", "rpmF2B"};
constexpr Airflow kBackToFront = {"backToFrontAirflow", "rpmB2F"};

}  // namespace

// Trays 1 to 3 present, tray 4 absent, all back to front.
Utils::ExpectedVals HalvorsaPCA9555::values = {
    {0, {0x8B, 1}},
    {1, {0x0F, 1}},
    {3, {0x8F, 1}},
};

Component::HardwareDevice* HalvorsaPCA9555::create(const DriverArgs& args, Ham::Ham*) {
  TRACE(0, "Creating Halvorsa PCA9555 Device");
  return new HalvorsaPCA9555(args.driverArgs);  // to the device cache
}

HalvorsaPCA9555::HalvorsaPCA9555(const ArgMap& args)
    : GPIOExpander(PCA9555::kBanks, PCA9555::kCacheTimeout, PCA9555::kInputBankBase,
                   PCA9555::kOutputBankBase, PCA9555::kConfigBankBase),
      directions_{requiredByte(args, "bank-io-0"), requiredByte(args, "bank-io-1")} {}

void HalvorsaPCA9555::init() { configure(directions_); }

Component::LogicalDevice::Slot* HalvorsaPCA9555::newSlot(const DriverArgs& args) {
  const int fanId = requiredNumber(args.driverArgs, "fanId");
  TRACE(0, "Creating new HalvorsaPCA9555 Slot for Fan id %d", fanId);
  const auto index = static_cast<uint8_t>(fanId - 1);
  CHECK_TEXT(index < kTrays, "1 <= fanId && fanId <= 4");
  return new FanSlot(this, index, args.driverArgs);
}

Component::LogicalDevice::Led* HalvorsaPCA9555::newLed(const DriverArgs& args) {
  const uint8_t fanId = requiredByte(args.driverArgs, "id",
                                     "args.driverArgs.find( \"id\" ) != args.driverArgs.end()");
  TRACE(5, "Creating new PCA9555 LED for fan id %hhu", fanId);
  CHECK_TEXT(fanId >= 1 && fanId <= kLeds, "fanId >= 1 && fanId <= 5");
  return new FanLed(this, static_cast<uint8_t>(fanId - 1));
}

HalvorsaPCA9555::FanSlot::FanSlot(HalvorsaPCA9555* device, uint8_t index, const ArgMap& args)
    : device_(device),
      index_(index),
      slotArgs_(args),
      fdl_(requiredArg(slotArgs_, "fanFdl", "fdlIt != slotArgs_.end()")) {
  requiredArg(slotArgs_, kFrontToBack.maxRpmArg, "f2bIt != slotArgs_.end()");
  requiredArg(slotArgs_, kBackToFront.maxRpmArg, "b2fIt != slotArgs_.end()");
  requiredArg(slotArgs_, "modelName", "modelIt != slotArgs_.end()");
}

pl_status HalvorsaPCA9555::FanSlot::getPresence(char** descriptor) {
  bool absent;
  if (const pl_status status = device_->readBit(presencePin(index_), &absent)) {
    TRACE(0, "Error: status %d reading fan %d presence bit", status, index_);
    return status;
  }
  if (absent) {
    cached_.clear();
    return PL_STATUS_EMPTY;
  }
  bool backToFront;
  if (const pl_status status = device_->readBit(directionPin(index_), &backToFront)) {
    TRACE(0, "Error: status %d reading fan %d F2B bit", status, index_);
    return status;
  }
  if (!cached_.empty() && cachedDirection_ == backToFront) {
    TRACE(5, "Using cached fdl for fan %d", index_);
    return copyOut(descriptor);
  }
  cached_ = describe(backToFront);
  cachedDirection_ = backToFront;
  const pl_status status = copyOut(descriptor);
  TRACE(5, "fan %d fdl: %s", index_, cached_.c_str());
  return status;
}

std::string HalvorsaPCA9555::FanSlot::describe(bool backToFront) {
  const Airflow& airflow = backToFront ? kBackToFront : kFrontToBack;
  fdl_.start();
  fdl_.set("airflowDirection", airflow.name);
  fdl_.set("maxRpm", slotArgs_[airflow.maxRpmArg]);
  fdl_.set("modelName", slotArgs_["modelName"]);
  return fdl_.str();
}

pl_status HalvorsaPCA9555::FanSlot::copyOut(char** descriptor) const {
  char* copy = ::strdup(cached_.c_str());
  if (copy == nullptr) {
    TRACE(0, "Error: HalvorsaPCA9555::FanSlot strdup failed");
    return PL_STATUS_REMOTE;
  }
  *descriptor = copy;
  return PL_STATUS_OK;
}

HalvorsaPCA9555::FanLed::FanLed(HalvorsaPCA9555* device, uint8_t index)
    : ExpanderLed(index, kUnexpectedSettingLevel), device_(device), pin_(ledPin(index)) {}

// One colour: it lights up when something is wrong.
pl_status HalvorsaPCA9555::FanLed::show(Light light) {
  return device_->writeThrough(pin_, light == Light::kBad);
}

bool HalvorsaPCA9555::FanLed::handleBlinkTimer(bool on) {
  static_cast<void>(device_->writeBit(pin_, on));
  const pl_status status = device_->save();
  CHECK(status == PL_STATUS_OK);
  return true;
}

}  // namespace Drivers
