// SPDX-License-Identifier: Apache-2.0
#include "Components/Slot.hpp"

#include <gmock/gmock.h>

#include "Components/HardwareDevice.hpp"
#include "Drivers/Registry.hpp"
#include "Utils/NotImplemented.hpp"
#include "test/support/Describe.hpp"
#include "test/support/Host.hpp"

namespace {

using Component::LogicalDevice::Slot;
using Doubles::describeBare;
using Doubles::host;
using Doubles::printed;
using Doubles::Trace;
using testing::ElementsAre;

class StubSlot : public Slot {
 public:
  pl_status getPresence(char** descriptor) override {
    static char text[] = "a fan tray";
    *descriptor = text;
    return 11;
  }
};

class SlotDevice : public Component::HardwareDevice {
 public:
  Slot* newSlot(const DriverArgs&) override { return hasSlot ? &slot : nullptr; }
  static inline bool hasSlot = true;
  StubSlot slot;
};

class SlotAdder : public testing::Test {
 protected:
  SlotAdder() {
    Drivers::drivers["Slot"] = [](const auto&, auto*) { return new SlotDevice; };
    Drivers::drivers["None"] = [](const auto&, auto*) { return new Component::HardwareDevice; };
  }
};

TEST(SlotOps, StandInOrder) {
  EXPECT_EQ(Slot::ops_.size, 16u);
  EXPECT_EQ(Slot::ops_.get_presence, Slot::getPresenceCallback);
}

TEST(SlotCallback, ForwardsGetPresence) {
  StubSlot slot;
  pl_slot* record = slot.record();
  char* descriptor = nullptr;
  EXPECT_EQ(record->ops->get_presence(record, &descriptor), 11);
  EXPECT_STREQ(descriptor, "a fan tray");
  EXPECT_THAT(
      host().traces,
      ElementsAre(Trace{4, printed("getPresenceCallback(%p)", static_cast<void*>(record))}));
}

TEST_F(SlotAdder, GivesTheRecord) {
  pl_slot* record = pl_slot_add(describeBare(7, "Slot").c_str());
  auto* device = dynamic_cast<SlotDevice*>(Component::DeviceBase::devices.at(7));
  EXPECT_EQ(record, device->slot.record());
}

TEST_F(SlotAdder, TracesItsFailures) {
  SlotDevice::hasSlot = false;
  EXPECT_EQ(pl_slot_add("{"), nullptr);
  EXPECT_EQ(host().traces.back(), (Trace{0, "DeviceBase::create() failed"}));
  EXPECT_EQ(pl_slot_add(describeBare(7, "Slot").c_str()), nullptr);
  EXPECT_EQ(host().traces.back(), (Trace{0, "newSlot() failed"}));
}

TEST_F(SlotAdder, ThrowsForADeviceWithoutSlots) {
  EXPECT_THROW(pl_slot_add(describeBare(7, "None").c_str()), NotImplementedException);
}

}  // namespace
