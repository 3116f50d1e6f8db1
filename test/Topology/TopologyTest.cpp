// SPDX-License-Identifier: Apache-2.0
#include "Topology/Topology.hpp"

#include <gmock/gmock.h>

#include "test/support/Check.hpp"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Key;
using testing::SizeIs;
using Topology::_topology_index;

constexpr const char* kUnit = "Topology/Topology";

Topology::Document parsed(const std::string& text) {
  Topology::Document json;
  json.Parse(text.c_str());
  EXPECT_FALSE(json.HasParseError()) << text;
  return json;
}

template <class Node>
std::shared_ptr<Node> built(const std::string& text) {
  return Node::fromJSON(parsed(text));
}

std::unique_ptr<Topology::Topology> tree(const std::string& text) {
  return std::unique_ptr<Topology::Topology>(Topology::Topology::fromJSON(parsed(text)));
}

AhamAddress filled(const std::string& text) {
  AhamAddress address;
  Topology::fillAddressFromJSON(parsed(text), address);
  return address;
}

// The whole tree.

TEST(Topology, OfAnEmptyArrayHasNoNodes) { EXPECT_THAT(tree("[]")->nodes, IsEmpty()); }

TEST(Topology, MustBeAnArray) { EXPECT_CHECK(tree("{}"), kUnit, "json.IsArray()"); }

TEST(Topology, HoldsObjectsOnly) { EXPECT_CHECK(tree("[1]"), kUnit, "it->IsObject()"); }

TEST(Topology, WantsATypeOfEachController) {
  EXPECT_CHECK(tree(R"([{"ham":"H"}])"), kUnit, "it->HasMember( \"type\" )");
}

TEST(Topology, WantsAHamOfEachController) {
  EXPECT_CHECK(tree(R"([{"type":"LinuxFs"}])"), kUnit, "it->HasMember( \"ham\" )");
}

TEST(Topology, StopsOnAnUnknownType) {
  EXPECT_CHECK(tree(R"([{"type":"i2c","ham":"H","id":1}])"), kUnit, "false && \"Unknown type\"");
}

TEST(Topology, MakesEveryControllerTypeInDocumentOrder) {
  const auto topology = tree(R"([
      {"type":"SCD","ham":"A","pci":7}, {"type":"I2C","ham":"B","id":1},
      {"type":"IOPort","ham":"C","id":2}, {"type":"Celestica","ham":"D"},
      {"type":"PLM","ham":"E","id":3}, {"type":"SccSpi","ham":"F","id":4},
      {"type":"LinuxFs","ham":"G"}])");
  const auto& nodes = topology->nodes;
  ASSERT_THAT(nodes, SizeIs(7));
  EXPECT_EQ(dynamic_cast<Topology::SCD&>(*nodes[0]).pci, 7u);
  EXPECT_EQ(dynamic_cast<Topology::I2C&>(*nodes[1]).id, 1u);
  EXPECT_EQ(dynamic_cast<Topology::IOPort&>(*nodes[2]).id, 2u);
  EXPECT_NE(dynamic_cast<Topology::Celestica*>(nodes[3].get()), nullptr);
  EXPECT_EQ(dynamic_cast<Topology::PLM&>(*nodes[4]).id, 3u);
  EXPECT_EQ(dynamic_cast<Topology::SccSpi&>(*nodes[5]).id, 4u);
  EXPECT_NE(dynamic_cast<Topology::LinuxFs*>(nodes[6].get()), nullptr);
  std::string hams;
  for (const auto& node : nodes) {
    hams += node->ham;
  }
  EXPECT_EQ(hams, "ABCDEFG");
}

TEST(Topology, IgnoresUnknownKeys) {
  EXPECT_EQ(tree(R"([{"type":"I2C","ham":"H","id":1,"colour":"red"}])")->nodes.size(), 1u);
}

// Controllers.

TEST(Topology, ScdWantsItsPciNumber) {
  EXPECT_CHECK(built<Topology::SCD>("{}"), kUnit, "json.HasMember( \"pci\" )");
}

