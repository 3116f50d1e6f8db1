// SPDX-License-Identifier: Apache-2.0
//
// nimbo board, against a real smbusd with the Halvorsa board.
#include <unistd.h>

#include <fstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "test/tools/LiveFixture.hpp"

namespace {

using testing::ContainsRegex;
using testing::HasSubstr;
using testing::MatchesRegex;
using TestSupport::parsed;
using TestSupport::Process;
using TestSupport::Result;

class NimboBoard : public TestSupport::LiveFixture {
 protected:
  Result board(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), "board");
    return nimbo(arguments);
  }

  // What a command prints that succeeds.
  std::string printed(const std::vector<std::string>& arguments) const {
    const Result result = board(arguments);
    EXPECT_EQ(result.code, 0) << result.err;
    return result.out;
  }

  // What nimbo says of a command that fails.
  std::string complaint(const std::vector<std::string>& arguments) const {
    const Result result = board(arguments);
    EXPECT_EQ(result.code, 1);
    EXPECT_EQ(result.out, "");
    return result.err;
  }

  // The condition of the n-th fan, as the watch shows it next.
  static std::string condition(Process& watch, rapidjson::SizeType fan) {
    std::string line;
    EXPECT_TRUE(watch.readLine(line));
    return parsed(line)["fans"][fan]["condition"].GetString();
  }
};

TEST_F(NimboBoard, ListShowsChipsAndQuantities) {
  const std::string text = printed({"list"});
  EXPECT_THAT(text, HasSubstr("Qsfp51 "));
  EXPECT_THAT(text, HasSubstr("Mux1.3 Mux2.2\n"));
  EXPECT_THAT(text, HasSubstr("PSoC.fan1.stalled"));
  EXPECT_THAT(text, HasSubstr("no fault is in force"));
  EXPECT_STREQ(parsed(printed({"list", "--json"}))["board"].GetString(), "Halvorsa");
}

TEST_F(NimboBoard, RegistersAreLookedAtAndSetPastTheBus) {
  EXPECT_EQ(printed({"get", "SysCpld", "0x11"}), "0x01\n");
  EXPECT_EQ(printed({"set", "SysCpld", "0x11", "2"}), "");
  EXPECT_EQ(live({"gpio", "get", "watchdog-enable"}).out, "1\n");
  EXPECT_EQ(live({"gpio", "get", "usb-power"}).out, "0\n");
}

TEST_F(NimboBoard, QuantitiesAreSet) {
  EXPECT_EQ(printed({"set", "PSoC.ambient", "31.5"}), "");
  EXPECT_EQ(printed({"get", "PSoC.ambient"}), "31.5\n");
}

TEST_F(NimboBoard, AStalledFanIsSeenInTheWatchUntilItIsCleared) {
  Process watch(command({"--live", "--json", "watch", "fans", "--interval", "0.05"}),
                environment());
  ASSERT_EQ(condition(watch, 1), "ok");
  EXPECT_EQ(printed({"fault", "PSoC", "fan-stall", "--fan", "2"}), "fault 1\n");
  while (condition(watch, 1) != "stalled") {
  }
  EXPECT_EQ(printed({"clear", "1"}), "1 cleared\n");
  while (condition(watch, 1) != "ok") {
  }
}

TEST_F(NimboBoard, WhatIsBehindAPulledMuxDoesNotAnswer) {
  EXPECT_EQ(printed({"fault", "Mux1", "silent", "--json"}), "{\"ok\":true,\"id\":1}\n");
  EXPECT_EQ(live({"smbus", "psu1-eeprom", "get", "0"}).code, 3);
  EXPECT_THAT(printed({"faults"}), HasSubstr("Mux1    silent"));
  EXPECT_EQ(printed({"clear", "Mux1"}), "1 cleared\n");
  EXPECT_EQ(live({"smbus", "psu1-eeprom", "get", "0"}).code, 0);
}

TEST_F(NimboBoard, AFaultMayEndByItself) {
  printed({"fault", "SysCpld", "nack", "--nth", "1", "--count", "1"});
  EXPECT_EQ(live({"gpio", "get", "usb-power"}).code, 3);
  EXPECT_EQ(live({"gpio", "get", "usb-power"}).code, 0);
  printed({"fault", "SysCpld", "silent", "--for", "0.05"});
  while (printed({"faults"}) != "no fault is in force\n") {
  }
}

