// SPDX-License-Identifier: Apache-2.0
//
// Supplies and their bays, from the description to what the simulation's files hold.
#include <gmock/gmock.h>
#include <sys/stat.h>

#include <cstdlib>
#include <fstream>

#include "test/e2e/ChipBoard.hpp"
#include "test/e2e/Library.hpp"

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Pair;

namespace E2e {

namespace {

constexpr Chip kSupply = {1, "Pmbus"};
constexpr Chip kEmerson1 = {2, "EmersonPmbus"};
constexpr Chip kEmerson2 = {3, "EmersonPmbus"};
constexpr Chip kPins = {4, "HalvPsuPCA9555", "PsuPCA"};
constexpr Chip kBay = {5, "PsuSlot"};
constexpr Chip kOtherBay = {6, "PsuSlot"};
constexpr Chip kMultiBay = {7, "MultiSlot"};
constexpr const char* kPinsFile = "HalvPsuPCA9555";

// What a supply's file holds at first, and where.
constexpr const char* kFreshSupply = "172c4bc800a80000e000f84cf8001b69d800d800\n";
constexpr std::streamoff kVoutMode = 0;
constexpr std::streamoff kStatusWord = 2;
constexpr std::streamoff kVin = 6;
constexpr std::streamoff kTemperature = 20;
constexpr const char* kFreshBay = "01c4caDPS550AB6Ac3c2caSIM0000001\n";
constexpr std::streamoff kModel = 6;

class Power : public ChipBoard {
 protected:
  Power() : ChipBoard({kSupply, kEmerson1, kEmerson2, kPins, kBay, kOtherBay, kMultiBay}) {}

