// SPDX-License-Identifier: Apache-2.0
#include "Components/DeviceBase.hpp"

#include <gmock/gmock.h>

#include <functional>

#include "Components/HardwareDevice.hpp"
#include "Components/MultiDevice.hpp"
#include "Drivers/Registry.hpp"
#include "Utils/NotImplemented.hpp"
#include "test/support/Describe.hpp"
#include "test/support/Host.hpp"

namespace {

using Component::DeviceBase;
using Doubles::describeBare;
using Doubles::host;
using Doubles::Trace;
using Drivers::DriverArgs;
using testing::ElementsAre;

struct Creation {
  const char* name;
  std::function<void(DeviceBase&)> call;
};

const Creation kCreations[] = {
    {"newPoePort", [](DeviceBase& device) { device.newPoePort({}); }},
    {"newTempSensor", [](DeviceBase& device) { device.newTempSensor({}); }},
    {"newSlot", [](DeviceBase& device) { device.newSlot({}); }},
    {"newSfpXcvr", [](DeviceBase& device) { device.newSfpXcvr(1, {}); }},
    {"newQsfpXcvr", [](DeviceBase& device) { device.newQsfpXcvr(1, {}); }},
    {"newLed", [](DeviceBase& device) { device.newLed({}); }},
    {"newFan", [](DeviceBase& device) { device.newFan({}); }},
    {"newMux", [](DeviceBase& device) { device.newMux({}, 1); }},
    {"newPsu", [](DeviceBase& device) { device.newPsu({}); }},
    {"newSmbusProxy", [](DeviceBase& device) { device.newSmbusProxy({}); }},
};

TEST(DeviceBase, ThrowsTheNameOfAKindThatItDoesNotMake) {
  DeviceBase device;
  for (const Creation& creation : kCreations) {
    try {
      creation.call(device);
      ADD_FAILURE() << creation.name << " does not throw";
    } catch (const NotImplementedException& exception) {
      EXPECT_EQ(exception.what(), std::string("Not implemented ") + creation.name);
    }
  }
}

TEST(DeviceBase, NeedsNoInit) {
  DeviceBase device;
  device.init();
  EXPECT_THAT(host().traces, testing::IsEmpty());
}

// Making devices.

TEST(DeviceCreation, MakesAHardwareDeviceAndLeavesItsArguments) {
  const std::string text = describeBare(7, "Dummy", R"({"a":1})");
  DriverArgs args;
  DeviceBase* device = DeviceBase::create(text.c_str(), args);
  EXPECT_NE(dynamic_cast<Component::HardwareDevice*>(device), nullptr);
  EXPECT_EQ(args.did, 7u);
  EXPECT_EQ(args.driverArgs.at("a"), "1");
  EXPECT_THAT(host().traces, ElementsAre(Trace{0, "parsing devArgs = " + text},
                                         Trace{0, "looking for already existing device 7"},
                                         Trace{0, "creating HardwareDevice Dummy"},
                                         Trace{0, "calling factory function for Dummy"},
                                         Trace{0, "Dummy device created"}));
}

TEST(DeviceCreation, MakesAContainer) {
  Drivers::drivers["Box"] = [](const auto&, auto*) { return new Component::MultiDevice; };
  const std::string text =
      describeBare(7, "Box", "{}", R"(,"isMultiDevice":true,"multiDeviceArgs":{"k":"text"})");
  DriverArgs args;
  auto* box = dynamic_cast<Component::MultiDevice*>(DeviceBase::create(text.c_str(), args));
  ASSERT_NE(box, nullptr);
  EXPECT_STREQ(box->getDeviceDriverArg("k"), "text");
}

TEST(DeviceCreation, TracesATextThatIsNotJson) {
  DriverArgs args;
  EXPECT_EQ(DeviceBase::create("{", args), nullptr);
  EXPECT_THAT(host().traces,
              ElementsAre(Trace{0, "parsing devArgs = {"},
                          Trace{0,
                                "failed to load device from json: Missing a name for object "
                                "member. offset 1"},
                          Trace{0, "failed to parse json object as a device"}));
}

TEST(DeviceCreation, TracesAnUnknownDriver) {
  DriverArgs args;
  EXPECT_EQ(DeviceBase::create(describeBare(7, "dummy").c_str(), args), nullptr);
  const std::vector<Trace> last(host().traces.end() - 3, host().traces.end());
  EXPECT_THAT(last, ElementsAre(Trace{0, "creating HardwareDevice dummy"},
                                Trace{0, "driver dummy not found"},
                                Trace{0, "factory function returned a null object"}));
  EXPECT_TRUE(DeviceBase::devices.empty());
}

TEST(DeviceCreation, FindsTheDeviceOfADidWhateverItsDriver) {
  DriverArgs first;
  DriverArgs second;
  DeviceBase* device = DeviceBase::create(describeBare(7, "Dummy").c_str(), first);
  host().traces.clear();
  const std::string text = describeBare(7, "NoSuchDriver");
  EXPECT_EQ(DeviceBase::create(text.c_str(), second), device);
  EXPECT_THAT(host().traces,
              ElementsAre(Trace{0, "parsing devArgs = " + text},
                          Trace{0, "looking for already existing device 7"},
                          Trace{0, "using previously instanciated HardwareDevice NoSuchDriver"}));
}

TEST(DeviceCreation, MakesADeviceForEachDid) {
  DriverArgs first;
  DriverArgs second;
  EXPECT_NE(DeviceBase::create(describeBare(7, "Dummy").c_str(), first),
            DeviceBase::create(describeBare(8, "Dummy").c_str(), second));
  EXPECT_EQ(DeviceBase::devices.size(), 2u);
}

TEST(DeviceCreation, FindsNothingInAnEmptyCache) {
  DriverArgs args;
  args.did = 3;
  EXPECT_EQ(DeviceBase::findDevice(args), nullptr);
  EXPECT_THAT(host().traces, ElementsAre(Trace{0, "looking for already existing device 3"}));
}

}  // namespace
