// SPDX-License-Identifier: Apache-2.0
#include "Drivers/Halvorsa/HalvorsaPsoc.hpp"

#include <gmock/gmock.h>

#include <memory>
#include <stdexcept>

#include "Utils/Bytes.hpp"
#include "Utils/NotImplemented.hpp"
#include "test/support/Check.hpp"
#include "test/support/FakeHam.hpp"
#include "test/support/FaultyHam.hpp"
#include "test/support/Host.hpp"
#include "test/support/ScriptedHam.hpp"

namespace {

using Doubles::FakeHam;
using Doubles::FaultyHam;
using Doubles::host;
using Doubles::Operations;
using Doubles::ScriptedHam;
using Doubles::Trace;
using Drivers::DriverArgs;
using Drivers::HalvorsaPsoc;
using testing::ElementsAre;
using testing::IsEmpty;

namespace Op = Doubles::Op;

constexpr const char* kUnit = "Drivers/Halvorsa/HalvorsaPsoc";
constexpr uint32_t kStall = 0x32;
constexpr uint32_t kDuty = 0x3C;

DriverArgs with(Drivers::ArgMap driverArgs) {
  DriverArgs args;
  args.driverArgs = std::move(driverArgs);
  return args;
}

using FanPtr = std::unique_ptr<Component::LogicalDevice::Fan>;
using SensorPtr = std::unique_ptr<Component::LogicalDevice::TempSensor>;

// A PSoC that has started over a fake HAM; the traces of that are forgotten.
class Psoc : public testing::Test {
 protected:
  Psoc() : device_(HalvorsaPsoc::create(DriverArgs(), nullptr)) {
    device_->ham = &faulty_;
    device_->init();
    fake_.forgetBatches();
    host().traces.clear();
  }

  void poll() { host().fire(host().timer()); }
  FanPtr fan(const char* id, const char* offset = "0", const char* pwmMaster = "true",
             const char* maxRpm = "10000") {
    FanPtr made(device_->newFan(with({{"fanId", id},
                                      {"maxRpm", maxRpm},
                                      {"registerOffset", offset},
                                      {"pwmMaster", pwmMaster}})));
    host().traces.clear();
    return made;
  }
  SensorPtr sensor(const char* id, const char* reg) {
    SensorPtr made(device_->newTempSensor(with({{"sensorId", id}, {"register", reg}})));
    host().traces.clear();
    return made;
  }

