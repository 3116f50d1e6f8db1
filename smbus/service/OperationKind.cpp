// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/OperationKind.hpp"

#include <array>

namespace SmbusService {

namespace {

constexpr size_t kMostBlock = 255;  // SMBus 3.0 section 6.5.7

using enum OperationKind;

constexpr std::array kTraits{
    KindTraits{kReceiveByte, "receive byte", true, false, false, 1, 1},
    KindTraits{kReadByte, "read byte", true, false, true, 1, 1},
    KindTraits{kReadWord, "read word", true, false, true, 2, 2},
    KindTraits{kReadI2cBlock, "read I2C block", true, false, true, 0, 0},
    KindTraits{kReadBlock, "read block", true, false, true, 0, kMostBlock},
    KindTraits{kSendByte, "send byte", false, true, false, 0, 0},
    KindTraits{kWriteByte, "write byte", false, true, true, 0, 0},
    KindTraits{kWriteWord, "write word", false, true, true, 0, 0},
    KindTraits{kWriteI2cBlock, "write I2C block", false, true, true, 0, 0},
    KindTraits{kWriteBlock, "write block", false, true, true, 0, 0},
    KindTraits{kProcessCall, "process call", true, true, true, 2, 2},
};

static_assert(hasARowForEachKind(kTraits));

}  // namespace

const KindTraits& traitsOf(OperationKind kind) { return kTraits.at(static_cast<size_t>(kind)); }

size_t mostAnswer(const Operation& operation) {
  return operation.kind == kReadI2cBlock ? operation.size : traitsOf(operation.kind).mostAnswer;
}

bool answerFits(const Operation& operation, size_t bytes) {
  const size_t least =
      operation.kind == kReadI2cBlock ? operation.size : traitsOf(operation.kind).leastAnswer;
  return least <= bytes && bytes <= mostAnswer(operation);
}

}  // namespace SmbusService
