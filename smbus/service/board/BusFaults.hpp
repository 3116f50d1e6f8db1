// SPDX-License-Identifier: Apache-2.0
//
// The faults in force on one bus, as the bus asks about them in the course of a transfer. For one
// thread at a time: the bus's chips are held.
#pragma once

#include <optional>
#include <vector>

#include "smbus/service/board/Fault.hpp"
#include "smbus/service/board/Segment.hpp"

namespace SmbusService::Board {

struct BusFault {
  uint32_t id;
  FaultOrder order;
  Seat* seat;     // null: the whole bus
  Time until;     // kNever: no end by time
  uint64_t seed;  // what is random about it

  uint64_t accesses = 0;
  uint64_t strikes = 0;
  uint64_t changed = 0;  // bytes that were corrupted

  // In the transfer under way.
  bool accessed = false;
  bool armed = false;
  bool struck = false;
};

class BusFaults {
 public:
  [[nodiscard]] bool any() const { return !faults_.empty(); }
  [[nodiscard]] const std::vector<BusFault>& all() const { return faults_; }
  [[nodiscard]] const BusFault* find(uint32_t id) const;

  void add(BusFault fault);
  // False: it is not in force any more.
  bool remove(uint32_t id);

  // A transfer begins, and ends. The faults that have struck often enough go with it.
  void begin();
  void end();

  // The transfer addresses the chip.
  void address(const Seat& seat);

  // Lets a fault of this kind strike, if one is armed for the chip (for the bus, if null), and
  // returns it. It stays where it is until a fault is added or goes.
  BusFault* strike(FaultKind kind, const Seat* seat);

  // Whether a fault of this kind keeps a line low that belongs to the segment's lines now.
  [[nodiscard]] bool stick(FaultKind kind, Segment& segment);

  // A byte after the address is refused by the chip; 0 is the address.
  [[nodiscard]] bool refuses(const Seat& seat, uint32_t byte);
  // The transfer has had its bytes and is to be cut short before the next one.
  [[nodiscard]] bool cuts(const Seat& seat, uint32_t bytes);
  // A byte read from the chip, as it arrives.
  [[nodiscard]] uint8_t corrupted(const Seat& seat, uint8_t byte);
  // How long SCL is held in the transfer that addresses the chip; once for each fault.
  [[nodiscard]] Time delay(const Seat& seat);

 private:
  [[nodiscard]] BusFault* armed(FaultKind kind, const Seat* seat);
  void returned(Seat& seat);

  std::vector<BusFault> faults_;
};

}  // namespace SmbusService::Board
