// SPDX-License-Identifier: Apache-2.0
//
// One bus of the service and the right to use it. A transaction holds a bus from its first request
// to its last; those that wait get it in the order in which they came. Nobody waits for a bus that
// hangs: from the moment the supervisor has found its holder stuck, those who wait and those who
// come are refused, until the holder is back.
#pragma once

#include <list>
#include <memory>
#include <string>

#include "smbus/service/Bus.hpp"
#include "smbus/service/BusKey.hpp"
#include "smbus/service/Clock.hpp"

namespace SmbusService {

class BusSlot {
 public:
  BusSlot(BusKey key, std::shared_ptr<Bus> bus, Clock& clock);

  [[nodiscard]] const BusKey& key() const { return key_; }
  [[nodiscard]] const std::string& name() const { return name_; }

  // For the holder alone.
  [[nodiscard]] Bus& bus() { return *bus_; }

  // Waits for the bus until `deadline`. False: it was not to be had, because it is busy or hangs.
  [[nodiscard]] bool acquire(TimePoint deadline);

  // By the holder, from whichever thread.
  void release();

  // The holder is stuck in an operation.
  void markHung();
  [[nodiscard]] bool hung() const;

 private:
  struct Waiter {
    std::condition_variable wake;
    bool granted = false;
  };

  void waitForTurn(Waiter& self, std::unique_lock<std::mutex>& lock, TimePoint deadline);

  const BusKey key_;
  const std::string name_;
  const std::shared_ptr<Bus> bus_;
  Clock& clock_;

  mutable std::mutex mutex_;
  bool held_ = false;
  bool hung_ = false;
  std::list<Waiter*> waiting_;  // each lives on its thread's stack
};

}  // namespace SmbusService
