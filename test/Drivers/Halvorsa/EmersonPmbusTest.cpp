// SPDX-License-Identifier: Apache-2.0
#include "Drivers/Halvorsa/EmersonPmbus.hpp"

#include <gmock/gmock.h>

#include <random>

#include "Components/Fan.hpp"
#include "Topology/Topology.hpp"
#include "Utils/NotImplemented.hpp"
#include "test/support/Check.hpp"
#include "test/support/Describe.hpp"
#include "test/support/Device.hpp"
#include "test/support/FakeHam.hpp"
#include "test/support/FaultyHam.hpp"
#include "test/support/Host.hpp"
#include "test/support/LibraryClock.hpp"

namespace {

using namespace std::chrono_literals;
using Component::LogicalDevice::Fan;
using Component::LogicalDevice::Psu;
using Doubles::FakeHam;
using Doubles::FaultyHam;
using Doubles::host;
using Doubles::LibraryClock;
using Doubles::made;
using Doubles::Operations;
using Doubles::settings;
using Doubles::Trace;
using Drivers::EmersonPmbus;
using testing::ElementsAre;
using testing::IsEmpty;

namespace Op = Doubles::Op;

constexpr const char* kUnit = "Drivers/Halvorsa/EmersonPmbus";
constexpr uint32_t kVoutMode = 0x20;
constexpr uint32_t kVin = 0x88;
constexpr uint32_t kVout = 0x8B;
constexpr uint32_t kIout = 0x8C;
constexpr uint32_t kPin = 0x97;

// A topology whose device with this label has a driver and no HAM.
void loadBoard(const std::string& label, const std::string& driver) {
  const std::string device = R"({"did":1,"label":")" + label + R"(","driver":)" + driver +
                             R"(,"address":{"address":32},"provideHam":0})";
  ASSERT_EQ(Topology::loadTopology(Doubles::topologyOf("H", device).c_str()), 0);
}

// Start.

TEST(EmersonStart, TracesItsDevices) {
  FakeHam ham;
  const auto device = made<EmersonPmbus>(ham, {{"psuId", "2"}});
  static const Psu* psu = device->newPsu(settings({}));  // never deleted by contract
  const std::unique_ptr<Fan> fan(device->newFan(settings({{"fanId", "1"}, {"maxFanRpm", "1"}})));
  EXPECT_NE(psu, nullptr);
  EXPECT_THAT(host().traces, ElementsAre(Trace{0, "Creating EmersonPmbus Device"},
                                         Trace{0, "Creating EmersonPmbus Psu Device"},
                                         Trace{0, "Creating EmersonPmbus Fan Device"}));
}

TEST(EmersonStart, WantsItsSupplysNumber) {
  EXPECT_CHECK(EmersonPmbus::create(settings({}), nullptr), kUnit, "it != args.driverArgs.end()");
  for (const char* id : {"0", "3", "-1"}) {
    EXPECT_CHECK(EmersonPmbus::create(settings({{"psuId", id}}), nullptr), kUnit,
                 "psuId == 1 || psuId == 2");
  }
}

TEST(EmersonStart, HasSuppliesAndFansOnly) {
  FakeHam ham;
  const auto device = made<EmersonPmbus>(ham, {{"psuId", "1"}});
  EXPECT_THROW(device->newTempSensor(settings({})), NotImplementedException);
  EXPECT_THROW(device->newSlot(settings({})), NotImplementedException);
}

TEST(EmersonStart, HasItsSimulatedRegisters) {
  FakeHam ham;
  const auto device = made<EmersonPmbus>(ham, {{"psuId", "1"}});
  ASSERT_EQ(device->expectedValues(), &EmersonPmbus::values);
  ASSERT_EQ(EmersonPmbus::values.size(), 4u);
  for (const auto& [reg, value] :
       {std::pair{0x88u, 0xF3A3u}, {0x8Cu, 0xD2E1u}, {0x90u, 0x2A02u}, {0x97u, 0xF264u}}) {
    const Utils::ExpectedVal& simulated = EmersonPmbus::values.at(reg);
    EXPECT_TRUE(simulated.isNumber());
    EXPECT_EQ(simulated.val(), value) << "register " << reg;
    EXPECT_EQ(simulated.size(), 2u);
  }
}

TEST(EmersonStart, LooksForItsExpander) {
  loadBoard("PsuPCA", "null");
  FakeHam ham;
  const auto device = made<EmersonPmbus>(ham, {{"psuId", "1"}});
  host().traces.clear();
  // The expander cannot start here: it has no registers.
  Drivers::DriverArgs& expander = *Topology::getDeviceByLabel("PsuPCA")->driverArgs;
  expander.driver = "none";
  EXPECT_CHECK_AFTER(device->init(), (Trace{0, "EmersonPmbus init function"}), "Drivers/Helpers",
                     "dev");
}

TEST(EmersonStart, StopsOnABoardWithoutItsExpander) {
  loadBoard("Other", "null");
  FakeHam ham;
  const auto device = made<EmersonPmbus>(ham, {{"psuId", "1"}});
  EXPECT_CHECK_AFTER(device->init(), (Trace{0, "Unable to locate device PsuPCA"}),
                     "Drivers/Helpers", "device");
}

TEST(EmersonStart, StopsOnAnExpanderOfAnotherKind) {
  loadBoard("PsuPCA", "\"Dummy\"");
  FakeHam ham;
  const auto device = made<EmersonPmbus>(ham, {{"psuId", "1"}});
  EXPECT_CHECK(device->init(), kUnit, "psuPca_");
}

// A supply beside its expander, each over a HAM that remembers.
class Emerson : public testing::Test {
 protected:
  Emerson() {
    loadBoard("PsuPCA", "null");
    expander_ = made<Drivers::HalvPsuPCA9555>(pinsFaulty_);
    Component::DeviceBase::devices[1] = expander_.get();
    host().traces.clear();
  }

