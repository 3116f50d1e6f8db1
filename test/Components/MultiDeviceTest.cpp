// SPDX-License-Identifier: Apache-2.0
#include "Components/MultiDevice.hpp"

#include <gmock/gmock.h>

#include <memory>

#include "Components/Fan.hpp"
#include "Components/Gpio.hpp"
#include "Components/HardwareDevice.hpp"
#include "Components/Led.hpp"
#include "Components/Psu.hpp"
#include "Components/Slot.hpp"
#include "Components/Xcvr.hpp"
#include "Drivers/Registry.hpp"
#include "test/support/Describe.hpp"
#include "test/support/Host.hpp"

namespace {

using Component::DeviceBase;
using Component::MultiDevice;
using Doubles::describeBare;
using Doubles::host;
using Doubles::Trace;
using Drivers::DriverArgs;
using testing::ElementsAre;
using testing::IsEmpty;

namespace LogicalDevice = Component::LogicalDevice;

class StubFan : public LogicalDevice::Fan {
  pl_status getRpm(int*) override { return 0; }
  pl_status setRpm(int) override { return 0; }
};
class StubSlot : public LogicalDevice::Slot {
  pl_status getPresence(char**) override { return 0; }
};
class StubLed : public LogicalDevice::Led {
  bool handleBlinkTimer(bool) override { return false; }
  pl_status setLightSetting(pl_led_status) override { return 0; }
};
class StubPsu final : public LogicalDevice::Psu {
  pl_status get_power_ok(int*) override { return 0; }
  pl_status get_input_current(float*) override { return 0; }
  pl_status get_output_current(float*) override { return 0; }
  pl_status get_input_voltage(float*) override { return 0; }
  pl_status get_output_voltage(float*) override { return 0; }
  pl_status get_input_power(float*) override { return 0; }
  pl_status get_output_power(float*) override { return 0; }
};
class StubSfp : public LogicalDevice::SfpXcvr {
 public:
  using SfpXcvr::SfpXcvr;
  pl_status getPresence() override { return 0; }
  pl_status getTxFault(int*) override { return 0; }
  pl_status getRxLos(int*) override { return 0; }
  pl_status getTxDisable(int*) override { return 0; }
  pl_status setTxDisable(int) override { return 0; }
};
class StubGpio : public LogicalDevice::Gpio {
  pl_status bitClear() override { return 0; }
  pl_status bitSet() override { return 0; }
  pl_status bitRead(unsigned*) override { return 0; }
};

// Has one of everything.
class Everything : public Component::HardwareDevice {
 public:
  LogicalDevice::Fan* newFan(const DriverArgs&) override { return &fan; }
  LogicalDevice::Slot* newSlot(const DriverArgs&) override { return &slot; }
  LogicalDevice::Led* newLed(const DriverArgs&) override { return &led; }
  LogicalDevice::Psu* newPsu(const DriverArgs&) override { return &psu; }
  LogicalDevice::SfpXcvr* newSfpXcvr(unsigned, const DriverArgs&) override { return &sfp; }
  LogicalDevice::Gpio* newGpio(const DriverArgs&) override { return &gpio; }

  StubFan fan;
  StubSlot slot;
  StubLed led;
  StubPsu psu;
  StubSfp sfp{1};
  StubGpio gpio;
};

// A container whose lists and initialisation can be seen.
class Box : public MultiDevice {
 public:
  using MultiDevice::deviceDriverArgs;
  using MultiDevice::fans_;
  using MultiDevice::gpios_;
  using MultiDevice::leds_;
  using MultiDevice::psus_;
  using MultiDevice::slots_;
  using MultiDevice::xcvrs_;

