// SPDX-License-Identifier: Apache-2.0
#include "tools/Board.hpp"

#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidjson/document.h>

namespace {

using Nimbo::Board;
using Nimbo::Entry;

// A fan-tray expander, and a transceiver CPLD that serves both types of port.
constexpr const char* kPanel = R"([
  {"did": 7, "label": "FanPCA", "driver": "HalvorsaPCA9555", "address": {"address": 32},
   "driverArgs": {"bank-io-0": 255, "bank-io-1": 15}},
  {"did": 8, "label": "CPLD", "driver": "HalvQCPLD", "address": {"address": 96}},
  {"did": 9, "label": "Pins", "driver": "GenericPCA9555", "address": {"address": 33},
   "driverArgs": {"bank-io-0": 255, "bank-io-1": 0}}])";

constexpr const char* kDevices = R"([
  {"did": 7, "label": "PSoC", "driver": "HalvorsaPsoc", "address": {"address": 78},
   "driverArgs": {"maxRpm": 20000, "registerOffset": 3}, "components": [{"uid": 9}]},
  {"did": 8, "label": "CPLD", "driver": "GpioDriver", "address": {"address": 49}}])";

// A board with the devices on one bus, and lists of entries.
std::string board(const std::string& devices, const std::string& lists = "") {
  return R"({"board": "B", "topology": [{"type": "I2C", "ham": "NimboSmbus", "id": 1, "devices": )" +
         devices + "}]" + lists + "}";
}

std::string fault(const std::string& text) {
  try {
    Board::parse("f", text);
  } catch (const Config::FileError& error) {
    return error.what();
  }
  return "none";
}

// The place's line and column vary with the text above; tests of messages look at the rest.
std::string message(const std::string& text) {
  const std::string what = fault(text);
  return what == "none" ? what : what.substr(what.find(": ") + 2);
}

TEST(Board, InstalledBoardIsSound) {
  const Board halvorsa = Board::load(NIMBO_HALVORSA_BOARD);
  EXPECT_STREQ(halvorsa.name(), "Halvorsa");
  EXPECT_EQ(halvorsa.entries("fans").size(), 4U);
  EXPECT_EQ(halvorsa.entries("temp_sensors").size(), 6U);
  EXPECT_EQ(halvorsa.entries("xcvrs").size(), 62U);
  EXPECT_EQ(halvorsa.entries("slots").size(), 6U);
  EXPECT_EQ(halvorsa.entries("psus").size(), 6U);
  EXPECT_EQ(halvorsa.entries("leds").size(), 7U);
}

TEST(Board, TopologyIsTheFilesOwn) {
  rapidjson::Document topology;
  topology.Parse(Board::parse("f", board(kDevices)).topology().c_str());
  ASSERT_TRUE(topology.IsArray());
  EXPECT_EQ(topology[0]["devices"][0]["did"].GetInt(), 7);
}

TEST(Board, DescriptionJoinsDeviceAndEntry) {
  const Board parsed =
      Board::parse("f", board(kDevices, R"(, "fans": [{"name": "fan1", "device": "PSoC",
                                          "args": {"fanId": 1, "registerOffset": 0}}])"));
  const Entry fan = parsed.entries("fans").at(0);
  rapidjson::Document text;
  text.Parse(parsed.description(fan).c_str());
  ASSERT_TRUE(text.IsObject());
  EXPECT_EQ(text["did"].GetInt(), 7);
  EXPECT_STREQ(text["driver"].GetString(), "HalvorsaPsoc");
  EXPECT_EQ(text["address"]["address"].GetInt(), 78);
  EXPECT_EQ(text["driverArgs"]["fanId"].GetInt(), 1);
  EXPECT_EQ(text["driverArgs"]["maxRpm"].GetInt(), 20000) << "the device's own argument";
  EXPECT_EQ(text["driverArgs"]["registerOffset"].GetInt(), 0) << "the entry's wins";
  EXPECT_EQ(text["driverArgs"].MemberCount(), 3U);
}

