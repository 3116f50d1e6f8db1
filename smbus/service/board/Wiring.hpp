// SPDX-License-Identifier: Apache-2.0
//
// The nets of a board and the chips on them. A chip sees its nets' levels at once; what it has to
// do about a change it does in settle().
#pragma once

#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "smbus/service/board/Chip.hpp"
#include "smbus/service/board/ChipInfo.hpp"
#include "smbus/service/board/Net.hpp"

namespace SmbusService::Board {

// Nets and chips are added while the board is put together; after that any thread may use it.
class Wiring {
 public:
  // The name must be new.
  Net& addNet(const std::string& name, bool idle);
  // A chip may be added for each of its pins.
  void addChip(Chip& chip, std::mutex& chipsInUse);

  // Chips' pins on the net, for people.
  void notePin(const std::string& net, const std::string& pin) { pins_[net].push_back(pin); }
  [[nodiscard]] std::vector<NetInfo> nets() const;

  // Null: there is no such net.
  [[nodiscard]] Net* net(std::string_view name) const;
  [[nodiscard]] std::vector<std::string> netNames() const;

  // If a net has changed since the last time, lets every chip settle, until no net changes any
  // more. The caller holds no bus's chips.
  void settle() {
    if (changes_.load(std::memory_order_acquire) != settled_.load(std::memory_order_acquire)) {
      settleNow();
    }
  }

  // The same, whether a net has changed or not.
  void settleNow();

 private:
  struct Listener {
    Chip* chip;
    std::mutex* chipsInUse;
  };

  std::map<std::string, std::unique_ptr<Net>, std::less<>> nets_;
  std::map<std::string, std::vector<std::string>> pins_;  // by net
  std::vector<Listener> listeners_;
  std::mutex settling_;
  std::atomic<uint32_t> changes_{0};
  std::atomic<uint32_t> settled_{0};
};

}  // namespace SmbusService::Board
