// SPDX-License-Identifier: Apache-2.0
//
// A board that exists in memory only, built from a JSON file: buses by name, the chips on them and
// behind the channels of muxes, nets between chips, and events that change nets and physical
// values. docs/virtual-board.md describes the file.
//
// Nets and physical values are named alike, as levers: a net by its name, a chip's quantity as
// "label:quantity".
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "config/JsonFile.hpp"
#include "smbus/service/board/BoardClock.hpp"
#include "smbus/service/board/BoardEvent.hpp"
#include "smbus/service/board/VirtualBus.hpp"
#include "smbus/service/board/Wiring.hpp"

namespace SmbusService::Board {

// Once built, any thread may use it beside the buses.
class VirtualBoard {
 public:
  // Both throw Config::FileError. The clock outlives the board.
  static std::unique_ptr<VirtualBoard> load(const std::string& path, Clock& clock);
  static std::unique_ptr<VirtualBoard> build(const Config::JsonFile& file, Clock& clock);

  // Null: the board has no such bus, chip. Both live as long as the board.
  [[nodiscard]] VirtualBus* bus(std::string_view name) const;
  [[nodiscard]] Chip* chip(std::string_view label) const;

  [[nodiscard]] std::vector<std::string> busNames() const;
  [[nodiscard]] std::vector<std::string> eventNames() const;

  // None: there is no such lever.
  [[nodiscard]] std::optional<double> get(std::string_view lever) const;

  // Sets a lever and lets every chip that it concerns follow. Returns 0, ENOENT if there is no such
  // lever, EPERM if it can only be looked at, ERANGE if the value is out of its range.
  [[nodiscard]] int set(std::string_view lever, double value);

  // Lets an event happen, all its changes before any chip follows. False: there is no such event.
  [[nodiscard]] bool happen(std::string_view event);

 private:
  friend class BoardBuilder;

  struct Placed {
    Seat* seat;
    VirtualBus* bus;
  };

  explicit VirtualBoard(Clock& clock) : clock_(clock) {}
  [[nodiscard]] std::optional<Lever> findLever(std::string_view name) const;

  BoardClock clock_;
  Wiring wiring_;
  std::map<std::string, std::unique_ptr<VirtualBus>, std::less<>> buses_;
  std::map<std::string, Placed, std::less<>> chips_;
  std::map<std::string, BoardEvent, std::less<>> events_;
};

}  // namespace SmbusService::Board
