// SPDX-License-Identifier: Apache-2.0
//
// Reading identification out of a supply's memory, through a HAM: an ONIE TlvInfo EEPROM, the
// product area of an IPMI FRU EEPROM (Platform Management FRU Information Storage Definition 1.0,
// section 12), and PMBus manufacturer registers. Nothing is read beyond what a device answers,
// whatever its contents say.
#pragma once

#include <cstdint>
#include <string>

#include "Ham/Ham.hpp"
#include "pl/pl_status.h"

namespace Drivers {

// A position in a device's memory that moves as it is read.
class MemoryCursor {
 public:
  MemoryCursor(Ham::Ham& ham, uint32_t position) : ham_(ham), position_(position) {}

  uint32_t position() const { return position_; }
  void skip(uint32_t bytes) { position_ += bytes; }

  // Exactly `length` bytes; an answer of another length is PL_STATUS_FAILED. Nothing is asked for
  // 0.
  pl_status read(uint32_t length, std::string& bytes);

 private:
  Ham::Ham& ham_;
  uint32_t position_;
};

// Each returns 0 with both texts, of which either may be empty where the method says so.

// 1 when the memory cannot be read or lacks a text. A header that is not TlvInfo stops the process.
pl_status readTlvInfo(Ham::Ham& ham, std::string& serial, std::string& model);

// The HAM's status on failure. A text that is not 8-bit ASCII stops the process.
pl_status readFruProduct(Ham::Ham& ham, std::string& serial, std::string& model);

// The HAM's status on failure. The model is trimmed, the serial number is not.
pl_status readPmbusIdentity(Ham::Ham& ham, std::string& serial, std::string& model);

}  // namespace Drivers
