// SPDX-License-Identifier: Apache-2.0
//
// A bay that may hold one of several kinds of module. Each kind is a slot of its own, described in
// "multiDeviceArgs"; the bay answers for the one that is present.
#pragma once

#include "Components/MultiDevice.hpp"
#include "Components/Slot.hpp"

namespace Drivers {

class MultiSlot : public Component::MultiDevice {
 public:
  class Slot;

  static Component::MultiDevice* create(const DriverArgs& args, Ham::Ham* ham);

  // "id" is 1 to 5. Each slot made adds every kind again to those that are asked.
  Component::LogicalDevice::Slot* newSlot(const DriverArgs& args) override;

  // Asks the kind last found, then all in turn; 1 when none is present. The text is the kind's own.
  pl_status getPresence(char** name);

 private:
  void addSubdevices(uint8_t slotId);
  pl_status getDevPresence(pl_slot* slot, char** name);

  pl_slot* presentDevice = nullptr;
};

class MultiSlot::Slot : public Component::LogicalDevice::Slot {
 public:
  Slot(MultiSlot* owner, uint8_t slotId);

  pl_status getPresence(char** name) override { return owner->getPresence(name); }

 private:
  MultiSlot* owner;  // borrowed
  uint8_t slotId;
};

}  // namespace Drivers