  static pl_psu* psu(const Chip& chip, const std::string& args = "") {
    return LIB(pl_psu_add)(text(chip, args).c_str());
  }
  static pl_fan* fanOf(const Chip& chip, const std::string& args) {
    return LIB(pl_fan_add)(text(chip, args).c_str());
  }
};

// A reading's status and value; 77 is nothing.
std::pair<pl_status, float> read(pl_psu* psu, pl_status (*pl_psu_ops::*get)(pl_psu*, float*)) {
  float value = 77;
  const pl_status status = (psu->ops->*get)(psu, &value);
  return {status, value};
}

std::pair<pl_status, int> powerOk(pl_psu* psu) {
  int ok = 77;
  const pl_status status = psu->ops->get_power_ok(psu, &ok);
  return {status, ok};
}

std::pair<pl_status, int> rpm(pl_fan* fan) {
  int value = 77;
  const pl_status status = fan->ops->get_rpm(fan, &value);
  return {status, value};
}

// A PMBus supply.

using HostSupply = Power;

TEST_F(HostSupply, ReadsWhatItsFileHolds) {
  pl_psu* supply = psu(kSupply);
  ASSERT_NE(supply, nullptr);
  EXPECT_EQ(registers(kSupply), kFreshSupply);
  put(kSupply, kVin, "f3a3");
  EXPECT_THAT(read(supply, &pl_psu_ops::get_input_voltage), Pair(0, 232.75f));
  EXPECT_THAT(read(supply, &pl_psu_ops::get_input_current), Pair(0, 0.0f));
  EXPECT_THAT(read(supply, &pl_psu_ops::get_output_current), Pair(0, 0.0f));
  EXPECT_THAT(read(supply, &pl_psu_ops::get_input_power), Pair(0, 0.0f));
  EXPECT_THAT(read(supply, &pl_psu_ops::get_output_power), Pair(0, 0.0f));
}

// The mode is answered with the register named last in its batch, and the one byte of that is
// filled up to a word.
TEST_F(HostSupply, ReadsItsSimulatedOutputVoltageAs255) {
  pl_psu* supply = psu(kSupply);
  EXPECT_THAT(read(supply, &pl_psu_ops::get_output_voltage), Pair(0, 255.0f));
  put(kSupply, kVoutMode, "40");
  EXPECT_THAT(read(supply, &pl_psu_ops::get_output_voltage), Pair(0, 255.0f));
}

TEST_F(HostSupply, IsOffAtFirst) {
  pl_psu* supply = psu(kSupply);
  takeTrace();
  EXPECT_THAT(powerOk(supply), Pair(0, 0));
  EXPECT_THAT(
      takeTexts(4),
      ElementsAre("get_power_ok_callback", "pl_status Drivers::Pmbus::get_power_ok(int*)",
                  "Issuing CLEAR_FAULTS PMBus command", "Checking power OK using STATUS_WORD_REG",
                  "statusWord: 0x2c4b, powerBad: 0b1, off: 0b1"));
}

TEST_F(HostSupply, ShowsAcLossAndItsReturn) {
  pl_psu* supply = psu(kSupply);
  put(kSupply, kStatusWord, "0000");
  EXPECT_THAT(powerOk(supply), Pair(0, 1));
  put(kSupply, kStatusWord, "0800");
  EXPECT_THAT(powerOk(supply), Pair(2, 77));
  put(kSupply, kStatusWord, "0840");
  EXPECT_THAT(powerOk(supply), Pair(0, 0));
  put(kSupply, kStatusWord, "0000");
  EXPECT_THAT(powerOk(supply), Pair(0, 1));
}

TEST_F(HostSupply, TakesPowerGoodFromAPin) {
  pl_psu* supply = psu(kSupply, R"("gpioDevice": "PsuPCA", "powerOkReg": 0, "powerOkBit": 1)");
  takeTrace();
  EXPECT_THAT(powerOk(supply), Pair(0, 1));  // low, and that is good
  putInto(kPinsFile, 0, "36");
  EXPECT_THAT(powerOk(supply), Pair(0, 0));
  EXPECT_THAT(takeTexts(4), testing::Contains("Checking power OK using powerOkGpio_").Times(2));
}

TEST_F(HostSupply, HasTemperatures) {
  const auto sensor = [](int id) {
    const std::string args = R"("sensorId": )" + std::to_string(id);
    return LIB(pl_temp_sensor_add)(text(kSupply, args).c_str(), 60, 80);
  };
  pl_temp_sensor* first = sensor(1);
  pl_temp_sensor* second = sensor(2);
  float celsius = 77;
  EXPECT_EQ(first->ops->get_temperature(first, &celsius), PL_STATUS_OK);
  EXPECT_EQ(celsius, 38.0f);
  EXPECT_EQ(second->ops->get_temperature(second, &celsius), PL_STATUS_OK);
  EXPECT_EQ(celsius, 0.0f);
  put(kSupply, kTemperature, "e7ff");
  EXPECT_EQ(first->ops->get_temperature(first, &celsius), PL_STATUS_OK);
  EXPECT_EQ(celsius, 0.0f);
}

TEST_F(HostSupply, CannotSimulateAFansFaults) {
  pl_fan* fan = fanOf(kSupply, R"("fanId": 1, "maxFanRpm": 20000)");
  EXPECT_THAT(rpm(fan), Pair(4, 77));
  takeTrace();
  EXPECT_EQ(fan->ops->set_rpm(fan, 30000), PL_STATUS_FAILED);
  EXPECT_THAT(takeTexts(6), ElementsAre("Setting fan 0 duty cycle to 150"));
}

// A write goes to the register that was read last.
TEST_F(HostSupply, WritesADutyOfHalfTheMaximum) {
  pl_psu* supply = psu(kSupply);
  pl_fan* fan = fanOf(kSupply, R"("fanId": 2, "maxFanRpm": 20000)");
  read(supply, &pl_psu_ops::get_input_voltage);
  EXPECT_EQ(fan->ops->set_rpm(fan, 10000), PL_STATUS_OK);
  EXPECT_EQ(registers(kSupply).substr(kVin, 4), "0032");
}

// An Emerson supply beside its expander, whose inputs are 34 at first: only supply 2 is good.

using HostEmerson = Power;

TEST_F(HostEmerson, IsGoodByTheExpander) {
  EXPECT_THAT(powerOk(psu(kEmerson1, R"("psuId": 1)")), Pair(0, 0));
  EXPECT_THAT(powerOk(psu(kEmerson2, R"("psuId": 2)")), Pair(0, 1));
}

TEST_F(HostEmerson, IsFaultyWithAcAndWithoutPower) {
  pl_psu* first = psu(kEmerson1, R"("psuId": 1)");
  putInto(kPinsFile, 0, "40");
  EXPECT_THAT(powerOk(first), Pair(2, 77));
}

TEST_F(HostEmerson, HoldsTheEepromsResetsAtStart) {
  ASSERT_NE(psu(kEmerson1, R"("psuId": 1)"), nullptr);
  EXPECT_THAT(takeTexts(0),
              testing::IsSupersetOf({"EmersonPmbus init function", "HalvPsuPCA9555 device created",
                                     "EmersonPmbus device created"}));
  EXPECT_EQ(contents(kPinsFile), "3440\n");
}

TEST_F(HostEmerson, ComputesWhatItDoesNotMeasure) {
  pl_psu* first = psu(kEmerson1, R"("psuId": 1)");
  EXPECT_EQ(registers(kEmerson1), "f3a3d2e12a02f264\n");
  EXPECT_THAT(read(first, &pl_psu_ops::get_input_voltage), Pair(0, 232.75f));
  EXPECT_THAT(read(first, &pl_psu_ops::get_input_power), Pair(0, 153.0f));
  EXPECT_THAT(read(first, &pl_psu_ops::get_output_current), Pair(0, 11.515625f));
  EXPECT_THAT(read(first, &pl_psu_ops::get_input_current), Pair(0, 153.0f / 232.75f));
  EXPECT_THAT(read(first, &pl_psu_ops::get_output_voltage), Pair(4, 77.0f));
  EXPECT_THAT(read(first, &pl_psu_ops::get_output_power), Pair(4, 77.0f));
}

TEST_F(HostEmerson, TakesItsFansSpeedAsItIs) {
  pl_fan* fan = fanOf(kEmerson1, R"("psuId": 1, "fanId": 1, "maxFanRpm": 25000)");
  EXPECT_THAT(rpm(fan), Pair(0, 16448));
  takeTrace();
  EXPECT_EQ(fan->ops->set_rpm(fan, 20000), PL_STATUS_OK);
  EXPECT_THAT(takeTexts(6), ElementsAre("Setting fan 0 rpm to 20000"));
  EXPECT_EQ(registers(kEmerson1).substr(8, 4), "2a71");  // where the speed was read
}

// Bays, each kind of identification. Only the FRU is simulated.

std::string bayArgs(const std::string& type, const std::string& more = "") {
  return R"("psuId": 1, "identificationType": ")" + type +
         R"(", "model_a": "DPS550AB6A", "psuFdl_a": "<{modelName} {serialNum}>")" + more;
}

