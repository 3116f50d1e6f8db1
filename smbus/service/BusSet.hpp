// SPDX-License-Identifier: Apache-2.0
//
// The buses that the service has, by what names them, and the hold that a transaction has on those
// it uses.
#pragma once

#include <map>
#include <memory>
#include <vector>

#include "smbus/service/BusSlot.hpp"
#include "smbus/service/Transaction.hpp"

namespace SmbusService {

// Filled before the first client comes, and not changed after; then any thread may use it.
class BusSet {
 public:
  // False: there is such a bus already.
  [[nodiscard]] bool add(BusKey key, std::shared_ptr<Bus> bus, Clock& clock);

  // Lives as long as the set; null: no such bus.
  [[nodiscard]] BusSlot* find(const BusKey& key) const;

  [[nodiscard]] size_t size() const { return slots_.size(); }

  // The first bus that hangs, or null.
  [[nodiscard]] const BusSlot* firstHung() const;

 private:
  std::map<BusKey, std::unique_ptr<BusSlot>> slots_;
};

// All buses of one transaction, held from acquire() to release() or the end of this object. They
// are taken in one order, so that two transactions never wait for each other.
class BusHold {
 public:
  BusHold() = default;
  ~BusHold() { release(); }
  BusHold(const BusHold&) = delete;
  BusHold& operator=(const BusHold&) = delete;

  // Returns null, or the bus that was not to be had before `deadline`; nothing is held then.
  [[nodiscard]] const BusSlot* acquire(const Transaction& transaction, TimePoint deadline);
  void release();

  // What is held: changes in acquire() and release() only.
  [[nodiscard]] const std::vector<BusSlot*>& slots() const { return held_; }

 private:
  std::vector<BusSlot*> held_;
};

}  // namespace SmbusService
