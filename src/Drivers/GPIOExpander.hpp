// SPDX-License-Identifier: Apache-2.0
//
// The core of every driver of an I2C GPIO expander built of 8-bit banks (PCA9555: 2 banks; PCA9698:
// 5): input banks cached for a time, output banks collected and written back together.
//
// Pins are numbered bank x 8 + bit. A bank that the chip does not have is refused with
// kNoSuchBank; only a number past that stops the process.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "Components/HardwareDevice.hpp"
#include "Utils/Clock.hpp"
#include "pl/pl_status.h"

namespace Drivers {

class GPIOExpander : public Component::HardwareDevice {
 public:
  static constexpr pl_status kNoSuchBank = PL_STATUS_UNSUPPORTED;

  // `cacheTimeout` in seconds, 0 to read the chip each time; the bases are the registers of bank 0
  // of each kind, and bank n is at base + n in 8 bits. A bank counts as read, as 0, when the
  // monotonic clock was 0.
  GPIOExpander(int32_t numBanks, uint32_t cacheTimeout, uint8_t inputBankBase,
               uint8_t outputBankBase, uint8_t configBankBase);

  // The pins' levels, at most cacheTimeout old.
  pl_status getInBank(uint8_t n, uint8_t* value);
  // What the outputs are set to, with what has been written since the last save().
  pl_status getOutBank(uint8_t n, uint8_t* value);

  pl_status readBit(uint8_t bank, uint8_t bit, bool* value);
  pl_status readBit(uint8_t pin, bool* value);

  // Changes an output; the chip learns of it with the next save().
  pl_status writeBit(uint8_t bank, uint8_t bit, bool value);
  pl_status writeBit(uint8_t pin, bool value);

  // Writes every output bank that has been read or changed, in one batch, and forgets them all.
  pl_status save();

  // Changes one output and saves. The status is that of save(), or kNoSuchBank: a bank that could
  // not be read is left alone.
  pl_status writeThrough(uint8_t bank, uint8_t bit, bool value);
  pl_status writeThrough(uint8_t pin, bool value);

  // The direction of each bank's pins, a byte a bank: a 1 is an input.
  pl_status writeConfig(std::span<const uint8_t> bytes);

 protected:
  // The start of a PCA9555: its directions, then whatever outputs are pending; the second alone is
  // reported.
  void configure(std::span<const uint8_t> directions);

  bool hasBank(uint8_t n) const { return n < numBanks_; }
  uint8_t outputBankAddr(unsigned n) const { return static_cast<uint8_t>(outputBankBase + n); }
  uint8_t configBankAddr(unsigned n) const { return static_cast<uint8_t>(configBankBase + n); }

 private:
  // An output bank that has not been read since the last save().
  static constexpr uint16_t kNotLoaded = 0xFFFF;

  bool isStale(uint8_t n, Utils::TimePoint now) const;

  int32_t numBanks_;
  uint32_t cacheTimeout;
  uint8_t inputBankBase;
  uint8_t outputBankBase;
  uint8_t configBankBase;
  std::vector<Utils::TimePoint> inputTimes_;
  std::vector<uint8_t> inputCache_;
  std::vector<uint16_t> outputShadow_;
};

}  // namespace Drivers
