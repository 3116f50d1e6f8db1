// SPDX-License-Identifier: Apache-2.0
//
// The front panel as an operator sees it while things happen to the virtual board.
#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "test/tools/LiveFixture.hpp"

namespace {

using testing::HasSubstr;
using TestSupport::parsed;
using TestSupport::Process;

class NimboPanel : public TestSupport::LiveFixture {
 protected:
  // A watch whose first look is over.
  std::unique_ptr<Process> watch(std::vector<std::string> kinds) const {
    kinds.insert(kinds.begin(), {"--live", "--json", "watch", "--changes", "--interval", "0.05"});
    auto process = std::make_unique<Process>(command(kinds), environment());
    std::string line;
    EXPECT_TRUE(process->readLine(line));
    return process;
  }

  // The next entry that is told to have changed in one list.
  static rapidjson::Document change(Process& process, const char* list, const std::string& name) {
    std::string line;
    while (process.readLine(line)) {
      rapidjson::Document told = parsed(line);
      if (!told.HasMember(list)) {
        continue;
      }
      for (auto& entry : told[list].GetArray()) {
        if (entry["name"] == name.c_str()) {
          rapidjson::Document found;
          found.CopyFrom(entry, found.GetAllocator());
          return found;
        }
      }
    }
    ADD_FAILURE() << "the watch has ended";
    return {};
  }
};

TEST_F(NimboPanel, WatchFollowsAModule) {
  const auto ports = watch({"xcvrs"});
  happen("port 7 insert");
  EXPECT_STREQ(change(*ports, "xcvrs", "sfp7")["condition"].GetString(), "ok");
  happen("port 7 los 1");
  EXPECT_STREQ(change(*ports, "xcvrs", "sfp7")["condition"].GetString(), "no light");
  EXPECT_EQ(live({"xcvr", "sfp7", "txdisable", "on"}).out, "sfp7: txdisable on\n");
  EXPECT_STREQ(change(*ports, "xcvrs", "sfp7")["condition"].GetString(), "disabled");
  happen("port 7 remove");
  EXPECT_STREQ(change(*ports, "xcvrs", "sfp7")["status"].GetString(), "EMPTY");
  happen("port 54 insert");
  EXPECT_STREQ(change(*ports, "xcvrs", "qsfp54")["condition"].GetString(), "low power");
}

TEST_F(NimboPanel, WatchFollowsATrayAndItsFan) {
  const auto trays = watch({"slots", "fans"});
  happen("tray 2 pull");
  EXPECT_STREQ(change(*trays, "slots", "tray2")["status"].GetString(), "EMPTY");
  happen("tray 2 insert front-to-back");
  EXPECT_STREQ(change(*trays, "slots", "tray2")["descriptor"].GetString(),
               "model=HT-400 airflow=frontToBackAirflow maxRpm=23000");
}

TEST_F(NimboPanel, WatchFollowsLeds) {
  ASSERT_EQ(live({"led", "all", "off"}).code, 0);
  const auto leds = watch({"leds"});
  ASSERT_EQ(live({"led", "psu1", "bad"}).code, 0);
  EXPECT_STREQ(change(*leds, "leds", "psu1")["light"].GetString(), "red");
  Process beacon(command({"--live", "led", "all", "beacon"}), environment());
  for (const char* light : {"amber", "off", "amber"}) {
    EXPECT_STREQ(change(*leds, "leds", "tray4")["light"].GetString(), light);
  }
}

TEST_F(NimboPanel, PictureShowsTheBoard) {
  happen("port 4 insert");
  EXPECT_THAT(
      live({"show", "xcvrs", "--panel"}).out,
      HasSubstr("  |  O  o  .  .  .  .  .  .|  O  .  .  .  .  .  .  .|  .  .  .  .  .  .  .  "
                ".|\n"
                "  |  O  O  .  .  .  .  .  .|  .  .  .  .  .  .  .  .|  .  .  .  .  .  .  .  "
                "X|\n"));
}

}  // namespace
