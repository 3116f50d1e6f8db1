// SPDX-License-Identifier: Apache-2.0
#include "Drivers/Pmbus.hpp"

#include <gmock/gmock.h>

#include <cmath>
#include <random>
#include <stdexcept>

#include "Topology/Topology.hpp"
#include "Utils/NotImplemented.hpp"
#include "test/support/Check.hpp"
#include "test/support/Describe.hpp"
#include "test/support/Device.hpp"
#include "test/support/FakeHam.hpp"
#include "test/support/FaultyHam.hpp"
#include "test/support/Host.hpp"
#include "test/support/LinearOracle.hpp"
#include "test/support/ScriptedHam.hpp"

namespace {

using Component::LogicalDevice::Fan;
using Component::LogicalDevice::TempSensor;
using Doubles::FakeHam;
using Doubles::FaultyHam;
using Doubles::host;
using Doubles::made;
using Doubles::Operations;
using Doubles::ScriptedHam;
using Doubles::settings;
using Doubles::Trace;
using Drivers::Pmbus;
using testing::ElementsAre;
using testing::IsEmpty;

namespace Op = Doubles::Op;

constexpr const char* kUnit = "Drivers/Pmbus";
constexpr uint32_t kVoutMode = 0x20;
constexpr uint32_t kStatusWord = 0x79;
constexpr uint32_t kFanStatus = 0x81;
constexpr uint32_t kVout = 0x8B;

// Start.

TEST(PmbusStart, TracesItsDevices) {
  FakeHam ham;
  const auto device = made<Pmbus>(ham);
  static const Component::LogicalDevice::Psu* psu = device->newPsu(settings({}));
  const std::unique_ptr<Fan> fan(device->newFan(settings({{"fanId", "1"}, {"maxFanRpm", "1"}})));
  const std::unique_ptr<TempSensor> sensor(device->newTempSensor(settings({{"sensorId", "1"}})));
  EXPECT_NE(psu, nullptr);
  EXPECT_THAT(host().traces,
              ElementsAre(Trace{0, "Creating Pmbus Device"}, Trace{0, "Creating Pmbus Psu Device"},
                          Trace{0, "Creating Pmbus Fan Device"},
                          Trace{0, "Creating Pmbus TempSensor Device"}));
  EXPECT_THAT(ham.batches(), IsEmpty());
}

TEST(PmbusStart, HasSuppliesFansAndTemperaturesOnly) {
  FakeHam ham;
  const auto device = made<Pmbus>(ham);
  EXPECT_THROW(device->newSlot(settings({})), NotImplementedException);
  EXPECT_THROW(device->newLed(settings({})), NotImplementedException);
}

TEST(PmbusStart, HasItsSimulatedRegisters) {
  struct Row {
    uint32_t reg;
    uint64_t value;
    uint64_t size;
  };
  constexpr Row kRows[] = {
      {0x20, 0x17, 1},   {0x79, 0x2C4B, 2}, {0x88, 0xC800, 2}, {0x89, 0xA800, 2},
      {0x8B, 0, 1},      {0x8C, 0xE000, 2}, {0x8D, 0xF84C, 2}, {0x8E, 0xF800, 2},
      {0x90, 0x1B69, 2}, {0x96, 0xD800, 2}, {0x97, 0xD800, 2},
  };
  FakeHam ham;
  const auto device = made<Pmbus>(ham);
  ASSERT_EQ(device->expectedValues(), &Pmbus::values);
  ASSERT_EQ(Pmbus::values.size(), std::size(kRows));
  for (const Row& row : kRows) {
    const Utils::ExpectedVal& simulated = Pmbus::values.at(row.reg);
    EXPECT_TRUE(simulated.isNumber());
    EXPECT_EQ(simulated.val(), row.value) << "register " << row.reg;
    EXPECT_EQ(simulated.size(), row.size) << "register " << row.reg;
  }
}

class PmbusSupply : public testing::Test {
 protected:
  // A device over a HAM that remembers; the traces of its making are forgotten.
  std::unique_ptr<Pmbus> device(Drivers::ArgMap args = {}) {
    auto supply = made<Pmbus>(faulty_, std::move(args));
    host().traces.clear();
    return supply;
  }

