// SPDX-License-Identifier: Apache-2.0
//
// A HAM with a memory: each register holds the bytes last put there, each command code on its own
// as with an SMBus device. A read gives the first bytes of a register and, where it is too short,
// 0xFF as an idle bus does; a register that nothing was put into fails the batch with
// PL_STATUS_FAILED. A receive-byte gives the byte last sent.
#pragma once

#include <map>

#include "test/support/RecordingHam.hpp"

namespace Doubles {

class FakeHam final : public RecordingHam {
 public:
  void set8(uint32_t reg, uint8_t value) { registers_[reg] = bytesOf(value, 1); }
  void set16(uint32_t reg, uint16_t value) { registers_[reg] = bytesOf(value, 2); }
  void setBlock(uint32_t reg, std::string bytes) { registers_[reg] = std::move(bytes); }
  void setByte(uint8_t value) { byte_ = value; }

  // A register that holds nothing fails the test.
  [[nodiscard]] uint8_t value8(uint32_t reg) const;
  [[nodiscard]] uint16_t value16(uint32_t reg) const;
  [[nodiscard]] const std::string& block(uint32_t reg) const;
  [[nodiscard]] bool holds(uint32_t reg) const { return registers_.count(reg) != 0; }
  [[nodiscard]] uint8_t byte() const { return byte_; }

 private:
  int run(Operations& batch) override;
  int perform(Operation& operation);
  int give(Operation& operation, size_t length);

  std::map<uint32_t, std::string> registers_;
  uint8_t byte_ = 0;
};

}  // namespace Doubles
