// SPDX-License-Identifier: Apache-2.0
#include "Drivers/Halvorsa/XcvrCPLD.hpp"

#include "Ham/Ham.hpp"
#include "Utils/Bytes.hpp"
#include "Utils/Check.hpp"

namespace Drivers {

namespace {

constexpr uint32_t kPollInterval = 1000;  // ms
constexpr uint8_t kPortRegisters[] = {1, 2, 3, 4};
constexpr unsigned kPortsPerCPLD = 16;

constexpr SfpSignals kSfp = {
    .present = {"getSfpPresence", nullptr, 1, Polarity::kActiveHigh},
    .txFault = {"getSfpTxFault", nullptr, 3, Polarity::kActiveHigh},
    .rxLos = {"getSfpRxLos", nullptr, 0, Polarity::kActiveHigh},
    .txDisable = {"getSfpTxDisable", "setSfpTxDisable", 2, Polarity::kActiveHigh},
};

constexpr QsfpSignals kQsfp = {
    .present = {"getQsfpPresence", nullptr, 1, Polarity::kActiveHigh},
    .lpMode = {"getQsfpLpMode", "setQsfpLpMode", 0, Polarity::kActiveHigh},
    .reset = {"getQsfpReset", "setQsfpReset", 3, Polarity::kActiveLow},
    .interrupt = {"getQsfpInterrupt", nullptr, 2, Polarity::kActiveLow},
    .modSelGetter = "getQsfpModSel",
    .modSelSetter = "setQsfpModSel",
};

constexpr unsigned indexOf(unsigned id) { return (id - 1) % kPortsPerCPLD; }

constexpr XcvrBits bitsOf(unsigned index) {
  return {static_cast<uint8_t>((index >> 2) + 1), static_cast<uint8_t>((3 - (index & 3)) * 4)};
}

}  // namespace

void HalvXcvrCPLD::init() {
  TRACE(0, "HalvXcvrCPLD::init()");
  updateRegisterCache();
  pollIntervalIs(kPollInterval);
  CHECK(pollStart());
}

void HalvXcvrCPLD::pollPortRegisters() {
  registers_.insert(registers_.begin(), std::begin(kPortRegisters), std::end(kPortRegisters));
}

bool HalvXcvrCPLD::updateRegisterCache() {
  ham->prepare();
  std::vector<Ham::Ham::ResponseId> words;
  for (const uint8_t reg : registers_) {
    words.push_back(ham->addRead16(reg));
  }
  if (ham->execute() != PL_STATUS_OK) {
    TRACE(0, "Failed to poll information for HalvXcvrCPLD");
    return false;
  }
  for (size_t i = 0; i < registers_.size(); ++i) {
    registerCache_[registers_[i]] = Utils::swapBytes(ham->get16(words[i]));
  }
  TRACE(6, "Register cache updated for HalvXcvrCPLD");
  return true;
}

pl_status HalvXcvrCPLD::refreshed(uint8_t reg, uint16_t* value) {
  uint16_t word;
  const pl_status status = ham->read16(reg, &word);
  if (status == PL_STATUS_OK) {
    *value = Utils::swapBytes(word);
  }
  return status;
}

pl_status HalvXcvrCPLD::getRegisterBit(uint8_t reg, uint8_t bit, int* value, bool refresh) {
  uint16_t& cached = registerCache_[reg];
  if (refresh) {
    if (const pl_status status = refreshed(reg, &cached)) {
      return status;
    }
  }
  *value = cached >> bit & 1;
  return PL_STATUS_OK;
}

pl_status HalvXcvrCPLD::setRegisterBit(uint8_t reg, uint8_t bit, bool value, bool refresh) {
  uint16_t word = registerCache_[reg];
  if (refresh) {
    if (const pl_status status = refreshed(reg, &word)) {
      return status;
    }
  }
  const unsigned mask = 1u << bit;
  word = static_cast<uint16_t>(value ? word | mask : word & ~mask);
  if (const pl_status status = ham->write16(reg, Utils::swapBytes(word), false)) {
    return status;
  }
  registerCache_[reg] = word;
  return PL_STATUS_OK;
}

// Queries and commands use the cache alone.
pl_status HalvXcvrCPLD::getRegisterBit(const XcvrBits& bits, uint8_t offset, int* value) {
  return getRegisterBit(bits.reg, static_cast<uint8_t>(bits.base + offset), value, false);
}

pl_status HalvXcvrCPLD::writeRegisterBit(const XcvrBits& bits, uint8_t offset, bool value) {
  return setRegisterBit(bits.reg, static_cast<uint8_t>(bits.base + offset), value, false);
}

XcvrPort HalvXcvrCPLD::portOf(unsigned index, unsigned tracedId) {
  const XcvrBits bits = bitsOf(index);
  TRACE(5, "id=%u reg=%#02hhx bit=%hhu", tracedId, bits.reg, bits.base);
  return {this, index, bits};
}

Component::LogicalDevice::SfpXcvr* HalvXcvrCPLD::newSfpXcvr(XcvrId id, const DriverArgs&) {
  CHECK(id >= 1 && id <= 48);
  TRACE(5, "creating new SfpXcvr for id %hhu", static_cast<unsigned char>(id));
  return new BitSfpXcvr(id, portOf(indexOf(id), id - 1), kSfp);
}

// Single bytes, which the simulation's 16-bit reads follow with ff: every register reads as ff00.
Utils::ExpectedVals HalvorsaQCPLD::values = {{1, {0, 1}}, {2, {0, 1}}, {3, {0, 1}}, {4, {0, 1}}};

Component::HardwareDevice* HalvorsaQCPLD::create(const DriverArgs&, Ham::Ham*) {
  TRACE(5, "Creating HalvorsaQCPLD device");
  return new HalvorsaQCPLD;  // to the device cache
}

void HalvorsaQCPLD::init() {
  TRACE(5, "HalvorsaQCPLD init function");
  pollPortRegisters();
  HalvXcvrCPLD::init();
}

Component::LogicalDevice::QsfpXcvr* HalvorsaQCPLD::newQsfpXcvr(XcvrId id, const DriverArgs&) {
  CHECK(id >= 1 && id <= 32);
  TRACE(5, "creating new QsfpXcvr for id %hhu", static_cast<unsigned char>(id));
  return new BitQsfpXcvr(id, portOf(indexOf(id), indexOf(id)), kQsfp);
}

Component::HardwareDevice* HalvorsaYCPLD::create(const DriverArgs&, Ham::Ham*) {
  TRACE(5, "Creating HalvorsaYCPLD device");
  return new HalvorsaYCPLD;  // to the device cache
}

void HalvorsaYCPLD::init() {
  TRACE(5, "HalvorsaYCPLD init function");
  pollPortRegisters();
  HalvXcvrCPLD::init();
}

Component::HardwareDevice* HalvorsaZCPLD::create(const DriverArgs&, Ham::Ham*) {
  TRACE(5, "Creating HalvorsaZCPLD device");
  return new HalvorsaZCPLD;  // to the device cache
}

void HalvorsaZCPLD::init() {
  TRACE(5, "HalvorsaZCPLD init function");
  pollPortRegisters();
  HalvXcvrCPLD::init();
}

}  // namespace Drivers