TEST(Topology, ScdOrdersItsAcceleratorsById) {
  const auto scd = built<Topology::SCD>(R"({"pci":0,"accelerators":[{"id":9},{"id":2}]})");
  EXPECT_THAT(scd->accelerators, ElementsAre(Key(2), Key(9)));
}

TEST(Topology, ScdStopsOnADuplicateAccelerator) {
  EXPECT_CHECK(built<Topology::SCD>(R"({"pci":0,"accelerators":[{"id":2},{"id":2}]})"), kUnit,
               "scd->accelerators.find( accel->id ) == scd->accelerators.end()");
}

TEST(Topology, CelesticaStopsOnADuplicateAccelerator) {
  EXPECT_CHECK(built<Topology::Celestica>(R"({"accelerators":[{"id":2},{"id":2}]})"), kUnit,
               "cel->accelerators.find( accel->id ) == cel->accelerators.end()");
}

TEST(Topology, AcceleratorsMustBeAnArray) {
  EXPECT_CHECK(built<Topology::SCD>(R"({"pci":0,"accelerators":{}})"), kUnit, "accels.IsArray()");
  EXPECT_CHECK(built<Topology::Celestica>(R"({"accelerators":1})"), kUnit, "accels.IsArray()");
}

TEST(Topology, CelesticaNeedsNoAccelerators) {
  EXPECT_THAT(built<Topology::Celestica>("{}")->accelerators, IsEmpty());
}

TEST(Topology, LinuxFsKeepsDevicesInDocumentOrder) {
  const auto fs = built<Topology::LinuxFs>(R"({"devices":[{"did":8},{"did":3}]})");
  ASSERT_THAT(fs->devices, SizeIs(2));
  EXPECT_EQ(fs->devices[0]->did, 8u);
  EXPECT_EQ(fs->devices[1]->did, 3u);
}

TEST(Topology, LinuxFsHoldsObjectsOnly) {
  EXPECT_CHECK(built<Topology::LinuxFs>(R"({"devices":[8]})"), kUnit, "it->IsObject()");
}

TEST(Topology, I2cIsNotSimulatedUnlessItSaysSo) {
  EXPECT_FALSE(built<Topology::I2C>(R"({"id":1})")->simulated);
  EXPECT_FALSE(built<Topology::I2C>(R"({"id":1,"simulated":false})")->simulated);
  EXPECT_TRUE(built<Topology::I2C>(R"({"id":1,"simulated":true})")->simulated);
}

TEST(Topology, I2cHasWhatABusHas) {
  const auto i2c = built<Topology::I2C>(R"({"id":1,"devices":[{"did":8}],"muxes":[{"did":5}]})");
  ASSERT_THAT(i2c->devices, SizeIs(1));
  ASSERT_THAT(i2c->muxes, SizeIs(1));
  EXPECT_EQ(i2c->muxes[0]->did, 5u);
}

// Accelerators, buses and muxes.

TEST(Topology, AcceleratorWantsItsId) {
  EXPECT_CHECK(built<Topology::Accelerator>("{}"), kUnit, "json.HasMember( \"id\" )");
}

TEST(Topology, AcceleratorsBussesMustBeAnArray) {
  EXPECT_CHECK(built<Topology::Accelerator>(R"({"id":1,"busses":{}})"), kUnit, "busses.IsArray()");
}

TEST(Topology, AcceleratorStopsOnADuplicateBus) {
  EXPECT_CHECK(built<Topology::Accelerator>(R"({"id":1,"busses":[{"id":3},{"id":3}]})"), kUnit,
               "accel->busses.find( bus->id ) == accel->busses.end()");
}

TEST(Topology, MuxTakesTheLaterOfTwoBussesWithOneId) {
  const auto mux = built<Topology::Mux>(
      R"({"did":1,"busses":[{"id":3,"devices":[{"did":10}]},{"id":3,"devices":[{"did":11}]}]})");
  ASSERT_THAT(mux->busses, ElementsAre(Key(3)));
  EXPECT_EQ(mux->busses[3]->devices[0]->did, 11u);
}

