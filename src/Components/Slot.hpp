// SPDX-License-Identifier: Apache-2.0
//
// Bays, as drivers implement them (pl/pl_slot.h says what the operations mean).
#pragma once

#include "pl/pl_slot.h"

namespace Component::LogicalDevice {

class Slot {
 public:
  Slot() : record_{0, &ops_, this} {}
  Slot(const Slot&) = delete;
  Slot& operator=(const Slot&) = delete;
  virtual ~Slot() = default;

  virtual pl_status getPresence(char** descriptor) = 0;

  pl_slot* record() { return &record_; }

  static pl_status getPresenceCallback(pl_slot* slot, char** descriptor);
  static const pl_slot_ops ops_;

 private:
  pl_slot record_;
};

}  // namespace Component::LogicalDevice