TEST(Board, AllEntriesOfADeviceShareItsSimulationName) {
  const Board parsed = Board::parse("f", board(kDevices, R"(,
      "gpios": [{"name": "a", "device": "CPLD", "args": {"register": 1, "bitpos": 0}},
                {"name": "b", "device": "CPLD", "args": {"register": 1, "bitpos": 1}}])"));
  for (const Entry& line : parsed.entries("gpios")) {
    rapidjson::Document text;
    text.Parse(parsed.description(line).c_str());
    EXPECT_STREQ(text["name"].GetString(), "CPLD");
  }
}

TEST(Board, PlaceOfAnEntryIsItsObject) {
  const Board parsed = Board::parse("f", board(kDevices, R"(,
 "gpios": [
   {"name": "a", "device": "CPLD", "args": {"register": 1, "bitpos": 0}}])"));
  EXPECT_EQ(parsed.place(parsed.entries("gpios").at(0)).text(), "f:6:4");
}

TEST(Board, MissingListHasNoEntries) {
  EXPECT_TRUE(Board::parse("f", board(kDevices)).entries("leds").empty());
}

TEST(Board, SyntaxErrorHasItsPlace) {
  EXPECT_EQ(fault("{\"board\": \"B\",\n\"topology\" []}"),
            "f:2:12: Missing a colon after a name of object member.");
}

TEST(Board, MissingKeyIsNamed) {
  EXPECT_EQ(fault("{\"topology\": []}"),
            "f:1:1: the key \"board\" is missing in this object (the board's name)");
  EXPECT_THAT(message(board(R"([{"did": 7, "label": "x", "driver": "Dummy"}])")),
              testing::StartsWith("the key \"address\" is missing in this object"));
}

TEST(Board, UnknownDriverIsRefusedAndTheKnownOnesAreListed) {
  EXPECT_THAT(
      message(board(R"([{"did": 7, "label": "x", "driver": "Psoc", "address": {"address": 1}}])")),
      testing::AllOf(testing::StartsWith("\"Psoc\" is not known; expected "),
                     testing::HasSubstr("\"HalvorsaPsoc\"")));
}

TEST(Board, UnknownControllerIsRefused) {
  EXPECT_THAT(message(R"({"board": "B", "topology": [{"type": "SMC", "ham": "NimboSmbus"}]})"),
              testing::StartsWith("\"SMC\" is not known; expected \"SCD\", \"I2C\""));
}

TEST(Board, AddressBeyondSevenBitsIsRefused) {
  EXPECT_THAT(message(board(
                  R"([{"did": 7, "label": "x", "driver": "Dummy", "address": {"address": 160}}])")),
              testing::StartsWith("160 is out of range; expected at least 0 and at most 127"));
}

TEST(Board, WideRegisterAddressOfFourBytesIsRefused) {
  EXPECT_THAT(message(board(R"([{"did": 7, "label": "x", "driver": "Dummy",
                                 "address": {"address": 1, "addrSize": 4}}])")),
              testing::StartsWith("4 is not known; expected 1, 2"));
}

TEST(Board, TwoDevicesWithOneDidAreRefused) {
  EXPECT_THAT(message(board(R"([
                {"did": 7, "label": "x", "driver": "Dummy", "address": {"address": 1}},
                {"did": 7, "label": "y", "driver": "Dummy", "address": {"address": 2}}])")),
              testing::StartsWith("the did 7 belongs to another device already, at f:2:17"));
}

TEST(Board, TwoDevicesWithOneLabelAreRefused) {
  EXPECT_THAT(message(board(R"([
                {"did": 7, "label": "x", "driver": "Dummy", "address": {"address": 1}},
                {"did": 8, "label": "x", "driver": "Dummy", "address": {"address": 2}}])")),
              testing::StartsWith("the label \"x\" belongs to another device already"));
}

TEST(Board, TwoBussesWithOneNumberAreRefused) {
  EXPECT_EQ(message(R"({"board": "B", "topology": [{"type": "SCD", "ham": "NimboSmbus", "pci": 0,
              "accelerators": [{"id": 1, "busses": [{"id": 3}, {"id": 3}]}]}]})"),
            "the id 3 is taken already, at f:2:53");
}

