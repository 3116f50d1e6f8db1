// SPDX-License-Identifier: Apache-2.0
#include "test/support/FakeHam.hpp"

#include <gtest/gtest.h>

#include "pl/pl_status.h"
#include "test/support/Host.hpp"

namespace Doubles {

uint8_t FakeHam::value8(uint32_t reg) const { return static_cast<uint8_t>(numberOf(block(reg))); }

uint16_t FakeHam::value16(uint32_t reg) const {
  return static_cast<uint16_t>(numberOf(block(reg)));
}

const std::string& FakeHam::block(uint32_t reg) const {
  static const std::string nothing;
  const auto it = registers_.find(reg);
  if (it == registers_.end()) {
    ADD_FAILURE() << printed("nothing is in register 0x%02X", reg);
    return nothing;
  }
  return it->second;
}

int FakeHam::run(Operations& batch) {
  for (Operation& operation : batch) {
    if (const int status = perform(operation)) {
      return status;
    }
  }
  return PL_STATUS_OK;
}

int FakeHam::perform(Operation& operation) {
  using Kind = Operation::Kind;
  switch (operation.kind) {
    case Kind::kRecvByte:
      operation.answer = bytesOf(byte_, 1);
      return PL_STATUS_OK;
    case Kind::kRead8:
      return give(operation, 1);
    case Kind::kRead16:
    case Kind::kProcessCall:
      return give(operation, 2);
    case Kind::kRead:
      return give(operation, operation.length);
    case Kind::kReadBlock:
      return give(operation, holds(operation.reg) ? registers_[operation.reg].size() : 0);
    case Kind::kSendByte:
      byte_ = static_cast<uint8_t>(numberOf(operation.data));
      return PL_STATUS_OK;
    default:
      registers_[operation.reg] = operation.data;
      return PL_STATUS_OK;
  }
}

int FakeHam::give(Operation& operation, size_t length) {
  const auto it = registers_.find(operation.reg);
  if (it == registers_.end()) {
    return PL_STATUS_FAILED;
  }
  operation.answer = it->second;
  operation.answer.resize(length, '\xFF');
  return PL_STATUS_OK;
}

}  // namespace Doubles