TEST(Topology, MuxOrdersItsBussesById) {
  EXPECT_THAT(built<Topology::Mux>(R"({"did":1,"busses":[{"id":8},{"id":1}]})")->busses,
              ElementsAre(Key(1), Key(8)));
}

TEST(Topology, MuxWantsItsDid) {
  EXPECT_CHECK(built<Topology::Mux>("{}"), kUnit, "json.HasMember( \"did\" )");
}

TEST(Topology, MuxHoldsObjectsOnly) {
  EXPECT_CHECK(built<Topology::Mux>(R"({"did":1,"busses":[2]})"), kUnit, "it->IsObject()");
}

TEST(Topology, BusNeedsNeitherDevicesNorMuxes) {
  const auto bus = built<Topology::Bus>(R"({"id":4})");
  EXPECT_EQ(bus->id, 4u);
  EXPECT_THAT(bus->devices, IsEmpty());
  EXPECT_THAT(bus->muxes, IsEmpty());
}

TEST(Topology, BusWantsItsId) {
  EXPECT_CHECK(built<Topology::Bus>("{}"), kUnit, "json.HasMember( \"id\" )");
}

TEST(Topology, BusIdIsReadWithItsSign) {
  EXPECT_EQ(built<Topology::Bus>(R"({"id":-1})")->id, 0xFFFFFFFFu);
}

TEST(Topology, BusHoldsObjectsOnly) {
  EXPECT_CHECK(built<Topology::Bus>(R"({"id":1,"devices":["x"]})"), kUnit, "it->IsObject()");
  EXPECT_CHECK(built<Topology::Bus>(R"({"id":1,"muxes":["x"]})"), kUnit, "it->IsObject()");
}

TEST(Topology, NodesMustBeObjects) {
  EXPECT_CHECK(built<Topology::Component>("1"), kUnit, "json.IsObject()");
  EXPECT_CHECK(built<Topology::Device>("1"), kUnit, "json.IsObject()");
  EXPECT_CHECK(built<Topology::Mux>("1"), kUnit, "json.IsObject()");
  EXPECT_CHECK(built<Topology::Bus>("1"), kUnit, "json.IsObject()");
  EXPECT_CHECK(built<Topology::Accelerator>("1"), kUnit, "json.IsObject()");
  EXPECT_CHECK(built<Topology::SCD>("1"), kUnit, "json.IsObject()");
  EXPECT_CHECK(built<Topology::Celestica>("1"), kUnit, "json.IsObject()");
  EXPECT_CHECK(built<Topology::LinuxFs>("1"), kUnit, "json.IsObject()");
  EXPECT_CHECK(built<Topology::I2C>("1"), kUnit, "json.IsObject()");
}

TEST(Topology, NumbersMustBeUnsigned) {
  EXPECT_CHECK(built<Topology::Device>(R"({"did":-1})"), "rapidjson/document",
               "data_.f.flags & kUintFlag");
  EXPECT_CHECK(built<Topology::Device>(R"({"did":"1"})"), "rapidjson/document",
               "data_.f.flags & kUintFlag");
}

// Devices and components.

TEST(Topology, DeviceWantsItsDid) {
  EXPECT_CHECK(built<Topology::Device>("{}"), kUnit, "json.HasMember( \"did\" )");
}

TEST(Topology, DeviceKeepsComponentsInDocumentOrder) {
  const auto device = built<Topology::Device>(R"({"did":1,"components":[{"uid":20},{"uid":10}]})");
  ASSERT_THAT(device->components, SizeIs(2));
  EXPECT_EQ(device->components[0]->uid, 20u);
  EXPECT_EQ(device->components[1]->uid, 10u);
}

TEST(Topology, ComponentWantsItsUid) {
  EXPECT_CHECK(built<Topology::Component>("{}"), kUnit, "json.HasMember( \"uid\" )");
}

TEST(Topology, DeviceWithoutADriverHasNoArguments) {
  EXPECT_EQ(built<Topology::Device>(R"({"did":1})")->driverArgs, nullptr);
}

