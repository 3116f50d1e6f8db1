// SPDX-License-Identifier: Apache-2.0
//
// What is to happen to a board at times to come: the ends of faults, the steps of scenarios. It
// needs no thread of its own. Before each operation every bus sees to it that what is due has
// happened, so that in simulated time the same operations always find the same board; in real time
// somebody calls runDue() besides, at nextDue().
#pragma once

#include <atomic>
#include <functional>
#include <map>
#include <mutex>

#include "smbus/service/board/BoardClock.hpp"

namespace SmbusService::Board {

// Any thread may use it.
class Agenda {
 public:
  // Is told the time at which it was due, which may be past.
  using Action = std::function<void(Time due)>;

  // The clock outlives the agenda.
  explicit Agenda(BoardClock& clock) : clock_(clock) {}

  // Actions of one time happen in the order in which they were added. An action may add others; it
  // must not use a bus.
  void add(Time due, Action action);

  // kNever: nothing is to happen.
  [[nodiscard]] Time nextDue() const { return Time(next_.load(std::memory_order_acquire)); }

  // Returns when everything that was due has happened, by whichever thread. The caller holds no
  // bus's chips.
  void runDue() {
    const Time next = nextDue();
    if (next != kNever && clock_.now() >= next) {
      runNow();
    }
  }

 private:
  void runNow();
  [[nodiscard]] bool takeDue(Time& due, Action& action);
  void noteNext();

  BoardClock& clock_;
  std::mutex running_;  // one action at a time
  std::mutex mutex_;    // guards the entries
  std::multimap<Time, Action> entries_;
  Time underWay_ = kNever;  // of an action; until it has happened nobody passes by
  std::atomic<Time::rep> next_{kNever.count()};
};

}  // namespace SmbusService::Board
