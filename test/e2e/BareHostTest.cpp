// SPDX-License-Identifier: Apache-2.0
//
// A host without services, timers among them: what does not poll works, and what polls stops.
#include <gmock/gmock.h>

#include "test/e2e/Library.hpp"
#include "test/e2e/Simulation.hpp"

namespace E2e {

namespace {

using BareHost = Board;
using BareHostDeathTest = Board;

TEST_F(BareHost, MakesDevicesThatDoNotPoll) {
  const std::string text = description("line", R"("register": 5, "bitpos": 1)", "GpioDriver");
  EXPECT_NE(LIB(pl_gpio_add)(text.c_str()), nullptr);
}

TEST_F(BareHostDeathTest, PsocCannotPoll) {
  EXPECT_DEATH(
      {
        LIB(pl_fan_add)
        (fan(1).c_str());
      },
      "Drivers/Halvorsa/HalvorsaPsoc.cpp:[0-9]+: [^`]+: Assertion `pollStart\\(\\)' failed");
}

}  // namespace

}  // namespace E2e
