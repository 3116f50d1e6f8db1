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
#include "smbus/service/board/ChipInfo.hpp"
#include "smbus/service/board/FaultDesk.hpp"
#include "smbus/service/board/Settings.hpp"
#include "smbus/service/board/VirtualBus.hpp"
#include "smbus/service/board/Wiring.hpp"

namespace SmbusService::Board {

class ScenarioPlayer;

// Once built, any thread may use it beside the buses.
class VirtualBoard {
 public:
  // Both throw Config::FileError. The clock outlives the board.
  static std::unique_ptr<VirtualBoard> load(const std::string& path, Clock& clock);
  static std::unique_ptr<VirtualBoard> build(const Config::JsonFile& file, Clock& clock);

  ~VirtualBoard();

  // Null: the board has no such bus, chip. Both live as long as the board.
  [[nodiscard]] VirtualBus* bus(std::string_view name) const;
  [[nodiscard]] Chip* chip(std::string_view label) const;

  [[nodiscard]] std::vector<std::string> busNames() const;
  [[nodiscard]] std::vector<std::string> labels() const;  // of the chips
  [[nodiscard]] std::vector<std::string> eventNames() const;
  [[nodiscard]] std::vector<ChipInfo> chips() const;
  [[nodiscard]] std::vector<NetInfo> nets() const { return wiring_.nets(); }
  [[nodiscard]] const std::string& name() const { return name_; }
  [[nodiscard]] uint64_t seed() const { return seed_; }

  [[nodiscard]] BoardClock& clock() { return clock_; }
  [[nodiscard]] Agenda& agenda() { return agenda_; }
  [[nodiscard]] FaultDesk& faults() { return faults_; }
  [[nodiscard]] ScenarioPlayer& scenarios() { return *scenarios_; }

  // Nothing more goes wrong: the scenario stops, all faults end and none comes after them.
  void close();

  // What a chip's quantities are now; none for a chip that is not there.
  struct Reading {
    std::string name;
    std::string unit;
    double value;
    bool canBeSet;
  };
  [[nodiscard]] std::vector<Reading> quantities(std::string_view label) const;

  // A register of a chip, past the bus. peek: none if there is no such chip or register. poke
  // returns 0, ENOENT for what is not there, ERANGE if the value does not fit, EPERM if the
  // register's contents follow from something else.
  [[nodiscard]] std::optional<Register> peek(std::string_view label, uint32_t number) const;
  [[nodiscard]] int poke(std::string_view label, uint32_t number, uint32_t value);

  // What has gone over the bus to a chip; the label must be one.
  [[nodiscard]] KindCounts countsOf(std::string_view label) const;

  // None: there is no such lever.
  [[nodiscard]] std::optional<double> get(std::string_view lever) const;

  // Sets a lever and lets every chip that it concerns follow. Returns 0, ENOENT if there is no such
  // lever, EPERM if it can only be looked at, ERANGE if the value is out of its range.
  [[nodiscard]] int set(std::string_view lever, double value);

  // Lets go of a net, which then has its idle level unless a chip drives it. False: there is no
  // such net.
  [[nodiscard]] bool release(std::string_view net);

  // Lets an event happen, all its changes before any chip follows. False: there is no such event.
  [[nodiscard]] bool happen(std::string_view event);
  void happen(const BoardEvent& event);

  // A change for an event; throws Config::FileError at the item for a lever that is not there or
  // cannot be set, and for a value out of its range.
  [[nodiscard]] BoardEvent::Change changeOf(const std::string& lever, double value,
                                            const Item& item) const;

 private:
  friend class BoardBuilder;

  friend class FaultDesk;

  struct Placed {
    Seat* seat;
    VirtualBus* bus;
    std::string model;
    std::string path;
  };

  // The fault's target must be there.
  void addFault(BusFault fault);

  explicit VirtualBoard(Clock& clock);
  [[nodiscard]] std::optional<Lever> findLever(std::string_view name) const;

  std::string name_;
  uint64_t seed_ = 1;
  BoardClock clock_;
  Agenda agenda_{clock_};
  Wiring wiring_;
  std::map<std::string, std::unique_ptr<VirtualBus>, std::less<>> buses_;
  std::map<std::string, Placed, std::less<>> chips_;
  std::map<std::string, BoardEvent, std::less<>> events_;
  FaultDesk faults_{*this};
  std::unique_ptr<ScenarioPlayer> scenarios_;
};

}  // namespace SmbusService::Board
