// SPDX-License-Identifier: Apache-2.0
#include "Utils/Simulation.hpp"

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

TEST(Simulation, IsUndecidedAtFirst) { EXPECT_EQ(Utils::isInSimulation, -1); }

TEST(Simulation, IsOffWithoutTheVariable) {
  ::unsetenv("SIMULATION_VMID");
  EXPECT_FALSE(Utils::inSimulation());
  EXPECT_EQ(Utils::isInSimulation, 0);
}

TEST(Simulation, IsOnWithAnEmptyVariable) {
  ::setenv("SIMULATION_VMID", "", 1);
  EXPECT_TRUE(Utils::inSimulation());
  EXPECT_EQ(Utils::isInSimulation, 1);
}

TEST(Simulation, IsDecidedOnce) {
  ::setenv("SIMULATION_VMID", "1", 1);
  ASSERT_TRUE(Utils::inSimulation());
  ::unsetenv("SIMULATION_VMID");
  EXPECT_TRUE(Utils::inSimulation());
}

}  // namespace
