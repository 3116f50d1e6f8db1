// SPDX-License-Identifier: Apache-2.0
//
// Where faults of a board are injected, listed and ended.
#pragma once

#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "smbus/service/board/BusFaults.hpp"

namespace SmbusService::Board {

class VirtualBoard;

struct FaultReport {
  uint32_t id;
  FaultOrder order;
  Time until;  // kNever: no end by time
  uint64_t accesses;
  uint64_t strikes;
};

// Any thread may use it.
class FaultDesk {
 public:
  // The board outlives the desk.
  explicit FaultDesk(VirtualBoard& board) : board_(board) {}

  // What keeps the order from being carried out on a board; empty: nothing.
  [[nodiscard]] static std::string complaint(const FaultOrder& order, const VirtualBoard& board);

  // Injects a fault at a time of the board, now or just past, and returns its number, never 0.
  // Throws BoardError with the complaint.
  uint32_t inject(const FaultOrder& order, Time now);

  // By number.
  [[nodiscard]] std::vector<FaultReport> inForce() const;

  // False: the fault is not in force.
  [[nodiscard]] bool clear(uint32_t id);
  // All faults of a target, or all there are if it is empty. Returns how many.
  size_t clearAll(std::string_view target = {});

  // Ends all faults and lets no further one come: nothing hangs any more.
  void close();

 private:
  // A fault of the board's physics, not of a bus.
  struct Stall {
    uint32_t id;
    FaultOrder order;
    Time until;
    std::string lever;
    double before;  // what the lever is set to at the end
  };

  void stall(Stall stall);
  [[nodiscard]] bool endStall(uint32_t id);

  VirtualBoard& board_;
  mutable std::mutex mutex_;  // guards what follows
  uint32_t lastId_ = 0;
  bool closed_ = false;
  std::vector<Stall> stalls_;
};

}  // namespace SmbusService::Board
