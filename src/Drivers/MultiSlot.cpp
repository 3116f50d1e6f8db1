// SPDX-License-Identifier: Apache-2.0
#include "Drivers/MultiSlot.hpp"

#include "Drivers/Args.hpp"
#include "Utils/Check.hpp"
#include "Utils/Host.hpp"

namespace Drivers {

Component::MultiDevice* MultiSlot::create(const DriverArgs&, Ham::Ham*) {
  TRACE(0, "Creating MultiSlot Device");
  return new MultiSlot;  // to the device cache
}

Component::LogicalDevice::Slot* MultiSlot::newSlot(const DriverArgs& args) {
  const uint8_t slotId = requiredByte(args.driverArgs, "id");
  CHECK(slotId >= 1 && slotId <= 5);
  presentDevice = nullptr;
  return new Slot(this, slotId);
}

void MultiSlot::addSubdevices(uint8_t slotId) {
  for (const auto& [key, text] : deviceDriverArgs) {
    TRACE(5, "Adding slot %d subdevice: %s ->%s", slotId, key.c_str(), text.c_str());
    if (addSlot(key) == nullptr) {
      TRACE(0, "Failed to add slot %d subdevice with key='%s'", slotId, key.c_str());
    }
  }
}

pl_status MultiSlot::getPresence(char** name) {
  TRACE(7, "%s", "getPresence");
  if (presentDevice != nullptr && getDevPresence(presentDevice, name) == PL_STATUS_OK) {
    return PL_STATUS_OK;
  }
  const std::vector<pl_slot*> kinds = slots_;
  for (pl_slot* kind : kinds) {
    // One that could not be made is there as null.
    if (kind != nullptr && getDevPresence(kind, name) == PL_STATUS_OK) {
      presentDevice = kind;
      return PL_STATUS_OK;
    }
  }
  return PL_STATUS_EMPTY;
}

pl_status MultiSlot::getDevPresence(pl_slot* slot, char** name) {
  return slot->ops->get_presence(slot, name);
}

MultiSlot::Slot::Slot(MultiSlot* device, uint8_t id) : owner(device), slotId(id) {
  owner->addSubdevices(slotId);
}

}  // namespace Drivers
