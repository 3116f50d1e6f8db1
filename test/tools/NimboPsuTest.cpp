// SPDX-License-Identifier: Apache-2.0
//
// Power supplies and their bays: the installed board in simulation, and live with supplies that are
// pulled, exchanged and cut off.
#include <fstream>
#include <stdexcept>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "test/tools/LiveFixture.hpp"

namespace {

using testing::AnyOf;
using testing::HasSubstr;
using TestSupport::parsed;
using TestSupport::Process;
using TestSupport::Result;
using JsonValue = rapidjson::Value;

// The entry of a list with this name.
const JsonValue& entry(const rapidjson::Document& report, const char* list, const char* name) {
  for (const JsonValue& each : report[list].GetArray()) {
    if (each["name"] == name) {
      return each;
    }
  }
  throw std::invalid_argument(name);
}

std::string text(const JsonValue& value) { return value.IsString() ? value.GetString() : "none"; }

// Lines of a watch are read until the slot's model is this one.
void expectModel(Process& watch, const char* slot, const std::string& model) {
  std::string line;
  do {
    ASSERT_TRUE(watch.readLine(line)) << model;
  } while (text(entry(parsed(line), "slots", slot)["model"]) != model);
}

std::vector<std::string> watchOfSlots(std::vector<std::string> mode) {
  mode.insert(mode.end(), {"--json", "watch", "slots", "--interval", "0.05"});
  return mode;
}

class NimboPsu : public TestSupport::NimboFixture {};

class LivePsu : public TestSupport::LiveFixture {
 protected:
  rapidjson::Document shown(int code = 0) const {
    const Result result = live({"show", "psus", "slots", "--json"});
    EXPECT_EQ(result.code, code) << result.err;
    return parsed(result.out);
  }
};

TEST_F(NimboPsu, SimulatedBaysHoldTheSupplyOfTheirSimulatedMemory) {
  const rapidjson::Document report = parsed(nimbo({"show", "psus", "slots", "--json"}).out);
  for (const char* bay : {"psu1", "psu2"}) {
    EXPECT_STREQ(entry(report, "slots", bay)["descriptor"].GetString(),
                 "model=DPS550AB6A serial=SIM0000001 airflow=backToFrontAirflow");
  }
  EXPECT_STREQ(entry(report, "psus", "psu1-emerson")["status"].GetString(), "EMPTY");
  EXPECT_TRUE(entry(report, "psus", "psu1-emerson")["input_volts"].IsNull());
  const JsonValue& supply = entry(report, "psus", "psu1-dps");
  EXPECT_STREQ(supply["power"].GetString(), "off");
  EXPECT_EQ(supply["input_watts"].GetDouble(), 0);
  EXPECT_TRUE(supply["efficiency_percent"].IsNull());
  EXPECT_STREQ(supply["status"].GetString(), "FAILED") << "its fan's faults are not simulated";
}

TEST_F(NimboPsu, SimulatedSupplyIsExchangedInItsMemory) {
  Process process(command(watchOfSlots({})), environment());
  expectModel(process, "psu1", "DPS550AB6A");
  std::fstream memory(directory_ + "/PsuSlot-Psu1Fru");
  std::string contents;
  std::getline(memory, contents);
  memory.seekp(static_cast<std::streamoff>(contents.find("DPS550AB6A")));
  memory << "XPS999" << std::flush;
  std::string line;
  do {
    ASSERT_TRUE(process.readLine(line));
  } while (text(entry(parsed(line), "slots", "psu1")["descriptor"]) !=
           "unmanaged power supply, modelName: XPS999AB6A, serialNum: SIM0000001");
  EXPECT_STREQ(entry(parsed(line), "slots", "psu2")["model"].GetString(), "DPS550AB6A");
}

TEST_F(NimboPsu, SimulatedSuppliesHaveNoPmbusRegisters) {
  const Result result = nimbo({"pmbus", "psu1-dps"});
  EXPECT_EQ(result.code, 2);
  EXPECT_EQ(result.err,
            "nimbo: simulated supplies have no PMBus registers; ask a live one with --live\n");
}

TEST_F(LivePsu, BothBaysShowTheirSupplies) {
  const rapidjson::Document report = shown();
  EXPECT_STREQ(entry(report, "slots", "psu1")["descriptor"].GetString(),
               "model=EP750AB12 serial=EP1A00001 airflow=frontToBackAirflow");
  const JsonValue& emerson = entry(report, "psus", "psu1-emerson");
  EXPECT_STREQ(emerson["status"].GetString(), "OK");
  EXPECT_STREQ(emerson["model"].GetString(), "EP750AB12");
  EXPECT_STREQ(emerson["serial"].GetString(), "EP1A00001");
  EXPECT_STREQ(emerson["airflow"].GetString(), "frontToBackAirflow");
  EXPECT_STREQ(emerson["power"].GetString(), "good");
  EXPECT_EQ(emerson["input_volts"].GetDouble(), 230);
  EXPECT_EQ(emerson["output_volts"].GetDouble(), 12);
  EXPECT_EQ(emerson["output_amperes"].GetDouble(), 25);
  EXPECT_EQ(emerson["output_watts"].GetDouble(), 300);
  EXPECT_NEAR(emerson["input_watts"].GetDouble(), 300 / 0.93, 0.5);
  EXPECT_NEAR(emerson["input_amperes"].GetDouble(), 300 / 0.93 / 230, 0.01);
  EXPECT_NEAR(emerson["efficiency_percent"].GetDouble(), 93, 0.2);
  EXPECT_NEAR(emerson["fan1_rpm"].GetDouble(), 7200, 50);
  EXPECT_TRUE(emerson["fan2_rpm"].IsNull());
  EXPECT_STREQ(entry(report, "psus", "psu1-dps")["status"].GetString(), "EMPTY");
  EXPECT_STREQ(entry(report, "psus", "psu2-dps")["serial"].GetString(), "DP2B00001");
  EXPECT_NEAR(entry(report, "psus", "psu2-dps")["efficiency_percent"].GetDouble(), 92, 0.2);
}

// The first bay is asked for a FRU before the supply that is in it answers.
TEST_F(LivePsu, WarningsThatAreNotPrintedAreCounted) {
  EXPECT_EQ(live({"show", "psus"}).err,
            "nimbo: warnings of the library: 1; --trace 0 prints them\n");
  EXPECT_THAT(live({"--trace", "0", "show", "psus"}).err,
              testing::Not(HasSubstr("warnings of the library")));
}

TEST_F(LivePsu, ExchangedSuppliesAreKnownByRegistersFruAndTlvInfo) {
  Process process(command(watchOfSlots({"--live"})), environment());
  expectModel(process, "psu1", "EP750AB12");
  for (const auto& [key, model] :
       {std::pair{"dps", "DPS550AB6A"}, {"tps", "TPS460AB"}, {"emerson", "EP750AB12"}}) {
    happen("psu 1 pull");
    expectModel(process, "psu1", "none");
    happen(std::string("psu 1 insert ") + key);
    expectModel(process, "psu1", model);
  }
}

TEST_F(LivePsu, SupplyExchangedBetweenTwoLooksIsTheNewOne) {
  Process process(command(watchOfSlots({"--live"})), environment());
  expectModel(process, "psu2", "DPS550AB6A");
  happen("psu 2 insert tps");
  expectModel(process, "psu2", "TPS460AB");
}

TEST_F(LivePsu, SupplyWithoutAcIsOffAndNoFailure) {
  happen("psu 1 ac off");
  happen("psu 2 ac off");
  const rapidjson::Document report = shown();
  for (const char* name : {"psu1-emerson", "psu2-dps"}) {
    const JsonValue& supply = entry(report, "psus", name);
    EXPECT_STREQ(supply["status"].GetString(), "OK");
    EXPECT_STREQ(supply["condition"].GetString(), "off");
    EXPECT_STREQ(supply["power"].GetString(), "off");
    EXPECT_EQ(supply["input_volts"].GetDouble(), 0);
    EXPECT_EQ(supply["input_amperes"].GetDouble(), 0);
    EXPECT_EQ(supply["output_watts"].GetDouble(), 0);
    EXPECT_TRUE(supply["efficiency_percent"].IsNull());
  }
  happen("psu 1 ac on");
  EXPECT_STREQ(entry(shown(), "psus", "psu1-emerson")["power"].GetString(), "good");
}

TEST_F(LivePsu, SupplyThatFailsWithAcIsAFault) {
  happen("psu 1 fail");
  happen("psu 2 fail");
  const rapidjson::Document report = shown(3);
  for (const char* name : {"psu1-emerson", "psu2-dps"}) {
    const JsonValue& supply = entry(report, "psus", name);
    EXPECT_STREQ(supply["status"].GetString(), "FAULT") << name;
    EXPECT_TRUE(supply["power"].IsNull());
    EXPECT_EQ(supply["input_volts"].GetDouble(), 230);
    EXPECT_EQ(supply["output_volts"].GetDouble(), 0);
  }
}

// One model is asked for a speed, the other for a duty of its highest speed.
TEST_F(LivePsu, FansOfSuppliesFollowTheirCommands) {
  EXPECT_EQ(live({"fan", "set", "psu1-emerson.fan1", "15000"}).out,
            "psu1-emerson.fan1: asked for 15000 rpm\n");
  ASSERT_EQ(live({"fan", "set", "psu2-dps.fan1", "12000"}).code, 0);
  double emerson = 0;
  double dps = 0;
  do {
    const rapidjson::Document report = shown();
    emerson = entry(report, "psus", "psu1-emerson")["fan1_rpm"].GetDouble();
    dps = entry(report, "psus", "psu2-dps")["fan1_rpm"].GetDouble();
  } while (emerson < 14500 || dps < 11500);
  EXPECT_LT(emerson, 15500);
  EXPECT_LT(dps, 12500);
}

TEST_F(LivePsu, FanOfASupplyThatIsNotThereTakesNoSpeed) {
  const Result result = live({"fan", "set", "psu1-dps.fan1", "9000"});
  EXPECT_EQ(result.code, 3);
  EXPECT_THAT(result.err, HasSubstr("nimbo: psu1-dps.fan1: failed (no answer): "));
}

TEST_F(NimboPsu, FanOfASupplyHasAHighestSpeedAndANumber) {
  EXPECT_EQ(nimbo({"fan", "set", "psu1-dps.fan1", "20001"}).err,
            "nimbo: psu1-dps.fan1 turns at 20000 rpm at most\n");
  const Result third = nimbo({"fan", "set", "psu1-dps.fan3", "9000"});
  EXPECT_EQ(third.code, 2);
  EXPECT_EQ(
      third.err,
      "nimbo: there is no entry \"psu1-dps.fan3\" among the board's fans; there are \"fan1\", "
      "\"fan2\", \"fan3\", \"fan4\"\n");
}

TEST_F(LivePsu, StalledFanOfASupplyIsAFault) {
  ASSERT_EQ(nimbo({"board", "set", "Psu2Dps.fan1.stalled", "1"}).code, 0);
  std::string status;
  do {
    const Result result = live({"show", "psus", "--json"});
    status = entry(parsed(result.out), "psus", "psu2-dps")["status"].GetString();
  } while (status == "OK");  // the fan runs out first
  EXPECT_EQ(status, "FAULT");
}

TEST_F(LivePsu, SupplyPulledInTheMiddleOfAReadingFailsWithTheServicesReason) {
  // Four transfers identify it and one reads a voltage; at the next it is gone, and back after
  // that.
  ASSERT_EQ(nimbo({"board", "fault", "Psu1Emerson", "nack", "--nth", "6", "--count", "1"}).code, 0);
  const Result result = live({"show", "psus", "--json"});
  EXPECT_EQ(result.code, 3);
  const rapidjson::Document report = parsed(result.out);
  const JsonValue& supply = entry(report, "psus", "psu1-emerson");
  EXPECT_STREQ(supply["status"].GetString(), "REMOTE");
  EXPECT_THAT(supply["reason"].GetString(), HasSubstr("to device 0x58"));
  EXPECT_EQ(supply["input_volts"].GetDouble(), 230);
  EXPECT_TRUE(supply["input_amperes"].IsNull());
  EXPECT_EQ(supply["output_amperes"].GetDouble(), 25);
  EXPECT_STREQ(entry(report, "psus", "psu2-dps")["status"].GetString(), "OK");
}

TEST_F(LivePsu, SuppliesPulledWhileTheyAreReadNeverMixTwoModels) {
  Process process(command(watchOfSlots({"--live"})), environment());
  for (int round = 0; round < 10; ++round) {
    happen("psu 1 insert dps");
    happen("psu 1 pull");
    happen("psu 1 insert emerson");
    std::string line;
    ASSERT_TRUE(process.readLine(line));
    EXPECT_THAT(text(entry(parsed(line), "slots", "psu1")["descriptor"]),
                AnyOf("none", "model=EP750AB12 serial=EP1A00001 airflow=frontToBackAirflow",
                      "model=DPS550AB6A serial=DP1B00001 airflow=backToFrontAirflow"));
  }
  expectModel(process, "psu1", "EP750AB12");
}

// A header of another version is one of the contents that end the host.
TEST_F(LivePsu, SupplyThatEndsTheProcessIsNamed) {
  happen("psu 2 insert tps");
  ASSERT_EQ(nimbo({"board", "set", "Psu2TlvInfo", "8", "2"}).code, 0);
  const Result result = live({"show", "slots"});
  EXPECT_EQ(result.code, -1);
  EXPECT_THAT(result.err, HasSubstr("Assertion `header[ 8 ] == '\\x01'' failed."));
  EXPECT_THAT(result.err, testing::EndsWith("nimbo: slots psu2: the library ends the process at "
                                            "this device, for the reason above\n"));
}

TEST_F(LivePsu, PmbusSnapshotShowsLatchedFaultsAndLeavesThem) {
  happen("psu 1 ac off");
  happen("psu 1 ac on");
  for (int look = 0; look < 2; ++look) {
    const Result result = live({"pmbus", "psu1-emerson"});
    EXPECT_EQ(result.code, 0) << result.err;
    EXPECT_THAT(result.out, testing::StartsWith("STATUS_WORD         0x2008 INPUT VIN_UV_FAULT\n"));
    EXPECT_THAT(result.out, HasSubstr("STATUS_INPUT        0x18 VIN_UV_FAULT OFF_FOR_LOW_VIN\n"));
    EXPECT_THAT(result.out, HasSubstr("STATUS_OTHER        0x00\nSTATUS_MFR_SPECIFIC 0x00\n"));
    EXPECT_THAT(result.out, HasSubstr("STATUS_FANS_3_4     0x00\n"));
    EXPECT_THAT(result.out, HasSubstr("READ_VIN            230.000 V\n"));
    EXPECT_THAT(result.out, HasSubstr("READ_FAN_SPEED_2    0 RPM\n"));
    EXPECT_THAT(result.out, HasSubstr("READ_VOUT           12.000 V\n"));
    EXPECT_THAT(result.out, HasSubstr("MFR_MODEL           EP750AB12\n"));
  }
}

TEST_F(LivePsu, PmbusSnapshotIsForPrograms) {
  const rapidjson::Document report = parsed(live({"pmbus", "psu2-dps", "--json"}).out);
  EXPECT_EQ(report["STATUS_WORD"]["raw"].GetUint(), 0U);
  EXPECT_EQ(report["STATUS_WORD"]["bits"].Size(), 0U);
  EXPECT_EQ(report["READ_IOUT"]["value"].GetDouble(), 22.5);
  EXPECT_STREQ(report["READ_IOUT"]["unit"].GetString(), "A");
  EXPECT_FALSE(report.HasMember("MFR_MODEL")) << "it has none";
}

TEST_F(LivePsu, PmbusOfWhatIsNoSuchDeviceIsRefused) {
  const Result eeprom = live({"pmbus", "psu1-eeprom"});
  EXPECT_EQ(eeprom.code, 2);
  EXPECT_THAT(eeprom.err, HasSubstr("psu1-eeprom is no PMBus device: its driver is "
                                    "SmbusProxyDriver; PMBus devices are psu1-emerson, psu1-dps"));
  EXPECT_EQ(live({"pmbus", "psu9"}).code, 2);
  const Result absent = live({"pmbus", "psu1-dps"});
  EXPECT_EQ(absent.code, 3);
  EXPECT_THAT(absent.err, HasSubstr("psu1-dps answers no PMBus command: "));
}

}  // namespace
