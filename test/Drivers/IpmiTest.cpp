// SPDX-License-Identifier: Apache-2.0
#include "Drivers/Ipmi.hpp"

#include <gmock/gmock.h>

#include <stdexcept>

#include "Components/Fan.hpp"
#include "Components/Psu.hpp"
#include "Components/Slot.hpp"
#include "Components/TempSensor.hpp"
#include "Utils/NotImplemented.hpp"
#include "test/support/Check.hpp"
#include "test/support/Device.hpp"
#include "test/support/Host.hpp"
#include "test/support/OutOfMemory.hpp"
#include "test/support/Presence.hpp"

namespace {

using Component::LogicalDevice::Fan;
using Component::LogicalDevice::Psu;
using Component::LogicalDevice::Slot;
using Component::LogicalDevice::TempSensor;
using Doubles::host;
using Doubles::Presence;
using Doubles::presence;
using Doubles::settings;
using Doubles::Trace;
using Drivers::ArgMap;
using Drivers::Ipmi;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kUnit = "Drivers/Ipmi";
constexpr const char* kRequired = "it != args.driverArgs.end()";

// A back-end that knows one airflow and remembers what it was asked for.
class Bmc : public Ham::IpmiHam {
 public:
  int airflowId(const std::string& key) override {
    airflowKeys.push_back(key);
    return airflowStatus;
  }

  std::vector<std::string> airflowKeys;
  int airflowStatus = 0;
};

class IpmiDevice : public testing::Test {
 protected:
  IpmiDevice() {
    Ham::ipmiHams["Bmc"] = [this] { return bmc_; };
  }

  // A device that has not started.
  std::unique_ptr<Ipmi> device(ArgMap args = {}) {
    args["hamType"] = "Bmc";
    std::unique_ptr<Ipmi> made(
        dynamic_cast<Ipmi*>(Ipmi::create(settings(std::move(args)), nullptr)));
    host().traces.clear();
    return made;
  }