// Presence is bit 4 of the expander's inputs, status bit 2; both are set at first.
constexpr const char* kLines =
    R"(, "gpioDevice": "PsuPCA", "presenceReg": 0, "presenceBit": 4, "statusReg": 0,
       "statusBit": 2)";

class HostBay : public Power {
 protected:
  static pl_slot* bay(const std::string& args, const Chip& chip = kBay) {
    return LIB(pl_slot_add)(text(chip, args).c_str());
  }
  static pl_slot* fruBay(const std::string& more = "") {
    return bay(bayArgs("ipmi", R"(, "ipmiId": "1")" + more));
  }
};

TEST_F(HostBay, DescribesItsSupplyByItsFru) {
  pl_slot* slot = fruBay();
  EXPECT_EQ(registers(kBay), kFreshBay);
  EXPECT_THAT(ask(slot), Pair(0, "<DPS550AB6A SIM0000001>"));
}

TEST_F(HostBay, ChangesItsDescriptorWithItsSupply) {
  pl_slot* slot = fruBay(std::string(R"(, "model_b": "DPS800", "psuFdl_b": "[{model}]")") + kLines);
  EXPECT_THAT(ask(slot), Pair(0, "<DPS550AB6A SIM0000001>"));
  putInto(kPinsFile, 0, "24");
  EXPECT_THAT(ask(slot), Pair(1, "none"));
  put(kBay, kModel, "DPS800    ");
  putInto(kPinsFile, 0, "30");
  EXPECT_THAT(ask(slot), Pair(0, "unmanaged power supply, modelName: PWR-UNKNOWN, serialNum: N/A"));
  putInto(kPinsFile, 0, "34");
  EXPECT_THAT(ask(slot), Pair(0, "[DPS800]"));
  takeTrace();
  EXPECT_THAT(ask(slot), Pair(0, "[DPS800]"));
  EXPECT_THAT(takeTexts(7), ElementsAre("getPresence", "Using cached fdl"));
}

TEST_F(HostBay, MakesAHostileModelHarmless) {
  pl_slot* slot = fruBay();
  put(kBay, kModel, "{modelName");
  EXPECT_THAT(ask(slot),
              Pair(0, "unmanaged power supply, modelName: ?modelName, serialNum: SIM0000001"));
}

