// SPDX-License-Identifier: Apache-2.0
//
// A board that exists in memory only, built from a JSON file: buses by name, the chips on them, and
// the chips behind the channels of muxes. docs/virtual-board.md describes the file.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "config/JsonFile.hpp"
#include "smbus/service/board/Clock.hpp"
#include "smbus/service/board/VirtualBus.hpp"

namespace SmbusService::Board {

class VirtualBoard {
 public:
  // Both throw Config::FileError. The clock outlives the board.
  static std::unique_ptr<VirtualBoard> load(const std::string& path, Clock& clock);
  static std::unique_ptr<VirtualBoard> build(const Config::JsonFile& file, Clock& clock);

  // Null: the board has no such bus, chip. Both live as long as the board.
  [[nodiscard]] VirtualBus* bus(std::string_view name) const;
  [[nodiscard]] Chip* chip(std::string_view label) const;

  [[nodiscard]] std::vector<std::string> busNames() const;

 private:
  class Builder;

  VirtualBoard() = default;

  std::map<std::string, std::unique_ptr<VirtualBus>, std::less<>> buses_;
  std::map<std::string, Seat*, std::less<>> seats_;
};

}  // namespace SmbusService::Board
