// SPDX-License-Identifier: Apache-2.0
//
// What the kinds of operation have in common and in what they differ.
#pragma once

#include <array>
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

// Whether a table has one row for each kind, in their order, so that a kind is its row's index.
template <typename Row, size_t kRows>
[[nodiscard]] constexpr bool hasARowForEachKind(const std::array<Row, kRows>& table) {
  for (size_t i = 0; i < kRows; ++i) {
    if (static_cast<size_t>(table[i].kind) != i) {
      return false;
    }
  }
  return kRows == static_cast<size_t>(OperationKind::kProcessCall) + 1;
}

[[nodiscard]] const KindTraits& traitsOf(OperationKind kind);

// Whether a bus may answer the operation with this many bytes.
[[nodiscard]] bool answerFits(const Operation& operation, size_t bytes);

// The most bytes that the operation can bring back.
[[nodiscard]] size_t mostAnswer(const Operation& operation);

}  // namespace SmbusService
