// SPDX-License-Identifier: Apache-2.0
#include "Drivers/Ipmi.hpp"

#include <cstring>

#include "Components/Fan.hpp"
#include "Components/Psu.hpp"
#include "Components/Slot.hpp"
#include "Components/TempSensor.hpp"
#include "Drivers/Args.hpp"
#include "Utils/Check.hpp"
#include "Utils/Host.hpp"

namespace Drivers {

namespace {

using IpmiAccess = std::shared_ptr<Ham::IpmiHam>;

constexpr const char* kUnknownAirflow = "unknownAirflowDirection";
constexpr const char* kBackToFront = "backToFrontAirflow";
constexpr uint8_t kLastFan = 7;
constexpr uint8_t kLastSlot = 8;

// The value of an argument that a supply cannot do without; null, with a trace, when it is missing.
const std::string* psuArg(const ArgMap& args, const char* key) {
  const auto it = args.find(key);
  if (it == args.end()) {
    TRACE(0, "Error: expected '%s' in psu driverArgs", key);
    return nullptr;
  }
  return &it->second;
}

}  // namespace

class Ipmi::Psu final : public Component::LogicalDevice::Psu {
 public:
  Psu(IpmiAccess ham, uint8_t psuId, const std::string& key)
      : ham_(std::move(ham)),
        psuId_(psuId),
        ok_(key + "_OK"),
        currentIn_(key + "_CURRENT_IN"),
        currentOut_(key + "_CURRENT_OUT"),
        voltageIn_(key + "_VOLTAGE_IN"),
        voltageOut_(key + "_VOLTAGE_OUT"),
        powerIn_(key + "_POWER_IN"),
        powerOut_(key + "_POWER_OUT") {}

  pl_status get_power_ok(int* ok) override { return ham_->getSensorVal(ok_, ok); }
  pl_status get_input_current(float* a) override { return ham_->getSensorVal(currentIn_, a); }
  pl_status get_output_current(float* a) override { return ham_->getSensorVal(currentOut_, a); }
  pl_status get_input_voltage(float* v) override { return ham_->getSensorVal(voltageIn_, v); }
  pl_status get_output_voltage(float* v) override { return ham_->getSensorVal(voltageOut_, v); }
  pl_status get_input_power(float* w) override { return ham_->getSensorVal(powerIn_, w); }
  pl_status get_output_power(float* w) override { return ham_->getSensorVal(powerOut_, w); }

 private:
  IpmiAccess ham_;
  [[maybe_unused]] uint8_t psuId_;
  std::string ok_;
  std::string currentIn_;
  std::string currentOut_;
  std::string voltageIn_;
  std::string voltageOut_;
  std::string powerIn_;
  std::string powerOut_;
};

class Ipmi::Fan : public Component::LogicalDevice::Fan {
 public:
  Fan(IpmiAccess ham, uint8_t fanId, int32_t maxRpm, std::string key)
      : ham_(std::move(ham)), fanId_(fanId), maxRpm_(maxRpm), key_(std::move(key)) {}

  pl_status getRpm(int* rpm) override { return ham_->getSensorVal(key_, rpm); }
  pl_status setRpm(int) override { CHECK_TEXT(false, "0 && \"fan is readonly\""); }

 private:
  IpmiAccess ham_;
  [[maybe_unused]] uint8_t fanId_;
  [[maybe_unused]] int32_t maxRpm_;
  std::string key_;
};

class Ipmi::TempSensor : public Component::LogicalDevice::TempSensor {
 public:
  TempSensor(IpmiAccess ham, std::string key) : ham_(std::move(ham)), key_(std::move(key)) {}

  pl_status getTemperature(float* celsius) override { return ham_->getSensorVal(key_, celsius); }
  // The sensor has a name, and no number or register.
  uint8_t id() const override { return 0; }
  uint8_t reg() const override { return 0; }

 private:
  IpmiAccess ham_;
  std::string key_;
};

// A fan bay. Its descriptor is the template "fanFdl" with {airflowDirection}, {maxRpm} and
// {modelName} filled in, kept until the fan is gone.
class Ipmi::FanSlot : public Component::LogicalDevice::Slot {
 public:
  FanSlot(Ipmi* owner, uint8_t fanId, const ArgMap& args)
      : owner_(owner),
        fanId_(fanId),
        slotArgs_(args),
        fdl_(requiredArg(slotArgs_, "fanFdl", "fdlIt != slotArgs_.end()")),
        maxRpmF2B_(requiredArg(slotArgs_, "rpmF2B", "f2bIt != slotArgs_.end()")),
        maxRpmB2F_(requiredArg(slotArgs_, "rpmB2F", "b2fIt != slotArgs_.end()")),
        modelName_(requiredArg(slotArgs_, "modelName", "modelIt != slotArgs_.end()")),
        fruKey_(argOr(slotArgs_, "ipmiSlotKey", slotArgs_["ipmiKey"].c_str())) {}

  pl_status getPresence(char** fdl) override;

 private:
  std::string describe();
  pl_status copyOut(char** fdl) const;

