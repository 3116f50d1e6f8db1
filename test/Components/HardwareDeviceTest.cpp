// SPDX-License-Identifier: Apache-2.0
#include "Components/HardwareDevice.hpp"

#include <gmock/gmock.h>

#include <cstdlib>

#include "Drivers/Registry.hpp"
#include "Topology/Topology.hpp"
#include "test/support/Check.hpp"
#include "test/support/Describe.hpp"
#include "test/support/FakeHam.hpp"
#include "test/support/Host.hpp"

namespace {

using Component::DeviceBase;
using Component::HardwareDevice;
using Doubles::describe;
using Doubles::describeBare;
using Doubles::FakeHam;
using Doubles::host;
using Doubles::Trace;
using Drivers::DriverArgs;
using testing::ElementsAre;
using testing::IsEmpty;

// Knows when it is initialised.
class Known : public HardwareDevice {
 public:
  void init() override { hamAtInit = ham; }
  Utils::ExpectedVals* expectedValues() override { return &values; }
  static inline Utils::ExpectedVals values = {{1, {2, 1}}};
  Ham::Ham* hamAtInit = nullptr;
};

// A HAM that takes neither names nor values.
class BareHam final : public Ham::Ham {
 public:
  void prepare() override {}
  int execute() override { return 0; }
};

class HardwareDeviceCreation : public testing::Test {
 protected:
  HardwareDeviceCreation() {
    ::unsetenv("SIMULATION_VMID");
    Ham::hams["Fake"] = [this](const auto&, const auto&) {
      ++hams_;
      return &ham_;
    };
    Ham::hams["SimHam"] = Ham::hams["Fake"];
    Drivers::drivers["Known"] = [this](const auto&, auto* ham) {
      ++made_;
      hamOfFactory_ = ham;
      return new Known;
    };
    Drivers::drivers["Plain"] = [](const auto&, auto*) { return new HardwareDevice; };
    Drivers::drivers["Null"] = [](const auto&, auto*) { return nullptr; };
    EXPECT_EQ(Topology::loadTopology(Doubles::topologyOf("Fake", R"({"did":7},{"did":8})").c_str()),
              0);
    host().traces.clear();
  }
  HardwareDevice* make(const std::string& text, Ham::Ham* ham = nullptr) {
    text_ = text;
    args_ = DriverArgs();
    EXPECT_TRUE(args_.parseJSON(text_.c_str()));
    return HardwareDevice::create(args_, ham);
  }
  static void simulate() { ::setenv("SIMULATION_VMID", "", 1); }

