// SPDX-License-Identifier: Apache-2.0
#include "Drivers/Halvorsa/HalvorsaPCA9555.hpp"

#include <gmock/gmock.h>

#include <cstdlib>

#include "test/support/Check.hpp"
#include "test/support/Device.hpp"
#include "test/support/FakeHam.hpp"
#include "test/support/FaultyHam.hpp"
#include "test/support/Host.hpp"
#include "test/support/LibraryClock.hpp"
#include "test/support/OutOfMemory.hpp"
#include "test/support/Presence.hpp"
#include "test/support/ScriptedHam.hpp"

namespace {

using namespace std::chrono_literals;
using Component::LogicalDevice::Led;
using Component::LogicalDevice::Slot;
using Doubles::FakeHam;
using Doubles::FaultyHam;
using Doubles::host;
using Doubles::LibraryClock;
using Doubles::made;
using Doubles::Operations;
using Doubles::ScriptedHam;
using Doubles::settings;
using Doubles::simulatedBytes;
using Doubles::Trace;
using Drivers::ArgMap;
using Drivers::HalvorsaPCA9555;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

namespace Op = Doubles::Op;

constexpr const char* kUnit = "Drivers/Halvorsa/HalvorsaPCA9555";
constexpr const char* kRequired = "it != args.driverArgs.end()";
constexpr uint32_t kPresence = 0;
constexpr uint32_t kAirflow = 1;
constexpr uint32_t kOutputs = 3;

// Start.

TEST(TrayExpanderStart, WritesTheDirectionsAndNoOutput) {
  ScriptedHam ham;
  const auto device = made<HalvorsaPCA9555>(ham, {{"bank-io-0", "255"}, {"bank-io-1", "271"}});
  EXPECT_THAT(host().traces, ElementsAre(Trace{0, "Creating Halvorsa PCA9555 Device"}));
  ham.expect({Op::write8(6, 0xFF), Op::write8(7, 0x0F)});
  device->init();
}

TEST(TrayExpanderStart, WantsBothDirections) {
  const Trace creating{0, "Creating Halvorsa PCA9555 Device"};
  EXPECT_CHECK_AFTER(HalvorsaPCA9555::create(settings({{"bank-io-1", "0"}}), nullptr), creating,
                     kUnit, kRequired);
  EXPECT_CHECK_AFTER(HalvorsaPCA9555::create(settings({{"bank-io-0", "0"}}), nullptr), creating,
                     kUnit, kRequired);
}

TEST(TrayExpanderStart, HasItsSimulatedRegisters) {
  FakeHam fake;
  const auto device = made<HalvorsaPCA9555>(fake, {{"bank-io-0", "0"}, {"bank-io-1", "0"}});
  EXPECT_EQ(device->expectedValues(), &HalvorsaPCA9555::values);
  EXPECT_THAT(simulatedBytes(HalvorsaPCA9555::values),
              ElementsAre(Pair(0, 0x8B), Pair(1, 0x0F), Pair(3, 0x8F)));
}

class TrayExpander : public testing::Test {
 protected:
  TrayExpander() {
    fake_.set8(kPresence, 0);
    fake_.set8(kAirflow, 0);
    fake_.set8(kOutputs, 0);
    Led::createBlinkTimer();
    host().traces.clear();
  }

  static ArgMap slotArgs(const char* fanId = "1") {
    return {{"fanId", fanId},
            {"fanFdl", "{modelName}: {airflowDirection} at {maxRpm}"},
            {"rpmF2B", "11000"},
            {"rpmB2F", "9000"},
            {"modelName", "TRAY-7"}};
  }
  static ArgMap slotArgsWithout(const char* key) {
    ArgMap args = slotArgs();
    args.erase(key);
    return args;
  }
  std::unique_ptr<Slot> slot(const char* fanId = "1") {
    std::unique_ptr<Slot> made(device_->newSlot(settings(slotArgs(fanId))));
    host().traces.clear();
    return made;
  }
  std::unique_ptr<Led> led(const char* id) {
    std::unique_ptr<Led> made(device_->newLed(settings({{"id", id}})));
    host().traces.clear();
    return made;
  }

  // What the host gets: the status, and the descriptor that it frees.
  Doubles::Presence ask(Slot& slot) {
    return Doubles::presenceBy([&](char** descriptor) { return slot.getPresence(descriptor); });
  }
  void letCacheExpire() { clock_.advance(3s); }

