// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/board/Agenda.hpp"

namespace SmbusService::Board {

void Agenda::add(Time due, Action action) {
  const std::scoped_lock lock(mutex_);
  entries_.emplace(due, std::move(action));
  noteNext();
}

void Agenda::noteNext() {
  const Time first = entries_.empty() ? kNever : entries_.begin()->first;
  const Time next = std::min(first, underWay_);
  next_.store(next.count(), std::memory_order_release);
}

void Agenda::runNow() {
  const std::scoped_lock oneAtATime(running_);
  Time due{0};
  Action action;
  while (takeDue(due, action)) {
    action(due);
    const std::scoped_lock lock(mutex_);
    underWay_ = kNever;
    noteNext();
  }
}

bool Agenda::takeDue(Time& due, Action& action) {
  const std::scoped_lock lock(mutex_);
  const auto first = entries_.begin();
  if (first == entries_.end() || first->first > clock_.now()) {
    return false;
  }
  due = underWay_ = first->first;
  action = std::move(first->second);
  entries_.erase(first);
  return true;
}

}  // namespace SmbusService::Board
