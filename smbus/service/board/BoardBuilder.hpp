// SPDX-License-Identifier: Apache-2.0
//
// Puts a virtual board together from its file.
#pragma once

#include <string>

#include "smbus/service/board/ChipModel.hpp"
#include "smbus/service/board/Settings.hpp"
#include "smbus/service/board/VirtualBoard.hpp"

namespace SmbusService::Board {

// Everything here throws Config::FileError for what does not fit.
class BoardBuilder {
 public:
  explicit BoardBuilder(VirtualBoard& board) : board_(board) {}

  void build(const Item& root);

 private:
  void addBus(const Item& item);
  void addChips(Settings& settings, VirtualBus& bus, Segment& segment);
  void addChip(const Item& item, VirtualBus& bus, Segment& segment);
  void addChannels(Settings& settings, VirtualBus& bus, Mux& mux);
  void addNet(const std::string& name, const Item& item);
  void connect(const Item& item, Net& net);
  void addEvent(const std::string& name, const Item& item);
  [[nodiscard]] BoardEvent::Change change(const std::string& lever, const Item& value) const;

  VirtualBoard& board_;
  uint64_t seed_ = 1;
};

}  // namespace SmbusService::Board
