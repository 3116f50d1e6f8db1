// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>

#include "Ham/Ham.hpp"
#include "test/support/Host.hpp"

namespace {

using Doubles::host;
using Doubles::Trace;
using Drivers::kNoComponent;
using testing::ElementsAre;

// The path and the HAM type that a search finds, in its traces and fields.
Ham::SearchVisitor searched(const std::string& text, uint32_t component, uint32_t device) {
  EXPECT_EQ(Topology::loadTopology(text.c_str()), 0);
  host().traces.clear();
  Ham::SearchVisitor search(component, device);
  Topology::_topology->accept(&search);
  return search;
}

constexpr const char* kScd = R"([{"type":"SCD","ham":"ScdHam","pci":26,"accelerators":[{"id":4,
    "busses":[{"id":2,"devices":[{"did":10,"components":[{"uid":100}]},{"did":11}]}]}]},
  {"type":"I2C","ham":"I2cHam","id":1,"devices":[{"did":12}]}])";

TEST(SearchVisitor, StartsWithNothingFound) {
  const Ham::SearchVisitor search(1, 2);
  EXPECT_EQ(search.componentUid, 1u);
  EXPECT_EQ(search.deviceUid, 2u);
  EXPECT_FALSE(search.found);
  EXPECT_EQ(search.device, nullptr);
  EXPECT_EQ(search.hamName, "");
}

TEST(SearchVisitor, TellsThePathOfAComponent) {
  const auto search = searched(kScd, 100, 0);
  EXPECT_TRUE(search.found);
  EXPECT_EQ(search.device->did, 10u);
  EXPECT_EQ(search.hamName, "ScdHam");
  EXPECT_THAT(host().traces,
              ElementsAre(Trace{2, "Component 100 found in tree"},
                          Trace{2, "Device 10 contain the component"}, Trace{2, "BusId 2"},
                          Trace{2, "AccelId 4"}, Trace{2, "SCD 26 0000001A"}));
}

TEST(SearchVisitor, TellsThePathOfADevice) {
  const auto search = searched(kScd, kNoComponent, 11);
  EXPECT_TRUE(search.found);
  EXPECT_EQ(search.device->did, 11u);
  EXPECT_THAT(host().traces,
              ElementsAre(Trace{2, "Device 11 contain the component"}, Trace{2, "BusId 2"},
                          Trace{2, "AccelId 4"}, Trace{2, "SCD 26 0000001A"}));
}

TEST(SearchVisitor, DoesNotLookAtDevicesWhenAComponentIsNamed) {
  EXPECT_FALSE(searched(kScd, 101, 11).found);
}

TEST(SearchVisitor, FindsNothingThatIsNotThere) {
  const auto search = searched(kScd, kNoComponent, 99);
  EXPECT_FALSE(search.found);
  EXPECT_EQ(search.device, nullptr);
  EXPECT_EQ(search.hamName, "");
  EXPECT_THAT(host().traces, testing::IsEmpty());
}

TEST(SearchVisitor, GoesOnAboveAMux) {
  const auto search = searched(
      R"([{"type":"I2C","ham":"I2cHam","id":1,"muxes":[{"did":50,"busses":[{"id":8,
           "devices":[{"did":10}]}]}]}])",
      kNoComponent, 10);
  EXPECT_EQ(search.hamName, "I2cHam");
  EXPECT_THAT(host().traces, ElementsAre(Trace{2, "Device 10 contain the component"},
                                         Trace{2, "BusId 8"}, Trace{2, "Mux using device 50"},
                                         Trace{2, "BusId 1"}, Trace{2, "I2C bus 1"}));
}

TEST(SearchVisitor, StopsAtAMuxAloneAmongThePath) {
  Ham::SearchVisitor search(kNoComponent, 1);
  const Topology::Mux mux;
  const Topology::Bus bus;
  const Topology::Accelerator accelerator;
  EXPECT_TRUE(search.visit(&mux));
  search.found = true;
  EXPECT_FALSE(search.visit(&mux));
  EXPECT_TRUE(search.visit(&bus));
  EXPECT_TRUE(search.visit(&accelerator));
}

TEST(SearchVisitor, TakesTheHamOfEveryControllerType) {
  struct Controller {
    const char* type;
    const char* trace;
  };
  for (const auto& [type, trace] : {Controller{"I2C", "I2C bus 1"},
                                    {"IOPort", "IOPort"},
                                    {"PLM", "PLM"},
                                    {"SccSpi", "SccSpi"}}) {
    const auto search = searched(
        std::string(R"([{"type":")") + type + R"(","ham":"H","id":1,"devices":[{"did":10}]}])",
        kNoComponent, 10);
    EXPECT_EQ(search.hamName, "H");
    EXPECT_EQ(host().traces.back(), (Trace{2, trace}));
  }
}

TEST(SearchVisitor, TakesTheHamOfACelestica) {
  const auto search = searched(
      R"([{"type":"Celestica","ham":"CelHam","accelerators":[{"id":1,"busses":[{"id":2,
           "devices":[{"did":10}]}]}]}])",
      kNoComponent, 10);
  EXPECT_EQ(search.hamName, "CelHam");
  EXPECT_EQ(host().traces.back(), (Trace{2, "Celestica"}));
}

TEST(SearchVisitor, TakesNoHamOfALinuxFs) {
  const auto search =
      searched(R"([{"type":"LinuxFs","ham":"FsHam","devices":[{"did":10}]}])", kNoComponent, 10);
  EXPECT_TRUE(search.found);
  EXPECT_EQ(search.hamName, "");
}

TEST(SearchVisitor, DoesNotReachTheControllersBehind) {
  EXPECT_EQ(searched(kScd, kNoComponent, 10).hamName, "ScdHam");
  EXPECT_EQ(searched(kScd, kNoComponent, 12).hamName, "I2cHam");
}

}  // namespace
