// SPDX-License-Identifier: Apache-2.0
//
// What stops the process, and what is thrown through the C border. A failed check names its source,
// line and function whatever the build.
#include <gmock/gmock.h>

#include <stdexcept>

#include "test/e2e/Library.hpp"
#include "test/e2e/TracedBoard.hpp"

namespace E2e {

namespace {

using HostMisuse = TracedBoard;
using HostMisuseDeathTest = TracedBoard;
using StartUpMisuseDeathTest = Simulation;

// "program: Unit.cpp:line: function: Assertion `text' failed."; `where` and `text` are regular
// expressions, and `where` is the whole path below src/.
std::string check(const std::string& where, const std::string& text) {
  return ": " + where + ": [^`]+: Assertion `" + text + "' failed";
}

std::string thrown(auto call) {
  try {
    call();
  } catch (const std::exception& error) {
    return error.what();
  }
  return "nothing";
}

TEST_F(HostMisuse, DeviceThatIsNoSupplySaysSo) {
  EXPECT_EQ(thrown([] { LIB(pl_psu_add)(fan(1).c_str()); }), "Not implemented newPsu");
}

TEST_F(HostMisuse, DeviceThatIsNoSlotSaysSo) {
  EXPECT_EQ(thrown([] { LIB(pl_slot_add)(fan(1).c_str()); }), "Not implemented newSlot");
}

TEST_F(HostMisuse, DummyThatIsNoFanSaysSo) {
  EXPECT_EQ(thrown([] {
              LIB(pl_fan_add)
              (description("x", "", "Dummy").c_str());
            }),
            "Not implemented newFan");
}

TEST_F(HostMisuse, FanWithoutARegisterOffsetIsAnInvalidArgument) {
  const std::string text = description("psoc", R"("fanId": 1, "maxRpm": 1)");
  EXPECT_THROW(LIB(pl_fan_add)(text.c_str()), std::invalid_argument);
}

TEST_F(HostMisuseDeathTest, FanIdsReachFromOneToFour) {
  for (int id : {0, 5}) {
    EXPECT_DEATH(LIB(pl_fan_add)(fan(id).c_str()),
                 check("Drivers/Halvorsa/HalvorsaPsoc.cpp:[0-9]+", "fanId >= 1 && fanId <= 4"));
  }
}

TEST_F(HostMisuseDeathTest, FanNeedsIdAndMaximum) {
  for (const char* args : {"", R"("fanId": 1)"}) {
    EXPECT_DEATH(
        LIB(pl_fan_add)(description("psoc", args).c_str()),
        check("Drivers/Halvorsa/HalvorsaPsoc.cpp:[0-9]+", "it != args.driverArgs.end\\(\\)"));
  }
}

TEST_F(HostMisuseDeathTest, SensorNeedsIdAndRegister) {
  EXPECT_DEATH(
      LIB(pl_temp_sensor_add)(description("psoc", "").c_str(), 0, 0),
      check("Drivers/Halvorsa/HalvorsaPsoc.cpp:[0-9]+", "idIt != args.driverArgs.end\\(\\)"));
  EXPECT_DEATH(
      LIB(pl_temp_sensor_add)(description("psoc", R"("sensorId": 1)").c_str(), 0, 0),
      check("Drivers/Halvorsa/HalvorsaPsoc.cpp:[0-9]+", "regIt != args.driverArgs.end\\(\\)"));
}

TEST_F(HostMisuseDeathTest, HostWhoseTimersFailCannotPoll) {
  Doubles::host().timerSetStatus = -1;
  EXPECT_DEATH(LIB(pl_fan_add)(fan(1).c_str()),
               check("Drivers/Halvorsa/HalvorsaPsoc.cpp:[0-9]+", "pollStart\\(\\)"));
}

TEST_F(HostMisuseDeathTest, HostWithoutATimerToGiveCannotPoll) {
  Doubles::host().refusesTimers = true;
  EXPECT_DEATH(LIB(pl_fan_add)(fan(1).c_str()),
               check("Drivers/Halvorsa/HalvorsaPsoc.cpp:[0-9]+", "pollStart\\(\\)"));
}

TEST_F(HostMisuseDeathTest, DescriptionNeedsDidDriverAndAddress) {
  constexpr std::pair<const char*, const char*> kCases[] = {
      {"[]", "json.IsObject\\(\\)"},
      {"{}", "json.HasMember\\( \"did\" \\)"},
      {R"({"did": 12})", "json.HasMember\\( \"driver\" \\)"},
      {R"({"did": 12, "driver": null})", "json.HasMember\\( \"address\" \\)"},
  };
  for (const auto& [text, expression] : kCases) {
    EXPECT_DEATH(LIB(pl_fan_add)(text), check("Drivers/Drivers.cpp:[0-9]+", expression)) << text;
  }
}

TEST_F(HostMisuseDeathTest, SimulatedDeviceNeedsAName) {
  EXPECT_DEATH(
      LIB(pl_fan_add)(R"({"did": 12, "driver": "HalvorsaPsoc", "address": {"address": 80}})"),
      check("Components/HardwareDevice.cpp:[0-9]+", "json.HasMember\\( \"name\" \\)"));
}

TEST_F(StartUpMisuseDeathTest, AddWithoutATopologyStops) {
  EXPECT_DEATH(LIB(pl_fan_add)(fan(1).c_str()), check("Ham/Ham.cpp:123", "topology"));
}

TEST_F(StartUpMisuseDeathTest, PowerOffWithoutAPsocStops) {
  ASSERT_EQ(LIB(pl_system_init)("[]"), PL_STATUS_OK);
  EXPECT_DEATH(LIB(pl_system_poweroff)(nullptr), check("Drivers/Helpers.cpp:[0-9]+", "device"));
}

TEST_F(StartUpMisuseDeathTest, PowerOffOfAPsocWithoutArgumentsStops) {
  ASSERT_EQ(LIB(pl_system_init)(topology("").c_str()), PL_STATUS_OK);
  EXPECT_DEATH(LIB(pl_system_poweroff)(nullptr),
               check("Drivers/Helpers.cpp:[0-9]+", "device->driverArgs"));
}

TEST_F(StartUpMisuseDeathTest, TopologyThatBreaksTheRulesStops) {
  constexpr std::pair<const char*, const char*> kCases[] = {
      {"{}", "json.IsArray\\(\\)"},
      {"[1]", "it->IsObject\\(\\)"},
      {"[{}]", "it->HasMember\\( \"type\" \\)"},
      {R"([{"type": "I2C"}])", "it->HasMember\\( \"ham\" \\)"},
      {R"([{"type": "i2c", "ham": ""}])", "false && \"Unknown type\""},
      {R"([{"type": "I2C", "ham": ""}])", "json.HasMember\\( \"id\" \\)"},
  };
  for (const auto& [text, expression] : kCases) {
    EXPECT_DEATH(LIB(pl_fan_init)(text), check("Topology/Topology.cpp:[0-9]+", expression)) << text;
  }
}

// A value of the wrong type meets the JSON reader's own checks, which stay on, too.
TEST_F(StartUpMisuseDeathTest, ValueOfTheWrongTypeStops) {
  EXPECT_DEATH(LIB(pl_fan_init)(R"([{"type": "SCD", "ham": "", "pci": -1}])"),
               check("[^ ]*rapidjson/document.h:[0-9]+", "data_.f.flags & kUintFlag"));
}

}  // namespace

}  // namespace E2e
