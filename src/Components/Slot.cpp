// SPDX-License-Identifier: Apache-2.0
#include "Components/Slot.hpp"

#include "Components/Adder.hpp"
#include "Nimbo.hpp"

namespace Component::LogicalDevice {

const pl_slot_ops Slot::ops_ = {
    .size = sizeof(pl_slot_ops),
    .get_presence = getPresenceCallback,
};

pl_status Slot::getPresenceCallback(pl_slot* slot, char** descriptor) {
  TRACE(4, "%s(%p)", "getPresenceCallback", static_cast<void*>(slot));
  return static_cast<Slot*>(slot->object)->getPresence(descriptor);
}

}  // namespace Component::LogicalDevice

using namespace Component;

pl_status pl_slot_init(const char* json) {
  return nimboLibraryInit("pl_slot_init", json, kSocketRetries);
}

pl_slot* pl_slot_add(const char* json) {
  static constexpr AdderTrace kTrace = {0, kNoDevice, "newSlot() failed"};
  return recordOf(addLogical(json, kTrace, &DeviceBase::newSlot));
}
