// SPDX-License-Identifier: Apache-2.0
#include "Drivers/SmbusProxyDriver.hpp"

#include <gmock/gmock.h>
#include <unistd.h>

#include <exception>
#include <memory>
#include <ostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "Drivers/Registry.hpp"
#include "test/support/Host.hpp"
#include "test/support/ScriptedHam.hpp"
#include "test/support/SmbusLibrary.hpp"

namespace {

// Every wait of this process, in microseconds.
std::vector<useconds_t>& waits() {
  static std::vector<useconds_t> all;
  return all;
}

}  // namespace

// Stands before the C library's, so that nothing here waits.
int usleep(useconds_t microseconds) {
  waits().push_back(microseconds);
  return 0;
}

namespace {

using Component::LogicalDevice::SmbusProxy;
using Doubles::Operation;
using Doubles::Trace;
using Drivers::SmbusProxyDriver;
using testing::ElementsAre;

namespace Op = Doubles::Op;

constexpr useconds_t kReadWait = 5000;
constexpr useconds_t kWriteWait = 7000;

class SmbusProxyDriverTest : public testing::Test {
 protected:
  SmbusProxyDriverTest() { device->ham = &ham; }

  // Replaces the one before.
  SmbusProxy& newProxy(Drivers::ArgMap settings = {}) {
    args.driverArgs = std::move(settings);
    proxy_.reset(static_cast<SmbusProxyDriver::SmbusProxy*>(device->newSmbusProxy(args)));
    return *proxy_;
  }

  SmbusProxy& newWaitingProxy() {
    return newProxy({{"localReadDelayMs", "5"}, {"localWriteDelayMs", "7"}});
  }

  Drivers::DriverArgs args;
  Doubles::ScriptedHam ham;
  std::unique_ptr<Component::HardwareDevice> device{SmbusProxyDriver::create(args, &ham)};

