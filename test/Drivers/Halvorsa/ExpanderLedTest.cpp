// SPDX-License-Identifier: Apache-2.0
#include "Drivers/Halvorsa/ExpanderLed.hpp"

#include <gmock/gmock.h>

#include <optional>
#include <vector>

#include "Drivers/Halvorsa/HalvPsuPCA9555.hpp"
#include "Drivers/Halvorsa/HalvorsaPCA9555.hpp"
#include "test/support/Device.hpp"
#include "test/support/FakeHam.hpp"
#include "test/support/Host.hpp"

namespace {

using Component::LogicalDevice::Led;
using Doubles::FakeHam;
using Doubles::host;
using Doubles::made;
using Doubles::settings;
using Doubles::Trace;
using Drivers::HalvorsaPCA9555;
using Drivers::HalvPsuPCA9555;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr int kShowStatus = 17;  // no status of the LED itself

class StubLed : public Drivers::ExpanderLed {
 public:
  using ExpanderLed::Light;
  using ExpanderLed::notifyList_;

  explicit StubLed(uint8_t index = 2, int unexpectedLevel = 3)
      : ExpanderLed(index, unexpectedLevel) {}
  ~StubLed() override { notifyList_.remove(this); }
  bool handleBlinkTimer(bool) override { return true; }

  std::vector<Light> shown;

 private:
  pl_status show(Light light) override {
    shown.push_back(light);
    return kShowStatus;
  }
};

using Light = StubLed::Light;

// What a setting does; a beacon that blinks already is the exception.
struct Setting {
  pl_led_status setting;
  pl_status status;
  std::optional<Light> shown;
  bool blinks;
};
constexpr Setting kSettings[] = {
    {0, kShowStatus, Light::kOff, false},   // off
    {1, kShowStatus, Light::kGood, false},  // good
    {2, kShowStatus, Light::kBad, false},   // warning
    {3, kShowStatus, Light::kBad, false},   // bad
    {4, 3, std::nullopt, false},            // inactive
    {5, 3, std::nullopt, false},            // unknown
    {6, kShowStatus, Light::kOff, true},    // beacon
    {7, 3, std::nullopt, false},            // none
    {1000, 3, std::nullopt, false},         // none
    {-1, 3, std::nullopt, false},           // none
};

class PanelLed : public testing::Test {
 protected:
  PanelLed() {
    Led::createBlinkTimer();
    host().traces.clear();
  }

  static void expectLights(const StubLed& led, const Setting& setting, size_t lightsBefore) {
    ASSERT_EQ(led.shown.size(), lightsBefore + (setting.shown ? 1 : 0));
    if (setting.shown) {
      EXPECT_EQ(led.shown.back(), *setting.shown);
    }
  }
  static size_t listed() { return StubLed::notifyList_.size(); }
};

TEST_F(PanelLed, AsksForTheBlinkTimer) { EXPECT_TRUE(StubLed().needsBlinkTimer); }

TEST_F(PanelLed, TakesEachSettingFromTheStart) {
  for (const Setting& setting : kSettings) {
    SCOPED_TRACE(setting.setting);
    StubLed led;
    EXPECT_EQ(led.setLightSetting(setting.setting), setting.status);
    expectLights(led, setting, 0);
    EXPECT_EQ(listed(), setting.blinks ? 1u : 0u);
  }
}

TEST_F(PanelLed, TakesEachSettingFromEverySteadyState) {
  for (const Setting& before : kSettings) {
    for (const Setting& setting : kSettings) {
      if (before.blinks) {
        continue;
      }
      SCOPED_TRACE(testing::Message() << before.setting << " to " << setting.setting);
      StubLed led;
      led.setLightSetting(before.setting);
      const size_t lights = led.shown.size();
      EXPECT_EQ(led.setLightSetting(setting.setting), setting.status);
      expectLights(led, setting, lights);
      EXPECT_EQ(listed(), setting.blinks ? 1u : 0u);
    }
  }
}

TEST_F(PanelLed, EndsABeaconWithAnyOtherSetting) {
  for (const Setting& setting : kSettings) {
    if (setting.blinks) {
      continue;
    }
    SCOPED_TRACE(setting.setting);
    StubLed led;
    led.setLightSetting(PL_LED_BEACON);
    EXPECT_EQ(listed(), 1u);
    EXPECT_EQ(led.setLightSetting(setting.setting), setting.status);
    expectLights(led, setting, 1);
    EXPECT_EQ(listed(), 0u);
  }
}

TEST_F(PanelLed, BlinksOnceHoweverOftenItIsMadeABeacon) {
  StubLed led;
  led.setLightSetting(PL_LED_BEACON);
  EXPECT_EQ(led.setLightSetting(PL_LED_BEACON), 0);
  EXPECT_THAT(led.shown, ElementsAre(Light::kOff));
  EXPECT_EQ(listed(), 1u);
}

TEST_F(PanelLed, BecomesABeaconAgainAfterASteadyLight) {
  StubLed led;
  led.setLightSetting(PL_LED_BEACON);
  led.setLightSetting(PL_LED_GOOD);
  EXPECT_EQ(led.setLightSetting(PL_LED_BEACON), kShowStatus);
  EXPECT_EQ(listed(), 1u);
}

TEST_F(PanelLed, LeavesOtherBeaconsListed) {
  StubLed first;
  StubLed second;
  first.setLightSetting(PL_LED_BEACON);
  second.setLightSetting(PL_LED_BEACON);
  first.setLightSetting(PL_LED_OFF);
  EXPECT_THAT(StubLed::notifyList_, ElementsAre(&second));
}

TEST_F(PanelLed, TracesEachSettingByName) {
  StubLed led;
  const char* const names[] = {"Off", "Good", "Warning", "Bad", "Inactive", "Unknown", "Beacon"};
  for (pl_led_status setting = 0; setting <= PL_LED_BEACON; ++setting) {
    host().traces.clear();
    led.setLightSetting(setting);
    EXPECT_EQ(host().traces.front(),
              (Trace{6, std::string("Setting PCA9555 led 2 to ") + names[setting]}));
  }
}

TEST_F(PanelLed, TracesASettingItLacksAtItsDriversLevel) {
  StubLed led(2, 3);
  led.setLightSetting(PL_LED_INACTIVE);
  EXPECT_THAT(host().traces, ElementsAre(Trace{6, "Setting PCA9555 led 2 to Inactive"},
                                         Trace{3, "led 2 was given an unexpected setting 4"}));
}

TEST_F(PanelLed, HasNoNameForASettingThatIsNone) {
  StubLed led(2, 3);
  led.setLightSetting(7);
  led.setLightSetting(-1);
  EXPECT_THAT(host().traces, ElementsAre(Trace{3, "led 2 was given an unexpected setting 7"},
                                         Trace{3, "led 2 was given an unexpected setting -1"}));
}

// The LEDs of both expanders that have some, on the one timer.

class PanelBeacons : public PanelLed {
 protected:
  PanelBeacons() {
    tray_.set8(kOutputs, 0);
    supply_.set8(kOutputs, 0);
  }

