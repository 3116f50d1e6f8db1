// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>

#include <cstdlib>
#include <cstring>

#include "Drivers/Registry.hpp"
#include "Ham/Ham.hpp"
#include "Topology/Topology.hpp"
#include "pl/pl_system.h"
#include "test/support/Check.hpp"
#include "test/support/Describe.hpp"
#include "test/support/FakeHam.hpp"
#include "test/support/FaultyHam.hpp"
#include "test/support/Host.hpp"

namespace {

using Doubles::FakeHam;
using Doubles::FaultyHam;
using Doubles::host;
using Doubles::Operations;
using Doubles::Trace;
using testing::ElementsAre;

namespace Op = Doubles::Op;

TEST(System, IsARecordOfItsOwnEachTime) {
  pl_system* first = pl_system_add("board");
  pl_system* second = pl_system_add("board");
  ASSERT_NE(first, nullptr);
  ASSERT_NE(second, nullptr);
  EXPECT_NE(first, second);
  EXPECT_EQ(first->ops, second->ops);
  EXPECT_EQ(first->host, 0u);
  EXPECT_THAT(host().traces, ElementsAre(Trace{0, "HalvorsaSystem::pl_system_add( 'board' )"},
                                         Trace{0, "HalvorsaSystem::pl_system_add( 'board' )"}));
  std::free(first);
  std::free(second);
}

TEST(System, HasItsOperationsInOrder) {
  pl_system* system = pl_system_add("board");
  EXPECT_EQ(system->ops->size, 40u);
  EXPECT_EQ(system->ops->poweroff, pl_system_poweroff);
  EXPECT_EQ(system->ops->powercycle, pl_system_powercycle);
  EXPECT_EQ(system->ops->get_reload_cause, pl_system_get_reload_cause);
  EXPECT_EQ(system->ops->reserved, nullptr);
  std::free(system);
}

TEST(System, ReportsNoReloadCause) {
  char cause[100];
  char description[500];
  long time = 42;
  std::memset(cause, 'c', sizeof cause);
  std::memset(description, 'd', sizeof description);
  EXPECT_EQ(pl_system_get_reload_cause(nullptr, &cause, &time, &description), 5);
  EXPECT_EQ(time, 42);
  EXPECT_THAT(cause, testing::Each('c'));
  EXPECT_THAT(description, testing::Each('d'));
}

// Power control, of a board whose PSoC is reached through a fake.
class Power : public testing::Test {
 protected:
  Power() {
    ::unsetenv("SIMULATION_VMID");
    Ham::hams["Test"] = [this](const auto&, const auto&) { return &faulty_; };
  }
  static void load(const std::string& label) {
    const std::string device =
        R"({"did":1,"driver":null,"address":{"address":32},"label":")" + label + R"("})";
    ASSERT_EQ(Topology::loadTopology(Doubles::topologyOf("Test", device).c_str()), 0);
  }

  FakeHam fake_;
  FaultyHam faulty_{fake_};
};

TEST_F(Power, OffSetsABitWithoutReading) {
  load("PSoC");
  EXPECT_EQ(pl_system_poweroff(nullptr), 0);
  EXPECT_THAT(fake_.batches(), ElementsAre(Operations{Op::write8(10, 0x02)}));
}

TEST_F(Power, CycleSetsABitWithoutReading) {
  load("PSoC");
  EXPECT_EQ(pl_system_powercycle(nullptr), 0);
  EXPECT_THAT(fake_.batches(), ElementsAre(Operations{Op::write8(8, 0x01)}));
}

TEST_F(Power, UsesOneDeviceForAllItsCalls) {
  load("PSoC");
  pl_system_poweroff(nullptr);
  pl_system_powercycle(nullptr);
  EXPECT_EQ(fake_.batches().size(), 2u);
  EXPECT_EQ(fake_.driverName, "Dummy");
  EXPECT_EQ(Component::DeviceBase::devices.size(), 1u);
}

TEST_F(Power, GivesTheStatusOfTheWrite) {
  load("PSoC");
  faulty_.failAlways(6);
  EXPECT_EQ(pl_system_poweroff(nullptr), 6);
  EXPECT_EQ(pl_system_powercycle(nullptr), 6);
}

TEST_F(Power, StopsWithoutAPsoc) {
  load("psoc");
  EXPECT_CHECK_AFTER(pl_system_poweroff(nullptr), (Trace{0, "Unable to locate device PSoC"}),
                     "Drivers/Helpers", "device");
  EXPECT_CHECK_AFTER(pl_system_powercycle(nullptr), (Trace{0, "Unable to locate device PSoC"}),
                     "Drivers/Helpers", "device");
}

}  // namespace
