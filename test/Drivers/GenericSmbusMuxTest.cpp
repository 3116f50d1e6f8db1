// SPDX-License-Identifier: Apache-2.0
#include "Drivers/GenericSmbusMux.hpp"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "Drivers/Registry.hpp"
#include "test/support/Host.hpp"
#include "test/support/ScriptedHam.hpp"

namespace {

using Drivers::GenericSmbusMux;

namespace Op = Doubles::Op;

class GenericSmbusMuxTest : public testing::Test {
 protected:
  GenericSmbusMuxTest() { device->ham = &ownHam; }

  std::unique_ptr<Component::LogicalDevice::Mux> newMux(unsigned int channel) {
    return std::unique_ptr<Component::LogicalDevice::Mux>(device->newMux(args, channel));
  }

  const Drivers::DriverArgs args;
  Doubles::ScriptedHam ownHam;
  Doubles::ScriptedHam otherHam;
  std::unique_ptr<Component::HardwareDevice> device{GenericSmbusMux::create(args, &ownHam)};
};

TEST_F(GenericSmbusMuxTest, SelectionIsOneSendByteOfTheChannelThroughTheGivenHam) {
  otherHam.expect({Op::sendByte(0x08)});
  otherHam.prepare();
  EXPECT_EQ(newMux(8)->selectRequest(&otherHam), 1);
  EXPECT_EQ(otherHam.execute(), 0);
}

TEST_F(GenericSmbusMuxTest, ResetIsOneSendByteOfZeroThroughTheGivenHam) {
  otherHam.expect({Op::sendByte(0x00)});
  otherHam.prepare();
  EXPECT_EQ(newMux(8)->resetRequest(&otherHam), 1);
  EXPECT_EQ(otherHam.execute(), 0);
}

TEST_F(GenericSmbusMuxTest, ChannelIsTheLowEightBits) {
  otherHam.expect({Op::sendByte(0x04)});
  otherHam.prepare();
  newMux(0x104)->selectRequest(&otherHam);
  EXPECT_EQ(otherHam.execute(), 0);
}

TEST_F(GenericSmbusMuxTest, SelectsNowInABatchOfItsOwn) {
  ownHam.expect({Op::sendByte(0x80)});
  EXPECT_EQ(newMux(0x80)->executeMuxRequest(), 0);
}

TEST_F(GenericSmbusMuxTest, SelectingNowPassesTheStatusOn) {
  ownHam.expect({Op::sendByte(0x80)}).fails(6);
  EXPECT_EQ(newMux(0x80)->executeMuxRequest(), 6);
}

TEST_F(GenericSmbusMuxTest, SelectingNowTakesASubclasssOwnRequest) {
  class TwoStepMux final : public GenericSmbusMux::Mux {
   public:
    using Mux::Mux;
    int selectRequest(Ham::Ham* ham) override {
      ham->addSendByte(0x00, false);
      ham->addSendByte(0x11, false);
      return 2;
    }
  };
  ownHam.expect({Op::sendByte(0x00), Op::sendByte(0x11)});
  EXPECT_EQ(TwoStepMux(device.get(), 1).executeMuxRequest(), 0);
}

TEST_F(GenericSmbusMuxTest, KnowsItsDevice) { EXPECT_EQ(newMux(1)->device(), device.get()); }

TEST_F(GenericSmbusMuxTest, CreationDoesNothingElse) {
  Doubles::host().traces.clear();
  const std::unique_ptr<Component::HardwareDevice> other(GenericSmbusMux::create(args, &otherHam));
  EXPECT_NE(other.get(), device.get());
  EXPECT_TRUE(Doubles::host().traces.empty());
  EXPECT_FALSE(otherHam.retryCountSet);
}

TEST_F(GenericSmbusMuxTest, IsRegisteredUnderTwoNames) {
  for (const char* name : {"GenericSmbusMux", "PCA9548"}) {
    const std::unique_ptr<Component::DeviceBase> made(Drivers::drivers.at(name)(args, &otherHam));
    EXPECT_NE(dynamic_cast<GenericSmbusMux*>(made.get()), nullptr) << name;
  }
}

}  // namespace