  static void tick() { host().fire(host().timer()); }
  [[nodiscard]] bool trayLit() const { return (tray_.value8(kOutputs) & kTrayLed) != 0; }
  [[nodiscard]] bool supplyLit() const { return (supply_.value8(kOutputs) & kSupplyLed) != 0; }

  static constexpr uint32_t kOutputs = 3;
  static constexpr uint8_t kTrayLed = 0x10;
  static constexpr uint8_t kSupplyLed = 0x04;

  FakeHam tray_;
  FakeHam supply_;
  std::unique_ptr<HalvorsaPCA9555> trays_ =
      made<HalvorsaPCA9555>(tray_, {{"bank-io-0", "255"}, {"bank-io-1", "15"}});
  std::unique_ptr<HalvPsuPCA9555> supplies_ = made<HalvPsuPCA9555>(supply_);
  std::unique_ptr<Led> trayLed_{trays_->newLed(settings({{"id", "1"}}))};
  std::unique_ptr<Led> supplyLed_{supplies_->newLed(settings({{"id", "1"}, {"type", "psu"}}))};
};

TEST_F(PanelBeacons, BlinkInStepForTenTicks) {
  EXPECT_EQ(trayLed_->setLightSetting(PL_LED_BEACON), 0);
  tick();  // the second one joins in a phase that runs
  EXPECT_EQ(supplyLed_->setLightSetting(PL_LED_BEACON), 0);
  for (int i = 0; i < 10; ++i) {
    tick();
    const bool lit = i % 2 == 0;
    EXPECT_EQ(trayLit(), lit) << "tick " << i;
    EXPECT_EQ(supplyLit(), lit) << "tick " << i;
  }
}

TEST_F(PanelBeacons, ArmTheTimerOnceAndThenWithEachTick) {
  EXPECT_THAT(host().timer().intervals, IsEmpty());
  trayLed_->setLightSetting(PL_LED_BEACON);
  supplyLed_->setLightSetting(PL_LED_BEACON);
  EXPECT_THAT(host().timer().intervals, ElementsAre(1000u));
  tick();
  EXPECT_THAT(host().timer().intervals, ElementsAre(1000u, 1000u));
}

TEST_F(PanelBeacons, StopTheTimerWithTheLastOfThem) {
  trayLed_->setLightSetting(PL_LED_BEACON);
  supplyLed_->setLightSetting(PL_LED_BEACON);
  trayLed_->setLightSetting(PL_LED_OFF);
  tick();
  EXPECT_TRUE(host().timer().armed);
  supplyLed_->setLightSetting(PL_LED_GOOD);
  tick();
  EXPECT_FALSE(host().timer().armed);
  EXPECT_FALSE(trayLit());
  EXPECT_TRUE(supplyLit());
}

TEST_F(PanelBeacons, StartTheTimerAgain) {
  trayLed_->setLightSetting(PL_LED_BEACON);
  trayLed_->setLightSetting(PL_LED_OFF);
  tick();
  EXPECT_FALSE(host().timer().armed);
  supplyLed_->setLightSetting(PL_LED_BEACON);
  EXPECT_TRUE(host().timer().armed);
  tick();
  EXPECT_TRUE(supplyLit());
}

TEST_F(PanelBeacons, CostOneReadAndOneWriteATick) {
  trayLed_->setLightSetting(PL_LED_BEACON);
  supplyLed_->setLightSetting(PL_LED_BEACON);
  tray_.forgetBatches();
  supply_.forgetBatches();
  tick();
  EXPECT_EQ(tray_.batches().size(), 2u);
  EXPECT_EQ(supply_.batches().size(), 2u);
}

}  // namespace