  std::shared_ptr<Bmc> bmc_ = std::make_shared<Bmc>();
};

// Start.

TEST_F(IpmiDevice, TracesItsMaking) {
  const std::unique_ptr<Component::HardwareDevice> made(
      Ipmi::create(settings({{"hamType", "Bmc"}, {"fruId", "FRU1"}}), nullptr));
  EXPECT_NE(made, nullptr);
  EXPECT_THAT(host().traces,
              ElementsAre(Trace{0, "Creating Ipmi Device"}, Trace{0, "IPMI fruId: 'FRU1'"},
                          Trace{0, "Creating ham type: Bmc"}, Trace{3, "looking for ham Bmc"},
                          Trace{3, "creating  Bmc factory function"}));
}

TEST_F(IpmiDevice, IsNotMadeWithoutATypeOfBackEnd) {
  EXPECT_EQ(Ipmi::create(settings({}), nullptr), nullptr);
  EXPECT_THAT(host().traces,
              ElementsAre(Trace{0, "Creating Ipmi Device"}, Trace{0, "IPMI fruId: ''"},
                          Trace{0, "Error: 'hamType' driver arg not provided to IPMI driver"}));
}

TEST_F(IpmiDevice, IsNotMadeWithoutItsBackEnd) {
  EXPECT_EQ(Ipmi::create(settings({{"hamType", "Other"}}), nullptr), nullptr);
  EXPECT_THAT(host().texts(0),
              ElementsAre("Creating Ipmi Device", "IPMI fruId: ''", "Creating ham type: Other",
                          "ham not found Other", "Error: Failed to create ham: Other"));
}

TEST_F(IpmiDevice, TellsItsBackEndOfItsFru) {
  const auto made = device({{"fruId", "FRU1"}});
  made->init();
  EXPECT_THAT(bmc_->airflowKeys, ElementsAre("FRU1"));
  EXPECT_THAT(host().traces, ElementsAre(Trace{0, "Ipmi::init()"}));
}

TEST_F(IpmiDevice, WithoutAFruLeavesItsBackEndAlone) {
  const auto made = device();
  made->init();
  EXPECT_THAT(bmc_->airflowKeys, IsEmpty());
  EXPECT_THAT(host().traces, ElementsAre(Trace{0, "Ipmi::init()"}));
}

TEST_F(IpmiDevice, TracesAnAirflowThatIsNotFound) {
  const auto made = device({{"fruId", "FRU1"}});
  bmc_->airflowStatus = 4;
  made->init();
  EXPECT_THAT(host().texts(0),
              ElementsAre("Ipmi::init()",
                          testing::AllOf(testing::HasSubstr("FRU1"), testing::HasSubstr("4"))));
}

TEST_F(IpmiDevice, HasNoLedsOrCages) {
  const auto made = device();
  EXPECT_THROW(made->newLed(settings({})), NotImplementedException);
  EXPECT_THROW(made->newSfpXcvr(0, settings({})), NotImplementedException);
}

TEST_F(IpmiDevice, SimulatesNothing) { EXPECT_EQ(device()->expectedValues(), nullptr); }

TEST_F(IpmiDevice, KnowsTheAirflowOfItsFru) {
  bmc_->sensors_["AIRFLOWDIRECTION_FRU1"] = "backToFrontAirflow";
  const auto made = device({{"fruId", "fru1"}});
  EXPECT_EQ(made->airflowDirection(), "backToFrontAirflow");
  bmc_->status_ = 6;
  EXPECT_EQ(made->airflowDirection(), "unknownAirflowDirection");
  EXPECT_EQ(device()->airflowDirection(), "unknownAirflowDirection");
}

// Supplies.

// Never deleted, by contract.
Psu& psuOf(Ipmi& device) {
  static Psu* psu;
  psu = device.newPsu(settings({{"psuId", "2"}, {"ipmiKey", "psu2"}}));
  return *psu;
}

struct Reading {
  const char* sensor;
  pl_status (Psu::*get)(float*);
};
constexpr Reading kReadings[] = {
    {"PSU2_CURRENT_IN", &Psu::get_input_current}, {"PSU2_CURRENT_OUT", &Psu::get_output_current},
    {"PSU2_VOLTAGE_IN", &Psu::get_input_voltage}, {"PSU2_VOLTAGE_OUT", &Psu::get_output_voltage},
    {"PSU2_POWER_IN", &Psu::get_input_power},     {"PSU2_POWER_OUT", &Psu::get_output_power},
};

TEST_F(IpmiDevice, ReadsEachQuantityOfASupplyByItsName) {
  const auto made = device();
  Psu& psu = psuOf(*made);
  EXPECT_THAT(host().traces, ElementsAre(Trace{0, "Creating Ipmi Psu Device 2, psu2"}));
  for (const Reading& reading : kReadings) {
    bmc_->sensors_ = {{reading.sensor, "12.5"}};
    for (const Reading& other : kReadings) {
      float value = 1.5f;
      const bool known = &other == &reading;
      EXPECT_EQ((psu.*other.get)(&value), known ? 0 : 4) << other.sensor;
      EXPECT_EQ(value, known ? 12.5f : 1.5f) << other.sensor;
    }
  }
}

TEST_F(IpmiDevice, ReadsPowerGoodAsAWholeNumber) {
  const auto made = device();
  Psu& psu = psuOf(*made);
  int ok = 5;
  EXPECT_EQ(psu.get_power_ok(&ok), 4);
  EXPECT_EQ(ok, 5);
  bmc_->sensors_["PSU2_OK"] = "1";
  EXPECT_EQ(psu.get_power_ok(&ok), 0);
  EXPECT_EQ(ok, 1);
  bmc_->status_ = 6;
  ok = 5;
  EXPECT_EQ(psu.get_power_ok(&ok), 6);
  EXPECT_EQ(ok, 5);
  bmc_->status_ = 0;
  bmc_->sensors_["PSU2_OK"] = "na";
  EXPECT_THROW(psu.get_power_ok(&ok), std::invalid_argument);
}

TEST_F(IpmiDevice, MakesNoSupplyWithoutItsArguments) {
  const auto made = device();
  EXPECT_EQ(made->newPsu(settings({{"ipmiKey", "psu1"}})), nullptr);
  EXPECT_EQ(made->newPsu(settings({{"psuId", "1"}})), nullptr);
  EXPECT_THAT(host().traces, ElementsAre(Trace{0, "Error: expected 'psuId' in psu driverArgs"},
                                         Trace{0, "Error: expected 'ipmiKey' in psu driverArgs"}));
}

TEST_F(IpmiDevice, HasTwoSupplies) {
  const auto made = device();
  for (const char* id : {"0", "3", "257"}) {  // not cut to 8 bits
    EXPECT_CHECK(made->newPsu(settings({{"psuId", id}, {"ipmiKey", "x"}})), kUnit,
                 "psuId == 1 || psuId == 2");
  }
  EXPECT_CHECK(made->newPsu(settings({{"psuId", "3"}})), kUnit, "psuId == 1 || psuId == 2");
}

// Fans.

TEST_F(IpmiDevice, ReadsAFansSpeedAsAWholeNumber) {
  const auto made = device();
  const std::unique_ptr<Fan> fan(
      made->newFan(settings({{"fanId", "7"}, {"ipmiKey", "fan7"}, {"maxRpm", "9000"}})));
  EXPECT_THAT(host().traces, ElementsAre(Trace{0, "Creating new Ipmi Fan id 7"}));
  int rpm = 5;
  EXPECT_EQ(fan->getRpm(&rpm), 4);
  EXPECT_EQ(rpm, 5);
  bmc_->sensors_["FAN7"] = "5400.9";
  EXPECT_EQ(fan->getRpm(&rpm), 0);
  EXPECT_EQ(rpm, 5400);
  bmc_->sensors_["FAN7"] = "9999999999";
  EXPECT_THROW(fan->getRpm(&rpm), std::out_of_range);
}

TEST_F(IpmiDevice, StopsWhenAFanIsSet) {
  const auto made = device();
  const std::unique_ptr<Fan> fan(
      made->newFan(settings({{"fanId", "1"}, {"ipmiKey", "x"}, {"maxRpm", "9000"}})));
  EXPECT_CHECK(static_cast<void>(fan->setRpm(1000)), kUnit, "0 && \"fan is readonly\"");
}

TEST_F(IpmiDevice, TakesAFansMaximumFromTheFanOrTheDevice) {
  const auto without = device();
  const auto with = device({{"maxFanRpm", "9000"}});
  const ArgMap bare = {{"fanId", "1"}, {"ipmiKey", "x"}};
  EXPECT_NE(std::unique_ptr<Fan>(with->newFan(settings(bare))), nullptr);
  EXPECT_CHECK(without->newFan(settings(bare)), kUnit, kRequired);
  ArgMap wrong = bare;
  wrong["maxRpm"] = "fast";
  EXPECT_THROW(with->newFan(settings(wrong)), std::invalid_argument);
}

TEST_F(IpmiDevice, TakesTheDevicesMaximumFromAFansDescriptionToo) {
  const auto made = device();
  EXPECT_NE(std::unique_ptr<Fan>(
                made->newFan(settings({{"fanId", "1"}, {"ipmiKey", "x"}, {"maxFanRpm", "9000"}}))),
            nullptr);
}

TEST_F(IpmiDevice, WantsAFansArguments) {
  const auto made = device({{"maxFanRpm", "9000"}});
  EXPECT_CHECK(made->newFan(settings({{"ipmiKey", "x"}})), kUnit, kRequired);
  EXPECT_CHECK(made->newFan(settings({{"fanId", "1"}})), kUnit, kRequired);
}

TEST_F(IpmiDevice, HasSevenFans) {
  const auto made = device({{"maxFanRpm", "9000"}});
  for (const char* id : {"0", "8"}) {
    EXPECT_CHECK_AFTER(made->newFan(settings({{"fanId", id}, {"ipmiKey", "x"}})),
                       (Trace{0, std::string("Creating new Ipmi Fan id ") + id}), kUnit,
                       "fanId >= 1 && fanId <= 7");
  }
}

// Temperatures.

TEST_F(IpmiDevice, ReadsATemperature) {
  const auto made = device();
  const std::unique_ptr<TempSensor> sensor(made->newTempSensor(settings({{"ipmiKey", "Inlet"}})));
  EXPECT_THAT(host().traces, ElementsAre(Trace{0, "Creating Ipmi TempSensor Device"}));
  float celsius = 1.5f;
  EXPECT_EQ(sensor->getTemperature(&celsius), 4);
  EXPECT_EQ(celsius, 1.5f);
  bmc_->sensors_["INLET"] = "-12.25";  // not clamped
  EXPECT_EQ(sensor->getTemperature(&celsius), 0);
  EXPECT_EQ(celsius, -12.25f);
  EXPECT_EQ(sensor->id(), 0);
  EXPECT_EQ(sensor->reg(), 0);
}

TEST_F(IpmiDevice, WantsATemperaturesSensor) {
  const auto made = device();
  EXPECT_CHECK_AFTER(made->newTempSensor(settings({})),
                     (Trace{0, "Creating Ipmi TempSensor Device"}), kUnit, kRequired);
}

// Fan bays.

class IpmiFanBay : public IpmiDevice {
 protected:
  static ArgMap bayArgs(ArgMap more = {}) {
    more.merge(ArgMap{{"fanId", "3"},
                      {"ipmiKey", "fan3"},
                      {"fanFdl", "<{airflowDirection} {maxRpm} {modelName}>"},
                      {"rpmF2B", "11000"},
                      {"rpmB2F", "9000"},
                      {"modelName", "T1"}});
    return more;
  }
  std::unique_ptr<Slot> bay(ArgMap more = {}) {
    std::unique_ptr<Slot> made(device_->newSlot(settings(bayArgs(std::move(more)))));
    host().traces.clear();
    return made;
  }
  static Presence ask(Slot& bay) {
    return Doubles::presenceBy([&](char** text) { return bay.getPresence(text); });
  }

