// SPDX-License-Identifier: Apache-2.0
//
// What has gone over a bus, by kind of operation: transfers and the bits that they take on a wire
// (SMBus 3.0 section 6.5: START, repeated START and STOP one each, a byte nine).
#pragma once

#include <array>
#include <cstdint>

#include "smbus/service/Bus.hpp"

namespace SmbusService::Board {

struct TransferCount {
  uint64_t transfers = 0;
  uint64_t failed = 0;  // of these
  uint64_t bits = 0;

  void add(bool failure, uint32_t bitsOfTransfer) {
    ++transfers;
    failed += failure ? 1 : 0;
    bits += bitsOfTransfer;
  }
  TransferCount& operator+=(const TransferCount& other) {
    transfers += other.transfers;
    failed += other.failed;
    bits += other.bits;
    return *this;
  }
  bool operator==(const TransferCount&) const = default;
};

inline constexpr size_t kOperationKinds = static_cast<size_t>(OperationKind::kProcessCall) + 1;

class KindCounts {
 public:
  [[nodiscard]] TransferCount& of(OperationKind kind) { return rows_[static_cast<size_t>(kind)]; }
  [[nodiscard]] const TransferCount& of(OperationKind kind) const {
    return rows_[static_cast<size_t>(kind)];
  }
  [[nodiscard]] TransferCount total() const {
    TransferCount total;
    for (const TransferCount& row : rows_) {
      total += row;
    }
    return total;
  }

 private:
  std::array<TransferCount, kOperationKinds> rows_{};
};

}  // namespace SmbusService::Board
