// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>

#include <memory>

#include "Topology/Topology.hpp"

namespace {

using testing::ElementsAre;

// Writes down what it visits, and stops at one of them.
class Recorder final : public Topology::TopologyVisitor {
 public:
  explicit Recorder(std::string stopAt = "") : stopAt_(std::move(stopAt)) {}

  bool visit(const Topology::Component* node) override { return saw("component", node->uid); }
  bool visit(const Topology::Device* node) override { return saw("device", node->did); }
  bool visit(const Topology::Mux* node) override { return saw("mux", node->did); }
  bool visit(const Topology::Bus* node) override { return saw("bus", node->id); }
  bool visit(const Topology::Accelerator* node) override { return saw("accel", node->id); }
  bool visit(const Topology::SCD* node) override { return saw("SCD", node->pci); }
  bool visit(const Topology::I2C* node) override { return saw("I2C", node->id); }
  bool visit(const Topology::IOPort* node) override { return saw("IOPort", node->id); }
  bool visit(const Topology::Celestica*) override { return saw("Celestica", 0); }
  bool visit(const Topology::PLM* node) override { return saw("PLM", node->id); }
  bool visit(const Topology::LinuxFs*) override { return saw("LinuxFs", 0); }
  bool visit(const Topology::SccSpi* node) override { return saw("SccSpi", node->id); }
  bool visit(const Topology::Topology*) override { return saw("topology", 0); }

  std::vector<std::string> seen;

 private:
  bool saw(const std::string& kind, uint32_t number) {
    seen.push_back(kind + " " + std::to_string(number));
    return seen.back() != stopAt_;
  }

  std::string stopAt_;
};

// Visits devices alone; everything else is the base's.
class DeviceCounter final : public Topology::TopologyVisitor {
 public:
  using TopologyVisitor::visit;
  bool visit(const Topology::Device*) override {
    ++devices;
    return true;
  }
  int devices = 0;
};

std::unique_ptr<Topology::Topology> tree(const char* text) {
  Topology::Document json;
  json.Parse(text);
  return std::unique_ptr<Topology::Topology>(Topology::Topology::fromJSON(json));
}

constexpr const char* kScdTree = R"([{"type":"SCD","ham":"H","pci":4,"accelerators":[
    {"id":9,"busses":[{"id":2},{"id":1}]},
    {"id":8,"busses":[{"id":3,
      "muxes":[{"did":50,"busses":[{"id":6},{"id":5,"devices":[{"did":12}]}]}],
      "devices":[{"did":11,"components":[{"uid":101},{"uid":100}]},{"did":10}]}]}]}])";

TEST(Walk, VisitsChildrenInTheirOrderAndThenTheNode) {
  Recorder recorder;
  EXPECT_TRUE(tree(kScdTree)->accept(&recorder));
  EXPECT_THAT(recorder.seen,
              ElementsAre("component 101", "component 100", "device 11", "device 10", "device 12",
                          "bus 5", "bus 6", "mux 50", "bus 3", "accel 8", "bus 1", "bus 2",
                          "accel 9", "SCD 4", "topology 0"));
}

TEST(Walk, StopsAtAComponentAndVisitsItsPath) {
  Recorder recorder("component 101");
  EXPECT_FALSE(tree(kScdTree)->accept(&recorder));
  EXPECT_THAT(recorder.seen,
              ElementsAre("component 101", "device 11", "bus 3", "accel 8", "SCD 4", "topology 0"));
}

TEST(Walk, StopsBehindAMuxAndVisitsItsPath) {
  Recorder recorder("device 12");
  EXPECT_FALSE(tree(kScdTree)->accept(&recorder));
  EXPECT_THAT(recorder.seen,
              ElementsAre("component 101", "component 100", "device 11", "device 10", "device 12",
                          "bus 5", "mux 50", "bus 3", "accel 8", "SCD 4", "topology 0"));
}

TEST(Walk, StopsWhereAContainerSaysSo) {
  Recorder recorder("bus 1");
  EXPECT_FALSE(tree(kScdTree)->accept(&recorder));
  EXPECT_THAT(recorder.seen, testing::Contains("bus 1"));
  EXPECT_THAT(recorder.seen, testing::Not(testing::Contains("bus 2")));
}

TEST(Walk, VisitsABusLikeControllerAsABusAndAsItself) {
  Recorder recorder;
  const auto topology = tree(R"([{"type":"I2C","ham":"H","id":1,"devices":[{"did":7}]},
      {"type":"IOPort","ham":"H","id":2},{"type":"PLM","ham":"H","id":3},
      {"type":"SccSpi","ham":"H","id":4}])");
  EXPECT_TRUE(topology->accept(&recorder));
  EXPECT_THAT(recorder.seen, ElementsAre("device 7", "bus 1", "I2C 1", "bus 2", "IOPort 2", "bus 3",
                                         "PLM 3", "bus 4", "SccSpi 4", "topology 0"));
}

TEST(Walk, VisitsABusLikeControllerAfterAStopBelowIt) {
  for (const char* type : {"I2C", "IOPort", "PLM", "SccSpi"}) {
    Recorder recorder("device 7");
    const std::string text = std::string(R"([{"type":")") + type +
                             R"(","ham":"H","id":1,"devices":[{"did":7},{"did":8}]}])";
    EXPECT_FALSE(tree(text.c_str())->accept(&recorder));
    EXPECT_THAT(recorder.seen,
                ElementsAre("device 7", "bus 1", std::string(type) + " 1", "topology 0"));
  }
}

TEST(Walk, VisitsABusLikeControllerAlsoWhenItsBusVisitStops) {
  Recorder recorder("bus 1");
  EXPECT_FALSE(
      tree(R"([{"type":"I2C","ham":"H","id":1},{"type":"LinuxFs","ham":"H"}])")->accept(&recorder));
  EXPECT_THAT(recorder.seen, ElementsAre("bus 1", "I2C 1", "topology 0"));
}

TEST(Walk, IsTheSameThroughEitherBaseOfAController) {
  const auto i2c = std::make_shared<Topology::I2C>();
  i2c->id = 3;
  Recorder asMedium;
  Recorder asBus;
  EXPECT_TRUE(static_cast<const Topology::MediumNode&>(*i2c).accept(&asMedium));
  EXPECT_TRUE(static_cast<const Topology::Bus&>(*i2c).accept(&asBus));
  EXPECT_THAT(asMedium.seen, ElementsAre("bus 3", "I2C 3"));
  EXPECT_EQ(asBus.seen, asMedium.seen);
}

TEST(Walk, VisitsTheDevicesOfALinuxFs) {
  Recorder recorder;
  EXPECT_TRUE(tree(R"([{"type":"LinuxFs","ham":"H","devices":[{"did":2},{"did":1}]},
               {"type":"Celestica","ham":"H","accelerators":[{"id":3}]}])")
                  ->accept(&recorder));
  EXPECT_THAT(recorder.seen, ElementsAre("device 2", "device 1", "LinuxFs 0", "accel 3",
                                         "Celestica 0", "topology 0"));
}

TEST(Walk, GoesOnThroughEveryNodeThatAVisitorDoesNotLookAt) {
  DeviceCounter counter;
  EXPECT_TRUE(tree(kScdTree)->accept(&counter));
  EXPECT_EQ(counter.devices, 3);
}

}  // namespace
