// SPDX-License-Identifier: Apache-2.0
#include "test/support/FaultyHam.hpp"

#include <gtest/gtest.h>

namespace Doubles {

void FaultyHam::heal() {
  failures_.clear();
  registers_.clear();
  always_.reset();
}

void FaultyHam::prepare() {
  touched_.clear();
  failed_ = false;
  inner_.prepare();
}

int FaultyHam::execute() {
  const int status = orderedStatus();
  ++count_;
  failed_ = status != 0;
  return failed_ ? status : inner_.execute();
}

int FaultyHam::orderedStatus() const {
  if (always_) {
    return *always_;
  }
  if (const auto it = failures_.find(count_); it != failures_.end()) {
    return it->second;
  }
  for (const auto& [reg, status] : registers_) {
    if (touched_.count(reg) != 0) {
      return status;
    }
  }
  return 0;
}

uint32_t FaultyHam::touch(uint32_t reg) {
  touched_.insert(reg);
  return reg;
}

bool FaultyHam::valid() const {
  if (failed_) {
    ADD_FAILURE() << "a result of a batch that failed";
  }
  return !failed_;
}

}  // namespace Doubles
