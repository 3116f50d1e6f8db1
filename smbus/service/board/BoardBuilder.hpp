// SPDX-License-Identifier: Apache-2.0
//
// Puts a virtual board together from its file.
#pragma once

#include <string>

#include "smbus/service/board/ChipModel.hpp"
#include "smbus/service/board/Repetition.hpp"
#include "smbus/service/board/Settings.hpp"
#include "smbus/service/board/VirtualBoard.hpp"

namespace SmbusService::Board {

// Everything here throws Config::FileError for what does not fit.
class BoardBuilder {
 public:
  explicit BoardBuilder(VirtualBoard& board) : board_(board) {}

  void build(const Item& root);

 private:
  [[nodiscard]] std::string newName(Settings& settings, std::string_view key) const;
  void addBus(const Item& item);
  // Where chips are put.
  struct Place {
    VirtualBus& bus;
    Segment& segment;
    std::string path;  // as ChipInfo gives it
  };

  void addChips(Settings& settings, const Place& place);
  void addChip(const Item& item, const Place& place);
  void addChannels(Settings& settings, const Place& place, const std::string& label, Mux& mux);
  void addNet(const std::string& pattern, const Item& item, const Variables& variables);
  void connect(const Item& item, const std::string& name, Net& net, const Variables& variables);
  [[nodiscard]] static bool connect(Seat& seat, std::string_view pin, Net& net, bool inverted);
  void addEvent(const std::string& pattern, const Item& item, const Variables& variables);
  [[nodiscard]] BoardEvent::Change change(const std::string& pattern, const Item& value,
                                          const Variables& variables) const;
  void begin(const Item& item);

  VirtualBoard& board_;
};

}  // namespace SmbusService::Board