TEST_F(HostBay, CannotSimulateRegistersAndMemoriesOfOtherKinds) {
  EXPECT_THAT(ask(bay(bayArgs("pmbus"))), Pair(4, "none"));
  EXPECT_THAT(ask(bay(bayArgs("tlv"))), Pair(1, "none"));
  EXPECT_THAT(ask(bay(bayArgs("wedge"))), Pair(1, "none"));
}

// A command of the board's in a directory of its own, which answers with two words.
class HostBayWithCommand : public HostBay {
 protected:
  HostBayWithCommand() {
    std::filesystem::create_directory(bin_);
    std::ofstream(bin_ / "zuIpmi")
        << "#!/bin/sh\necho \"$@\" > " << path("asked") << "\necho SN1 DPS550AB6A\n";
    ::chmod((bin_ / "zuIpmi").c_str(), 0755);
    ::setenv("PATH", (bin_.string() + ":" + std::getenv("PATH")).c_str(), 1);
  }

  const std::filesystem::path bin_ = directory_ / "bin";
};

TEST_F(HostBayWithCommand, DescribesItsSupplyByACommand) {
  EXPECT_THAT(ask(bay(bayArgs("ipmitool"))), Pair(0, "<DPS550AB6A SN1>"));
  EXPECT_EQ(contents("asked"), "psuSlot 1\n");
  const char* raw = R"(, "ipmiId": "7", "ipmiRawModel": "1 2", "ipmiRawSerialNumber": "`exit`")";
  EXPECT_THAT(ask(bay(bayArgs("ipmitool_raw", raw))), Pair(0, "<DPS550AB6A SN1>"));
  EXPECT_EQ(contents("asked"), "raw psuSlot 7 ModelNumber=1 2 SerialNumber=`exit`\n");
}

// A bay for one of several kinds.

class HostMultiBay : public HostBay {
 protected:
  static std::string quoted(const std::string& text) {
    std::string json = "\"";
    for (const char c : text) {
      json += c == '"' || c == '\\' ? std::string("\\") + c : std::string(1, c == '\n' ? ' ' : c);
    }
    return json + "\"";
  }
  // Bays of one expander's lines each, by key.
  static pl_slot* multiBay(const std::string& kinds) {
    std::string text = description("x", R"("id": 1)", kMultiBay.driver, kMultiBay.did);
    text.pop_back();
    text += R"(, "isMultiDevice": true, "multiDeviceArgs": {)" + kinds + "}}";
    return LIB(pl_slot_add)(text.c_str());
  }
  static std::string kind(const Chip& chip, const std::string& args) {
    return quoted(text(chip, args));
  }
};

TEST_F(HostMultiBay, AnswersForTheKindThatIsPresent) {
  const std::string first = bayArgs("ipmi", R"(, "ipmiId": "1")" + std::string(kLines));
  const std::string second = R"("psuId": 2, "identificationType": "ipmi", "ipmiId": "2")";
  pl_slot* slot = multiBay(R"("1": )" + kind(kBay, first) + R"(, "2": )" + kind(kOtherBay, second));
  ASSERT_NE(slot, nullptr);
  EXPECT_THAT(ask(slot), Pair(0, "<DPS550AB6A SIM0000001>"));
  putInto(kPinsFile, 0, "24");  // the first kind is gone
  EXPECT_THAT(ask(slot),
              Pair(0, "unmanaged power supply, modelName: DPS550AB6A, serialNum: SIM0000001"));
  putInto(kPinsFile, 0, "34");  // the second is asked first now
  EXPECT_THAT(ask(slot).second, HasSubstr("unmanaged"));
}

TEST_F(HostMultiBay, IsEmptyWithoutAnyKind) {
  const std::string first = bayArgs("wedge");
  pl_slot* slot = multiBay(R"("1": )" + kind(kBay, first) + R"(, "2": "no description")");
  EXPECT_THAT(takeTexts(0), testing::Contains("Failed to add slot 1 subdevice with key='2'"));
  EXPECT_THAT(ask(slot), Pair(1, "none"));
}

TEST_F(HostMultiBay, IsOneOfFive) {
  EXPECT_DEATH(
      LIB(pl_slot_add)(R"({"did": 7, "driver": "MultiSlot", "address": {"address": 95},
                                    "driverArgs": {"id": "6"}, "isMultiDevice": true,
                                    "multiDeviceArgs": {}})"),
      "Drivers/MultiSlot.cpp:[0-9]+: [^`]+: Assertion `slotId >= 1 && slotId <= 5' failed");
}

}  // namespace

}  // namespace E2e