  FakeHam fake_;
  FaultyHam faulty_{fake_};
};

// Readings.

struct Reading {
  const char* name;
  pl_status (Pmbus::*get)(float*);
  pl_status (Component::LogicalDevice::Psu::*logical)(float*);
  uint32_t reg;
};
constexpr Reading kReadings[] = {
    {"input voltage", &Pmbus::get_input_voltage, &Component::LogicalDevice::Psu::get_input_voltage,
     0x88},
    {"input current", &Pmbus::get_input_current, &Component::LogicalDevice::Psu::get_input_current,
     0x89},
    {"output current", &Pmbus::get_output_current,
     &Component::LogicalDevice::Psu::get_output_current, 0x8C},
    {"output power", &Pmbus::get_output_power, &Component::LogicalDevice::Psu::get_output_power,
     0x96},
    {"input power", &Pmbus::get_input_power, &Component::LogicalDevice::Psu::get_input_power, 0x97},
};

TEST_F(PmbusSupply, ReadsEachQuantityFromOneRegister) {
  const auto supply = device();
  for (const Reading& reading : kReadings) {
    SCOPED_TRACE(reading.name);
    fake_.forgetBatches();
    fake_.set16(reading.reg, 0xF84C);
    float value = 0;
    EXPECT_EQ((*supply.*reading.get)(&value), 0);
    EXPECT_EQ(value, 38.0f);
    EXPECT_THAT(fake_.batches(), ElementsAre(Operations{Op::read16(reading.reg)}));
  }
}

TEST_F(PmbusSupply, ReadsRandomWords) {
  const auto supply = device();
  std::mt19937 random(1);
  std::uniform_int_distribution<unsigned> words(0, 0xFFFF);
  for (const Reading& reading : kReadings) {
    for (int i = 0; i < 1000; ++i) {
      const unsigned word = words(random);
      fake_.set16(reading.reg, static_cast<uint16_t>(word));
      float value = 0;
      ASSERT_EQ((*supply.*reading.get)(&value), 0);
      ASSERT_EQ(value, Doubles::expectedLinear11(word)) << reading.name << " " << std::hex << word;
    }
  }
}

TEST_F(PmbusSupply, ReportsAReadingThatFails) {
  const auto supply = device();
  faulty_.failAlways(6);
  for (const Reading& reading : kReadings) {
    float value = 1.5f;
    EXPECT_EQ((*supply.*reading.get)(&value), 6) << reading.name;
    EXPECT_EQ(value, 1.5f);
  }
}

TEST_F(PmbusSupply, AnswersThroughItsLogicalDevice) {
  static const auto supply = device();  // and the logical device: never deleted by contract
  static Component::LogicalDevice::Psu* psu = supply->newPsu(settings({}));
  uint16_t word = 1;
  for (const Reading& reading : kReadings) {
    fake_.set16(reading.reg, word);
    float value = 0;
    EXPECT_EQ((psu->*reading.logical)(&value), 0);
    EXPECT_EQ(value, static_cast<float>(word)) << reading.name;
    ++word;
  }
  fake_.set8(kVoutMode, 0);
  fake_.set16(kVout, 77);
  float volts = 0;
  EXPECT_EQ(psu->get_output_voltage(&volts), 0);
  EXPECT_EQ(volts, 77.0f);
  fake_.set16(kStatusWord, 0);
  int ok = 0;
  EXPECT_EQ(psu->get_power_ok(&ok), 0);
  EXPECT_EQ(ok, 1);
}

// Output voltage.

TEST_F(PmbusSupply, ReadsModeAndVoltageInOneBatch) {
  const auto supply = device();
  fake_.set8(kVoutMode, 0x17);
  fake_.set16(kVout, 0x1800);
  float volts = 0;
  EXPECT_EQ(supply->get_output_voltage(&volts), 0);
  EXPECT_EQ(volts, 12.0f);
  EXPECT_THAT(fake_.batches(), ElementsAre(Operations{Op::read8(0x20), Op::read16(0x8B)}));
}

TEST_F(PmbusSupply, TakesAFixedExponentInsteadOfTheModes) {
  const auto supply = device({{"voutExponent", "24"}});
  fake_.set8(kVoutMode, 0x17);
  fake_.set16(kVout, 0x1800);
  float volts = 0;
  EXPECT_EQ(supply->get_output_voltage(&volts), 0);
  EXPECT_EQ(volts, 24.0f);
}

TEST_F(PmbusSupply, TakesExponent255AsTheModes) {
  const auto supply = device({{"voutExponent", "255"}});
  fake_.set8(kVoutMode, 0x17);
  fake_.set16(kVout, 0x1800);
  float volts = 0;
  EXPECT_EQ(supply->get_output_voltage(&volts), 0);
  EXPECT_EQ(volts, 12.0f);
}

TEST_F(PmbusSupply, ReadsVoltagesFrom8000UpAsNegative) {
  const auto supply = device();
  fake_.set8(kVoutMode, 0x17);
  fake_.set16(kVout, 0x8000);
  float volts = 0;
  EXPECT_EQ(supply->get_output_voltage(&volts), 0);
  EXPECT_EQ(volts, -64.0f);
}

TEST_F(PmbusSupply, DecodesAVoltageByEveryMode) {
  const auto supply = device();
  fake_.set16(kVout, 0xF84C);
  for (unsigned mode = 0; mode < 256; ++mode) {
    fake_.set8(kVoutMode, static_cast<uint8_t>(mode));
    float volts = 1.5f;
    EXPECT_EQ(supply->get_output_voltage(&volts), 0);
    const int exponent = static_cast<int>(mode < 16 ? mode : mode - 32);
    const float expected = mode < 32 ? std::ldexp(-1972.0f, exponent) : mode == 255 ? 38.0f : 1.5f;
    EXPECT_EQ(volts, expected) << "mode " << mode;
  }
}

TEST_F(PmbusSupply, ReportsAVoltageThatCannotBeRead) {
  const auto supply = device();
  faulty_.failOn(kVout, 6);
  float volts = 1.5f;
  EXPECT_EQ(supply->get_output_voltage(&volts), 6);
  EXPECT_EQ(volts, 1.5f);
}

// Power good, by the status word.

TEST(PmbusPowerGood, ClearsFaultsAndReadsTheStatusWord) {
  ScriptedHam ham;
  const auto supply = made<Pmbus>(ham);
  host().traces.clear();
  ham.expect({Op::sendByte(0x03)});
  ham.expect({Op::read16(0x79).gives(0x0000)});
  int ok = 0;
  EXPECT_EQ(supply->get_power_ok(&ok), 0);
  EXPECT_EQ(ok, 1);
  EXPECT_THAT(host().traces, ElementsAre(Trace{4, "pl_status Drivers::Pmbus::get_power_ok(int*)"},
                                         Trace{4, "Issuing CLEAR_FAULTS PMBus command"},
                                         Trace{4, "Checking power OK using STATUS_WORD_REG"},
                                         Trace{4, "statusWord: 0x0, powerBad: 0b0, off: 0b0"}));
}

TEST_F(PmbusSupply, TracesItsStatusWordInHex) {
  const auto supply = device();
  fake_.set16(kStatusWord, 0x2C4B);
  int ok = 1;
  EXPECT_EQ(supply->get_power_ok(&ok), 0);
  EXPECT_EQ(host().traces.back(), (Trace{4, "statusWord: 0x2c4b, powerBad: 0b1, off: 0b1"}));
}

TEST_F(PmbusSupply, JudgesEveryStatusWordByItsTwoBits) {
  const auto supply = device();
  host().keepsTraces = false;
  for (unsigned word = 0; word < 65536; ++word) {
    fake_.set16(kStatusWord, static_cast<uint16_t>(word));
    const bool bad = word / 2048 % 2 == 1;
    const bool off = word / 64 % 2 == 1;
    int ok = 5;
    ASSERT_EQ(supply->get_power_ok(&ok), bad && !off ? 2 : 0) << std::hex << word;
    ASSERT_EQ(ok, !bad ? 1 : off ? 0 : 5) << std::hex << word;
    fake_.forgetBatches();
  }
}

TEST_F(PmbusSupply, JudgesOnWhenFaultsCannotBeCleared) {
  const auto supply = device();
  fake_.set16(kStatusWord, 0x0840);
  faulty_.failNext(6);
  int ok = 5;
  EXPECT_EQ(supply->get_power_ok(&ok), 0);
  EXPECT_EQ(ok, 0);
  EXPECT_THAT(host().texts(3), ElementsAre("CLEAR_FAULTS PMBus command failed: 6"));
}

TEST_F(PmbusSupply, ReportsAStatusWordThatCannotBeRead) {
  const auto supply = device();
  faulty_.failAt(1, 6);
  int ok = 5;
  EXPECT_EQ(supply->get_power_ok(&ok), 6);
  EXPECT_EQ(ok, 5);
  EXPECT_EQ(host().traces.back(), (Trace{4, "Checking power OK using STATUS_WORD_REG"}));
}

// Power good, by a pin of another device.

class PmbusWithPin : public PmbusSupply {
 protected:
  PmbusWithPin() {
    const char* const pins =
        R"({"did":1,"label":"Pins","driver":null,"address":{"address":32},"provideHam":0})";
    EXPECT_EQ(Topology::loadTopology(Doubles::topologyOf("H", pins).c_str()), 0);
  }

