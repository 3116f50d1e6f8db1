// SPDX-License-Identifier: Apache-2.0
//
// What the kinds of operation have in common and in what they differ.
#pragma once

#include <cstddef>

#include "smbus/service/Bus.hpp"

namespace SmbusService {

struct KindTraits {
  OperationKind kind;
  const char* name;    // "read byte", as failure reasons give it
  bool reads;          // bytes come back
  bool writes;         // bytes go out beside the command
  bool hasCommand;     // names a register
  size_t leastAnswer;  // bytes that come back at least and at most; an I2C block's are its `size`
  size_t mostAnswer;
};

[[nodiscard]] const KindTraits& traitsOf(OperationKind kind);

// Whether a bus may answer the operation with this many bytes.
[[nodiscard]] bool answerFits(const Operation& operation, size_t bytes);

// The most bytes that the operation can bring back.
[[nodiscard]] size_t mostAnswer(const Operation& operation);

}  // namespace SmbusService
