// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>

#include "Topology/Topology.hpp"
#include "pl/pl_status.h"
#include "test/support/Check.hpp"
#include "test/support/Host.hpp"

// Topology::fromJSON under its name in object files. The linker leads every call from another unit
// to fromJSONOrNull (--wrap, see CMakeLists.txt).
#define FROM_JSON                                                                           \
  "_ZN8Topology8Topology8fromJSONERKN9rapidjson15GenericDocumentINS1_4UTF8IcEENS1_19Memory" \
  "PoolAllocatorINS1_12CrtAllocatorEEES6_EE"

Topology::Topology* realFromJSON(const Topology::Document& json) __asm__("__real_" FROM_JSON);
Topology::Topology* fromJSONOrNull(const Topology::Document& json) __asm__("__wrap_" FROM_JSON);

static bool treeCannotBeBuilt = false;

Topology::Topology* fromJSONOrNull(const Topology::Document& json) {
  return treeCannotBeBuilt ? nullptr : realFromJSON(json);
}

namespace {

using Doubles::host;
using Doubles::Trace;
using testing::ElementsAre;
using testing::IsEmpty;
using Topology::_topology;
using Topology::_topology_index;
using Topology::_topology_json;
using Topology::loadTopology;

constexpr const char* kText =
    R"([{"type":"LinuxFs","ham":"H","devices":[{"did":1,"label":"PSoC"}]}])";

TEST(Loading, KeepsTreeTextAndLabels) {
  ASSERT_EQ(loadTopology(kText), PL_STATUS_OK);
  ASSERT_NE(_topology, nullptr);
  EXPECT_EQ(_topology->nodes.size(), 1u);
  EXPECT_EQ(_topology_json, kText);
  EXPECT_EQ(_topology_index.count("PSoC"), 1u);
  EXPECT_THAT(host().traces, ElementsAre(Trace{2, "loading topology json"}));
}

TEST(Loading, KeepsTheTreeOfTheSameText) {
  loadTopology(kText);
  const auto* first = _topology;
  host().traces.clear();
  EXPECT_EQ(loadTopology(kText), PL_STATUS_OK);
  EXPECT_EQ(_topology, first);
  EXPECT_THAT(
      host().traces,
      ElementsAre(Trace{2, "topology is the same as the previously loaded one (using it)"}));
}

TEST(Loading, BuildsANewTreeForOneSpaceMore) {
  loadTopology(kText);
  const std::string other = std::string(kText) + " ";
  host().traces.clear();
  EXPECT_EQ(loadTopology(other.c_str()), PL_STATUS_OK);
  EXPECT_EQ(_topology_json, other);
  EXPECT_THAT(host().traces, ElementsAre(Trace{2, "loading topology json"}));
}

TEST(Loading, EmptiesTheLabelsOfTheOldTree) {
  loadTopology(kText);
  loadTopology("[]");
  EXPECT_THAT(_topology_index, IsEmpty());
}

TEST(Loading, ReportsWhereATextIsNotJson) {
  EXPECT_EQ(loadTopology("[1,"), PL_STATUS_INVALID);
  EXPECT_EQ(_topology, nullptr);
  EXPECT_THAT(host().traces, ElementsAre(Trace{2, "loading topology json"},
                                         Trace{2,
                                               "failed to load topology from json: Invalid "
                                               "value. offset 3"}));
}

TEST(Loading, KeepsTheOldTreeWhenATextIsNotJson) {
  loadTopology(kText);
  const auto* first = _topology;
  EXPECT_EQ(loadTopology(""), PL_STATUS_INVALID);
  EXPECT_TRUE(
      host().traced(2, "failed to load topology from json: The document is empty. offset 0"));
  EXPECT_EQ(_topology, first);
  EXPECT_EQ(_topology_json, kText);
  EXPECT_EQ(Topology::getDeviceByLabel("PSoC")->did, 1u);
}

TEST(Loading, HasNoTreeWhenNoneCouldBeBuilt) {
  loadTopology(kText);
  treeCannotBeBuilt = true;
  EXPECT_EQ(loadTopology("[]"), PL_STATUS_REMOTE);
  EXPECT_TRUE(host().traced(2, "failed to create topology tree"));
  EXPECT_EQ(_topology, nullptr);
  EXPECT_EQ(_topology_json, kText);
  EXPECT_THAT(_topology_index, IsEmpty());
}

TEST(Loading, TriesTheOldTextAgainAfterATreeThatCouldNotBeBuilt) {
  loadTopology(kText);
  treeCannotBeBuilt = true;
  loadTopology("[]");
  treeCannotBeBuilt = false;
  EXPECT_EQ(loadTopology(kText), PL_STATUS_OK);
  EXPECT_NE(_topology, nullptr);
}

TEST(Loading, StopsOnAStructureThatIsWrong) {
  EXPECT_CHECK_AFTER(static_cast<void>(loadTopology("{}")), (Trace{2, "loading topology json"}),
                     "Topology/Topology", "json.IsArray()");
}

// Search.

TEST(FindDevice, FindsTheFirstInWalkOrder) {
  loadTopology(R"([{"type":"SCD","ham":"H","pci":0,"accelerators":[{"id":1,"busses":[
      {"id":2,"muxes":[{"did":50,"busses":[{"id":1,"devices":[{"did":7,"label":"behind"}]}]}],
       "devices":[{"did":7,"label":"first"}]}]}]}])");
  host().traces.clear();
  EXPECT_EQ(Topology::findDevice(7), Topology::getDeviceByLabel("first"));
  EXPECT_THAT(host().traces, ElementsAre(Trace{2, "Device 7 found in topology"}));
}

TEST(FindDevice, TakesTheLowerAcceleratorAndBusFirst) {
  loadTopology(R"([{"type":"SCD","ham":"H","pci":0,"accelerators":[
      {"id":2,"busses":[{"id":1,"devices":[{"did":7}]}]},
      {"id":1,"busses":[{"id":9,"devices":[{"did":7}]},
                        {"id":3,"devices":[{"did":7,"label":"lowest"}]}]}]}])");
  EXPECT_EQ(Topology::findDevice(7), Topology::getDeviceByLabel("lowest"));
}

TEST(FindDevice, GivesNullForAnUnknownNumber) {
  loadTopology(kText);
  EXPECT_EQ(Topology::findDevice(2), nullptr);
}

TEST(FindDevice, GivesNullWithoutATree) { EXPECT_EQ(Topology::findDevice(1), nullptr); }

TEST(GetDeviceByLabel, IsExactAboutCase) {
  loadTopology(kText);
  ASSERT_NE(Topology::getDeviceByLabel("PSoC"), nullptr);
  EXPECT_EQ(Topology::getDeviceByLabel("psoc"), nullptr);
  EXPECT_EQ(Topology::getDeviceByLabel("PSoC "), nullptr);
}

TEST(IsDeviceObject, LooksAtTheFirstCharacterAlone) {
  EXPECT_TRUE(Topology::isDeviceObject("{"));
  EXPECT_TRUE(Topology::isDeviceObject("{\"did\":1}"));
  EXPECT_FALSE(Topology::isDeviceObject("PSoC"));
  EXPECT_FALSE(Topology::isDeviceObject(" {"));
  EXPECT_FALSE(Topology::isDeviceObject(""));
}

}  // namespace