TEST(Board, TwoAcceleratorsWithOneNumberAreRefused) {
  EXPECT_THAT(message(R"({"board": "B", "topology": [{"type": "SCD", "ham": "NimboSmbus", "pci": 0,
                "accelerators": [{"id": 1}, {"id": 1}]}]})"),
              testing::StartsWith("the id 1 is taken already"));
}

TEST(Board, EntryOfAnUnknownDeviceIsRefusedAndTheLabelsAreListed) {
  EXPECT_EQ(message(board(kDevices, R"(, "fans": [{"name": "fan1", "device": "Psoc"}])")),
            "no device of the topology has the label \"Psoc\"; the labels are CPLD, PSoC");
}

TEST(Board, NameThatIsTakenIsRefused) {
  EXPECT_THAT(message(board(kDevices, R"(, "gpios": [
                {"name": "a", "device": "CPLD", "args": {"register": 1, "bitpos": 0}},
                {"name": "a", "device": "CPLD", "args": {"register": 1, "bitpos": 1}}])")),
              testing::StartsWith("the name \"a\" is taken already, at f:5:17"));
}

TEST(Board, DriverWithoutSuchDevicesIsRefused) {
  EXPECT_EQ(message(board(kDevices, R"(, "fans": [{"name": "fan1", "device": "CPLD"}])")),
            "the driver GpioDriver of this device has no fans; it has gpios");
}

TEST(Board, MissingArgumentIsNamed) {
  EXPECT_EQ(message(board(kDevices, R"(, "fans": [{"name": "fan1", "device": "PSoC"}])")),
            "the argument \"fanId\" is missing in \"args\"; the driver HalvorsaPsoc expects a "
            "number from 1 to 4");
}

TEST(Board, ArgumentOutOfRangeIsRefused) {
  for (const char* id : {"0", "5", "257", "\"5\"", "\"1x\"", "\"\"", "1.5", "true"}) {
    EXPECT_EQ(message(board(kDevices, std::string(R"(, "fans": [{"name": "fan1", "device": "PSoC",
                "args": {"fanId": )") + id +
                                          "}}]")),
              "the argument \"fanId\" must be a number from 1 to 4")
        << id;
  }
}

TEST(Board, ArgumentMayBeANumberOrItsDecimalText) {
  EXPECT_EQ(message(board(kDevices, R"(, "fans": [
              {"name": "fan1", "device": "PSoC", "args": {"fanId": "4"}},
              {"name": "fan2", "device": "PSoC", "args": {"fanId": 1}}])")),
            "none");
}

TEST(Board, WordThatTheDriverWouldIgnoreIsRefused) {
  EXPECT_EQ(message(board(kDevices, R"(, "fans": [{"name": "fan1", "device": "PSoC",
              "args": {"fanId": 1, "pwmMaster": "True"}}])")),
            "the argument \"pwmMaster\" must be one of the words true false");
}

TEST(Board, UnknownArgumentIsRefusedAtItsKey) {
  EXPECT_EQ(fault(board(kDevices, R"(,
"fans": [{"name": "fan1", "device": "PSoC", "args": {"fanID": 1}}])")),
            "f:5:54: unknown argument \"fanID\"; the driver HalvorsaPsoc takes fanId, maxRpm, "
            "pwmMaster, registerOffset for fans");
}

TEST(Board, TemplateWithoutItsPlaceholdersIsRefused) {
  EXPECT_EQ(message(board(kPanel, R"(, "slots": [{"name": "tray1", "device": "FanPCA",
              "args": {"fanId": 1, "fanFdl": "{modelName} {maxRpm}", "rpmF2B": 1, "rpmB2F": 1,
                       "modelName": "T"}}])")),
            "the argument \"fanFdl\" must be a text with each of {airflowDirection} {maxRpm} "
            "{modelName}");
}