 private:
  std::unique_ptr<SmbusProxyDriver::SmbusProxy> proxy_;  // its interface has no destructor
};

// Every operation that is offered: what it asks of the HAM, the call, with whether its outputs are
// right, and the wait behind it.
struct Outcome {
  pl_status status;
  bool outputs = true;  // they hold the answer
};

struct OperationCase {
  const char* name;
  Operation operation;
  Outcome (*call)(SmbusProxy& proxy);
  useconds_t wait;
};

std::ostream& operator<<(std::ostream& out, const OperationCase& each) { return out << each.name; }

const unsigned char kBytes[] = {0x01, 0x00, 0xFF};

const OperationCase kOperations[] = {
    {"ReceiveByte", Op::recvByte().gives(0x81),
     [](SmbusProxy& proxy) {
       unsigned char value = 0;
       const pl_status status = proxy.receiveByte(&value);
       return Outcome{status, value == 0x81};
     },
     kReadWait},
    {"SendByte", Op::sendByte(0x82),
     [](SmbusProxy& proxy) { return Outcome{proxy.sendByte(0x82)}; }, kWriteWait},
    {"ReadByte", Op::read8(0x10).gives(0x83),
     [](SmbusProxy& proxy) {
       unsigned char value = 0;
       const pl_status status = proxy.readByte(0x10, &value);
       return Outcome{status, value == 0x83};
     },
     kReadWait},
    {"WriteByte", Op::write8(0x11, 0x84),
     [](SmbusProxy& proxy) { return Outcome{proxy.writeByte(0x11, 0x84)}; }, kWriteWait},
    {"ReadWord", Op::read16(0x12).gives(0x8586),
     [](SmbusProxy& proxy) {
       unsigned short value = 0;
       const pl_status status = proxy.readWord(0x12, &value);
       return Outcome{status, value == 0x8586};
     },
     kReadWait},
    {"WriteWord", Op::write16(0x13, 0x8788),
     [](SmbusProxy& proxy) { return Outcome{proxy.writeWord(0x13, 0x8788)}; }, kWriteWait},
    {"BlockRead", Op::readBlock(0x14).gives("block"),
     [](SmbusProxy& proxy) {
       unsigned char data[PL_SMBUS_BLOCK_MAX] = {};
       unsigned int length = 0;
       const pl_status status = proxy.blockRead(0x14, data, &length);
       return Outcome{status,
                      length == 5 && std::string(data, data + 6) == std::string("block\0", 6)};
     },
     kReadWait},
    {"BlockWrite", Op::writeBlock(0x15, std::string("\x01\x00\xFF", 3)),
     [](SmbusProxy& proxy) { return Outcome{proxy.blockWrite(0x15, kBytes, sizeof kBytes)}; },
     kWriteWait},
    {"I2cBlockRead", Op::read(0x16, 4).gives("four"),
     [](SmbusProxy& proxy) {
       unsigned char data[5] = {};
       const pl_status status = proxy.i2cBlockRead(0x16, data, 4);
       return Outcome{status, std::string(data, data + 5) == std::string("four\0", 5)};
     },
     kReadWait},
    {"I2cBlockWrite", Op::write(0x17, std::string("\x01\x00\xFF", 3)),
     [](SmbusProxy& proxy) { return Outcome{proxy.i2cBlockWrite(0x17, kBytes, sizeof kBytes)}; },
     kWriteWait},
    {"ProcessCall", Op::processCall(0x18, 0x898A).gives(0x8B8C),
     [](SmbusProxy& proxy) {
       unsigned short value = 0;
       const pl_status status = proxy.processCall(0x18, 0x898A, &value);
       return Outcome{status, value == 0x8B8C};
     },
     kWriteWait},
};

class SmbusProxyOperation : public SmbusProxyDriverTest,
                            public testing::WithParamInterface<OperationCase> {};

TEST_P(SmbusProxyOperation, IsTheHamsOwnAndThenWaits) {
  SmbusProxy& proxy = newWaitingProxy();
  ham.expect({GetParam().operation});
  const Outcome outcome = GetParam().call(proxy);
  EXPECT_EQ(outcome.status, 0);
  EXPECT_TRUE(outcome.outputs);
  EXPECT_THAT(waits(), ElementsAre(GetParam().wait));
}

TEST_P(SmbusProxyOperation, WaitsNothingWithoutDelays) {
  SmbusProxy& proxy = newProxy();
  ham.expect({GetParam().operation});
  EXPECT_EQ(GetParam().call(proxy).status, 0);
  EXPECT_THAT(waits(), ElementsAre(0u));
}

INSTANTIATE_TEST_SUITE_P(Every, SmbusProxyOperation, testing::ValuesIn(kOperations),
                         [](const auto& each) { return each.param.name; });

// All but the I2C block read, whose missing answer is a failure of its own.
class SmbusProxyFailure : public SmbusProxyOperation {};

TEST_P(SmbusProxyFailure, IsPassedOnAfterTheWait) {
  SmbusProxy& proxy = newWaitingProxy();
  ham.expect({GetParam().operation}).fails(6);
  EXPECT_EQ(GetParam().call(proxy).status, 6);
  EXPECT_THAT(waits(), ElementsAre(GetParam().wait));
}

std::vector<OperationCase> allButI2cBlockRead() {
  std::vector<OperationCase> cases;
  for (const OperationCase& each : kOperations) {
    if (each.name != std::string("I2cBlockRead")) {
      cases.push_back(each);
    }
  }
  return cases;
}

INSTANTIATE_TEST_SUITE_P(Every, SmbusProxyFailure, testing::ValuesIn(allButI2cBlockRead()),
                         [](const auto& each) { return each.param.name; });

TEST_F(SmbusProxyDriverTest, ReadDelayAloneIsAfterReadsOnly) {
  SmbusProxy& proxy = newProxy({{"localReadDelayMs", "5"}});
  ham.expect({Op::read8(1).gives(1)});
  ham.expect({Op::write8(1, 1)});
  ham.expect({Op::processCall(1, 1).gives(1)});
  unsigned char byte;
  unsigned short word;
  EXPECT_EQ(proxy.readByte(1, &byte), 0);
  EXPECT_EQ(proxy.writeByte(1, 1), 0);
  EXPECT_EQ(proxy.processCall(1, 1, &word), 0);
  EXPECT_THAT(waits(), ElementsAre(5000u, 0u, 0u));
}

TEST_F(SmbusProxyDriverTest, FailedReadsGiveNoData) {
  SmbusProxy& proxy = newProxy();
  ham.expect({Op::read16(1)}).fails(4);
  ham.expect({Op::readBlock(2)}).fails(4);
  unsigned short word = 0xA5A5;
  unsigned char data[PL_SMBUS_BLOCK_MAX] = {0xA5};
  unsigned int length = 77;
  EXPECT_EQ(proxy.readWord(1, &word), 4);
  EXPECT_EQ(proxy.blockRead(2, data, &length), 4);
  EXPECT_EQ(word, 0xA5A5);
  EXPECT_EQ(data[0], 0xA5);
  EXPECT_EQ(length, 0u);
}

TEST_F(SmbusProxyDriverTest, BlockReadTakesAllThatTheDeviceGives) {
  SmbusProxy& proxy = newProxy();
  const std::string longest(PL_SMBUS_BLOCK_MAX, '\xC3');
  ham.expect({Op::readBlock(2).gives(longest)});
  unsigned char data[PL_SMBUS_BLOCK_MAX];
  unsigned int length = 1;
  EXPECT_EQ(proxy.blockRead(2, data, &length), 0);
  EXPECT_EQ(length, longest.size());
  EXPECT_EQ(std::string(data, data + sizeof data), longest);
}

TEST_F(SmbusProxyDriverTest, EmptyBlockIsRead) {
  SmbusProxy& proxy = newProxy();
  ham.expect({Op::readBlock(2).gives("")});
  unsigned char data[PL_SMBUS_BLOCK_MAX] = {0xA5};
  unsigned int length = 1;
  EXPECT_EQ(proxy.blockRead(2, data, &length), 0);
  EXPECT_EQ(length, 0u);
  EXPECT_EQ(data[0], 0xA5);
}

// An I2C block read that is answered with another number of bytes.
class I2cBlockRead : public SmbusProxyDriverTest {
 protected:
  void expectRefusalOf(Operation answered, int hamStatus = 0) {
    SmbusProxy& proxy = newWaitingProxy();
    ham.expect({std::move(answered)}).fails(hamStatus);
    unsigned char data[16];
    std::fill(std::begin(data), std::end(data), 0xA5);
    EXPECT_EQ(proxy.i2cBlockRead(0x20, data, 8), 4);
    EXPECT_THAT(data, testing::Each(0xA5));
    EXPECT_TRUE(waits().empty());
  }
};

TEST_F(I2cBlockRead, OfTooFewBytesIsStatus4AtOnceAndStoresNothing) {
  expectRefusalOf(Op::read(0x20, 8).gives("sixsix"));
}

TEST_F(I2cBlockRead, OfTooManyBytesIsStatus4AtOnceAndStoresNothing) {
  expectRefusalOf(Op::read(0x20, 8).gives("nine nine"));
}

TEST_F(I2cBlockRead, ThatFailsIsStatus4AtOnceAndStoresNothing) {
  expectRefusalOf(Op::read(0x20, 8), 6);
}

TEST_F(SmbusProxyDriverTest, QuickCommandAndBlockProcessCallAreNotOffered) {
  SmbusProxy& proxy = newProxy();
  unsigned char byte = 0;
  try {
    proxy.quickCommand(1);
    ADD_FAILURE() << "nothing was thrown";
  } catch (const std::exception& error) {
    EXPECT_STREQ(error.what(), "Not implemented quickCommand");
  }
  try {
    proxy.blockProcessCall(1, &byte, 1, &byte, &byte);
    ADD_FAILURE() << "nothing was thrown";
  } catch (const std::exception& error) {
    EXPECT_STREQ(error.what(), "Not implemented blockProcessCall");
  }
}

// Making the driver and its proxies.

TEST_F(SmbusProxyDriverTest, TracesBothDelays) {
  Doubles::host().traces.clear();
  newWaitingProxy();
  EXPECT_THAT(Doubles::host().traces,
              ElementsAre(Trace{0, "setting read delay of 5000 useconds\n"},
                          Trace{0, "setting write delay of 7000 useconds\n"}));
}

TEST_F(SmbusProxyDriverTest, DelaysAreZeroByDefault) {
  Doubles::host().traces.clear();
  newProxy();
  EXPECT_THAT(Doubles::host().traces, ElementsAre(Trace{0, "setting read delay of 0 useconds\n"},
                                                  Trace{0, "setting write delay of 0 useconds\n"}));
}

TEST_F(SmbusProxyDriverTest, DelayThatIsNoNumberThrows) {
  EXPECT_THROW(newProxy({{"localReadDelayMs", "soon"}}), std::invalid_argument);
  EXPECT_THROW(newProxy({{"localWriteDelayMs", ""}}), std::invalid_argument);
  EXPECT_THROW(newProxy({{"localWriteDelayMs", "99999999999"}}), std::out_of_range);
}

TEST_F(SmbusProxyDriverTest, ItsTransactionsAreNeverRetried) {
  EXPECT_TRUE(ham.retryCountSet);
  EXPECT_EQ(ham.retryCount, 0u);
}

TEST_F(SmbusProxyDriverTest, IsRegisteredUnderItsName) {
  const std::unique_ptr<Component::DeviceBase> made(
      Drivers::drivers.at("SmbusProxyDriver")(args, &ham));
  EXPECT_NE(dynamic_cast<SmbusProxyDriver*>(made.get()), nullptr);
}

}  // namespace