TEST(Topology, DeviceWithADriverHasItsArguments) {
  const auto device = built<Topology::Device>(
      R"({"did":1,"driver":"Dummy","address":{"address":32},"driverArgs":{"a":"b"}})");
  ASSERT_NE(device->driverArgs, nullptr);
  EXPECT_EQ(device->driverArgs->did, 1u);
  EXPECT_EQ(device->driverArgs->driver, "Dummy");
  EXPECT_EQ(device->driverArgs->address.address, 32u);
  EXPECT_EQ(device->driverArgs->driverArgs.at("a"), "b");
  EXPECT_EQ(device->driverArgs->json, nullptr);
}

TEST(Topology, IndexHoldsTheLaterOfTwoDevicesWithOneLabel) {
  tree(R"([{"type":"LinuxFs","ham":"H",
            "devices":[{"did":1,"label":"PSoC"},{"did":2,"label":"PSoC"},{"did":3}]}])");
  ASSERT_THAT(_topology_index, ElementsAre(Key("PSoC")));
  EXPECT_EQ(_topology_index["PSoC"]->did, 2u);
}

// Addresses.

TEST(Address, HasDefaults) {
  const AhamAddress address = filled(R"({"address":16})");
  EXPECT_EQ(address.address, 16u);
  EXPECT_EQ(address.addrSize, 1u);
  EXPECT_EQ(address.word(), uint64_t{16} << 32 | uint64_t{1} << 57);
}

TEST(Address, TakesEveryKey) {
  const AhamAddress address =
      filled(R"({"address":16,"writeDelay":2,"readDelay":3,"busTimeout":5,"extraDelay":1,
                 "addrSize":2,"accel":9})");
  EXPECT_EQ(address.writeDelay, 2u);
  EXPECT_EQ(address.readDelay, 3u);
  EXPECT_EQ(address.busTimeout, 5u);
  EXPECT_EQ(address.extraDelay, 1u);
  EXPECT_EQ(address.addrSize, 2u);
  EXPECT_EQ(address.accel, 9u);
}

TEST(Address, CutsEachValueToItsField) {
  const AhamAddress address =
      filled(R"({"address":421,"writeDelay":5,"readDelay":6,"busTimeout":9,"extraDelay":3,
                 "accel":130})");
  EXPECT_EQ(address.address, 0x25u);
  EXPECT_EQ(address.writeDelay, 1u);
  EXPECT_EQ(address.readDelay, 2u);
  EXPECT_EQ(address.busTimeout, 1u);
  EXPECT_EQ(address.extraDelay, 1u);
  EXPECT_EQ(address.accel, 2u);
}

TEST(Address, ClearsWhatWasThere) {
  AhamAddress address{};
  address.reg = 0x99;
  address.bus = 7;
  Topology::fillAddressFromJSON(parsed(R"({"address":1})"), address);
  EXPECT_EQ(address.reg, 0u);
  EXPECT_EQ(address.bus, 0u);
}

TEST(Address, ChecksTheSizeAfterItIsCutToTwoBits) {
  constexpr const char* kText = "addr.addrSize == 1 || addr.addrSize == 2 || addr.addrSize == 4";
  EXPECT_EQ(filled(R"({"address":1,"addrSize":5})").addrSize, 1u);
  EXPECT_EQ(filled(R"({"address":1,"addrSize":6})").addrSize, 2u);
  EXPECT_CHECK(filled(R"({"address":1,"addrSize":4})"), kUnit, kText);
  EXPECT_CHECK(filled(R"({"address":1,"addrSize":3})"), kUnit, kText);
  EXPECT_CHECK(filled(R"({"address":1,"addrSize":0})"), kUnit, kText);
}

TEST(Address, IsRequired) { EXPECT_CHECK(filled("{}"), kUnit, "value.HasMember( \"address\" )"); }

TEST(Address, MustBeAnObject) { EXPECT_CHECK(filled("16"), kUnit, "value.IsObject()"); }

TEST(Address, HoldsUnsignedIntegersOnly) {
  EXPECT_CHECK(filled(R"({"address":"0x10"})"), "rapidjson/document", "data_.f.flags & kUintFlag");
  EXPECT_CHECK(filled(R"({"address":1.5})"), "rapidjson/document", "data_.f.flags & kUintFlag");
}

}  // namespace