  FakeHam ham_;
  int hams_ = 0;
  int made_ = 0;
  Ham::Ham* hamOfFactory_ = nullptr;
  std::string text_;
  DriverArgs args_;
};

TEST_F(HardwareDeviceCreation, GivesTheDeviceAHamOfItsOwn) {
  HardwareDevice* device = make(describe(7, "Known"));
  ASSERT_NE(device, nullptr);
  EXPECT_EQ(device->ham, &ham_);
  EXPECT_EQ(hamOfFactory_, &ham_);
  EXPECT_EQ(dynamic_cast<Known*>(device)->hamAtInit, &ham_);
  EXPECT_EQ(DeviceBase::devices.at(7), device);
}

TEST_F(HardwareDeviceCreation, TracesItsSteps) {
  make(describe(7, "Known"));
  EXPECT_THAT(
      host().texts(0),
      ElementsAre("looking for already existing device 7", "creating Ham",
                  "looking for component 4294967295 of device 7 in topology",
                  "creating Fake HAM using topology information", "creating HardwareDevice Known",
                  "calling factory function for Known", "Known device created"));
}

TEST_F(HardwareDeviceCreation, TellsTheHamDriverAndStartingValues) {
  make(describe(7, "Known"));
  EXPECT_EQ(ham_.driverName, "Known");
  EXPECT_EQ(ham_.label, "");
  EXPECT_EQ(ham_.expected, &Known::values);
}

TEST_F(HardwareDeviceCreation, SharesOneEmptyMapAmongDevicesWithoutValues) {
  make(describe(7, "Plain"));
  const auto* first = ham_.expected;
  make(describe(8, "Plain"));
  ASSERT_NE(first, nullptr);
  EXPECT_THAT(*first, IsEmpty());
  EXPECT_EQ(ham_.expected, first);
}

TEST_F(HardwareDeviceCreation, GoesOnWithAHamThatTakesNoNames) {
  BareHam bare;
  EXPECT_NE(make(describe(7, "Known"), &bare), nullptr);
  EXPECT_TRUE(host().traced(0, "virtual Ham::setDriverName() invoked!!!"));
  EXPECT_TRUE(host().traced(0, "virtual Ham::setExpected() invoked!!!"));
}

TEST_F(HardwareDeviceCreation, TakesTheHamThatItIsGiven) {
  FakeHam given;
  HardwareDevice* device = make(describe(99, "Known"), &given);
  ASSERT_NE(device, nullptr);
  EXPECT_EQ(device->ham, &given);
  EXPECT_EQ(hams_, 0);
}

TEST_F(HardwareDeviceCreation, MakesADeviceWithoutAHam) {
  HardwareDevice* device = make(describeBare(7, "Known"));
  ASSERT_NE(device, nullptr);
  EXPECT_EQ(device->ham, nullptr);
  EXPECT_EQ(hams_, 0);
  EXPECT_EQ(ham_.driverName, "");
  EXPECT_EQ(ham_.expected, nullptr);
}

TEST_F(HardwareDeviceCreation, ReusesTheDeviceOfADid) {
  HardwareDevice* device = make(describe(7, "Known"));
  FakeHam given;
  EXPECT_EQ(make(describe(7, "Plain"), &given), device);
  EXPECT_EQ(made_, 1);
  EXPECT_EQ(hams_, 1);
  EXPECT_EQ(device->ham, &ham_);
}

TEST_F(HardwareDeviceCreation, TracesAHamThatCannotBeMade) {
  EXPECT_EQ(make(describe(99, "Known")), nullptr);
  EXPECT_EQ(host().traces.back(), (Trace{0, "failed to create Ham"}));
  EXPECT_EQ(made_, 0);
  EXPECT_THAT(DeviceBase::devices, IsEmpty());
}

TEST_F(HardwareDeviceCreation, TracesAFactoryThatGivesNull) {
  EXPECT_EQ(make(describe(7, "Null")), nullptr);
  EXPECT_EQ(host().traces.back(), (Trace{0, "factory function returned a null object"}));
  EXPECT_THAT(DeviceBase::devices, IsEmpty());
}

TEST_F(HardwareDeviceCreation, ReplacesADeviceThatAppearedMeanwhile) {
  HardwareDevice other;
  Drivers::drivers["Known"] = [&](const auto&, auto*) {
    DeviceBase::devices[7] = &other;
    return new Known;
  };
  HardwareDevice* device = make(describe(7, "Known"));
  EXPECT_NE(device, &other);
  EXPECT_EQ(DeviceBase::devices.at(7), device);
}

TEST_F(HardwareDeviceCreation, NamesASimulatedDeviceAfterItsDescription) {
  simulate();
  make(describe(7, "Known", "{}", R"(,"name":"fan1")"));
  EXPECT_EQ(ham_.driverName, "Known");
  EXPECT_EQ(ham_.label, "fan1");
}

TEST_F(HardwareDeviceCreation, DoesNotLookAtTheNameOutsideOfSimulation) {
  make(describe(7, "Known", "{}", R"(,"name":5)"));
  EXPECT_EQ(ham_.label, "");
}

TEST_F(HardwareDeviceCreation, NamesNoSimulatedDeviceOfTheTopology) {
  simulate();
  DriverArgs args;
  args.did = 7;
  args.driver = "Known";
  ASSERT_NE(HardwareDevice::create(args, nullptr), nullptr);
  EXPECT_EQ(ham_.driverName, "Known");
  EXPECT_EQ(ham_.label, "");
}

TEST_F(HardwareDeviceCreation, WantsANameInSimulation) {
  simulate();
  EXPECT_CHECK(make(describe(7, "Known")), "Components/HardwareDevice",
               "json.HasMember( \"name\" )");
  EXPECT_CHECK(make(describe(7, "Known", "{}", R"(,"name":5)")), "rapidjson/document",
               "IsString()");
}

TEST(HardwareDevice, HasNoStartingValues) {
  HardwareDevice device;
  EXPECT_EQ(device.expectedValues(), nullptr);
  EXPECT_EQ(device.ham, nullptr);
}

}  // namespace
