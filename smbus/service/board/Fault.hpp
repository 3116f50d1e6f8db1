// SPDX-License-Identifier: Apache-2.0
//
// What can be wrong with a bus or a chip of the virtual board, and what is asked for when a fault
// is injected: the kinds and their options, each a table.
//
// A fault's target is a chip or a whole bus. On a chip it counts as accesses the transfers that
// address the chip, on a bus all transfers. At each `nth` access it is armed, and strikes if the
// transfer gives it the occasion (a transfer without PEC gives none for a wrong one). It ends by
// command, after `count` strikes, or after `duration`, whatever comes first.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "smbus/service/board/BoardClock.hpp"
#include "smbus/service/board/Settings.hpp"

namespace SmbusService::Board {

enum class FaultKind : uint8_t {
  kSilent,
  kNack,
  kStop,
  kWrongPec,
  kCorrupt,
  kSlow,
  kHang,
  kSdaStuck,
  kSclStuck,
  kFanStall,
};

enum class FaultOption : uint8_t { kNth, kCount, kDuration, kBytes, kDelay, kFan };

struct FaultOptionRow {
  FaultOption option;
  std::string_view key;  // in JSON
  uint32_t least;
  uint32_t most;
  std::string_view meaning;
};

struct FaultKindRow {
  FaultKind kind;
  std::string_view name;
  bool ofChips;  // a chip may be the target
  bool ofBuses;
  std::string_view options;  // the keys, with blanks between
  std::string_view meaning;
};

// In the order of the enumerations.
[[nodiscard]] std::span<const FaultOptionRow> faultOptions();
[[nodiscard]] std::span<const FaultKindRow> faultKinds();
[[nodiscard]] const FaultKindRow& rowOf(FaultKind kind);

struct FaultOrder {
  FaultKind kind = FaultKind::kSilent;
  std::string target;  // a chip's label or a bus's name
  uint32_t nth = 1;
  uint32_t count = 0;  // 0: no end by it
  Time duration{0};    // 0: no end by it
  uint32_t bytes = 0;
  Time delay{0};
  uint32_t fan = 1;
};

// Reads the keys "kind" and "target" and the options that the kind takes. Throws Config::FileError.
[[nodiscard]] FaultOrder readFaultOrder(Settings& settings);

}  // namespace SmbusService::Board
