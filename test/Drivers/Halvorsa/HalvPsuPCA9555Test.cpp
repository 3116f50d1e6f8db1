// SPDX-License-Identifier: Apache-2.0
#include "Drivers/Halvorsa/HalvPsuPCA9555.hpp"

#include <gmock/gmock.h>

#include "test/support/Check.hpp"
#include "test/support/Device.hpp"
#include "test/support/FakeHam.hpp"
#include "test/support/FaultyHam.hpp"
#include "test/support/Host.hpp"
#include "test/support/LibraryClock.hpp"
#include "test/support/ScriptedHam.hpp"

namespace {

using namespace std::chrono_literals;
using Component::LogicalDevice::Led;
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
using Drivers::HalvPsuPCA9555;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

namespace Op = Doubles::Op;

constexpr const char* kUnit = "Drivers/Halvorsa/HalvPsuPCA9555";
constexpr uint32_t kInputs = 0;
constexpr uint32_t kOutputs = 3;

// Start.

TEST(PsuExpanderStart, SetsDirectionsAndHoldsTheEepromResetsAt0) {
  ScriptedHam ham;
  const auto device = made<HalvPsuPCA9555>(ham);
  EXPECT_THAT(host().traces, ElementsAre(Trace{0, "Creating Halv Psu PCA9555 Device"}));
  host().traces.clear();
  ham.expect({Op::write8(6, 0xFF), Op::write8(7, 0x00)});
  ham.expect({Op::read8(3).gives(0xFF)});
  ham.expect({Op::write8(3, 0xFC)});
  device->init();
  EXPECT_THAT(host().texts(0), IsEmpty());
}

TEST(PsuExpanderStart, GoesOnWhenTheDirectionsFail) {
  FakeHam fake;
  FaultyHam ham(fake);
  fake.set8(kOutputs, 0x0F);
  const auto device = made<HalvPsuPCA9555>(ham);
  ham.failNext(6);
  host().traces.clear();
  device->init();
  EXPECT_THAT(host().texts(0), ElementsAre("Error: Failed to write PCA9555 pin configuration"));
  EXPECT_EQ(fake.value8(kOutputs), 0x0C);
}

TEST(PsuExpanderStart, ReportsResetsThatCannotBeWritten) {
  FakeHam fake;
  FaultyHam ham(fake);
  fake.set8(kOutputs, 0);
  const auto device = made<HalvPsuPCA9555>(ham);
  ham.failAt(2, 6);
  host().traces.clear();
  device->init();
  EXPECT_THAT(host().texts(0),
              ElementsAre("Error: status 6 writing to GPIOExpander",
                          "Error: Failed to write default bits for PSU EEPROM Reset"));
}

TEST(PsuExpanderStart, HasItsSimulatedRegisters) {
  FakeHam fake;
  EXPECT_EQ(made<HalvPsuPCA9555>(fake)->expectedValues(), &HalvPsuPCA9555::values);
  EXPECT_THAT(simulatedBytes(HalvPsuPCA9555::values), ElementsAre(Pair(0, 0x34), Pair(3, 0x40)));
}

class PsuExpander : public testing::Test {
 protected:
  PsuExpander() {
    fake_.set8(kInputs, 0);
    fake_.set8(kOutputs, 0);
    Led::createBlinkTimer();
    host().traces.clear();
  }

  std::unique_ptr<Led> led(const char* id, const char* type) {
    return std::unique_ptr<Led>(device_->newLed(settings({{"id", id}, {"type", type}})));
  }

