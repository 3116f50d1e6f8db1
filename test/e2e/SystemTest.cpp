// SPDX-License-Identifier: Apache-2.0
//
// The board as a whole, in simulation.
#include <gmock/gmock.h>

#include <cstdlib>
#include <cstring>

#include "test/e2e/Library.hpp"
#include "test/e2e/TracedBoard.hpp"

using testing::ElementsAre;
using testing::HasSubstr;

namespace E2e {

namespace {

using HostSystem = Simulation;
using HostPower = TracedBoard;

TEST_F(HostSystem, EverySystemIsARecordOfItsOwn) {
  pl_system* first = LIB(pl_system_add)("board");
  pl_system* second = LIB(pl_system_add)("board");
  EXPECT_EQ(takeTrace(), (Trace{{0, "HalvorsaSystem::pl_system_add( 'board' )"},
                                {0, "HalvorsaSystem::pl_system_add( 'board' )"}}));
  EXPECT_NE(first, second);
  EXPECT_EQ(first->ops, second->ops);
  EXPECT_EQ(first->host, 0u);
  std::free(first);
  std::free(second);
}

TEST_F(HostSystem, SystemOperationsAreTheExportedFunctions) {
  pl_system* board = LIB(pl_system_add)("board");
  EXPECT_EQ(board->ops->size, 40u);
  EXPECT_EQ(board->ops->poweroff, LIB(pl_system_poweroff));
  EXPECT_EQ(board->ops->powercycle, LIB(pl_system_powercycle));
  EXPECT_EQ(board->ops->get_reload_cause, LIB(pl_system_get_reload_cause));
  EXPECT_EQ(board->ops->reserved, nullptr);
  std::free(board);
}

TEST_F(HostSystem, ReloadCauseIsUnsupportedAndWritesNothing) {
  char cause[100] = "cause";
  long time = 5;
  char description[500] = "description";
  EXPECT_EQ(LIB(pl_system_get_reload_cause)(nullptr, &cause, &time, &description),
            PL_STATUS_UNSUPPORTED);
  EXPECT_STREQ(cause, "cause");
  EXPECT_EQ(time, 5);
  EXPECT_STREQ(description, "description");
}

// The device is made from the topology, which names no simulated device: its file has no suffix.
// No register has been named before the write, so it is dropped.
TEST_F(HostPower, PowerOffBeforeAnyReadFails) {
  EXPECT_EQ(LIB(pl_system_poweroff)(nullptr), PL_STATUS_FAILED);
  EXPECT_EQ(contents("HalvorsaPsoc"), kFreshPsoc);
}

struct PowerCase {
  const char* function;
  const char* reg20;  // after the call: the bit alone, with nothing read before
};
constexpr PowerCase kPowerCases[] = {{"pl_system_poweroff", "02"}, {"pl_system_powercycle", "01"}};

TEST_F(HostPower, PowerControlWritesItsBitWithoutReadingTheRegister) {
  pl_temp_sensor* first = LIB(pl_temp_sensor_add)(sensor(0x20).c_str(), 0, 0);
  for (const PowerCase& power : kPowerCases) {
    float celsius;
    ASSERT_EQ(first->ops->get_temperature(first, &celsius), PL_STATUS_OK);
    takeTrace();
    EXPECT_EQ(reinterpret_cast<decltype(&pl_system_poweroff)>(symbol(power.function))(nullptr),
              PL_STATUS_OK);
    EXPECT_THAT(takeTexts(5), ElementsAre(path("HalvorsaPsoc-psoc") + " - Wrote " + power.reg20 +
                                          " to register 0x20"));
  }
}

TEST_F(HostSystem, PowerOffOfADeviceWithoutADriverUsesTheDummy) {
  ASSERT_EQ(LIB(pl_system_init)(topology("null").c_str()), PL_STATUS_OK);
  takeTrace();
  EXPECT_EQ(LIB(pl_system_poweroff)(nullptr), PL_STATUS_OK);
  EXPECT_THAT(takeTexts(0),
              testing::IsSupersetOf({HasSubstr("Dummy device created"),
                                     HasSubstr("WARNING: Simulated Driver Dummy doesn't yet")}));
  EXPECT_TRUE(std::filesystem::is_empty(directory_));
}

}  // namespace

}  // namespace E2e