  // Bit 3 of register 16.
  std::unique_ptr<Pmbus> withPin(Drivers::ArgMap args = {}) {
    args["gpioDevice"] = "Pins";
    args["powerOkReg"] = "16";
    args["powerOkBit"] = "3";
    auto supply = device(std::move(args));
    dynamic_cast<Component::HardwareDevice&>(*Component::DeviceBase::devices.at(1)).ham =
        &pinsFaulty_;
    return supply;
  }

  int powerOk(Pmbus& supply, uint8_t pins) {
    pins_.set8(16, pins);
    int ok = 5;
    EXPECT_EQ(supply.get_power_ok(&ok), 0);
    return ok;
  }

  FakeHam pins_;
  FaultyHam pinsFaulty_{pins_};
};

TEST_F(PmbusWithPin, IsGoodWithAPinThatIsLow) {
  const auto supply = withPin();
  EXPECT_EQ(powerOk(*supply, 0xF7), 1);
  EXPECT_EQ(powerOk(*supply, 0x08), 0);
}

TEST_F(PmbusWithPin, IsGoodWithAPinThatIsHighWhereTheBoardSaysSo) {
  for (const char* activeLow : {"false", "True", "1", ""}) {
    const auto supply = withPin({{"powerOkActiveLow", activeLow}});
    EXPECT_EQ(powerOk(*supply, 0xF7), 0) << activeLow;
    EXPECT_EQ(powerOk(*supply, 0x08), 1) << activeLow;
  }
  EXPECT_EQ(powerOk(*withPin({{"powerOkActiveLow", "true"}}), 0xF7), 1);
}

TEST_F(PmbusWithPin, ClearsFaultsAndLeavesTheStatusWordAlone) {
  const auto supply = withPin();
  host().traces.clear();
  powerOk(*supply, 0);
  EXPECT_THAT(fake_.batches(), ElementsAre(Operations{Op::sendByte(0x03)}));
  EXPECT_THAT(pins_.batches(), ElementsAre(Operations{Op::read8(16)}));
  EXPECT_THAT(host().traces, ElementsAre(Trace{4, "pl_status Drivers::Pmbus::get_power_ok(int*)"},
                                         Trace{4, "Issuing CLEAR_FAULTS PMBus command"},
                                         Trace{4, "Checking power OK using powerOkGpio_"}));
}

TEST_F(PmbusWithPin, LooksAtItsPinWhenFaultsCannotBeCleared) {
  const auto supply = withPin();
  faulty_.failAlways(6);
  EXPECT_EQ(powerOk(*supply, 0), 1);
  EXPECT_THAT(host().texts(3), ElementsAre("CLEAR_FAULTS PMBus command failed: 6"));
}

TEST_F(PmbusWithPin, ReportsAPinThatCannotBeRead) {
  const auto supply = withPin();
  pinsFaulty_.failAlways(6);
  int ok = 5;
  EXPECT_EQ(supply->get_power_ok(&ok), 6);
  EXPECT_EQ(ok, 5);
}

TEST_F(PmbusWithPin, WantsRegisterAndBitOfItsPin) {
  EXPECT_THAT(
      [] {
        Pmbus::create(settings({{"gpioDevice", "Pins"}, {"powerOkBit", "1"}}), nullptr);
      },
      testing::ThrowsMessage<std::out_of_range>(testing::HasSubstr("map::at")));
  EXPECT_THAT(
      [] {
        Pmbus::create(settings({{"gpioDevice", "Pins"}, {"powerOkReg", "1"}}), nullptr);
      },
      testing::ThrowsMessage<std::out_of_range>(testing::HasSubstr("map::at")));
}

TEST_F(PmbusWithPin, WantsTheDeviceOfItsPin) {
  EXPECT_CHECK_AFTER(
      Pmbus::create(settings({{"gpioDevice", "None"}, {"powerOkReg", "1"}, {"powerOkBit", "1"}}),
                    nullptr),
      (Trace{0, "Unable to locate device None"}), "Drivers/Helpers", "device");
}

// Fans.

class PmbusFans : public PmbusSupply {
 protected:
  std::unique_ptr<Fan> fan(const char* id, const char* maxFanRpm = "20000",
                           Drivers::ArgMap more = {}) {
    more["fanId"] = id;
    more["maxFanRpm"] = maxFanRpm;
    std::unique_ptr<Fan> made(device_->newFan(settings(std::move(more))));
    host().traces.clear();
    return made;
  }

