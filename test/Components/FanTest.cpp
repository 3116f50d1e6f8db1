// SPDX-License-Identifier: Apache-2.0
#include "Components/Fan.hpp"

#include <gmock/gmock.h>

#include <memory>

#include "Components/HardwareDevice.hpp"
#include "Drivers/Registry.hpp"
#include "Utils/NotImplemented.hpp"
#include "test/support/Describe.hpp"
#include "test/support/Host.hpp"

namespace {

using Component::LogicalDevice::Fan;
using Doubles::describeBare;
using Doubles::host;
using Doubles::printed;
using Doubles::Trace;
using testing::Contains;
using testing::ElementsAre;

class StubFan : public Fan {
 public:
  pl_status getRpm(int* rpm) override {
    *rpm = 8190;
    return 11;
  }
  pl_status setRpm(int rpm) override {
    asked = rpm;
    return 12;
  }
  int asked = 0;
};

class TalkingFan : public StubFan {
 public:
  void debugInfo(char** text) const override {
    static char info[] = "a fan";
    *text = info;
  }
};

class FanDevice : public Component::HardwareDevice {
 public:
  Fan* newFan(const DriverArgs&) override {
    if (hasFans) {
      fans.push_back(std::make_unique<StubFan>());
      return fans.back().get();
    }
    return nullptr;
  }
  static inline bool hasFans = true;
  std::vector<std::unique_ptr<StubFan>> fans;
};

class FanAdder : public testing::Test {
 protected:
  FanAdder() {
    Drivers::drivers["Fans"] = [](const auto&, auto*) { return new FanDevice; };
    Drivers::drivers["NoFans"] = [](const auto&, auto*) { return new Component::HardwareDevice; };
  }
};

TEST(FanOps, StandInOrder) {
  EXPECT_EQ(Fan::ops_.size, 32u);
  EXPECT_EQ(Fan::ops_.debug_info, Fan::debugInfoCallback);
  EXPECT_EQ(Fan::ops_.get_rpm, Fan::getRpmCallback);
  EXPECT_EQ(Fan::ops_.set_rpm, Fan::setRpmCallback);
}

TEST(FanRecord, LeadsToItsFan) {
  StubFan fan;
  EXPECT_EQ(fan.record()->ops, &Fan::ops_);
  EXPECT_EQ(fan.record()->object, static_cast<Fan*>(&fan));
}

TEST(FanCallback, ForwardsGetRpm) {
  StubFan fan;
  pl_fan* record = fan.record();
  int rpm = 0;
  EXPECT_EQ(record->ops->get_rpm(record, &rpm), 11);
  EXPECT_EQ(rpm, 8190);
  EXPECT_THAT(host().traces,
              ElementsAre(Trace{4, printed("getRpmCallback(%p)", static_cast<void*>(record))}));
}

TEST(FanCallback, ForwardsSetRpm) {
  StubFan fan;
  pl_fan* record = fan.record();
  EXPECT_EQ(record->ops->set_rpm(record, 5000), 12);
  EXPECT_EQ(fan.asked, 5000);
  EXPECT_THAT(
      host().traces,
      ElementsAre(Trace{4, printed("setRpmCallback(%p, 5000)", static_cast<void*>(record))}));
}

TEST(FanCallback, ForwardsDebugInfo) {
  TalkingFan fan;
  char* text = nullptr;
  EXPECT_EQ(fan.record()->ops->debug_info(fan.record(), &text), 0);
  EXPECT_STREQ(text, "a fan");
}

TEST(FanCallback, LeavesTheTextOfAFanThatSaysNothing) {
  StubFan fan;
  char untouched[] = "untouched";
  char* text = untouched;
  EXPECT_EQ(fan.record()->ops->debug_info(fan.record(), &text), 0);
  EXPECT_EQ(text, untouched);
  EXPECT_THAT(
      host().traces,
      ElementsAre(Trace{4, printed("debugInfoCallback(%p)", static_cast<void*>(fan.record()))}));
}

TEST_F(FanAdder, MakesARecordOfItsOwnOnOneDevice) {
  const std::string text = describeBare(7, "Fans");
  pl_fan* first = pl_fan_add(text.c_str());
  pl_fan* second = pl_fan_add(text.c_str());
  ASSERT_NE(first, nullptr);
  ASSERT_NE(second, nullptr);
  EXPECT_NE(first, second);
  const auto* device = dynamic_cast<FanDevice*>(Component::DeviceBase::devices.at(7));
  EXPECT_EQ(first, device->fans.at(0)->record());
  EXPECT_EQ(second, device->fans.at(1)->record());
}

TEST_F(FanAdder, TracesADeviceThatCannotBeMade) {
  EXPECT_EQ(pl_fan_add("{"), nullptr);
  EXPECT_EQ(host().traces.back(), (Trace{0, "DeviceBase::create() failed"}));
}

TEST_F(FanAdder, TracesAFanThatCannotBeMade) {
  FanDevice::hasFans = false;
  EXPECT_EQ(pl_fan_add(describeBare(7, "Fans").c_str()), nullptr);
  EXPECT_EQ(host().traces.back(), (Trace{0, "newFan() failed"}));
}

TEST_F(FanAdder, KeepsTheDeviceOfAFanThatCannotBeMade) {
  FanDevice::hasFans = false;
  pl_fan_add(describeBare(7, "Fans").c_str());
  FanDevice::hasFans = true;
  EXPECT_NE(pl_fan_add(describeBare(7, "Fans").c_str()), nullptr);
  EXPECT_THAT(host().texts(0), Contains("using previously instanciated HardwareDevice Fans"));
}

TEST_F(FanAdder, ThrowsForADeviceWithoutFans) {
  EXPECT_THROW(pl_fan_add(describeBare(7, "NoFans").c_str()), NotImplementedException);
}

}  // namespace
