// SPDX-License-Identifier: Apache-2.0
//
// The chip models by name, as the board file names them.
#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "smbus/service/board/Chip.hpp"
#include "smbus/service/board/Settings.hpp"

namespace SmbusService::Board {

// What a chip is told of its place beside its own settings.
struct ChipContext {
  BoardClock& clock;  // outlives the chip
  uint64_t seed;      // its own, out of the board's seed and its label
  uint8_t address;    // 7 bits
};

// Reads the model's keys out of the chip's settings; the caller reads the others and finishes.
using MakeChip = std::unique_ptr<Chip> (*)(Settings& settings, const ChipContext& context);

struct ChipModel {
  std::string_view name;
  MakeChip make;
};

// Null: there is no such model.
[[nodiscard]] const ChipModel* findChipModel(std::string_view name);
[[nodiscard]] std::vector<std::string_view> chipModelNames();

}  // namespace SmbusService::Board
