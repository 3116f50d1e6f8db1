// SPDX-License-Identifier: Apache-2.0
#include "Components/Led.hpp"

#include <gmock/gmock.h>

#include "Components/HardwareDevice.hpp"
#include "Drivers/Registry.hpp"
#include "Utils/NotImplemented.hpp"
#include "test/support/Check.hpp"
#include "test/support/Describe.hpp"
#include "test/support/Host.hpp"

namespace {

using Component::LogicalDevice::Led;
using Doubles::describeBare;
using Doubles::host;
using Doubles::printed;
using Doubles::Trace;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kUnit = "Components/Led";

class StubLed : public Led {
 public:
  bool handleBlinkTimer(bool on) override {
    phases.push_back(on);
    return blinks;
  }
  pl_status setLightSetting(pl_led_status status) override {
    asked = status;
    return 11;
  }

  using Led::blinkPeriod_;
  using Led::blinkStatus_;
  using Led::blinkTimer_;
  using Led::notifyList_;

  std::vector<bool> phases;
  bool blinks = true;
  pl_led_status asked = -1;
};

class LedDevice : public Component::HardwareDevice {
 public:
  LedDevice() { led.needsBlinkTimer = blinks; }
  Led* newLed(const DriverArgs&) override { return hasLed ? &led : nullptr; }
  static inline bool hasLed = true;
  static inline bool blinks = false;
  StubLed led;
};

class LedAdder : public testing::Test {
 protected:
  LedAdder() {
    Drivers::drivers["Led"] = [](const auto&, auto*) { return new LedDevice; };
    Drivers::drivers["None"] = [](const auto&, auto*) { return new Component::HardwareDevice; };
  }
};

TEST(LedOps, StandInOrder) {
  EXPECT_EQ(Led::ops_.size, 16u);
  EXPECT_EQ(Led::ops_.set_light_setting, Led::setLightSettingCallback);
}

TEST(LedCallback, ForwardsSetLightSetting) {
  StubLed led;
  pl_led* record = led.record();
  EXPECT_EQ(record->ops->set_light_setting(record, PL_LED_BAD), 11);
  EXPECT_EQ(led.asked, PL_LED_BAD);
  EXPECT_THAT(
      host().traces,
      ElementsAre(Trace{4, printed("setLightSettingCallback(%p, 3)", static_cast<void*>(record))}));
}

TEST(LedStatus, HasAName) {
  const char* const names[] = {"Off", "Good", "Warning", "Bad", "Inactive", "Unknown", "Beacon"};
  pl_led_status status = 0;
  for (const char* name : names) {
    EXPECT_STREQ(Led::getLedStatusString(status++), name);
  }
}

TEST(LedStatus, StopsOnAValueThatIsNone) {
  constexpr const char* kText = "( unsigned )status < sizeof ( strs ) / sizeof ( *strs )";
  EXPECT_CHECK(Led::getLedStatusString(7), kUnit, kText);
  EXPECT_CHECK(Led::getLedStatusString(-1), kUnit, kText);
}

// Adding LEDs.

TEST_F(LedAdder, GivesTheRecordAndMakesNoTimerForASteadyLed) {
  pl_led* record = pl_led_add(describeBare(7, "Led").c_str());
  auto* device = dynamic_cast<LedDevice*>(Component::DeviceBase::devices.at(7));
  EXPECT_EQ(record, device->led.record());
  EXPECT_THAT(host().timers, IsEmpty());
}

TEST_F(LedAdder, MakesOneTimerForAllLedsThatBlinkAndDoesNotArmIt) {
  LedDevice::blinks = true;
  EXPECT_NE(pl_led_add(describeBare(7, "Led").c_str()), nullptr);
  EXPECT_NE(pl_led_add(describeBare(8, "Led").c_str()), nullptr);
  EXPECT_EQ(host().timer().callback, Led::handleBlinkTimerCallback);
  EXPECT_EQ(host().timer().context, nullptr);
  EXPECT_THAT(host().timer().intervals, IsEmpty());
  EXPECT_EQ(host().timers.begin()->first, StubLed::blinkTimer_);
  EXPECT_THAT(host().texts(0), testing::Contains("creating unique led blink timer").Times(1));
}

TEST_F(LedAdder, TracesItsFailures) {
  LedDevice::hasLed = false;
  EXPECT_EQ(pl_led_add("{"), nullptr);
  EXPECT_EQ(host().traces.back(), (Trace{0, "DeviceBase::create() failed"}));
  EXPECT_EQ(pl_led_add(describeBare(7, "Led").c_str()), nullptr);
  EXPECT_EQ(host().traces.back(), (Trace{0, "newLed() failed"}));
}

TEST_F(LedAdder, ThrowsForADeviceWithoutLeds) {
  EXPECT_THROW(pl_led_add(describeBare(7, "None").c_str()), NotImplementedException);
}

// Blinking.

TEST(LedBlink, StopsAHostWithoutTimers) {
  host().refusesTimers = true;
  EXPECT_CHECK_AFTER(Led::createBlinkTimer(), (Trace{0, "failed to create blink timer"}), kUnit,
                     "blinkTimer_");
}

TEST(LedBlink, WantsTheTimerBeforeTheFirstLed) {
  StubLed led;
  EXPECT_CHECK_AFTER(Led::notifyOnBlink(&led),
                     (Trace{4, "notifyOnBlink() adding led to blink notification list"}), kUnit,
                     "blinkTimer_");
}

class LedBlinking : public testing::Test {
 protected:
  LedBlinking() {
    Led::createBlinkTimer();
    host().traces.clear();
  }
  static void tick() { host().fire(host().timer()); }

