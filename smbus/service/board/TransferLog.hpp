// SPDX-License-Identifier: Apache-2.0
//
// The last operations of a bus, one by one, with the bits that each took on the wire.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>
#include <vector>

#include "smbus/service/Bus.hpp"
#include "smbus/service/board/BoardClock.hpp"

namespace SmbusService::Board {

struct Transfer {
  uint64_t number = 0;  // on its bus, from 1 since the board was switched on
  Time at{0};           // when it began
  OperationKind kind = OperationKind::kReceiveByte;
  uint8_t address = 0;
  std::string_view chip;  // the label of the chip addressed, the board's; empty: none was in reach
  int error = 0;          // an errno value
  uint32_t bits = 0;
};

class TransferLog {
 public:
  static constexpr size_t kKept = 256;

  // Gives it its number.
  void add(Transfer transfer) {
    transfer.number = ++added_;
    kept_[added_ % kKept] = transfer;
  }

  // At most so many, the oldest first.
  [[nodiscard]] std::vector<Transfer> last(size_t most) const {
    std::vector<Transfer> transfers;
    const uint64_t count = std::min<uint64_t>({most, kKept, added_});
    for (uint64_t number = added_ - count + 1; number <= added_; ++number) {
      transfers.push_back(kept_[number % kKept]);
    }
    return transfers;
  }

 private:
  uint64_t added_ = 0;
  std::array<Transfer, kKept> kept_{};
};

}  // namespace SmbusService::Board