  void init() override { keysAtInit = deviceDriverArgs.size(); }
  size_t keysAtInit = 0;
};

class MultiDeviceCreation : public testing::Test {
 protected:
  MultiDeviceCreation() {
    Drivers::drivers["Box"] = [this](const auto&, auto* ham) {
      ++made_;
      EXPECT_EQ(ham, nullptr);
      return new Box;
    };
    Drivers::drivers["Null"] = [](const auto&, auto*) { return nullptr; };
    args_.driver = "Box";
    args_.did = 7;
    args_.multiDeviceArgs = {{"a", "one"}, {"b", "two"}};
  }
  int made_ = 0;
  DriverArgs args_;
};

TEST_F(MultiDeviceCreation, InitialisesTheContainerWithItsDescriptions) {
  auto* box = dynamic_cast<Box*>(MultiDevice::create(args_));
  ASSERT_NE(box, nullptr);
  EXPECT_EQ(box->keysAtInit, 2u);
  EXPECT_EQ(box->deviceDriverArgs, args_.multiDeviceArgs);
  EXPECT_EQ(DeviceBase::devices.at(7), box);
  EXPECT_THAT(host().traces, ElementsAre(Trace{0, "looking for already existing device 7"},
                                         Trace{0, "creating HardwareDevice Box"},
                                         Trace{0, "calling factory function for Box"},
                                         Trace{0, "Box MultiDevice created"}));
}

TEST_F(MultiDeviceCreation, ReusesTheContainerOfADid) {
  auto* box = MultiDevice::create(args_);
  args_.multiDeviceArgs = {};
  EXPECT_EQ(MultiDevice::create(args_), box);
  EXPECT_EQ(made_, 1);
  EXPECT_STREQ(box->getDeviceDriverArg("a"), "one");
}

TEST_F(MultiDeviceCreation, TracesAFactoryThatGivesNull) {
  args_.driver = "Null";
  EXPECT_EQ(MultiDevice::create(args_), nullptr);
  EXPECT_EQ(host().traces.back(), (Trace{0, "factory function returned a null object"}));
  EXPECT_THAT(DeviceBase::devices, IsEmpty());
}

TEST_F(MultiDeviceCreation, TracesAnUnknownDriver) {
  args_.driver = "NoSuchDriver";
  EXPECT_EQ(MultiDevice::create(args_), nullptr);
  EXPECT_TRUE(host().traced(0, "driver NoSuchDriver not found"));
}

// The members of a container.

TEST(MultiDevice, GivesTheDescriptionOfAKey) {
  Box box;
  box.deviceDriverArgsIs({{"a", "one"}});
  EXPECT_STREQ(box.getDeviceDriverArg("a"), "one");
  EXPECT_THAT(host().traces, IsEmpty());
}

TEST(MultiDevice, TracesAKeyWithoutADescription) {
  Box box;
  EXPECT_EQ(box.getDeviceDriverArg("a"), nullptr);
  EXPECT_THAT(host().traces, ElementsAre(Trace{0, "Failed to find driverArgs for driver key 'a'"}));
}

TEST(MultiDevice, ReplacesItsDescriptions) {
  Box box;
  box.deviceDriverArgsIs({{"a", "one"}});
  box.deviceDriverArgsIs({{"b", "two"}});
  EXPECT_EQ(box.getDeviceDriverArg("a"), nullptr);
  EXPECT_STREQ(box.getDeviceDriverArg("b"), "two");
}

class MultiDeviceMembers : public testing::Test {
 protected:
  MultiDeviceMembers() {
    Drivers::drivers["Everything"] = [](const auto&, auto*) { return new Everything; };
    box_.deviceDriverArgsIs({{"good", kText}, {"bad", "{"}});
  }
  static Everything& device() { return dynamic_cast<Everything&>(*DeviceBase::devices.at(7)); }

  const std::string kText = describeBare(7, "Everything", R"({"id":1,"type":"sfp"})");
  Box box_;
};

TEST_F(MultiDeviceMembers, AreMadeOfTheirKindAndKept) {
  const pl_slot* slot = box_.addSlot("good");
  EXPECT_EQ(slot, device().slot.record());
  EXPECT_EQ(box_.addLed("good"), device().led.record());
  EXPECT_EQ(box_.addPsu("good"), device().psu.record());
  EXPECT_EQ(box_.addFan("good"), device().fan.record());
  EXPECT_EQ(box_.addXcvr("good"), device().sfp.record());
  EXPECT_EQ(box_.addGpio("good"), device().gpio.record());
  EXPECT_THAT(box_.slots_, ElementsAre(device().slot.record()));
  EXPECT_THAT(box_.leds_, ElementsAre(device().led.record()));
  EXPECT_THAT(box_.psus_, ElementsAre(device().psu.record()));
  EXPECT_THAT(box_.fans_, ElementsAre(device().fan.record()));
  EXPECT_THAT(box_.xcvrs_, ElementsAre(device().sfp.record()));
  EXPECT_THAT(box_.gpios_, ElementsAre(device().gpio.record()));
}

TEST_F(MultiDeviceMembers, AreTracedForThreeOfTheKinds) {
  box_.addSlot("good");
  box_.addLed("good");
  box_.addPsu("good");
  EXPECT_THAT(host().texts(6), IsEmpty());
  box_.addFan("good");
  box_.addXcvr("good");
  box_.addGpio("good");
  EXPECT_THAT(host().texts(6), ElementsAre("MultiDevice::addFan driver args = " + kText,
                                           "MultiDevice::addXcvr driver args = " + kText,
                                           "MultiDevice::addGpio driver args = " + kText));
}

TEST_F(MultiDeviceMembers, AreNotKeptForAKeyWithoutADescription) {
  EXPECT_EQ(box_.addSlot("none"), nullptr);
  EXPECT_EQ(box_.addLed("none"), nullptr);
  EXPECT_EQ(box_.addPsu("none"), nullptr);
  EXPECT_EQ(box_.addFan("none"), nullptr);
  EXPECT_EQ(box_.addXcvr("none"), nullptr);
  EXPECT_EQ(box_.addGpio("none"), nullptr);
  EXPECT_EQ(box_.slots_.size() + box_.leds_.size() + box_.psus_.size() + box_.fans_.size() +
                box_.xcvrs_.size() + box_.gpios_.size(),
            0u);
  EXPECT_THAT(host().traces,
              testing::Each(Trace{0, "Failed to find driverArgs for driver key 'none'"}));
}

TEST_F(MultiDeviceMembers, AreKeptAsNullForADescriptionThatIsRejected) {
  EXPECT_EQ(box_.addFan("bad"), nullptr);
  EXPECT_EQ(box_.addSlot("bad"), nullptr);
  EXPECT_THAT(box_.fans_, ElementsAre(nullptr));
  EXPECT_THAT(box_.slots_, ElementsAre(nullptr));
}

}  // namespace