  FakeHam fake_;
  FaultyHam faulty_{fake_};
  LibraryClock clock_;
  std::unique_ptr<HalvorsaPCA9555> device_ =
      made<HalvorsaPCA9555>(faulty_, {{"bank-io-0", "255"}, {"bank-io-1", "15"}});
};

const std::pair<pl_status, std::string> kFrontToBack = {0, "TRAY-7: frontToBackAirflow at 11000"};
const std::pair<pl_status, std::string> kBackToFront = {0, "TRAY-7: backToFrontAirflow at 9000"};
const std::pair<pl_status, std::string> kEmpty = {1, "none"};

// Making slots.

TEST_F(TrayExpander, TracesANewSlot) {
  const std::unique_ptr<Slot> made(device_->newSlot(settings(slotArgs("4"))));
  EXPECT_THAT(host().traces,
              ElementsAre(Trace{0, "Creating new HalvorsaPCA9555 Slot for Fan id 4"}));
}

TEST_F(TrayExpander, WantsEverySlotArgument) {
  EXPECT_CHECK(device_->newSlot(settings(slotArgsWithout("fanId"))), kUnit, kRequired);
  EXPECT_CHECK(device_->newSlot(settings(slotArgsWithout("fanFdl"))), kUnit,
               "fdlIt != slotArgs_.end()");
  EXPECT_CHECK(device_->newSlot(settings(slotArgsWithout("rpmF2B"))), kUnit,
               "f2bIt != slotArgs_.end()");
  EXPECT_CHECK(device_->newSlot(settings(slotArgsWithout("rpmB2F"))), kUnit,
               "b2fIt != slotArgs_.end()");
  EXPECT_CHECK(device_->newSlot(settings(slotArgsWithout("modelName"))), kUnit,
               "modelIt != slotArgs_.end()");
}

TEST_F(TrayExpander, StopsOnATrayThatIsNone) {
  constexpr const char* kText = "1 <= fanId && fanId <= 4";
  EXPECT_CHECK_AFTER(device_->newSlot(settings(slotArgs("0"))),
                     (Trace{0, "Creating new HalvorsaPCA9555 Slot for Fan id 0"}), kUnit, kText);
  EXPECT_CHECK_AFTER(device_->newSlot(settings(slotArgs("5"))),
                     (Trace{0, "Creating new HalvorsaPCA9555 Slot for Fan id 5"}), kUnit, kText);
}

TEST_F(TrayExpander, TakesATraysIndexIn8Bits) {
  fake_.set8(kPresence, 0xEF);
  const std::unique_ptr<Slot> made(device_->newSlot(settings(slotArgs("257"))));
  EXPECT_TRUE(host().traced(0, "Creating new HalvorsaPCA9555 Slot for Fan id 257"));
  EXPECT_EQ(ask(*made), kFrontToBack);
}

// Presence.

struct Tray {
  const char* fanId;
  uint8_t presence;  // in register 0, 0 is present
  uint8_t airflow;   // in register 1, 1 is back to front
};
constexpr Tray kTrays[] = {
    {"1", 0x10, 0x01},
    {"2", 0x20, 0x02},
    {"3", 0x40, 0x04},
    {"4", 0x80, 0x08},
};

TEST_F(TrayExpander, FindsEachTrayAtItsPins) {
  for (const Tray& tray : kTrays) {
    SCOPED_TRACE(tray.fanId);
    const auto bay = slot(tray.fanId);
    fake_.set8(kPresence, tray.presence);
    letCacheExpire();
    EXPECT_EQ(ask(*bay), kEmpty);
    fake_.set8(kPresence, static_cast<uint8_t>(~tray.presence));
    fake_.set8(kAirflow, tray.airflow);
    letCacheExpire();
    EXPECT_EQ(ask(*bay), kBackToFront);
    fake_.set8(kAirflow, static_cast<uint8_t>(~tray.airflow));
    letCacheExpire();
    EXPECT_EQ(ask(*bay), kFrontToBack);
  }
}

TEST_F(TrayExpander, AsksTheChipOnceWithin2Seconds) {
  const auto bay = slot();
  ask(*bay);
  clock_.advance(2s);
  ask(*bay);
  EXPECT_THAT(fake_.batches(), ElementsAre(Operations{Op::read8(0)}, Operations{Op::read8(1)}));
}

TEST_F(TrayExpander, TracesTheDescriptorItBuildsAndTheOneItKeeps) {
  const auto bay = slot("3");
  EXPECT_EQ(ask(*bay), kFrontToBack);
  EXPECT_EQ(host().traces.back(), (Trace{5, "fan 2 fdl: TRAY-7: frontToBackAirflow at 11000"}));
  host().traces.clear();
  EXPECT_EQ(ask(*bay), kFrontToBack);
  EXPECT_EQ(host().traces.back(), (Trace{5, "Using cached fdl for fan 2"}));
  EXPECT_FALSE(host().traced(5, "FormatFdl::set( 'modelName', 'TRAY-7' )"));
}

TEST_F(TrayExpander, FillsTheTemplateInOrder) {
  ask(*slot());
  std::vector<Trace> fills;
  for (const Trace& trace : host().traces) {
    if (trace.text.find("FormatFdl") == 0) {
      fills.push_back(trace);
    }
  }
  EXPECT_THAT(fills,
              ElementsAre(Trace{5, "FormatFdl::set( 'airflowDirection', 'frontToBackAirflow' )"},
                          Trace{5, "FormatFdl::set( 'maxRpm', '11000' )"},
                          Trace{5, "FormatFdl::set( 'modelName', 'TRAY-7' )"}));
}

TEST_F(TrayExpander, BuildsAnewWhenTheAirflowChanges) {
  const auto bay = slot();
  EXPECT_EQ(ask(*bay), kFrontToBack);
  fake_.set8(kAirflow, 0x01);
  letCacheExpire();
  EXPECT_EQ(ask(*bay), kBackToFront);
}

TEST_F(TrayExpander, ForgetsTheDescriptorOfATrayThatIsPulled) {
  const auto bay = slot();
  ask(*bay);
  fake_.set8(kPresence, 0x10);
  letCacheExpire();
  EXPECT_EQ(ask(*bay), kEmpty);
  fake_.set8(kPresence, 0x00);
  letCacheExpire();
  EXPECT_EQ(ask(*bay), kFrontToBack);
  EXPECT_FALSE(host().traced(5, "Using cached fdl for fan 0"));
}

TEST_F(TrayExpander, GivesEachCallerACopyOfItsOwn) {
  const auto bay = slot();
  char* first = nullptr;
  char* second = nullptr;
  EXPECT_EQ(bay->getPresence(&first), 0);
  EXPECT_EQ(bay->getPresence(&second), 0);
  first[0] = '?';
  EXPECT_EQ(second, kFrontToBack.second);
  std::free(first);
  std::free(second);
}

TEST_F(TrayExpander, ReportsPresenceThatCannotBeRead) {
  faulty_.failOn(kPresence, 6);
  EXPECT_EQ(ask(*slot("2")), std::pair(6, std::string("none")));
  EXPECT_EQ(host().traces.back(), (Trace{0, "Error: status 6 reading fan 1 presence bit"}));
}

TEST_F(TrayExpander, ReportsAirflowThatCannotBeRead) {
  faulty_.failOn(kAirflow, 4);
  EXPECT_EQ(ask(*slot("4")), std::pair(4, std::string("none")));
  EXPECT_EQ(host().traces.back(), (Trace{0, "Error: status 4 reading fan 3 F2B bit"}));
}

TEST_F(TrayExpander, KeepsTheDescriptorOverAReadThatFails) {
  const auto bay = slot();
  ask(*bay);
  letCacheExpire();
  faulty_.failNext(6);
  EXPECT_EQ(ask(*bay).first, 6);
  EXPECT_EQ(ask(*bay), kFrontToBack);
  EXPECT_TRUE(host().traced(5, "Using cached fdl for fan 0"));
}

TEST_F(TrayExpander, ReportsACopyThatCannotBeMade) {
  const auto bay = slot();
  ask(*bay);
  Doubles::outOfMemory = true;
  const auto answer = ask(*bay);
  Doubles::outOfMemory = false;
  EXPECT_EQ(answer, std::pair(6, std::string("none")));
  EXPECT_EQ(host().traces.back(), (Trace{0, "Error: HalvorsaPCA9555::FanSlot strdup failed"}));
}

// Making LEDs.

TEST_F(TrayExpander, TracesANewLed) {
  const std::unique_ptr<Led> made(device_->newLed(settings({{"id", "5"}})));
  EXPECT_THAT(host().traces, ElementsAre(Trace{5, "Creating new PCA9555 LED for fan id 5"}));
  EXPECT_TRUE(made->needsBlinkTimer);
}

TEST_F(TrayExpander, WantsAnLedsId) {
  EXPECT_CHECK(device_->newLed(settings({})), kUnit,
               "args.driverArgs.find( \"id\" ) != args.driverArgs.end()");
}

TEST_F(TrayExpander, StopsOnAnLedThatIsNone) {
  constexpr const char* kText = "fanId >= 1 && fanId <= 5";
  EXPECT_CHECK_AFTER(device_->newLed(settings({{"id", "0"}})),
                     (Trace{5, "Creating new PCA9555 LED for fan id 0"}), kUnit, kText);
  EXPECT_CHECK_AFTER(device_->newLed(settings({{"id", "6"}})),
                     (Trace{5, "Creating new PCA9555 LED for fan id 6"}), kUnit, kText);
}

// Lighting LEDs.

struct LedPin {
  const char* id;
  uint8_t mask;  // in register 3, 1 is lit
};
constexpr LedPin kLeds[] = {{"1", 0x10}, {"2", 0x20}, {"3", 0x40}, {"4", 0x80}};

TEST_F(TrayExpander, LightsEachLedAtItsPin) {
  for (const LedPin& row : kLeds) {
    SCOPED_TRACE(row.id);
    const auto light = led(row.id);
    const auto lights = [&](pl_led_status setting, uint8_t before) {
      fake_.set8(kOutputs, before);
      EXPECT_EQ(light->setLightSetting(setting), 0);
      return fake_.value8(kOutputs);
    };
    const auto others = static_cast<uint8_t>(~row.mask);
    EXPECT_EQ(lights(PL_LED_OFF, 0xFF), others);
    EXPECT_EQ(lights(PL_LED_GOOD, 0xFF), others);
    EXPECT_EQ(lights(PL_LED_BEACON, 0xFF), others);
    EXPECT_EQ(lights(PL_LED_WARNING, 0x00), row.mask);
    EXPECT_EQ(lights(PL_LED_BAD, 0x00), row.mask);
  }
}

TEST_F(TrayExpander, CostsOneReadAndOneWriteToLight) {
  EXPECT_EQ(led("1")->setLightSetting(PL_LED_BAD), 0);
  EXPECT_THAT(fake_.batches(),
              ElementsAre(Operations{Op::read8(3)}, Operations{Op::write8(3, 0x10)}));
}

TEST_F(TrayExpander, ChangesNothingForASettingThatItsLedsLack) {
  const auto light = led("3");
  EXPECT_EQ(light->setLightSetting(PL_LED_INACTIVE), 3);
  EXPECT_EQ(light->setLightSetting(PL_LED_UNKNOWN), 3);
  EXPECT_EQ(light->setLightSetting(7), 3);
  EXPECT_THAT(fake_.batches(), IsEmpty());
  EXPECT_TRUE(host().traced(6, "led 2 was given an unexpected setting 4"));
  EXPECT_TRUE(host().traced(6, "led 2 was given an unexpected setting 5"));
  EXPECT_TRUE(host().traced(6, "led 2 was given an unexpected setting 7"));
}

TEST_F(TrayExpander, ReportsALightThatCannotBeWritten) {
  faulty_.failAt(1, 6);
  EXPECT_EQ(led("1")->setLightSetting(PL_LED_BAD), 6);
}

TEST_F(TrayExpander, SucceedsInLightingNothingWhenItsBankCannotBeRead) {
  faulty_.failOn(kOutputs, 6);
  EXPECT_EQ(led("1")->setLightSetting(PL_LED_BAD), 0);
  EXPECT_THAT(fake_.batches(), IsEmpty());
}

TEST_F(TrayExpander, BlinksWithOneReadAndOneWriteATick) {
  const auto light = led("2");
  EXPECT_TRUE(light->handleBlinkTimer(true));
  EXPECT_EQ(fake_.value8(kOutputs), 0x20);
  EXPECT_TRUE(light->handleBlinkTimer(false));
  EXPECT_EQ(fake_.value8(kOutputs), 0x00);
  EXPECT_EQ(fake_.batches().size(), 4u);
}

TEST_F(TrayExpander, StopsOnATickThatCannotBeWritten) {
  const auto light = led("1");
  faulty_.failAt(1, 6);
  EXPECT_CHECK_AFTER(light->handleBlinkTimer(true),
                     (Trace{0, "Error: status 6 writing to GPIOExpander"}), kUnit,
                     "status == PL_STATUS_OK");
}

TEST_F(TrayExpander, BlinksOnWhenItsBankCannotBeRead) {
  faulty_.failOn(kOutputs, 6);
  EXPECT_TRUE(led("1")->handleBlinkTimer(true));
  EXPECT_THAT(fake_.batches(), IsEmpty());
}

// LED 5, whose pin the chip does not have.

TEST_F(TrayExpander, RefusesLed5ToTheHostAndTouchesNothing) {
  const auto light = led("5");
  pl_led* record = light->record();
  for (const pl_led_status setting : {PL_LED_OFF, PL_LED_GOOD, PL_LED_WARNING, PL_LED_BAD}) {
    EXPECT_EQ(record->ops->set_light_setting(record, setting), 5) << setting;
  }
  EXPECT_EQ(record->ops->set_light_setting(record, PL_LED_INACTIVE), 3);
  EXPECT_THAT(fake_.batches(), IsEmpty());
}

TEST_F(TrayExpander, BlinksLed5WithoutTouchingAnything) {
  const auto light = led("5");
  EXPECT_EQ(light->setLightSetting(PL_LED_BEACON), 5);
  host().fire(host().timer());
  host().fire(host().timer());
  EXPECT_TRUE(host().timer().armed);
  EXPECT_EQ(light->setLightSetting(PL_LED_OFF), 5);
  EXPECT_THAT(fake_.batches(), IsEmpty());
}

}  // namespace