  FakeHam fake_;
  FaultyHam faulty_{fake_};
  LibraryClock clock_;
  std::unique_ptr<HalvPsuPCA9555> device_ = made<HalvPsuPCA9555>(faulty_);
};

// Lines.

struct Line {
  const char* name;
  pl_status (HalvPsuPCA9555::*get)(uint8_t, bool*);
  uint8_t psu;
  uint8_t mask;
};
constexpr Line kLines[] = {
    {"PSU 1 power", &HalvPsuPCA9555::getPowerOk, 1, 0x02},
    {"PSU 2 power", &HalvPsuPCA9555::getPowerOk, 2, 0x10},
    {"PSU 1 AC", &HalvPsuPCA9555::getAcOk, 1, 0x40},
    {"PSU 2 AC", &HalvPsuPCA9555::getAcOk, 2, 0x80},
};

TEST_F(PsuExpander, ReadsEachLineFromItsPin) {
  for (const Line& line : kLines) {
    SCOPED_TRACE(line.name);
    bool ok = false;
    clock_.advance(3s);
    fake_.set8(kInputs, line.mask);
    EXPECT_EQ((*device_.*line.get)(line.psu, &ok), 0);
    EXPECT_TRUE(ok);
    clock_.advance(3s);
    fake_.set8(kInputs, static_cast<uint8_t>(~line.mask));
    EXPECT_EQ((*device_.*line.get)(line.psu, &ok), 0);
    EXPECT_FALSE(ok);
  }
}

TEST_F(PsuExpander, ReadsItsLinesOnceWithin2Seconds) {
  bool ok;
  device_->getPowerOk(2, &ok);
  clock_.advance(2s);
  device_->getPowerOk(2, &ok);
  device_->getAcOk(1, &ok);
  EXPECT_THAT(fake_.batches(), ElementsAre(Operations{Op::read8(0)}));
  clock_.advance(1ns);
  device_->getPowerOk(2, &ok);
  EXPECT_EQ(fake_.batches().size(), 2u);
}

TEST_F(PsuExpander, ReportsALineThatCannotBeRead) {
  bool ok = true;
  faulty_.failAlways(6);
  EXPECT_EQ(device_->getPowerOk(1, &ok), 6);
  EXPECT_EQ(device_->getAcOk(2, &ok), 6);
  EXPECT_TRUE(ok);
}

TEST_F(PsuExpander, StopsOnASupplyThatIsNone) {
  constexpr const char* kText = "1 <= psuId && psuId <= 2";
  bool ok;
  EXPECT_CHECK(device_->getPowerOk(0, &ok), kUnit, kText);
  EXPECT_CHECK(device_->getPowerOk(3, &ok), kUnit, kText);
  EXPECT_CHECK(device_->getAcOk(0, &ok), kUnit, kText);
  EXPECT_CHECK(device_->getAcOk(3, &ok), kUnit, kText);
}

// Making LEDs.

TEST_F(PsuExpander, MakesLedsByType) {
  EXPECT_NE(dynamic_cast<HalvPsuPCA9555::PsuLed*>(led("2", "psu").get()), nullptr);
  EXPECT_NE(dynamic_cast<HalvPsuPCA9555::MultiFanLed*>(led("1", "multifan").get()), nullptr);
  EXPECT_THAT(host().traces,
              ElementsAre(Trace{5, "creating new HalvPCA9555 psu LED with id 2"},
                          Trace{5, "creating new HalvPCA9555 multifan LED with id 1"}));
}

TEST_F(PsuExpander, MakesNoLedOfAnotherType) {
  EXPECT_EQ(led("1", "fan"), nullptr);
  EXPECT_EQ(led("1", "PSU"), nullptr);
  EXPECT_THAT(host().traces,
              ElementsAre(Trace{0, "Error: failed to find driverArg for HalvPsuPCA9555::newLed"},
                          Trace{0, "Error: failed to find driverArg for HalvPsuPCA9555::newLed"}));
}

TEST_F(PsuExpander, WantsAnLedsIdAndThenItsType) {
  EXPECT_CHECK(device_->newLed(settings({{"type", "psu"}})), kUnit,
               "args.driverArgs.find( \"id\" ) != args.driverArgs.end()");
  EXPECT_CHECK(device_->newLed(settings({{"id", "1"}})), kUnit, "it != args.driverArgs.end()");
}

TEST_F(PsuExpander, StopsOnAnLedThatIsNone) {
  constexpr const char* kText = "1 <= ledId && ledId <= 2";
  EXPECT_CHECK(led("0", "psu"), kUnit, kText);
  EXPECT_CHECK(led("3", "multifan"), kUnit, kText);
  EXPECT_CHECK(device_->newLed(settings({{"id", "3"}})), kUnit, kText);
}

TEST_F(PsuExpander, TakesAnLedsIdIn8Bits) {
  EXPECT_NE(led("258", "psu"), nullptr);
  EXPECT_TRUE(host().traced(5, "creating new HalvPCA9555 psu LED with id 2"));
}

// Lighting LEDs.

struct LedPins {
  const char* id;
  const char* type;
  uint8_t green;
  uint8_t red;
};
constexpr LedPins kLeds[] = {
    {"1", "psu", 0x04, 0x08},
    {"2", "psu", 0x10, 0x20},
    {"1", "multifan", 0x40, 0x80},
    {"2", "multifan", 0x40, 0x80},
};

TEST_F(PsuExpander, LightsEachLedAtItsPins) {
  for (const LedPins& row : kLeds) {
    SCOPED_TRACE(testing::Message() << row.type << " " << row.id);
    const auto light = led(row.id, row.type);
    const auto others = static_cast<uint8_t>(~(row.green | row.red));
    const auto lights = [&](pl_led_status setting, uint8_t before) {
      fake_.set8(kOutputs, before);
      EXPECT_EQ(light->setLightSetting(setting), 0);
      return fake_.value8(kOutputs);
    };
    for (const uint8_t other : {uint8_t{0}, others}) {
      const auto all = static_cast<uint8_t>(other | row.green | row.red);
      for (const uint8_t before : {other, all}) {
        EXPECT_EQ(lights(PL_LED_OFF, before), other);
        EXPECT_EQ(lights(PL_LED_GOOD, before), other | row.green);
        EXPECT_EQ(lights(PL_LED_WARNING, before), other | row.red);
        EXPECT_EQ(lights(PL_LED_BAD, before), other | row.red);
        EXPECT_EQ(lights(PL_LED_BEACON, before), other);
      }
    }
    light->setLightSetting(PL_LED_OFF);
  }
}

TEST_F(PsuExpander, LightsLed2GreenWithOneReadAndOneWrite) {
  fake_.set8(kOutputs, 0x2F);
  EXPECT_EQ(led("2", "psu")->setLightSetting(PL_LED_GOOD), 0);
  EXPECT_THAT(fake_.batches(),
              ElementsAre(Operations{Op::read8(3)}, Operations{Op::write8(3, 0x1F)}));
}

TEST_F(PsuExpander, GoesFromRedToABeaconToDark) {
  const auto light = led("1", "psu");
  EXPECT_EQ(light->setLightSetting(PL_LED_BAD), 0);
  EXPECT_EQ(fake_.value8(kOutputs), 0x08);
  EXPECT_EQ(light->setLightSetting(PL_LED_BEACON), 0);
  EXPECT_EQ(fake_.value8(kOutputs), 0x00);
  host().fire(host().timer());
  EXPECT_EQ(fake_.value8(kOutputs), 0x00);
  host().fire(host().timer());
  EXPECT_EQ(fake_.value8(kOutputs), 0x04);
  EXPECT_EQ(light->setLightSetting(PL_LED_OFF), 0);
  EXPECT_EQ(fake_.value8(kOutputs), 0x00);
  host().fire(host().timer());
  EXPECT_FALSE(host().timer().armed);
}

TEST_F(PsuExpander, BlinksGreen) {
  const auto light = led("1", "psu");
  EXPECT_TRUE(light->handleBlinkTimer(true));
  EXPECT_EQ(fake_.value8(kOutputs), 0x04);
  EXPECT_TRUE(light->handleBlinkTimer(false));
  EXPECT_EQ(fake_.value8(kOutputs), 0x00);
}

TEST_F(PsuExpander, BlinksOnWhenATickFails) {
  const auto light = led("2", "psu");
  faulty_.failAt(1, 6);
  EXPECT_TRUE(light->handleBlinkTimer(true));
  EXPECT_EQ(host().traces.back(), (Trace{0, "Error: failed to toggle led 1 for blinking"}));
}

TEST_F(PsuExpander, ReportsALightThatCannotBeWritten) {
  faulty_.failAt(1, 6);
  EXPECT_EQ(led("1", "psu")->setLightSetting(PL_LED_GOOD), 6);
}

TEST_F(PsuExpander, SucceedsInLightingNothingWhenItsBankCannotBeRead) {
  faulty_.failOn(kOutputs, 6);
  EXPECT_EQ(led("1", "psu")->setLightSetting(PL_LED_GOOD), 0);
  EXPECT_THAT(fake_.batches(), IsEmpty());
  EXPECT_TRUE(host().traced(0, "Error: status 6 while reading output bank 1"));
}

TEST_F(PsuExpander, TracesASettingThatItsLedsLackAsAnError) {
  const auto light = led("2", "multifan");
  EXPECT_EQ(light->setLightSetting(PL_LED_UNKNOWN), 3);
  EXPECT_EQ(light->setLightSetting(7), 3);
  EXPECT_THAT(host().texts(0), ElementsAre("led 1 was given an unexpected setting 5",
                                           "led 1 was given an unexpected setting 7"));
  EXPECT_THAT(fake_.batches(), IsEmpty());
}

TEST_F(PsuExpander, AsksForTheBlinkTimer) { EXPECT_TRUE(led("1", "psu")->needsBlinkTimer); }

}  // namespace
