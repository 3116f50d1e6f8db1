// SPDX-License-Identifier: Apache-2.0
//
// The built plug-in under the built library, as a host has them, on a simulated controller.
#include <dlfcn.h>
#include <gmock/gmock.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <functional>
#include <string>
#include <thread>

#include "test/e2e/Library.hpp"
#include "test/ipmi/SimulatedController.hpp"
#include "test/support/Host.hpp"

using testing::Contains;
using testing::HasSubstr;

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using Doubles::host;

constexpr auto kPatience = 40s;
// What a controller that hangs costs its reader at least: half the "timeout".
constexpr auto kReaderWaits = 5s;

std::string device(const std::string& driverArgs, const std::string& hamType = "bmc") {
  return R"({"did": 1, "driver": "Ipmi", "provideHam": 0, "address": {"address": 0}, "driverArgs": {
    "hamType": ")" +
         hamType + R"(", "fruId": "Fan tray", "maxFanRpm": "10000", )" + driverArgs + "}}";
}

void loadPlugin(const std::string& configuration) {
  ::setenv("NIMBO_IPMI_CONFIG", configuration.c_str(), 1);
  E2e::symbol("pl_fan_add");  // the library is there before its plug-in
  ASSERT_NE(::dlopen(NIMBO_BUILT_PLUGIN, RTLD_NOW | RTLD_LOCAL), nullptr) << ::dlerror();
}

class PluginOnAController : public testing::Test {
 protected:
  PluginOnAController() {
    loadPlugin(directory.write("ipmi.json", R"({"cacheDirectory": ")" + directory.path("cache") +
                                                R"(", "controllers": {"bmc": {
        "host": "127.0.0.1", "port": )" + std::to_string(controller.port()) +
                                                R"(, "accessFile": ")" + controller.accessFile() +
                                                R"(", "interval": 0.1, "fruInterval": 1,
        "timeout": 10, "staleAfter": 2}}})"));
    fan1 = LIB(pl_fan_add)(device(R"("fanId": "1", "ipmiKey": "FAN1")").c_str());
    fan2 = LIB(pl_fan_add)(device(R"("fanId": "2", "ipmiKey": "FAN2")").c_str());
  }

  void tick() {
    for (auto& [handle, timer] : host().timers) {
      if (timer.armed) {
        host().fire(timer);
      }
    }
  }

  // Lets the host's timers fire until the condition holds.
  void await(const std::function<bool()>& condition) {
    const auto end = Clock::now() + kPatience;
    for (tick(); !condition(); tick()) {
      ASSERT_LT(Clock::now(), end) << testing::PrintToString(host().texts(0));
      std::this_thread::sleep_for(20ms);
    }
  }

  static pl_status speed(pl_fan* fan, int& rpm) { return fan->ops->get_rpm(fan, &rpm); }
  static pl_status speed(pl_fan* fan) {
    int rpm = 0;
    return speed(fan, rpm);
  }

  void awaitStatus(pl_fan* fan, pl_status status) {
    await([&] { return speed(fan) == status; });
  }

  // Looks up and ticks until the values are stale; none of it may take as long as a reader waits.
  void awaitStaleWithoutWaiting() {
    auto longest = Clock::duration::zero();
    await([&] {
      const auto begun = Clock::now();
      const pl_status status = speed(fan1);
      longest = std::max(longest, Clock::now() - begun);
      return status == PL_STATUS_REMOTE;
    });
    EXPECT_LT(longest, kReaderWaits);
  }

  Doubles::SimulatedController controller;
  Doubles::Directory directory;
  pl_fan* fan1 = nullptr;
  pl_fan* fan2 = nullptr;
};

TEST_F(PluginOnAController, FansAndTemperaturesAreRead) {
  awaitStatus(fan1, PL_STATUS_OK);
  int rpm = 0;
  EXPECT_EQ(speed(fan1, rpm), PL_STATUS_OK);
  EXPECT_EQ(rpm, 5400);
  EXPECT_EQ(speed(fan2, rpm), PL_STATUS_OK);
  EXPECT_EQ(rpm, 6000);
  pl_temp_sensor* inlet =
      LIB(pl_temp_sensor_add)(device(R"("ipmiKey": "Inlet Temp")").c_str(), 60, 70);
  float celsius = 0;
  EXPECT_EQ(inlet->ops->get_temperature(inlet, &celsius), PL_STATUS_OK);
  EXPECT_EQ(celsius, 42.0f);
}

TEST_F(PluginOnAController, NewSpeedIsSeen) {
  awaitStatus(fan1, PL_STATUS_OK);
  controller.setFan1Rpm(7200);
  await([&] {
    int rpm = 0;
    return speed(fan1, rpm) == PL_STATUS_OK && rpm == 7200;
  });
}