  StubLed first_;
  StubLed second_;
};

TEST_F(LedBlinking, ArmsTheTimerWithTheFirstLedAlone) {
  Led::notifyOnBlink(&first_);
  Led::notifyOnBlink(&second_);
  EXPECT_EQ(StubLed::blinkPeriod_, 1000u);
  EXPECT_THAT(host().timer().intervals, ElementsAre(1000u));
  EXPECT_THAT(StubLed::notifyList_, ElementsAre(&first_, &second_));
  EXPECT_THAT(host().traces,
              ElementsAre(Trace{4, "notifyOnBlink() adding led to blink notification list"},
                          Trace{4, "notifyOnBlink() adding led to blink notification list"}));
}

TEST_F(LedBlinking, GivesAllLedsThePhaseBeforeItsToggle) {
  Led::notifyOnBlink(&first_);
  EXPECT_FALSE(StubLed::blinkStatus_);
  tick();
  Led::notifyOnBlink(&second_);
  tick();
  tick();
  EXPECT_THAT(first_.phases, ElementsAre(false, true, false));
  EXPECT_THAT(second_.phases, ElementsAre(true, false));
  EXPECT_TRUE(StubLed::blinkStatus_);
  EXPECT_THAT(host().timer().intervals, ElementsAre(1000u, 1000u, 1000u, 1000u));
}

TEST_F(LedBlinking, TracesEachTick) {
  Led::notifyOnBlink(&first_);
  host().traces.clear();
  tick();
  EXPECT_THAT(
      host().traces,
      ElementsAre(Trace{4, "handleBlinkTimerCallback() led blink timer hit notifying 1 leds"}));
}

TEST_F(LedBlinking, DropsAnLedThatNoLongerBlinks) {
  Led::notifyOnBlink(&first_);
  Led::notifyOnBlink(&second_);
  first_.blinks = false;
  tick();
  EXPECT_THAT(StubLed::notifyList_, ElementsAre(&second_));
  EXPECT_THAT(second_.phases, ElementsAre(false));
  EXPECT_TRUE(host().timer().armed);
}

TEST_F(LedBlinking, RestsWhenTheLastLedDropsOutAndTogglesAllTheSame) {
  Led::notifyOnBlink(&first_);
  Led::notifyOnBlink(&second_);
  first_.blinks = second_.blinks = false;
  tick();
  EXPECT_THAT(StubLed::notifyList_, IsEmpty());
  EXPECT_FALSE(host().timer().armed);
  EXPECT_TRUE(StubLed::blinkStatus_);
}

TEST_F(LedBlinking, StartsAgainWithTheNextLed) {
  Led::notifyOnBlink(&first_);
  first_.blinks = false;
  tick();
  Led::notifyOnBlink(&second_);
  EXPECT_TRUE(host().timer().armed);
  tick();
  EXPECT_THAT(second_.phases, ElementsAre(true));
}

TEST_F(LedBlinking, ListsAnLedAsOftenAsItJoins) {
  Led::notifyOnBlink(&first_);
  Led::notifyOnBlink(&first_);
  tick();
  EXPECT_THAT(first_.phases, ElementsAre(false, false));
}

}  // namespace
