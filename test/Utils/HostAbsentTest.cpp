// SPDX-License-Identifier: Apache-2.0
//
// The library in a process that has none of the host's services.
#include <gtest/gtest.h>

#include <memory>

#include "Components/Led.hpp"
#include "Drivers/Halvorsa/HalvorsaPsoc.hpp"
#include "Ham/SimHam.hpp"
#include "Utils/Host.hpp"
#include "test/support/Check.hpp"

namespace {

void never(void*) { FAIL() << "no timer can fire"; }

TEST(HostAbsent, TracesNothingAndEvaluatesNothing) {
  int evaluated = 0;
  TRACE(0, "%d", ++evaluated);
  EXPECT_EQ(evaluated, 0);
}

TEST(HostAbsent, HasNoTimers) {
  EXPECT_EQ(Utils::timerAdd(never, nullptr), 0u);
  EXPECT_FALSE(Utils::timerSet(1, 1000));
  Utils::timerDelete(1);
}

TEST(HostAbsent, StopsADeviceThatPolls) {
  const Drivers::DriverArgs args;
  const std::unique_ptr<Ham::SimHam> ham(Ham::SimHam::create(Topology::Topology(), args));
  const std::unique_ptr<Component::HardwareDevice> device(
      Drivers::HalvorsaPsoc::create(args, nullptr));
  device->ham = ham.get();
  EXPECT_CHECK(device->init(), "Drivers/Halvorsa/HalvorsaPsoc", "pollStart()");
}

TEST(HostAbsent, StopsALedThatBlinks) {
  EXPECT_CHECK(Component::LogicalDevice::Led::createBlinkTimer(), "Components/Led", "blinkTimer_");
}

}  // namespace