TEST_F(PluginOnAController, PowerSupplyIsGood) {
  pl_psu* psu = LIB(pl_psu_add)(device(R"("psuId": "1", "ipmiKey": "PSU1")").c_str());
  awaitStatus(fan1, PL_STATUS_OK);
  int ok = 0;
  EXPECT_EQ(psu->ops->get_power_ok(psu, &ok), PL_STATUS_OK);
  EXPECT_EQ(ok, 1);
}

TEST_F(PluginOnAController, BayDescribesItsFanWithTheAirflowOfTheFruRecord) {
  pl_slot* slot = LIB(pl_slot_add)(device(R"("fanId": "1", "ipmiKey": "FAN1", "modelName": "FT-1",
    "rpmF2B": "11000", "rpmB2F": "12000", "fanFdl": "{airflowDirection} {maxRpm} {modelName}")")
                                       .c_str());
  awaitStatus(fan1, PL_STATUS_OK);
  char* fdl = nullptr;
  ASSERT_EQ(slot->ops->get_presence(slot, &fdl), PL_STATUS_OK);
  EXPECT_STREQ(fdl, "backToFrontAirflow 12000 FT-1");
  ::free(fdl);
}

TEST_F(PluginOnAController, FanThatGoesAwayComesBack) {
  awaitStatus(fan2, PL_STATUS_OK);
  controller.setFan2Present(false);
  awaitStatus(fan2, PL_STATUS_FAILED);
  EXPECT_EQ(speed(fan1), PL_STATUS_OK);
  controller.setFan2Present(true);
  awaitStatus(fan2, PL_STATUS_OK);
}

TEST_F(PluginOnAController, ControllerThatHangsHoldsNoLookUpAndRecovers) {
  awaitStatus(fan1, PL_STATUS_OK);
  controller.signal(SIGSTOP);
  int rpm = 0;
  tick();
  EXPECT_EQ(speed(fan1, rpm), PL_STATUS_OK);
  EXPECT_EQ(rpm, 5400);
  awaitStaleWithoutWaiting();
  controller.signal(SIGCONT);
  awaitStatus(fan1, PL_STATUS_OK);
}

TEST_F(PluginOnAController, ControllerThatDiesHoldsNoLookUpAndComesBackAnew) {
  awaitStatus(fan1, PL_STATUS_OK);
  controller.kill();
  awaitStaleWithoutWaiting();
  controller.start();
  awaitStatus(fan1, PL_STATUS_OK);
}

TEST_F(PluginOnAController, AllDevicesShareOneAccess) { EXPECT_EQ(host().timers.size(), 1u); }

TEST_F(PluginOnAController, TypeThatTheFileDoesNotNameIsUnknown) {
  const std::string other = R"({"did": 2, "driver": "Ipmi", "provideHam": 0,
    "address": {"address": 0}, "driverArgs": {"hamType": "other", "fanId": "1", "ipmiKey": "F"}})";
  EXPECT_EQ(LIB(pl_fan_add)(other.c_str()), nullptr);
  EXPECT_TRUE(host().traced(0, "ham not found other"));
}

TEST(PluginWithoutAController, WrongFileIsTracedAndNothingIsRegistered) {
  const Doubles::Directory directory;
  loadPlugin(directory.path("none.json"));
  EXPECT_THAT(host().texts(0), Contains(HasSubstr("Error: IPMI: " + directory.path("none.json"))));
  EXPECT_EQ(LIB(pl_fan_add)(device(R"("fanId": "1", "ipmiKey": "FAN1")").c_str()), nullptr);
}

TEST(PluginWithoutAController, ProcessEndsWhileAReaderWaits) {
  Doubles::Directory directory;
  directory.writeProgram("ipmi-sensors",
                         "echo $$ > " + directory.path("pid") + "\nexec sleep 1000");
  const std::string file = directory.write(
      "ipmi.json", R"({"toolDirectory": ")" + directory.path("") + R"(", "cacheDirectory": ")" +
                       directory.path("cache") + R"(", "controllers": {"bmc": {"timeout": 600}}})");
  const auto hang = [&] {
    loadPlugin(file);
    LIB(pl_fan_add)(device(R"("fanId": "1", "ipmiKey": "FAN1")").c_str());
    while (directory.read("pid").empty()) {
      std::this_thread::sleep_for(10ms);
    }
    std::exit(0);
  };
  EXPECT_EXIT(hang(), testing::ExitedWithCode(0), "");
  EXPECT_FALSE(std::filesystem::exists(
      "/proc/" + directory.read("pid").substr(0, directory.read("pid").find('\n'))));
}

}  // namespace