TEST(Board, TextMustBeAText) {
  EXPECT_EQ(message(board(kPanel, R"(, "slots": [{"name": "tray1", "device": "FanPCA",
              "args": {"fanId": 1, "fanFdl": "{airflowDirection} {modelName} {maxRpm}",
                       "rpmF2B": 1, "rpmB2F": 1, "modelName": 5}}])")),
            "the argument \"modelName\" must be a text");
}

TEST(Board, RangeOfAPortDependsOnItsType) {
  const auto port = [](const char* args) {
    return message(board(kPanel, std::string(R"(, "xcvrs": [{"name": "p", "device": "CPLD",
              "args": )") + args + "}]"));
  };
  EXPECT_EQ(port(R"({"type": "sfp", "id": 48})"), "none");
  EXPECT_EQ(port(R"({"type": "qsfp", "id": 32})"), "none");
  EXPECT_EQ(port(R"({"type": "qsfp", "id": 33})"),
            "the argument \"id\" must be a number from 1 to 32");
  EXPECT_EQ(port(R"({"id": 33})"),
            "the argument \"type\" is missing in \"args\"; the driver HalvQCPLD expects one of the "
            "words sfp sfp+ qsfp qsfp+");
}

TEST(Board, DriverWithLinesOfItsOwnHasNoRegisterBits) {
  const auto line = [](const char* args) {
    return message(board(kPanel, std::string(R"(, "gpios": [{"name": "g", "device": "Pins",
              "args": )") + args + "}]"));
  };
  EXPECT_EQ(line(R"({"bank": 1, "bit": 7})"), "none");
  EXPECT_THAT(line(R"({"register": 1, "bitpos": 0})"),
              testing::StartsWith("unknown argument \"register\"; the driver GenericPCA9555 takes "
                                  "bank, bank-io-0, bank-io-1, bit, "));
}

TEST(Board, LampIsALineOfItsLedsDevice) {
  const Board parsed = Board::parse("f", board(kPanel, R"(, "leds": [{"name": "tray1",
      "device": "FanPCA", "args": {"id": 1},
      "lamps": [{"colour": "amber", "register": 3, "bitpos": 4}]}])"));
  const Entry led = parsed.entries("leds").at(0);
  rapidjson::Document text;
  text.Parse(parsed.description(led, &(*led.node)["lamps"][0]).c_str());
  EXPECT_EQ(text["did"].GetInt(), 7);
  EXPECT_EQ(text["driverArgs"]["bank-io-1"].GetInt(), 15);
  EXPECT_EQ(text["driverArgs"]["register"].GetInt(), 3);
  EXPECT_EQ(text["driverArgs"]["bitpos"].GetInt(), 4);
}

// A bay for two kinds of supply, and what it stands on.
constexpr const char* kPower = R"([
  {"did": 1, "label": "PsuPCA", "driver": "HalvPsuPCA9555", "address": {"address": 33}},
  {"did": 2, "label": "Supply", "driver": "Pmbus", "address": {"address": 88}},
  {"did": 3, "label": "Emerson", "driver": "EmersonPmbus", "address": {"address": 89},
   "driverArgs": {"psuId": 1}},
  {"did": 4, "label": "Fru", "driver": "PsuSlot", "address": {"address": 81}},
  {"did": 5, "label": "Bay", "driver": "MultiSlot", "address": {"address": 0}}])";