  Ipmi* owner_;
  uint8_t fanId_;
  ArgMap slotArgs_;
  FormatFdl fdl_;
  std::string maxRpmF2B_;
  std::string maxRpmB2F_;
  std::string modelName_;
  std::string fruKey_;
  std::string cached_;  // empty: none
};

Component::HardwareDevice* Ipmi::create(const DriverArgs& args, Ham::Ham*) {
  TRACE(0, "Creating Ipmi Device");
  TRACE(0, "IPMI fruId: '%s'", argOr(args.driverArgs, "fruId", "").c_str());
  const auto type = args.driverArgs.find("hamType");
  if (type == args.driverArgs.end()) {
    TRACE(0, "Error: 'hamType' driver arg not provided to IPMI driver");
    return nullptr;
  }
  TRACE(0, "Creating ham type: %s", type->second.c_str());
  IpmiAccess ham = Ham::createIpmiHam(type->second);
  if (ham == nullptr) {
    TRACE(0, "Error: Failed to create ham: %s", type->second.c_str());
    return nullptr;
  }
  return new Ipmi(args.driverArgs, std::move(ham));  // to the device cache
}

Ipmi::Ipmi(const ArgMap& args, IpmiAccess access)
    : fruId_(argOr(args, "fruId", "")), deviceArgs_(args), ham_(std::move(access)) {}

void Ipmi::init() {
  TRACE(0, "Ipmi::init()");
  if (fruId_.empty()) {
    return;
  }
  if (const int status = ham_->airflowId(fruId_)) {
    TRACE(0, "Ipmi::init() failed to look up airflow of '%s': %d", fruId_.c_str(), status);
  }
}

std::string Ipmi::airflowDirection() {
  std::string direction;
  const int status = ham_->getSensorVal("AIRFLOWDIRECTION_" + fruId_, direction);
  return status == PL_STATUS_OK ? direction : kUnknownAirflow;
}

Component::LogicalDevice::Psu* Ipmi::newPsu(const DriverArgs& args) {
  const std::string* id = psuArg(args.driverArgs, "psuId");
  if (id == nullptr) {
    return nullptr;
  }
  const int psuId = std::stoi(*id);
  CHECK(psuId == 1 || psuId == 2);
  const std::string* key = psuArg(args.driverArgs, "ipmiKey");
  if (key == nullptr) {
    return nullptr;
  }
  TRACE(0, "Creating Ipmi Psu Device %d, %s", psuId, key->c_str());
  return new Psu(ham_, static_cast<uint8_t>(psuId), *key);
}

Component::LogicalDevice::Fan* Ipmi::newFan(const DriverArgs& args) {
  const uint8_t fanId = requiredByte(args.driverArgs, "fanId");
  TRACE(0, "Creating new Ipmi Fan id %hhu", fanId);
  CHECK_TEXT(fanId >= 1 && fanId <= kLastFan, "fanId >= 1 && fanId <= 7");
  // The device may have been made by the description of another of its parts, which names no speed.
  const char* maximum = args.driverArgs.count("maxRpm") != 0 ? "maxRpm" : "maxFanRpm";
  const ArgMap& holder = args.driverArgs.count(maximum) != 0 ? args.driverArgs : deviceArgs_;
  const int32_t maxRpm = requiredNumber(holder, maximum);
  return new Fan(ham_, fanId, maxRpm, requiredArg(args.driverArgs, "ipmiKey"));
}

Component::LogicalDevice::TempSensor* Ipmi::newTempSensor(const DriverArgs& args) {
  TRACE(0, "Creating Ipmi TempSensor Device");
  return new TempSensor(ham_, requiredArg(args.driverArgs, "ipmiKey"));
}

Component::LogicalDevice::Slot* Ipmi::newSlot(const DriverArgs& args) {
  const int fanId = requiredNumber(args.driverArgs, "fanId");
  requiredArg(args.driverArgs, "ipmiKey");
  TRACE(0, "Creating new Ipmi Slot for Fan id %d", fanId);
  CHECK_TEXT(1 <= fanId && fanId <= kLastSlot, "1 <= fanId && fanId <= 8");
  return new FanSlot(this, static_cast<uint8_t>(fanId), args.driverArgs);
}

pl_status Ipmi::FanSlot::getPresence(char** fdl) {
  CHECK_TEXT(!fruKey_.empty(), "fruKey_ != \"\"");
  bool present;
  const pl_status status = owner_->ham_->fanPresence(fruKey_, &present);
  if (status != PL_STATUS_OK) {
    cached_.clear();
    return status;
  }
  if (!present) {
    cached_.clear();
    return PL_STATUS_EMPTY;
  }
  if (!cached_.empty()) {
    TRACE(5, "Using cached fdl for fan %d", fanId_);
    return copyOut(fdl);
  }
  cached_ = describe();
  const pl_status copied = copyOut(fdl);
  TRACE(5, "fan %d fdl: %s", fanId_, cached_.c_str());
  return copied;
}

std::string Ipmi::FanSlot::describe() {
  const std::string airflow = owner_->airflowDirection();
  fdl_.start();
  fdl_.set("airflowDirection", harmless(airflow));
  fdl_.set("maxRpm", airflow == kBackToFront ? maxRpmB2F_ : maxRpmF2B_);
  fdl_.set("modelName", modelName_);
  return fdl_.str();
}

pl_status Ipmi::FanSlot::copyOut(char** fdl) const {
  char* copy = ::strdup(cached_.c_str());
  if (copy == nullptr) {
    TRACE(0, "Error: Ipmi::FanSlot strdup failed");
    return PL_STATUS_REMOTE;
  }
  *fdl = copy;
  return PL_STATUS_OK;
}

}  // namespace Drivers
