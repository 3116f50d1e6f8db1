// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/BusSlot.hpp"

namespace SmbusService {

BusSlot::BusSlot(BusKey key, std::shared_ptr<Bus> bus, Clock& clock)
    : key_(key), name_(describe(key)), bus_(std::move(bus)), clock_(clock) {}

bool BusSlot::acquire(TimePoint deadline) {
  std::unique_lock lock(mutex_);
  if (hung_) {
    return false;
  }
  if (!held_) {
    held_ = true;
    return true;
  }
  Waiter self;
  waiting_.push_back(&self);
  waitForTurn(self, lock, deadline);
  if (!self.granted) {
    waiting_.remove(&self);
  }
  return self.granted;
}

void BusSlot::waitForTurn(Waiter& self, std::unique_lock<std::mutex>& lock, TimePoint deadline) {
  while (!self.granted && !hung_ && clock_.now() < deadline) {
    clock_.waitUntil(self.wake, lock, deadline);
  }
}

void BusSlot::release() {
  const std::lock_guard lock(mutex_);
  hung_ = false;
  held_ = !waiting_.empty();
  if (held_) {  // passed on to the next, never free in between
    Waiter* next = waiting_.front();
    waiting_.pop_front();
    next->granted = true;
    next->wake.notify_one();
  }
}

void BusSlot::markHung() {
  const std::lock_guard lock(mutex_);
  hung_ = held_;
  for (Waiter* waiter : waiting_) {
    waiter->wake.notify_one();
  }
}

bool BusSlot::hung() const {
  const std::lock_guard lock(mutex_);
  return hung_;
}

}  // namespace SmbusService