std::string bay(const std::string& args, const std::string& more = "") {
  return board(kPower, R"(, "slots": [{"name": "psu1", "device": "Bay", "args": {"id": 1},
      "modules": {"fru": {"device": "Fru", "args": )" +
                           args + "}}}]" + more);
}

TEST(Board, SlotWithModulesIsAContainerOfTheirDescriptions) {
  const Board parsed = Board::parse("f", bay(R"({"psuId": 2})"));
  rapidjson::Document text;
  text.Parse(parsed.description(parsed.entries("slots").at(0)).c_str());
  EXPECT_TRUE(text["isMultiDevice"].GetBool());
  EXPECT_EQ(text["did"].GetInt(), 5);
  rapidjson::Document module;
  module.Parse(text["multiDeviceArgs"]["fru"].GetString());
  ASSERT_TRUE(module.IsObject());
  EXPECT_EQ(module["did"].GetInt(), 4);
  EXPECT_STREQ(module["name"].GetString(), "Fru");
  EXPECT_EQ(module["driverArgs"]["psuId"].GetInt(), 2);
}

TEST(Board, ModulesArgumentsAreCheckedAtTheirPlace) {
  EXPECT_EQ(fault(bay(R"({"psuId": 3})")).substr(0, 7), "f:8:62:");
  EXPECT_EQ(message(bay(R"({"psuId": 3})")), "the argument \"psuId\" must be a number from 1 to 2");
  EXPECT_EQ(message(bay(R"({"psuId": 1, "identificationType": "FRU"})")),
            "the argument \"identificationType\" must be one of the words pmbus ipmi ipmitool "
            "ipmitool_raw wedge tlv");
}

TEST(Board, ArgumentsOfAWayToIdentifyAreRequiredWithItOnly) {
  EXPECT_EQ(message(bay(R"({"psuId": 1, "identificationType": "tlv"})")), "none");
  EXPECT_EQ(message(bay(R"({"psuId": 1, "identificationType": "ipmi"})")),
            "the argument \"ipmiId\" is missing in \"args\"; the driver PsuSlot expects a value");
  EXPECT_EQ(message(bay(R"({"psuId": 1, "identificationType": "ipmi", "ipmiId": 4})")), "none");
}

TEST(Board, RegisterOfALineGoesWithItsBit) {
  EXPECT_EQ(message(bay(R"({"psuId": 1, "presenceReg": 0})")),
            "the argument \"presenceBit\" is missing in \"args\"; the driver PsuSlot expects a "
            "number from 0 to 7");
  EXPECT_EQ(message(bay(R"({"psuId": 1, "gpioDevice": "PCA"})")),
            "the argument \"gpioDevice\" must be the label of a device of the topology");
  EXPECT_EQ(message(bay(R"({"psuId": 1, "gpioDevice": "PsuPCA"})")), "none");
}

TEST(Board, ModelGoesWithItsTemplate) {
  EXPECT_EQ(message(bay(R"({"psuId": 1, "model_1": "A", "psuFdl_1": "a"})")), "none");
  EXPECT_EQ(message(bay(R"({"psuId": 1, "model_1": "A", "psuFdl_2": "a"})")),
            "the argument \"model_1\" goes with \"psuFdl_1\", which is missing");
  EXPECT_EQ(message(bay(R"({"psuId": 1, "model_1": 1, "psuFdl_1": "a"})")),
            "the argument \"model_1\" must be a text");
  EXPECT_THAT(message(bay(R"({"psuId": 1, "modle_1": "A"})")),
              testing::StartsWith("unknown argument \"modle_1\"; the driver PsuSlot takes "));
}

TEST(Board, ContainerHasModulesAndNoOtherSlotHas) {
  EXPECT_THAT(message(board(kPower, R"(, "slots": [{"name": "psu1", "device": "Bay",
                "args": {"id": 1}}])")),
              testing::StartsWith("the key \"modules\" is missing; the driver MultiSlot expects"));
  EXPECT_EQ(message(board(kPower, R"(, "slots": [{"name": "psu1", "device": "Fru",
              "args": {"psuId": 1}, "modules": {"a": {"device": "Fru"}}}])")),
            "the driver PsuSlot takes no \"modules\"; MultiSlot does");
  EXPECT_EQ(message(board(kPower, R"(, "slots": [{"name": "psu1", "device": "Bay",
              "args": {"id": 1}, "modules": {"a": {"device": "Frü"}}}])")),
            "no device of the topology has the label \"Frü\"; the labels are Bay, Emerson, Fru, "
            "PsuPCA, Supply");
}