  // As the host has it: of a device that has started, and neither is ever deleted.
  Psu& psu(const char* id = "1") {
    static auto& kept = *new std::vector<std::pair<std::unique_ptr<EmersonPmbus>, Psu*>>;
    auto device = made<EmersonPmbus>(faulty_, {{"psuId", id}});
    device->init();
    Psu* supply = device->newPsu(settings({}));
    kept.emplace_back(std::move(device), supply);
    host().traces.clear();
    return *supply;
  }

  FakeHam pins_;
  FaultyHam pinsFaulty_{pins_};
  FakeHam fake_;
  FaultyHam faulty_{fake_};
  LibraryClock clock_;
  std::unique_ptr<Drivers::HalvPsuPCA9555> expander_;
};

// Power good.

struct PowerCase {
  const char* psu;
  uint8_t pins;
  pl_status status;
  int ok;  // 5: untouched
};
constexpr PowerCase kPowerCases[] = {
    {"1", 0x00, 0, 0}, {"1", 0x40, 2, 5}, {"1", 0x02, 0, 1}, {"1", 0x42, 0, 1}, {"1", 0x90, 0, 0},
    {"2", 0x00, 0, 0}, {"2", 0x80, 2, 5}, {"2", 0x10, 0, 1}, {"2", 0x90, 0, 1}, {"2", 0x42, 0, 0},
};

TEST_F(Emerson, IsGoodByTheExpandersLines) {
  for (const PowerCase& row : kPowerCases) {
    SCOPED_TRACE(testing::Message() << "supply " << row.psu << ", pins " << int{row.pins});
    Psu& supply = psu(row.psu);
    pins_.set8(0, row.pins);
    clock_.advance(3s);
    int ok = 5;
    EXPECT_EQ(supply.get_power_ok(&ok), row.status);
    EXPECT_EQ(ok, row.ok);
  }
  EXPECT_THAT(fake_.batches(), IsEmpty());
}

TEST_F(Emerson, LooksForItsExpanderByItsLabel) {
  Psu& supply = psu();
  EXPECT_EQ(Topology::getDeviceByLabel("PsuPCA")->driverArgs->driver, "HalvPsuPCA9555");
  pins_.set8(0, 0x02);
  int ok = 0;
  EXPECT_EQ(supply.get_power_ok(&ok), 0);
  EXPECT_THAT(pins_.batches(), ElementsAre(Operations{Op::read8(0)}));
}

TEST_F(Emerson, ReportsLinesThatCannotBeRead) {
  Psu& supply = psu();
  pinsFaulty_.failAlways(6);
  int ok = 5;
  EXPECT_EQ(supply.get_power_ok(&ok), 6);
  EXPECT_EQ(ok, 5);
}

// Readings.

TEST_F(Emerson, ReadsThreeQuantitiesFromTheirRegisters) {
  Psu& supply = psu();
  fake_.set16(kVin, 0xF3A3);
  fake_.set16(kIout, 0xD2E1);
  fake_.set16(kPin, 0xF264);
  float value = 0;
  EXPECT_EQ(supply.get_input_voltage(&value), 0);
  EXPECT_EQ(value, 232.75f);
  EXPECT_EQ(supply.get_output_current(&value), 0);
  EXPECT_EQ(value, 11.515625f);
  EXPECT_EQ(supply.get_input_power(&value), 0);
  EXPECT_EQ(value, 153.0f);
  EXPECT_THAT(fake_.batches(),
              ElementsAre(Operations{Op::read16(0x88)}, Operations{Op::read16(0x8C)},
                          Operations{Op::read16(0x97)}));
}

TEST_F(Emerson, DividesItsInputPowerByItsVoltage) {
  Psu& supply = psu();
  fake_.set16(kVin, 0xF3A3);
  fake_.set16(kPin, 0xF264);
  float amperes = 0;
  EXPECT_EQ(supply.get_input_current(&amperes), 0);
  EXPECT_EQ(amperes, 153.0f / 232.75f);
  EXPECT_THAT(fake_.batches(),
              ElementsAre(Operations{Op::read16(0x88)}, Operations{Op::read16(0x97)}));
}

TEST_F(Emerson, DrawsNoCurrentWithoutVoltage) {
  Psu& supply = psu();
  fake_.set16(kVin, 0xF000);
  float amperes = 5;
  EXPECT_EQ(supply.get_input_current(&amperes), 0);
  EXPECT_EQ(amperes, 0.0f);
  EXPECT_THAT(fake_.batches(), ElementsAre(Operations{Op::read16(0x88)}));
}

TEST_F(Emerson, DividesByANegativeVoltage) {
  Psu& supply = psu();
  fake_.set16(kVin, 0x07FE);  // -2
  fake_.set16(kPin, 0x0003);
  float amperes = 0;
  EXPECT_EQ(supply.get_input_current(&amperes), 0);
  EXPECT_EQ(amperes, -1.5f);
}

TEST_F(Emerson, TakesItsVoltageWithExponentMinus6WhateverTheMode) {
  Psu& supply = psu();
  fake_.set16(kVout, 0x0300);
  for (unsigned mode = 0; mode < 32; ++mode) {
    fake_.set8(kVoutMode, static_cast<uint8_t>(mode));
    float volts = 0;
    EXPECT_EQ(supply.get_output_voltage(&volts), 0);
    EXPECT_EQ(volts, 12.0f) << "mode " << mode;
  }
  EXPECT_EQ(fake_.batches()[0], (Operations{Op::read8(0x20), Op::read16(0x8B)}));
}

TEST_F(Emerson, TakesEveryVoltageAsSigned) {
  Psu& supply = psu();
  fake_.set8(kVoutMode, 0);
  for (int word = -32768; word < 32768; ++word) {
    fake_.set16(kVout, static_cast<uint16_t>(word));
    float volts = 1e9f;
    ASSERT_EQ(supply.get_output_voltage(&volts), 0);
    ASSERT_EQ(volts, static_cast<float>(word) / 64.0f);
    fake_.forgetBatches();
  }
}

TEST_F(Emerson, StopsOnAVoltageThatIsNotLinear) {
  Psu& supply = psu();
  fake_.set16(kVout, 0);
  float volts;
  for (const int mode : {0x20, 0x40, 0x80, 0xFF}) {
    fake_.set8(kVoutMode, static_cast<uint8_t>(mode));
    EXPECT_CHECK(supply.get_output_voltage(&volts), kUnit, "( reg1 & 0xe0 ) == 0");
  }
}

TEST_F(Emerson, MultipliesItsOutputVoltageByItsCurrent) {
  Psu& supply = psu();
  fake_.set8(kVoutMode, 0x17);
  fake_.set16(kVout, 0x0300);
  fake_.set16(kIout, 0xD2E1);
  float watts = 0;
  EXPECT_EQ(supply.get_output_power(&watts), 0);
  EXPECT_EQ(watts, 12.0f * 11.515625f);
  EXPECT_THAT(fake_.batches(), ElementsAre(Operations{Op::read8(0x20), Op::read16(0x8B)},
                                           Operations{Op::read16(0x8C)}));
}

// Each register that cannot be read fails what is made of it, and nothing else is looked at.
struct Failure {
  const char* name;
  pl_status (Psu::*get)(float*);
  uint32_t reg;
};
constexpr Failure kFailures[] = {
    {"input voltage", &Psu::get_input_voltage, kVin},
    {"input power", &Psu::get_input_power, kPin},
    {"output current", &Psu::get_output_current, kIout},
    {"output voltage", &Psu::get_output_voltage, kVout},
    {"output voltage by its mode", &Psu::get_output_voltage, kVoutMode},
    {"input current by voltage", &Psu::get_input_current, kVin},
    {"input current by power", &Psu::get_input_current, kPin},
    {"output power by voltage", &Psu::get_output_power, kVout},
    {"output power by current", &Psu::get_output_power, kIout},
};

TEST_F(Emerson, ReportsWhatCannotBeRead) {
  Psu& supply = psu();
  fake_.set8(kVoutMode, 0);
  for (const uint32_t reg : {kVin, kPin, kIout, kVout}) {
    fake_.set16(reg, 1);
  }
  for (const Failure& failure : kFailures) {
    faulty_.heal();
    faulty_.failOn(failure.reg, 6);
    float value = 1.5f;
    EXPECT_EQ((supply.*failure.get)(&value), 6) << failure.name;
    EXPECT_EQ(value, 1.5f) << failure.name;
  }
}

// Fans.

class EmersonFans : public testing::Test {
 protected:
  std::unique_ptr<Fan> fan(const char* id, const char* maxFanRpm = "25000",
                           Drivers::ArgMap more = {}) {
    more["fanId"] = id;
    more["maxFanRpm"] = maxFanRpm;
    std::unique_ptr<Fan> made(device_->newFan(settings(std::move(more))));
    host().traces.clear();
    return made;
  }

