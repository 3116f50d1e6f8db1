// SPDX-License-Identifier: Apache-2.0
//
// A HAM over a memory, as an EEPROM has it: register n is byte n, and a read runs on from there. At
// the memory's end a read is short, or fails. It counts the reads, and needs no test around it.
#pragma once

#include <algorithm>
#include <string>

#include "Ham/Ham.hpp"
#include "pl/pl_status.h"

namespace Doubles {

class MemoryHam final : public Ham::Ham {
 public:
  enum class AtEnd { kShort, kFails };

  explicit MemoryHam(std::string memory, AtEnd atEnd = AtEnd::kFails)
      : memory_(std::move(memory)), atEnd_(atEnd) {}

  void prepare() override { status_ = PL_STATUS_OK; }
  int execute() override { return status_; }
  ResponseId addRead8(uint32_t reg) override { return take(reg, 1, AtEnd::kFails); }
  ResponseId addRead(uint32_t reg, uint32_t length, bool) override {
    return take(reg, length, atEnd_);
  }
  uint8_t get8(ResponseId) override { return static_cast<uint8_t>(answer_.at(0)); }
  std::string getBlock(ResponseId, size_t) override { return answer_; }

  [[nodiscard]] size_t reads() const { return reads_; }

 private:
  // One read to a batch is all that such a memory is asked for.
  ResponseId take(uint32_t reg, uint32_t length, AtEnd atEnd) {
    ++reads_;
    answer_ = memory_.substr(std::min<size_t>(reg, memory_.size()), length);
    if (answer_.size() < length && atEnd == AtEnd::kFails) {
      status_ = PL_STATUS_REMOTE;
    }
    return 0;
  }

  const std::string memory_;
  const AtEnd atEnd_;
  std::string answer_;
  int status_ = PL_STATUS_OK;
  size_t reads_ = 0;
};

}  // namespace Doubles