  std::unique_ptr<Ipmi> device_ = device({{"fruId", "fru1"}});
};

TEST_F(IpmiFanBay, TracesItsMaking) {
  const std::unique_ptr<Slot> made(device_->newSlot(settings(bayArgs({{"fanId", "8"}}))));
  EXPECT_THAT(host().traces, ElementsAre(Trace{0, "Creating new Ipmi Slot for Fan id 8"}));
}

TEST_F(IpmiFanBay, IsOneOfEight) {
  for (const char* id : {"0", "9", "257"}) {
    EXPECT_CHECK_AFTER(bay({{"fanId", id}}),
                       (Trace{0, std::string("Creating new Ipmi Slot for Fan id ") + id}), kUnit,
                       "1 <= fanId && fanId <= 8");
  }
}

TEST_F(IpmiFanBay, WantsItsArguments) {
  struct Row {
    const char* key;
    const char* text;
  };
  for (const auto& [key, text] : {Row{"fanId", kRequired},
                                  {"ipmiKey", kRequired},
                                  {"fanFdl", "fdlIt != slotArgs_.end()"},
                                  {"rpmF2B", "f2bIt != slotArgs_.end()"},
                                  {"rpmB2F", "b2fIt != slotArgs_.end()"},
                                  {"modelName", "modelIt != slotArgs_.end()"}}) {
    ArgMap args = bayArgs();
    args.erase(key);
    EXPECT_CHECK(device_->newSlot(settings(args)), kUnit, text);
  }
}

TEST_F(IpmiFanBay, DescribesAFanByItsAirflow) {
  bmc_->sensors_ = {{"FAN3", "5400"}, {"AIRFLOWDIRECTION_FRU1", "backToFrontAirflow"}};
  EXPECT_EQ(ask(*bay()), presence(0, "<backToFrontAirflow 9000 T1>"));
  EXPECT_THAT(host().traces,
              ElementsAre(Trace{6, "IpmiHam::fanPresence  'fan3' 0 1"},
                          Trace{5, "FormatFdl::set( 'airflowDirection', 'backToFrontAirflow' )"},
                          Trace{5, "FormatFdl::set( 'maxRpm', '9000' )"},
                          Trace{5, "FormatFdl::set( 'modelName', 'T1' )"},
                          Trace{5, "fan 3 fdl: <backToFrontAirflow 9000 T1>"}));
  bmc_->sensors_["AIRFLOWDIRECTION_FRU1"] = "frontToBackAirflow";
  EXPECT_EQ(ask(*bay()), presence(0, "<frontToBackAirflow 11000 T1>"));
}

TEST_F(IpmiFanBay, DescribesAFanWithoutAnAirflow) {
  bmc_->sensors_["FAN3"] = "0";
  EXPECT_EQ(ask(*bay()), presence(0, "<unknownAirflowDirection 11000 T1>"));
}

TEST_F(IpmiFanBay, KeepsItsDescriptorWhileTheFanIsThere) {
  bmc_->sensors_ = {{"FAN3", "5400"}, {"AIRFLOWDIRECTION_FRU1", "backToFrontAirflow"}};
  const auto made = bay();
  ask(*made);
  bmc_->sensors_["AIRFLOWDIRECTION_FRU1"] = "frontToBackAirflow";
  host().traces.clear();
  EXPECT_EQ(ask(*made), presence(0, "<backToFrontAirflow 9000 T1>"));
  EXPECT_THAT(host().texts(5), ElementsAre("Using cached fdl for fan 3"));
}

TEST_F(IpmiFanBay, DescribesAnewAFanThatWasGone) {
  bmc_->sensors_ = {{"FAN3", "5400"}, {"AIRFLOWDIRECTION_FRU1", "backToFrontAirflow"}};
  const auto made = bay();
  ask(*made);
  bmc_->sensors_.erase("FAN3");
  EXPECT_EQ(ask(*made), presence(4));
  bmc_->sensors_ = {{"FAN3", "5400"}, {"AIRFLOWDIRECTION_FRU1", "frontToBackAirflow"}};
  EXPECT_EQ(ask(*made), presence(0, "<frontToBackAirflow 11000 T1>"));
}

TEST_F(IpmiFanBay, DescribesAnewAfterValuesThatWereNotGood) {
  bmc_->sensors_ = {{"FAN3", "5400"}, {"AIRFLOWDIRECTION_FRU1", "backToFrontAirflow"}};
  const auto made = bay();
  ask(*made);
  bmc_->status_ = 6;
  EXPECT_EQ(ask(*made), presence(6));
  bmc_->status_ = 0;
  bmc_->sensors_.erase("AIRFLOWDIRECTION_FRU1");
  EXPECT_EQ(ask(*made), presence(0, "<unknownAirflowDirection 11000 T1>"));
}

TEST_F(IpmiFanBay, AsksForItsSlotsSensorWhereOneIsGiven) {
  bmc_->sensors_["FAN3"] = "5400";
  EXPECT_EQ(ask(*bay({{"ipmiSlotKey", "tray3"}})), presence(4));
  bmc_->sensors_ = {{"TRAY3", "1"}};
  EXPECT_EQ(ask(*bay({{"ipmiSlotKey", "tray3"}})).first, 0);
}

TEST_F(IpmiFanBay, StopsWithoutASensor) {
  EXPECT_CHECK(ask(*bay({{"ipmiSlotKey", ""}})), kUnit, "fruKey_ != \"\"");
  EXPECT_CHECK(ask(*bay({{"ipmiKey", ""}})), kUnit, "fruKey_ != \"\"");
}

TEST_F(IpmiFanBay, FillsInAnAirflowThatHoldsItsOwnPlaceholder) {
  bmc_->sensors_ = {{"FAN3", "1"}, {"AIRFLOWDIRECTION_FRU1", "{airflowDirection}\"{maxRpm}\n"}};
  EXPECT_EQ(ask(*bay()), presence(0, "<?airflowDirection???maxRpm?? 11000 T1>"));
}

TEST_F(IpmiFanBay, ReportsThatItHasNoMemory) {
  bmc_->sensors_["FAN3"] = "1";
  const auto made = bay();
  for (int i = 0; i < 2; ++i) {  // the second time from what is kept
    Doubles::outOfMemory = true;
    const auto answer = ask(*made);
    Doubles::outOfMemory = false;
    EXPECT_EQ(answer, presence(6));
    EXPECT_TRUE(host().traced(0, "Error: Ipmi::FanSlot strdup failed"));
  }
}

}  // namespace