  FakeHam fake_;
  FaultyHam faulty_{fake_};
  std::unique_ptr<EmersonPmbus> device_ = made<EmersonPmbus>(faulty_, {{"psuId", "1"}});
};

TEST_F(EmersonFans, ReadTheirSpeedAlone) {
  fake_.set16(0x90, 0x2A02);
  fake_.set16(0x91, 0xFFFD);  // -1.5
  int rpm = 0;
  EXPECT_EQ(fan("1")->getRpm(&rpm), 0);
  EXPECT_EQ(rpm, 16448);
  EXPECT_EQ(fan("2")->getRpm(&rpm), 0);
  EXPECT_EQ(rpm, -1);
  EXPECT_THAT(fake_.batches(),
              ElementsAre(Operations{Op::read16(0x90)}, Operations{Op::read16(0x91)}));
  EXPECT_THAT(host().traces, IsEmpty());
}

TEST_F(EmersonFans, ReportASpeedThatCannotBeRead) {
  faulty_.failAlways(6);
  int rpm = 5;
  EXPECT_EQ(fan("1")->getRpm(&rpm), 6);
  EXPECT_EQ(rpm, 5);
}

struct Command {
  int rpm;
  const char* maxFanRpm;
  int traced;
  uint16_t written;
};
constexpr Command kCommands[] = {
    {20000, "25000", 20000, 0x2A71}, {1000, "25000", 1000, 0x03E8}, {0, "25000", 0, 0},
    {30000, "25000", 25000, 0x2B0D}, {-1, "25000", -1, 0x33FF},     {-65536, "25000", -65536, 0},
    {70000, "70000", 70000, 0x1A2E},  // its low 16 bits are 4464
    {5, "-1", -1, 0x33FF},
};

TEST_F(EmersonFans, TakeASpeedUpToTheirMaximum) {
  for (const Command& command : kCommands) {
    SCOPED_TRACE(testing::Message() << command.rpm << " of " << command.maxFanRpm);
    const auto first = fan("1", command.maxFanRpm);
    fake_.forgetBatches();
    EXPECT_EQ(first->setRpm(command.rpm), 0);
    EXPECT_THAT(fake_.batches(), ElementsAre(Operations{Op::write16(0x3B, command.written)}));
    EXPECT_THAT(host().traces,
                ElementsAre(Trace{6, "Setting fan 0 rpm to " + std::to_string(command.traced)}));
  }
}

TEST_F(EmersonFans, WriteTheirOwnRegister) {
  EXPECT_EQ(fan("2")->setRpm(1000), 0);
  EXPECT_THAT(fake_.batches(), ElementsAre(Operations{Op::write16(0x3C, 0x03E8)}));
  EXPECT_THAT(host().traces, ElementsAre(Trace{6, "Setting fan 1 rpm to 1000"}));
}

TEST_F(EmersonFans, WriteWithACheckByteWhereTheBoardSaysSo) {
  EXPECT_EQ(fan("1", "25000", {{"pec", "true"}})->setRpm(1), 0);
  EXPECT_EQ(fan("1", "25000", {{"pec", "yes"}})->setRpm(1), 0);
  EXPECT_THAT(fake_.batches(), ElementsAre(Operations{Op::write16(0x3B, 1, true)},
                                           Operations{Op::write16(0x3B, 1, false)}));
}

TEST_F(EmersonFans, ReportASpeedThatCannotBeWritten) {
  faulty_.failAlways(6);
  EXPECT_EQ(fan("2")->setRpm(30000), 6);
  EXPECT_THAT(host().traces, ElementsAre(Trace{6, "Setting fan 1 rpm to 25000"},
                                         Trace{0, "Failed to set fan1 rpm to 25000"}));
}

TEST_F(EmersonFans, WantTheirArguments) {
  EXPECT_CHECK(device_->newFan(settings({{"maxFanRpm", "1"}})), kUnit,
               "args.driverArgs.find( \"fanId\" ) != args.driverArgs.end()");
  EXPECT_CHECK(device_->newFan(settings({{"fanId", "1"}})), kUnit,
               "args.driverArgs.find( \"maxFanRpm\" ) != args.driverArgs.end()");
}

TEST_F(EmersonFans, AreTwo) {
  for (const char* id : {"0", "3", "-1"}) {
    EXPECT_CHECK(fan(id), kUnit, "fanId == 1 || fanId == 2");
  }
}

}  // namespace
