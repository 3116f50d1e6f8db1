// SPDX-License-Identifier: Apache-2.0
#include "Drivers/PsuSlot.hpp"

#include <cstring>
#include <sstream>
#include <utility>

#include "Drivers/Args.hpp"
#include "Drivers/DeviceMemory.hpp"
#include "Drivers/Helpers.hpp"
#include "Drivers/ShellQuote.hpp"
#include "Utils/Check.hpp"
#include "Utils/Host.hpp"

namespace Drivers {

namespace {

constexpr const char* kModelPrefix = "model_";
constexpr const char* kFdlPrefix = "psuFdl_";
// Further words of the command that asks a management controller, and their arguments.
constexpr std::pair<const char*, const char*> kCommandWords[] = {
    {" ModelNumber=", "ipmiRawModel"},
    {" SerialNumber=", "ipmiRawSerialNumber"},
};
constexpr uint32_t kWedgeRegister = 8;
constexpr unsigned kBitsOfWord = 32;

const PsuIdentity kUnpowered = {"N/A", "PWR-UNKNOWN"};
const PsuIdentity kWedge = {"N/A", "PWR-WEDGE"};

bool beginsWith(const std::string& text, const char* prefix) { return text.rfind(prefix, 0) == 0; }

}  // namespace

// A way to identify a supply; "ipmi" and "ipmitool_raw" require arguments.
struct PsuSlot::Slot::Method {
  const char* keyword;
  Reader reader;
  const char* requiredArgs[2];
};

const PsuSlot::Slot::Method PsuSlot::Slot::kMethods[] = {
    {"pmbus", &Slot::readSerialAndModelPmbus, {}},
    {"ipmi", &Slot::readSerialAndModelIpmi, {"ipmiId", nullptr}},
    {"ipmitool", &Slot::readSerialAndModelIpmitool, {}},
    {"ipmitool_raw", &Slot::readSerialAndModelIpmitoolRaw, {"ipmiRawModel", "ipmiRawSerialNumber"}},
    {"wedge", &Slot::readSerialAndModelWedge, {}},
    {"tlv", &Slot::readSerialAndModelTlv, {}},
};

// An IPMI FRU EEPROM whose product area begins at byte 8.
Utils::ExpectedVals PsuSlot::values = {
    {4, {0x01, 1}},                             // the product area, in units of 8 bytes
    {11, {0xC4, 1}},                            // manufacturer, 4 characters
    {16, {0xCA, 1}},                            // product name
    {17, {"DPS550AB6A", 10}}, {27, {0xC3, 1}},  // part number, 3 characters
    {31, {0xC2, 1}},                            // version, 2 characters
    {34, {0xCA, 1}},                            // serial number
    {35, {"SIM0000001", 10}},
};

// The trace is that of the PMBus driver, whose supplies the bay holds.
Component::HardwareDevice* PsuSlot::create(const DriverArgs&, Ham::Ham*) {
  TRACE(0, "Creating Pmbus Device");
  return new PsuSlot;  // to the device cache
}

Component::LogicalDevice::Slot* PsuSlot::newSlot(const DriverArgs& args) {
  const auto it = args.driverArgs.find("psuId");
  if (it == args.driverArgs.end()) {
    TRACE(0, "Error: expected 'psuId' in slot driverArgs");
    return nullptr;
  }
  const auto psuId = static_cast<uint8_t>(std::stoi(it->second));
  CHECK(psuId == 1 || psuId == 2);
  TRACE(5, "Creating new PsuSlot for Psu id %hhu", psuId);
  return new Slot(this, psuId, args.driverArgs);
}

PsuSlot::Slot::Slot(PsuSlot* owner, uint8_t psuId, const ArgMap& args)
    : owner_(owner), psuId_(psuId), slotArgs_(args) {
  chooseMethod();
  presence_ = lineOf("presenceReg", "presenceBit", "presenceActiveLow");
  status_ = lineOf("statusReg", "statusBit", "statusActiveLow");
  readModels();
}

void PsuSlot::Slot::chooseMethod() {
  const std::string keyword = argOr(slotArgs_, "identificationType", kMethods[0].keyword);
  for (const Method& method : kMethods) {
    if (keyword == method.keyword) {
      method_ = &method;
    }
  }
  if (method_ == nullptr) {
    TRACE(0, "Invalid identification type: '%s'", keyword.c_str());
    method_ = &kMethods[0];
  }
  for (const char* key : method_->requiredArgs) {
    requireMethodArg(*method_, key);
  }
  command_ = ipmiCommand();
}

void PsuSlot::Slot::requireMethodArg(const Method& method, const char* key) const {
  if (key != nullptr && slotArgs_.find(key) == slotArgs_.end()) {
    TRACE(0, "PsuSlot identification type is %s but %s not found", method.keyword, key);
    CHECK(false);
  }
}

// The lines belong to the device labelled "gpioDevice", or to the bay's own.
PsuSlot::Slot::Line PsuSlot::Slot::lineOf(const char* regKey, const char* bitKey,
                                          const char* activeLowKey) const {
  Line line;
  if (slotArgs_.find(regKey) == slotArgs_.end()) {
    return line;
  }
  const auto reg = static_cast<uint32_t>(std::stoi(slotArgs_.at(regKey)));
  const auto bit = static_cast<uint32_t>(std::stoi(slotArgs_.at(bitKey)));
  const auto label = slotArgs_.find("gpioDevice");
  line.gpio.reset(label != slotArgs_.end() ? getRegGpioForDevice(label->second.c_str(), reg, bit)
                                           : getRegGpioForDevice(owner_, reg, bit));
  line.activeLow = argOr(slotArgs_, activeLowKey, "false") == "true";
  return line;
}

pl_status PsuSlot::Slot::Line::read(bool* value) const {
  unsigned level;
  if (const pl_status status = gpio->bitRead(&level)) {
    return status;
  }
  *value = (level != 0) != activeLow;
  return PL_STATUS_OK;
}

// For every "model_X", a model's name, there must be a "psuFdl_X", the template of its descriptor.
void PsuSlot::Slot::readModels() {
  for (const auto& [key, model] : slotArgs_) {
    if (beginsWith(key, kModelPrefix)) {
      const std::string psuFdlKey = kFdlPrefix + key.substr(std::strlen(kModelPrefix));
      CHECK_TEXT(slotArgs_.find(psuFdlKey) != slotArgs_.end(),
                 "slotArgs_.find( psuFdlKey ) != slotArgs_.end()");
      models_[model] = slotArgs_[psuFdlKey];
    }
  }
}

pl_status PsuSlot::Slot::readLines(PsuIdentity& identity) const {
  if (presence_.gpio == nullptr || status_.gpio == nullptr) {
    return PL_STATUS_OK;
  }
  bool present;
  if (const pl_status status = presence_.read(&present)) {
    return status;
  }
  bool powered;
  if (const pl_status status = status_.read(&powered)) {
    return status;
  }
  if (present && !powered) {
    identity = kUnpowered;
  }
  return present ? PL_STATUS_OK : PL_STATUS_EMPTY;
}

pl_status PsuSlot::Slot::readIdentity(PsuIdentity& identity) {
  if (const pl_status status = (this->*method_->reader)(identity.serial, identity.model)) {
    return status;
  }
  if (identity.serial.empty() || identity.model.empty()) {
    TRACE(7, "Failed to read PSU info '%s' '%s'", identity.serial.c_str(), identity.model.c_str());
  }
  return PL_STATUS_OK;
}

pl_status PsuSlot::Slot::getPresence(char** fdl) {
  TRACE(7, "getPresence");
  PsuIdentity identity;
  if (const pl_status status = readLines(identity)) {
    return status;
  }
  if (identity == PsuIdentity()) {
    if (const pl_status status = readIdentity(identity)) {
      return status;
    }
  }
  if (identity == cached_ && !cachedFdl_.empty()) {
    TRACE(7, "Using cached fdl");
  } else {
    cachedFdl_ = describe(identity);
    cached_ = identity;
  }
  char* copy = ::strdup(cachedFdl_.c_str());
  if (copy == nullptr) {
    return PL_STATUS_REMOTE;
  }
  *fdl = copy;
  return PL_STATUS_OK;
}

std::string PsuSlot::Slot::describe(const PsuIdentity& identity) const {
  TRACE(0, "PSU serialNum = '%s'", identity.serial.c_str());
  TRACE(0, "PSU modelName = '%s'", identity.model.c_str());
  const auto it = models_.find(identity.model);
  if (it == models_.end()) {
    TRACE(0, "Unknown modelName. PSU is unmanaged");
    return "unmanaged power supply, modelName: " + harmless(identity.model) +
           ", serialNum: " + harmless(identity.serial);
  }
  return filled(it->second, identity);
}

// Of what the slot knows, its identity and its arguments, the template takes what it names.
std::string PsuSlot::Slot::filled(const std::string& format, const PsuIdentity& identity) const {
  ArgMap known = slotArgs_;
  known["serialNum"] = known["serial"] = identity.serial;
  known["modelName"] = known["model"] = identity.model;
  FormatFdl fdl(format);
  fdl.start();
  for (const auto& [key, value] : known) {
    if (format.find("{" + key + "}") != std::string::npos) {
      fdl.set(key, harmless(value));
    }
  }
  return fdl.str();
}

pl_status PsuSlot::Slot::readSerialAndModelPmbus(std::string& serial, std::string& model) {
  TRACE(7, "readSerialAndModelPmbus");
  return readPmbusIdentity(*owner_->ham, serial, model);
}

pl_status PsuSlot::Slot::readSerialAndModelIpmi(std::string& serial, std::string& model) {
  return readFruProduct(*owner_->ham, serial, model);
}

pl_status PsuSlot::Slot::readSerialAndModelIpmitool(std::string& serial, std::string& model) {
  return readSerialAndModelIpmitoolRaw(serial, model);
}

// Every value goes to the shell quoted: a board's description can name things and run nothing.
std::string PsuSlot::Slot::ipmiCommand() const {
  const bool raw = method_->reader == &Slot::readSerialAndModelIpmitoolRaw;
  if (!raw && method_->reader != &Slot::readSerialAndModelIpmitool) {
    return "";
  }
  const bool useApi = argOr(slotArgs_, "useApi", "false") == "true";
  std::string command = useApi ? "zuIpmi api" : raw ? "zuIpmi raw" : "zuIpmi";
  const std::string bay = std::to_string(psuId_);
  command += " psuSlot " + shellQuote(argOr(slotArgs_, "ipmiId", bay.c_str()));
  for (const auto& [word, key] : kCommandWords) {
    const auto it = slotArgs_.find(key);
    if (it != slotArgs_.end()) {
      command += word + shellQuote(it->second);
    }
  }
  TRACE(0, "psuSlot ipmi command: '%s'", command.c_str());
  return command;
}

// The command prints the serial number and the model, in this order, as two words.
pl_status PsuSlot::Slot::readSerialAndModelIpmitoolRaw(std::string& serial, std::string& model) {
  std::string output;
  if (const pl_status status = runCmd(command_.c_str(), output)) {
    return status;
  }
  std::istringstream words(output);
  words >> serial >> model;
  return PL_STATUS_OK;
}

pl_status PsuSlot::Slot::readSerialAndModelWedge(std::string& serial, std::string& model) {
  uint8_t byte;
  if (owner_->ham->read8(kWedgeRegister, &byte) != PL_STATUS_OK) {
    return PL_STATUS_EMPTY;
  }
  const unsigned bit = static_cast<uint8_t>(1 - psuId_) % kBitsOfWord;
  if ((static_cast<uint32_t>(byte) >> bit & 1u) != 0) {
    return PL_STATUS_EMPTY;
  }
  serial = kWedge.serial;
  model = kWedge.model;
  return PL_STATUS_OK;
}

pl_status PsuSlot::Slot::readSerialAndModelTlv(std::string& serial, std::string& model) {
  return readTlvInfo(*owner_->ham, serial, model);
}

}  // namespace Drivers