  FakeHam fake_;
  FaultyHam faulty_{fake_};
  std::unique_ptr<Component::HardwareDevice> device_;
};

// Start and end.

TEST(PsocStart, MakesItsTimerAndThenConfigures) {
  ScriptedHam ham;
  ham.expect({Op::write8(0x33, 0x01), Op::write8(0x30, 0x01), Op::write8(0x31, 0xFF)});
  const std::unique_ptr<Component::HardwareDevice> device(
      HalvorsaPsoc::create(DriverArgs(), nullptr));
  EXPECT_THAT(host().traces,
              ElementsAre(Trace{0, "Creating HalvorsaPsoc Device"}, Trace{0, "creating timer"}));
  EXPECT_THAT(host().timer().intervals, IsEmpty());
  device->ham = &ham;
  host().traces.clear();
  device->init();
  EXPECT_THAT(host().traces, ElementsAre(Trace{0, "setting polling interval to 1000ms"}));
  EXPECT_THAT(host().timer().intervals, ElementsAre(1000u));
}

TEST(PsocStart, GoesOnWhenItCannotConfigure) {
  FakeHam fake;
  FaultyHam ham(fake);
  ham.failNext(6);
  const std::unique_ptr<Component::HardwareDevice> device(
      HalvorsaPsoc::create(DriverArgs(), nullptr));
  device->ham = &ham;
  device->init();
  EXPECT_TRUE(host().traced(0, "HalvorsaPsoc init: failed to write configuration"));
  EXPECT_TRUE(host().timer().armed);
}

TEST(PsocStart, StopsWhenItCannotPoll) {
  FakeHam fake;
  const std::unique_ptr<Component::HardwareDevice> device(
      HalvorsaPsoc::create(DriverArgs(), nullptr));
  device->ham = &fake;
  host().timerSetStatus = 1;
  EXPECT_CHECK_AFTER(device->init(), (Trace{0, "failed to set timer interval"}), kUnit,
                     "pollStart()");
}

TEST_F(Psoc, StartsPollingOnce) {
  device_->init();
  EXPECT_THAT(host().timer().intervals, ElementsAre(1000u));
  EXPECT_THAT(host().traces, IsEmpty());
}

TEST_F(Psoc, GivesItsTimerBack) {
  device_.reset();
  EXPECT_THAT(host().traces, ElementsAre(Trace{0, "destroying timer"}));
  EXPECT_TRUE(host().timer().deleted);
}

TEST_F(Psoc, HasFansAndTemperaturesOnly) {
  EXPECT_THROW(device_->newPsu(DriverArgs()), NotImplementedException);
  EXPECT_THROW(device_->newSlot(DriverArgs()), NotImplementedException);
  EXPECT_THROW(device_->newLed(DriverArgs()), NotImplementedException);
}

// Polling.

TEST_F(Psoc, PollsTheStallFlagsEverySecond) {
  fake_.set8(kStall, 0);
  poll();
  poll();
  EXPECT_THAT(fake_.batches(),
              ElementsAre(Operations{Op::read8(kStall)}, Operations{Op::read8(kStall)}));
  EXPECT_THAT(host().timer().intervals, ElementsAre(1000u, 1000u, 1000u));
  EXPECT_THAT(host().traces,
              ElementsAre(Trace{6, "pollCallbackWrapper"}, Trace{6, "pollCallbackWrapper"}));
}

TEST_F(Psoc, TracesAPollThatFailsAndPollsOn) {
  faulty_.failOn(kStall, 6);
  poll();
  EXPECT_TRUE(host().traced(0, "Error status 6 reading fan stall alert register"));
  EXPECT_TRUE(host().timer().armed);
}

TEST_F(Psoc, TakesNoFanForStalledAfterAPollThatFails) {
  fake_.set8(kStall, 0xFF);
  fake_.set16(0x40, 0x0100);
  poll();
  faulty_.failOn(kStall, 6);
  poll();
  int rpm = 0;
  EXPECT_EQ(fan("1")->getRpm(&rpm), 0);
}

// Fan speeds.

TEST_F(Psoc, ReportsNoStallBeforeTheFirstPoll) {
  fake_.set8(kStall, 0xFF);
  fake_.set16(0x40, 0xFE1F);
  int rpm = 0;
  EXPECT_EQ(fan("1")->getRpm(&rpm), 0);
  EXPECT_EQ(rpm, 8190);
}

TEST_F(Psoc, ReportsAStalledFanWithoutTouchingTheBus) {
  fake_.set8(kStall, 0x01);
  poll();
  fake_.forgetBatches();
  const FanPtr first = fan("1");
  int rpm = 77;
  EXPECT_EQ(first->getRpm(&rpm), 2);
  EXPECT_EQ(rpm, 77);
  EXPECT_THAT(fake_.batches(), IsEmpty());
  EXPECT_THAT(host().traces, ElementsAre(Trace{0, "Fan 0 stalled"}));
}

TEST_F(Psoc, ReadsAFanBesideAStalledOne) {
  fake_.set8(kStall, 0x01);
  fake_.set16(0x42, 0xFE1F);
  poll();
  int rpm = 0;
  EXPECT_EQ(fan("2", "1")->getRpm(&rpm), 0);
  EXPECT_EQ(rpm, 8190);
}

TEST_F(Psoc, LooksAtTheStallBitOfTheFanNotOfItsRegister) {
  fake_.set8(kStall, 0x08);
  poll();
  int rpm = 0;
  EXPECT_EQ(fan("4", "0")->getRpm(&rpm), 2);
}

TEST_F(Psoc, ReadsASpeedMostSignificantByteFirst) {
  fake_.set16(0x44, 0xFF56);
  const FanPtr third = fan("3", "2");
  int rpm = 0;
  EXPECT_EQ(third->getRpm(&rpm), 0);
  EXPECT_EQ(rpm, 22271);
  EXPECT_THAT(fake_.batches(), ElementsAre(Operations{Op::read16(0x44)}));
  EXPECT_THAT(host().traces, ElementsAre(Trace{5, "HalvorsaPsoc::getFanRpm -- id: 2, rpm: 22271"}));
}

TEST_F(Psoc, ReportsASpeedThatCannotBeRead) {
  faulty_.failOn(0x46, 4);
  const FanPtr fourth = fan("4", "3");
  int rpm = 77;
  EXPECT_EQ(fourth->getRpm(&rpm), 4);
  EXPECT_EQ(rpm, 77);
  EXPECT_THAT(host().traces,
              ElementsAre(Trace{0, "Error: failed to read from fan 3 speed register 70"}));
}

TEST_F(Psoc, CutsTheSpeedRegisterTo8Bits) {
  fake_.set16(0x3E, 0x0100);  // 0x40 + 2 x 255
  int rpm = 0;
  EXPECT_EQ(fan("1", "255")->getRpm(&rpm), 0);
  EXPECT_EQ(rpm, 1);
}

// The duty cycle.

TEST_F(Psoc, SetsTheDutyCycleMostSignificantByteFirst) {
  const FanPtr master = fan("1");
  EXPECT_EQ(master->setRpm(5000), 0);
  EXPECT_THAT(fake_.batches(), ElementsAre(Operations{Op::write16(kDuty, 0x8813)}));
  EXPECT_EQ(fake_.block(kDuty), "\x13\x88");
  EXPECT_THAT(host().traces, ElementsAre(Trace{5, "Setting fan 0 rpm to 5000"}));
}

struct Request {
  int rpm;
  unsigned duty;
};

TEST_F(Psoc, CutsThePercentageTo8BitsBeforeItLimitsIt) {
  const FanPtr master = fan("1");
  for (const auto& [rpm, duty] : {Request{5000, 5000},
                                  {0, 0},
                                  {9899, 9800},
                                  {9900, 9900},
                                  {10000, 9900},
                                  {25599, 9900},
                                  {25600, 0},
                                  {30000, 4400},
                                  {-500, 9900},
                                  {-99, 0},
                                  {-20000, 5600}}) {
    ASSERT_EQ(master->setRpm(rpm), 0);
    EXPECT_EQ(Utils::swapBytes(fake_.value16(kDuty)), duty) << rpm;
  }
}

TEST_F(Psoc, LetsTheMasterAloneSetTheDutyCycle) {
  for (const char* no : {"True", "1", "false", ""}) {
    EXPECT_EQ(fan("1", "0", no)->setRpm(5000), 0) << no;
  }
  EXPECT_THAT(fake_.batches(), IsEmpty());
}

TEST_F(Psoc, TakesAFanForNoMasterUnlessItSaysSo) {
  const FanPtr plain(
      device_->newFan(with({{"fanId", "1"}, {"maxRpm", "10000"}, {"registerOffset", "0"}})));
  EXPECT_EQ(plain->setRpm(5000), 0);
  EXPECT_THAT(fake_.batches(), IsEmpty());
}

TEST_F(Psoc, ReportsADutyCycleThatCannotBeSet) {
  faulty_.failOn(kDuty, 6);
  const FanPtr master = fan("2");
  EXPECT_EQ(master->setRpm(5000), 6);
  EXPECT_THAT(host().traces,
              ElementsAre(Trace{5, "Setting fan 1 rpm to 5000"},
                          Trace{0, "Error: setting fan 1 to 5000 rpm failed with status 6"}));
}

// Making fans.

TEST_F(Psoc, TracesTheFanItMakes) {
  const FanPtr made(
      device_->newFan(with({{"fanId", "2"}, {"maxRpm", "1"}, {"registerOffset", "0"}})));
  EXPECT_THAT(host().traces, ElementsAre(Trace{0, "Creating new HalvorsaPsoc Fan id 2"}));
}

TEST_F(Psoc, WantsAFanIdFrom1To4) {
  for (const char* id : {"0", "5"}) {
    EXPECT_CHECK_AFTER(
        device_->newFan(with({{"fanId", id}, {"maxRpm", "1"}, {"registerOffset", "0"}})),
        (Trace{0, std::string("Creating new HalvorsaPsoc Fan id ") + id}), kUnit,
        "fanId >= 1 && fanId <= 4");
  }
}

TEST_F(Psoc, LooksAt8BitsOfTheFanId) {
  fake_.set8(kStall, 0x01);
  poll();
  int rpm = 0;
  EXPECT_EQ(fan("257")->getRpm(&rpm), 2);
  EXPECT_TRUE(host().traced(0, "Fan 0 stalled"));
}

TEST_F(Psoc, WantsFanIdAndMaxRpm) {
  EXPECT_CHECK(device_->newFan(with({{"maxRpm", "1"}, {"registerOffset", "0"}})), kUnit,
               "it != args.driverArgs.end()");
  EXPECT_CHECK(device_->newFan(with({{"fanId", "1"}, {"registerOffset", "0"}})), kUnit,
               "it != args.driverArgs.end()");
}

TEST_F(Psoc, ThrowsWithoutARegisterOffset) {
  EXPECT_THROW(device_->newFan(with({{"fanId", "1"}, {"maxRpm", "1"}})), std::invalid_argument);
}

// Temperatures.

TEST_F(Psoc, ReadsATemperatureAsAnUnsignedNumber) {
  fake_.set8(0x21, 0xC8);
  const SensorPtr made = sensor("1", "33");
  float celsius = 0;
  EXPECT_EQ(made->getTemperature(&celsius), 0);
  EXPECT_EQ(celsius, 200.0f);
  EXPECT_THAT(fake_.batches(), ElementsAre(Operations{Op::read8(0x21)}));
}

TEST_F(Psoc, ReportsATemperatureThatCannotBeRead) {
  faulty_.failOn(0x21, 4);
  const SensorPtr made = sensor("7", "33");
  float celsius = 36.6f;
  EXPECT_EQ(made->getTemperature(&celsius), 4);
  EXPECT_EQ(celsius, 36.6f);
  EXPECT_THAT(host().traces,
              ElementsAre(Trace{0, "Error status 4 reading temperature from Psoc sensor 7"}));
}

TEST_F(Psoc, TracesTheSensorItMakes) {
  const SensorPtr made(device_->newTempSensor(with({{"sensorId", "258"}, {"register", "32"}})));
  EXPECT_EQ(made->id(), 2);
  EXPECT_EQ(made->reg(), 32);
  EXPECT_THAT(host().traces, ElementsAre(Trace{0, "Creating HalvorsaPsoc TempSensor Device"},
                                         Trace{5, "TempSensor id=2, register=32"}));
}

TEST_F(Psoc, WantsSensorIdAndRegister) {
  EXPECT_CHECK_AFTER(device_->newTempSensor(with({{"register", "32"}})),
                     (Trace{0, "Creating HalvorsaPsoc TempSensor Device"}), kUnit,
                     "idIt != args.driverArgs.end()");
  EXPECT_CHECK(device_->newTempSensor(with({{"sensorId", "1"}})), kUnit,
               "regIt != args.driverArgs.end()");
}

// A sensor that is elsewhere: the driver asks it for its number and register.
class MovedSensor : public HalvorsaPsoc::TempSensor {
 public:
  using TempSensor::TempSensor;
  uint8_t id() const override { return 9; }
  uint8_t reg() const override { return 0x25; }
};

TEST_F(Psoc, AsksTheSensorForItsRegister) {
  fake_.set8(0x25, 38);
  MovedSensor moved(dynamic_cast<HalvorsaPsoc*>(device_.get()), 1, 0x20);
  float celsius = 0;
  EXPECT_EQ(moved.getTemperature(&celsius), 0);
  EXPECT_EQ(celsius, 38.0f);
}

// The simulation.

TEST_F(Psoc, StartsInSimulationWithAPlausibleImage) {
  struct Row {
    unsigned reg;
    uint64_t value;
    uint64_t size;
  };
  const std::map<unsigned, Utils::ExpectedVal>& values = *device_->expectedValues();
  EXPECT_EQ(&values, &HalvorsaPsoc::values);
  EXPECT_EQ(values.size(), 9u);
  for (const auto& [reg, value, size] : {Row{0x32, 0x88, 1},
                                         {0x25, 38, 1},
                                         {0x24, 39, 1},
                                         {0x22, 39, 1},
                                         {0x21, 39, 1},
                                         {0x20, 40, 1},
                                         {0x44, 0xFF56, 2},
                                         {0x42, 0xFE1F, 2},
                                         {0x40, 0xFE1F, 2}}) {
    const Utils::ExpectedVal& expected = values.at(reg);
    EXPECT_TRUE(expected.isNumber()) << reg;
    EXPECT_EQ(expected.val(), value) << reg;
    EXPECT_EQ(expected.size(), size) << reg;
  }
}

}  // namespace
