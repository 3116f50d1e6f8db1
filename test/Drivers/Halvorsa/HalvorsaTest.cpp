// SPDX-License-Identifier: Apache-2.0
//
// The registry: every name, and what it builds.
#include <gmock/gmock.h>

#include <memory>
#include <set>
#include <typeinfo>

#include "Components/HardwareDevice.hpp"
#include "Drivers/Dummy.hpp"
#include "Drivers/GenericPCA9555.hpp"
#include "Drivers/GenericSmbusMux.hpp"
#include "Drivers/Halvorsa/EmersonPmbus.hpp"
#include "Drivers/Halvorsa/HalvPsuPCA9555.hpp"
#include "Drivers/Halvorsa/HalvorsaPCA9555.hpp"
#include "Drivers/Halvorsa/HalvorsaPsoc.hpp"
#include "Drivers/Halvorsa/LedCPLD.hpp"
#include "Drivers/Halvorsa/XcvrCPLD.hpp"
#include "Drivers/Halvorsa/XcvrExpander.hpp"
#include "Drivers/MultiSlot.hpp"
#include "Drivers/Pmbus.hpp"
#include "Drivers/PsuSlot.hpp"
#include "Drivers/Registry.hpp"
#include "Drivers/SmbusProxyDriver.hpp"
#include "Ham/Ham.hpp"
#include "test/support/DriverNames.hpp"
#include "test/support/FakeHam.hpp"

namespace {

using testing::ElementsAre;
using testing::Key;

// Every driver that can be made without more of the board than its own arguments. "Ipmi" needs a
// back-end.
struct Row {
  const char* name;
  const std::type_info& built;
};

const Row kDrivers[] = {
    {"Dummy", typeid(Drivers::Dummy)},
    {"GpioDriver", typeid(Drivers::Dummy)},
    {"SmbusProxyDriver", typeid(Drivers::SmbusProxyDriver)},
    {"GenericSmbusMux", typeid(Drivers::GenericSmbusMux)},
    {"PCA9548", typeid(Drivers::GenericSmbusMux)},
    {"Pmbus", typeid(Drivers::Pmbus)},
    {"PsuSlot", typeid(Drivers::PsuSlot)},
    {"HalvQCPLD", typeid(Drivers::HalvorsaQCPLD)},
    {"MultiSlot", typeid(Drivers::MultiSlot)},
    {"GenericPCA9555", typeid(Drivers::GenericPCA9555)},
    {"HalvorsaPCA9555", typeid(Drivers::HalvorsaPCA9555)},
    {"HalvorsaPsoc", typeid(Drivers::HalvorsaPsoc)},
    {"HalvPsuPCA9555", typeid(Drivers::HalvPsuPCA9555)},
    {"EmersonPmbus", typeid(Drivers::EmersonPmbus)},
    {"HalvorsaSFP", typeid(Drivers::HalvorsaSFP)},
    {"HalvSPCA9555", typeid(Drivers::HalvSQSFP)},
    {"HalvCLedCPLD", typeid(Drivers::HalvCLedCPLD)},
    {"HalvYQSFP", typeid(Drivers::HalvYQSFP)},
    {"HalvYCPLD", typeid(Drivers::HalvorsaYCPLD)},
};

std::set<std::string> registered() {
  std::set<std::string> names;
  for (const auto& [name, factory] : Drivers::drivers) {
    names.insert(name);
  }
  return names;
}

TEST(DriverRegistry, HoldsTheBoardsDriversAndNoOther) {
  const std::set<std::string> names(std::begin(Doubles::kDriverNames),
                                    std::end(Doubles::kDriverNames));
  EXPECT_EQ(names.size(), 20u);
  EXPECT_EQ(registered(), names);
  EXPECT_EQ(names.size(), std::size(kDrivers) + 1);
}

TEST(DriverRegistry, BuildsTheClassOfEachName) {
  Drivers::DriverArgs args;
  args.driverArgs = {{"bank-io-0", "0"}, {"bank-io-1", "0"}, {"psuId", "1"}};
  Doubles::FakeHam ham;
  for (const auto& [name, built] : kDrivers) {
    const std::unique_ptr<Component::DeviceBase> device(Drivers::drivers.at(name)(args, &ham));
    ASSERT_NE(device, nullptr) << name;
    const Component::DeviceBase& made = *device;
    EXPECT_EQ(typeid(made), built) << name;
  }
}

TEST(HamRegistry, HoldsTheServiceAndTheSimulation) {
  EXPECT_THAT(Ham::hams, ElementsAre(Key("NimboSmbus"), Key("SimHam")));
}

}  // namespace