  std::unique_ptr<Pmbus> device_ = device();
};

TEST_F(PmbusFans, ReadTheirFaultAndThenTheirSpeed) {
  fake_.set8(kFanStatus, 0);
  fake_.set16(0x90, 0x1B69);
  fake_.set16(0x91, 0x03E8);
  int rpm = 0;
  EXPECT_EQ(fan("1")->getRpm(&rpm), 0);
  EXPECT_EQ(rpm, 6984);
  EXPECT_EQ(fan("2")->getRpm(&rpm), 0);
  EXPECT_EQ(rpm, 1000);
  EXPECT_THAT(fake_.batches(),
              ElementsAre(Operations{Op::read8(0x81)}, Operations{Op::read16(0x90)},
                          Operations{Op::read8(0x81)}, Operations{Op::read16(0x91)}));
  EXPECT_THAT(host().traces, IsEmpty());
}

TEST_F(PmbusFans, AreFaultyByTheirOwnBits) {
  fake_.set16(0x90, 0x03E8);
  fake_.set16(0x91, 0x03E8);
  const auto first = fan("1");
  const auto second = fan("2");
  for (unsigned faults = 0; faults < 256; ++faults) {
    fake_.set8(kFanStatus, static_cast<uint8_t>(faults));
    int rpm = 5;
    EXPECT_EQ(first->getRpm(&rpm), faults >= 128 ? 2 : 0) << faults;
    EXPECT_EQ(rpm, faults >= 128 ? 5 : 1000) << faults;
    rpm = 5;
    EXPECT_EQ(second->getRpm(&rpm), faults % 128 >= 64 ? 2 : 0) << faults;
    EXPECT_EQ(rpm, faults % 128 >= 64 ? 5 : 1000) << faults;
  }
}

TEST_F(PmbusFans, CutTheirSpeedTowardZero) {
  fake_.set8(kFanStatus, 0);
  int rpm = 0;
  fake_.set16(0x90, 0xF803);  // 1.5
  EXPECT_EQ(fan("1")->getRpm(&rpm), 0);
  EXPECT_EQ(rpm, 1);
  fake_.set16(0x90, 0xFFFD);  // -1.5
  EXPECT_EQ(fan("1")->getRpm(&rpm), 0);
  EXPECT_EQ(rpm, -1);
  fake_.set16(0x90, 0x7BFF);
  EXPECT_EQ(fan("1")->getRpm(&rpm), 0);
  EXPECT_EQ(rpm, 33521664);
}

TEST_F(PmbusFans, ReportWhatCannotBeRead) {
  fake_.set8(kFanStatus, 0);
  fake_.set16(0x90, 0);
  int rpm = 5;
  faulty_.failOn(kFanStatus, 6);
  EXPECT_EQ(fan("1")->getRpm(&rpm), 6);
  EXPECT_THAT(fake_.batches(), IsEmpty());
  faulty_.heal();
  faulty_.failOn(0x90, 4);
  EXPECT_EQ(fan("1")->getRpm(&rpm), 4);
  EXPECT_EQ(rpm, 5);
}

struct Duty {
  int rpm;
  const char* maxFanRpm;
  const char* traced;
  uint16_t written;
};
constexpr Duty kDuties[] =
    {
        {10000, "20000", "50", 50},     {30000, "20000", "150", 100},
        {-1000, "20000", "65531", 100}, {-199, "20000", "0", 0},  // cut toward zero
        {0, "20000", "0", 0},           {20000, "20000", "100", 100},
        {20199, "20000", "100", 100},   {20200, "20000", "101", 100},
        {13107201, "20000", "0", 0},  // 65536 % has nothing in its low 16 bits
        {13107401, "20000", "1", 1},    {21474836, "20000", "41838", 100},
        {1000, "-20000", "65531", 100},
};

TEST_F(PmbusFans, TakeADutyOfWholePercentUpTo100) {
  for (const Duty& duty : kDuties) {
    SCOPED_TRACE(testing::Message() << duty.rpm << " of " << duty.maxFanRpm);
    const auto first = fan("1", duty.maxFanRpm);
    fake_.forgetBatches();
    EXPECT_EQ(first->setRpm(duty.rpm), 0);
    EXPECT_THAT(fake_.batches(), ElementsAre(Operations{Op::write16(0x3B, duty.written)}));
    EXPECT_THAT(host().traces,
                ElementsAre(Trace{6, std::string("Setting fan 0 duty cycle to ") + duty.traced}));
  }
}

TEST_F(PmbusFans, WriteTheirOwnRegister) {
  EXPECT_EQ(fan("2")->setRpm(10000), 0);
  EXPECT_THAT(fake_.batches(), ElementsAre(Operations{Op::write16(0x3C, 50)}));
}

TEST_F(PmbusFans, WriteWithACheckByteWhereTheBoardSaysSo) {
  EXPECT_EQ(fan("1", "20000", {{"pec", "true"}})->setRpm(10000), 0);
  EXPECT_EQ(fan("1", "20000", {{"pec", "false"}})->setRpm(10000), 0);
  EXPECT_EQ(fan("1", "20000", {{"pec", "1"}})->setRpm(10000), 0);
  EXPECT_THAT(fake_.batches(), ElementsAre(Operations{Op::write16(0x3B, 50, true)},
                                           Operations{Op::write16(0x3B, 50, false)},
                                           Operations{Op::write16(0x3B, 50, false)}));
}

TEST_F(PmbusFans, ReportADutyThatCannotBeWritten) {
  faulty_.failAlways(6);
  const auto second = fan("2");
  EXPECT_EQ(second->setRpm(30000), 6);
  EXPECT_THAT(host().traces, ElementsAre(Trace{6, "Setting fan 1 duty cycle to 150"},
                                         Trace{0, "Failed to set fan1 duty cycle to 100"}));
}

TEST_F(PmbusFans, DivideByTheirMaximumWhateverItIs) { EXPECT_DEATH(fan("1", "0")->setRpm(1), ""); }

TEST_F(PmbusFans, WantTheirArguments) {
  EXPECT_CHECK(device_->newFan(settings({{"maxFanRpm", "1"}})), kUnit,
               "args.driverArgs.find( \"fanId\" ) != args.driverArgs.end()");
  EXPECT_CHECK(device_->newFan(settings({{"fanId", "1"}})), kUnit,
               "args.driverArgs.find( \"maxFanRpm\" ) != args.driverArgs.end()");
}

TEST_F(PmbusFans, AreTwo) {
  for (const char* id : {"0", "3", "-1", "256"}) {
    EXPECT_CHECK(fan(id), kUnit, "fanId == 1 || fanId == 2");
  }
}

TEST_F(PmbusFans, TakeTheirNumberIn8Bits) {
  EXPECT_EQ(fan("258")->setRpm(0), 0);
  EXPECT_THAT(fake_.batches(), ElementsAre(Operations{Op::write16(0x3C, 0)}));
}

TEST_F(PmbusFans, TellNothingForDebugging) {
  char text[] = "untouched";
  char* debug = text;
  fan("1")->debugInfo(&debug);
  EXPECT_EQ(debug, text);
}

// Temperatures.

class PmbusTemperatures : public PmbusSupply {
 protected:
  std::unique_ptr<TempSensor> sensor(const char* id) {
    return std::unique_ptr<TempSensor>(device_->newTempSensor(settings({{"sensorId", id}})));
  }

