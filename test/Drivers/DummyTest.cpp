// SPDX-License-Identifier: Apache-2.0
#include "Drivers/Dummy.hpp"

#include <gtest/gtest.h>

#include <exception>
#include <memory>
#include <string>

#include "Components/Gpio.hpp"
#include "Drivers/Registry.hpp"
#include "test/support/Host.hpp"
#include "test/support/ScriptedHam.hpp"

namespace {

using Component::DeviceBase;
using Drivers::DriverArgs;

namespace Op = Doubles::Op;

class DummyTest : public testing::Test {
 protected:
  DummyTest() { device->ham = &ham; }

  DriverArgs args;
  Doubles::ScriptedHam ham;
  std::unique_ptr<Component::HardwareDevice> device{Drivers::Dummy::create(args, &ham)};
};

// Every kind of logical device that it could be asked for, with what it says then.
struct KindCase {
  const char* refusal;
  void (*ask)(DeviceBase& device, const DriverArgs& args);
};

const KindCase kKinds[] = {
    {"Not implemented newPoePort", [](auto& device, auto& args) { device.newPoePort(args); }},
    {"Not implemented newTempSensor", [](auto& device, auto& args) { device.newTempSensor(args); }},
    {"Not implemented newSlot", [](auto& device, auto& args) { device.newSlot(args); }},
    {"Not implemented newSfpXcvr", [](auto& device, auto& args) { device.newSfpXcvr(1, args); }},
    {"Not implemented newQsfpXcvr", [](auto& device, auto& args) { device.newQsfpXcvr(1, args); }},
    {"Not implemented newLed", [](auto& device, auto& args) { device.newLed(args); }},
    {"Not implemented newFan", [](auto& device, auto& args) { device.newFan(args); }},
    {"Not implemented newMux", [](auto& device, auto& args) { device.newMux(args, 1); }},
    {"Not implemented newPsu", [](auto& device, auto& args) { device.newPsu(args); }},
    {"Not implemented newSmbusProxy", [](auto& device, auto& args) { device.newSmbusProxy(args); }},
};

TEST_F(DummyTest, HasNoLogicalDevices) {
  for (const KindCase& kind : kKinds) {
    try {
      kind.ask(*device, args);
      ADD_FAILURE() << "nothing was thrown instead of: " << kind.refusal;
    } catch (const std::exception& error) {
      EXPECT_STREQ(error.what(), kind.refusal);
    }
  }
}

TEST_F(DummyTest, HasNoSimulatedRegisters) { EXPECT_EQ(device->expectedValues(), nullptr); }

TEST_F(DummyTest, ItsRegistersServeAsGpioLines) {
  args.driverArgs = {{"register", "10"}, {"bitpos", "7"}};
  const std::unique_ptr<Component::LogicalDevice::Gpio> gpio(device->newGpio(args));
  ham.expect({Op::read8(10).gives(0x0F)});
  ham.expect({Op::write8(10, 0x8F)});
  EXPECT_EQ(gpio->bitSet(), 0);
}

TEST_F(DummyTest, CreationDoesNothingElse) {
  Doubles::host().traces.clear();
  const std::unique_ptr<DeviceBase> other(Drivers::Dummy::create(args, &ham));
  EXPECT_NE(other.get(), device.get());
  EXPECT_TRUE(Doubles::host().traces.empty());
  EXPECT_FALSE(ham.retryCountSet);
}

TEST_F(DummyTest, IsRegisteredUnderTwoNames) {
  for (const char* name : {"Dummy", "GpioDriver"}) {
    const std::unique_ptr<DeviceBase> made(Drivers::drivers.at(name)(args, &ham));
    EXPECT_NE(dynamic_cast<Drivers::Dummy*>(made.get()), nullptr) << name;
  }
}

}  // namespace