TEST_F(NimboBoard, BusTimeIsReportedByChipAndKind) {
  ASSERT_EQ(live({"smbus", "psu1-eeprom", "get", "0"}).code, 0);
  EXPECT_THAT(printed({"time"}), HasSubstr("Psu1Eeprom"));
  EXPECT_THAT(printed({"buses"}), HasSubstr("100000 Hz"));
  EXPECT_THAT(printed({"transfers", "scd0.accel0.bus1"}),
              ContainsRegex("scd0.accel0.bus1 +[0-9]+ +[0-9.]+ +Mux1 +0x70 +send byte +20 "));
  EXPECT_THAT(complaint({"transfers", "scd0"}), HasSubstr("there is no bus \"scd0\""));
  const rapidjson::Document document = parsed(printed({"time", "--json"}));
  EXPECT_GT(document["buses"][1]["bits"].GetUint(), 0u);
}

TEST_F(NimboBoard, AScenarioIsRunByTheService) {
  EXPECT_THAT(printed({"scenario", NIMBO_SCENARIO}), HasSubstr("28 steps in "));
  EXPECT_EQ(printed({"get", "PSoC.ambient"}), "35\n");
  EXPECT_THAT(printed({"list"}), HasSubstr("a hot afternoon: running, "));
  EXPECT_THAT(complaint({"scenario", NIMBO_SCENARIO}), HasSubstr("\"a hot afternoon\" runs"));
  EXPECT_EQ(printed({"stop"}), "");
  EXPECT_THAT(complaint({"stop"}), HasSubstr("no scenario runs"));
}

TEST_F(NimboBoard, AScenarioWithAMistakeIsToldWithItsPlace) {
  const std::string path = directory_ + "/scenario.json";
  std::ofstream(path) << "{\"steps\": [\n{\"atMs\": 1, \"event\": \"flood\"}]}";
  EXPECT_THAT(complaint({"scenario", path}), HasSubstr(path + ":2:22: there is no event"));
  const std::string nowhere = directory_ + "/nowhere";
  EXPECT_EQ(complaint({"scenario", nowhere}),
            nowhere + ": cannot be read: No such file or directory\n");
  EXPECT_EQ(complaint({"scenario", directory_}), directory_ + ": cannot be read: Is a directory\n");
  std::ofstream(path, std::ios::trunc);
  EXPECT_THAT(complaint({"scenario", path}), HasSubstr("the file is empty"));
}

TEST_F(NimboBoard, WhatIsNotThereIsToldWithWhatThereIs) {
  EXPECT_THAT(complaint({"get", "PSoc.ambient"}), HasSubstr("did you mean \"PSoC\"?"));
  EXPECT_THAT(complaint({"get", "PSoC"}), HasSubstr("it has the quantities ambient, load"));
  EXPECT_THAT(complaint({"fault", "PSoC", "quiet"}), HasSubstr("write one of \"silent\""));
  EXPECT_THAT(complaint({"fault", "PSoC", "slow", "--bytes", "2"}),
              HasSubstr("\"bytes\" is not known"));
  EXPECT_THAT(complaint({"clear", "9"}), HasSubstr("there is no fault 9"));
  EXPECT_THAT(complaint({"event", "flood"}), MatchesRegex("nimbo: there is no event .*\n"));
}

TEST_F(NimboBoard, AWrongCommandLineIsOne) {
  EXPECT_EQ(board({}).code, 2);
  EXPECT_EQ(board({"set", "PSoC.ambient", "warm"}).code, 2);
  EXPECT_EQ(board({"fault", "PSoC", "slow", "--for", "-1"}).code, 2);
}

TEST_F(NimboBoard, WithoutAServiceItSaysWhereItLooked) {
  const std::string nowhere = directory_ + "/nowhere";
  EXPECT_THAT(complaint({"list", "--control", nowhere}),
              HasSubstr("no control socket at " + nowhere));
}

}  // namespace