  std::unique_ptr<Pmbus> device_ = device();
};

TEST_F(PmbusTemperatures, ComeFromTheirRegisters) {
  fake_.set16(0x8D, 0xF84C);
  fake_.set16(0x8E, 0xF801);
  float celsius = 0;
  EXPECT_EQ(sensor("1")->getTemperature(&celsius), 0);
  EXPECT_EQ(celsius, 38.0f);
  EXPECT_EQ(sensor("2")->getTemperature(&celsius), 0);
  EXPECT_EQ(celsius, 0.5f);
  EXPECT_THAT(fake_.batches(),
              ElementsAre(Operations{Op::read16(0x8D)}, Operations{Op::read16(0x8E)}));
}

TEST_F(PmbusTemperatures, KnowTheirNumberAndRegister) {
  EXPECT_EQ(sensor("1")->id(), 1);
  EXPECT_EQ(sensor("1")->reg(), 0x8D);
  EXPECT_EQ(sensor("2")->id(), 2);
  EXPECT_EQ(sensor("2")->reg(), 0x8E);
}

TEST_F(PmbusTemperatures, AreNeverBelow0) {
  const auto first = sensor("1");
  for (unsigned word = 0; word < 65536; ++word) {
    fake_.set16(0x8D, static_cast<uint16_t>(word));
    float celsius = 1.5f;
    ASSERT_EQ(first->getTemperature(&celsius), 0);
    ASSERT_EQ(celsius, std::max(Doubles::expectedLinear11(word), 0.0f)) << std::hex << word;
    fake_.forgetBatches();
  }
}

TEST_F(PmbusTemperatures, LeaveTheOutputAloneOnFailure) {
  faulty_.failAlways(6);
  float celsius = 41.5f;
  EXPECT_EQ(sensor("1")->getTemperature(&celsius), 6);
  EXPECT_EQ(celsius, 41.5f);
}

TEST_F(PmbusTemperatures, ClampWhatTheCallerHadOnFailure) {
  faulty_.failAlways(6);
  float celsius = -5.0f;
  EXPECT_EQ(sensor("1")->getTemperature(&celsius), 6);
  EXPECT_EQ(celsius, 0.0f);
}

TEST_F(PmbusTemperatures, WantTheirNumber) {
  EXPECT_CHECK(device_->newTempSensor(settings({})), kUnit,
               "args.driverArgs.find( \"sensorId\" ) != args.driverArgs.end()");
}

TEST_F(PmbusTemperatures, AreTwo) {
  for (const char* id : {"0", "3", "-1", "256"}) {
    EXPECT_CHECK(sensor(id), kUnit, "id == 1 || id == 2");
  }
  EXPECT_EQ(sensor("257")->id(), 1);
}

// One LINEAR11 reading, for whoever speaks PMBus.

TEST(PmbusReadLinear, IsAWordOfTheCommand) {
  ScriptedHam ham;
  ham.expect({Op::read16(0xD0).gives(0xF84C)});
  float value = 0;
  EXPECT_EQ(Drivers::pmbus_read_linear(ham, 0xD0, &value), 0);
  EXPECT_EQ(value, 38.0f);
}

}  // namespace