TEST(Board, SupplyNamesItsSlotAndItsModels) {
  const auto supply = [](const std::string& members) {
    return message(bay(R"({"psuId": 1})",
                       R"(, "psus": [{"name": "psu1", "device": "Supply")" + members + "}]"));
  };
  EXPECT_EQ(supply(""), "none");
  EXPECT_EQ(supply(R"(, "slot": "psu1", "models": ["A"])"), "none");
  EXPECT_EQ(supply(R"(, "slot": "psu3", "models": ["A"])"), "no slot has the name \"psu3\"");
  EXPECT_NE(supply(R"(, "slot": "psu1")"), "none");
  EXPECT_NE(supply(R"(, "models": ["A"])"), "none");
  EXPECT_NE(supply(R"(, "slot": "psu1", "models": [])"), "none");
}

TEST(Board, FansOfASupplyAreItsDriversFans) {
  const auto fan = [](const char* args) {
    return message(board(kPower, std::string(R"(, "psus": [{"name": "psu1", "device": "Supply",
              "fans": [{"args": )") + args +
                                     "}]}]"));
  };
  EXPECT_EQ(fan(R"({"fanId": 2, "maxFanRpm": 20000})"), "none");
  EXPECT_EQ(fan(R"({"fanId": 3, "maxFanRpm": 20000})"),
            "the argument \"fanId\" must be a number from 1 to 2");
  EXPECT_EQ(fan(R"({"fanId": 1, "maxFanRpm": 0})").substr(0, 33),
            "the argument \"maxFanRpm\" must be ");
}

TEST(Board, EmersonSupplyNeedsItsExpander) {
  const char* const psus = R"(, "psus": [{"name": "psu1", "device": "E"}])";
  EXPECT_EQ(message(board(kPower, R"(, "psus": [{"name": "psu1", "device": "Emerson"}])")), "none");
  EXPECT_EQ(message(board(R"([{"did": 3, "label": "E", "driver": "EmersonPmbus",
              "address": {"address": 89}, "driverArgs": {"psuId": 1}}])",
                          psus)),
            "the driver EmersonPmbus needs a device with the label \"PsuPCA\" and the driver "
            "HalvPsuPCA9555");
  EXPECT_EQ(message(board(R"([{"did": 3, "label": "E", "driver": "EmersonPmbus",
              "address": {"address": 89}, "driverArgs": {"psuId": 3}}])",
                          psus)),
            "the argument \"psuId\" must be a number from 1 to 2");
}

TEST(Board, MuxWithoutChipIsRefused) {
  EXPECT_EQ(message(R"({"board": "B", "topology": [{"type": "I2C", "ham": "NimboSmbus", "id": 1,
              "muxes": [{"did": 20, "busses": []}]}]})"),
            "the mux has no chip: no device of its bus has the did 20");
}

TEST(Board, MuxWhoseChipIsNoMuxIsRefused) {
  EXPECT_EQ(message(R"({"board": "B", "topology": [{"type": "I2C", "ham": "NimboSmbus", "id": 1,
              "devices": [{"did": 20, "label": "x", "driver": "Dummy", "address": {"address": 1}}],
              "muxes": [{"did": 20, "busses": []}]}]})"),
            "device 20 is no mux: its driver is Dummy, not one of GenericSmbusMux, PCA9548");
}

TEST(Board, TemperatureSensorNeedsItsThresholds) {
  EXPECT_THAT(message(board(kDevices, R"(, "temp_sensors": [{"name": "t", "device": "PSoC",
                "args": {"sensorId": 1, "register": 32}, "alert": 50}])")),
              testing::StartsWith("the key \"critical\" is missing"));
}

}  // namespace
