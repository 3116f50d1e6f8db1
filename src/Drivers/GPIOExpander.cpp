// SPDX-License-Identifier: Apache-2.0
#include "Drivers/GPIOExpander.hpp"

#include "Utils/Check.hpp"
#include "Utils/Host.hpp"

namespace Drivers {

namespace {

constexpr uint8_t bankOf(uint8_t pin) { return pin >> 3; }
constexpr uint8_t bitOf(uint8_t pin) { return pin & 7; }

size_t bankCount(int32_t numBanks) { return numBanks > 0 ? static_cast<size_t>(numBanks) : 0; }

}  // namespace

GPIOExpander::GPIOExpander(int32_t numBanks, uint32_t timeout, uint8_t inputBase,
                           uint8_t outputBase, uint8_t configBase)
    : numBanks_(numBanks),
      cacheTimeout(timeout),
      inputBankBase(inputBase),
      outputBankBase(outputBase),
      configBankBase(configBase),
      inputTimes_(bankCount(numBanks)),
      inputCache_(bankCount(numBanks)),
      outputShadow_(bankCount(numBanks), kNotLoaded) {}

bool GPIOExpander::isStale(uint8_t n, Utils::TimePoint now) const {
  const std::chrono::duration<double> age = now - inputTimes_[n];
  return cacheTimeout == 0 || age.count() > cacheTimeout;
}

pl_status GPIOExpander::getInBank(uint8_t n, uint8_t* value) {
  CHECK(n <= numBanks_);
  if (!hasBank(n)) {
    return kNoSuchBank;
  }
  const Utils::TimePoint now = Utils::monotonicNow();
  if (isStale(n, now)) {
    uint8_t level;
    if (const pl_status status = ham->read8(static_cast<uint8_t>(inputBankBase + n), &level)) {
      TRACE(0, "Error: status %d while reading input bank %d", status, n);
      return status;
    }
    inputCache_[n] = level;
    inputTimes_[n] = now;
  }
  TRACE(5, "GPIOExpander::getInBank( %d ) = %x", n, inputCache_[n]);
  *value = inputCache_[n];
  return PL_STATUS_OK;
}

pl_status GPIOExpander::getOutBank(uint8_t n, uint8_t* value) {
  CHECK(n <= numBanks_);
  if (!hasBank(n)) {
    return kNoSuchBank;
  }
  if (outputShadow_[n] == kNotLoaded) {
    uint8_t output;
    if (const pl_status status = ham->read8(outputBankAddr(n), &output)) {
      TRACE(0, "Error: status %d while reading output bank %d", status, n);
      return status;
    }
    outputShadow_[n] = output;
  }
  TRACE(5, "GPIOExpander::getoutBank( %d ) = %x", n, outputShadow_[n]);
  *value = static_cast<uint8_t>(outputShadow_[n]);
  return PL_STATUS_OK;
}

pl_status GPIOExpander::readBit(uint8_t bank, uint8_t bit, bool* value) {
  CHECK(bit <= 7);
  uint8_t levels;
  if (const pl_status status = getInBank(bank, &levels)) {
    TRACE(5, "Error %d: GPIOExpander::readBit( %d, %d )", status, bank, bit);
    return status;
  }
  *value = (levels >> bit & 1) != 0;
  TRACE(5, "GPIOExpander::readBit( %d, %d ) = %d", bank, bit, *value);
  return PL_STATUS_OK;
}

pl_status GPIOExpander::readBit(uint8_t pin, bool* value) {
  return readBit(bankOf(pin), bitOf(pin), value);
}

pl_status GPIOExpander::writeBit(uint8_t bank, uint8_t bit, bool value) {
  CHECK(bit <= 7);
  uint8_t outputs;
  if (const pl_status status = getOutBank(bank, &outputs)) {
    return status;
  }
  const unsigned mask = 1u << bit;
  outputShadow_[bank] = static_cast<uint16_t>(value ? outputs | mask : outputs & ~mask);
  return PL_STATUS_OK;
}

pl_status GPIOExpander::writeBit(uint8_t pin, bool value) {
  return writeBit(bankOf(pin), bitOf(pin), value);
}

pl_status GPIOExpander::save() {
  TRACE(5, "GPIOExpander::save");
  ham->prepare();
  bool queued = false;
  for (unsigned bank = 0; bank < outputShadow_.size(); ++bank) {
    if (outputShadow_[bank] == kNotLoaded) {
      continue;
    }
    TRACE(5, " GPIOExpander::save -- writing output bank %d = %d", static_cast<int>(bank),
          outputShadow_[bank]);
    ham->addWrite8(outputBankAddr(bank), static_cast<uint8_t>(outputShadow_[bank]), false);
    outputShadow_[bank] = kNotLoaded;
    queued = true;
  }
  const pl_status status = queued ? ham->execute() : PL_STATUS_OK;
  if (status != PL_STATUS_OK) {
    TRACE(0, "Error: status %d writing to GPIOExpander", status);
  }
  return status;
}

pl_status GPIOExpander::writeThrough(uint8_t bank, uint8_t bit, bool value) {
  const pl_status written = writeBit(bank, bit, value);
  const pl_status saved = save();
  return written == kNoSuchBank ? written : saved;
}

pl_status GPIOExpander::writeThrough(uint8_t pin, bool value) {
  return writeThrough(bankOf(pin), bitOf(pin), value);
}

pl_status GPIOExpander::writeConfig(std::span<const uint8_t> bytes) {
  ham->prepare();
  for (unsigned bank = 0; bank < outputShadow_.size(); ++bank) {
    ham->addWrite8(configBankAddr(bank), bytes[bank], false);
  }
  return ham->execute();
}

void GPIOExpander::configure(std::span<const uint8_t> directions) {
  static_cast<void>(writeConfig(directions));
  if (save() != PL_STATUS_OK) {
    TRACE(0, "Error: failed to write PCA9555 pin configuration");
  }
}

}  // namespace Drivers
