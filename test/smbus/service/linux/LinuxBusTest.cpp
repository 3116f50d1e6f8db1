// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/linux/LinuxBus.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>

#include "smbus/service/board/Pec.hpp"
#include "test/smbus/service/support/FakeI2c.hpp"

namespace SmbusService {
namespace {

using std::chrono::milliseconds;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;
using enum OperationKind;

// What i2c-stub and many SMBus controllers offer.
constexpr unsigned long kSmbusOnly = I2C_FUNC_SMBUS_BYTE | I2C_FUNC_SMBUS_BYTE_DATA |
                                     I2C_FUNC_SMBUS_WORD_DATA | I2C_FUNC_SMBUS_I2C_BLOCK |
                                     I2C_FUNC_SMBUS_BLOCK_DATA;

std::vector<uint8_t> bytesOf(std::string_view text) { return {text.begin(), text.end()}; }

uint8_t pecOf(const std::vector<int>& wire) {
  Board::Pec pec;
  for (const int byte : wire) {
    pec.add(static_cast<uint8_t>(byte));
  }
  return pec.value();
}

class LinuxBusTest : public testing::Test {
 protected:
  LinuxBusTest() {
    for (size_t i = 0; i < state_.registers.size(); ++i) {
      state_.registers[i] = static_cast<uint8_t>(i);
    }
  }

  // On the adapter that state_ describes at the first call.
  int perform(Operation operation, std::string_view data = "") {
    if (!bus_) {
      bus_.emplace(std::make_unique<FakeI2c>(state_), force_);
    }
    data_ = bytesOf(data);
    operation.data = data_;
    state_.calls.clear();
    state_.sent.clear();
    return bus_->perform(operation, answer_);
  }
  static Operation to(OperationKind kind, uint32_t command, size_t size = 0) {
    Operation operation;
    operation.kind = kind;
    operation.address = kFakeDevice;
    operation.command = command;
    operation.size = size;
    return operation;
  }
  static Operation wide(OperationKind kind, uint32_t command, size_t size = 0) {
    Operation operation = to(kind, command, size);
    operation.commandBytes = 2;
    return operation;
  }
  static Operation checked(Operation operation) {
    operation.pec = true;
    return operation;
  }

  FakeI2cState state_;
  bool force_ = true;
  std::optional<LinuxBus> bus_;
  std::vector<uint8_t> data_;
  std::string answer_;
};

TEST_F(LinuxBusTest, ShortOperationsUseTheKernelsSmbusCalls) {
  for (const unsigned long functions : {state_.functions, kSmbusOnly}) {
    state_.functions = functions;
    bus_.reset();
    EXPECT_EQ(perform(to(kReceiveByte, 0)), 0);
    EXPECT_EQ(answer_, std::string(1, '\0'));
    EXPECT_EQ(perform(to(kReadByte, 0x41)), 0);
    EXPECT_EQ(answer_, "A");
    EXPECT_EQ(perform(to(kReadWord, 0x41)), 0);
    EXPECT_EQ(answer_, "AB");
    EXPECT_EQ(perform(to(kReadI2cBlock, 0x41, 4)), 0);
    EXPECT_EQ(answer_, "ABCD");
    EXPECT_EQ(perform(to(kReadBlock, 3)), 0);
    EXPECT_EQ(answer_, "\4\5\6");
    EXPECT_THAT(state_.calls, ElementsAre(StartsWith("smbus read")));
  }
}

TEST_F(LinuxBusTest, WritesReachTheRegisters) {
  EXPECT_EQ(perform(to(kWriteByte, 0x10), "a"), 0);
  EXPECT_EQ(perform(to(kWriteWord, 0x20), "bc"), 0);
  EXPECT_EQ(perform(to(kWriteI2cBlock, 0x30), "defg"), 0);
  EXPECT_EQ(perform(to(kWriteBlock, 0x40), "hi"), 0);
  EXPECT_EQ(state_.registers[0x10], 'a');
  EXPECT_EQ(state_.registers[0x20], 'b');
  EXPECT_EQ(state_.registers[0x21], 'c');
  EXPECT_EQ(state_.registers[0x33], 'g');
  EXPECT_EQ(state_.registers[0x41], 'i');
}

TEST_F(LinuxBusTest, ASendByteCarriesItsByteAsTheCommand) {
  EXPECT_EQ(perform(to(kSendByte, 0x55)), 0);
  EXPECT_THAT(state_.calls, ElementsAre("slave force 80", "smbus write 1 0x55"));
}

TEST_F(LinuxBusTest, AProcessCallSendsAndReceivesAWord) {
  EXPECT_EQ(perform(to(kProcessCall, 0x10), "\x01\x02"), 0);
  EXPECT_EQ(answer_, "\x02\x02");
}

TEST_F(LinuxBusTest, TheAddressIsSetWhenItChanges) {
  EXPECT_EQ(perform(to(kReadByte, 0)), 0);
  EXPECT_THAT(state_.calls, ElementsAre("slave force 80", "smbus read 2 0x00"));
  EXPECT_EQ(perform(to(kReadByte, 0)), 0);
  EXPECT_THAT(state_.calls, ElementsAre("smbus read 2 0x00"));
}

TEST_F(LinuxBusTest, WithoutForceADeviceOfAKernelDriverIsBusy) {
  force_ = false;
  state_.bound = true;
  EXPECT_EQ(perform(to(kReadByte, 0)), EBUSY);
  EXPECT_THAT(state_.calls, ElementsAre("slave 80"));
  state_.bound = false;
  EXPECT_EQ(perform(to(kReadByte, 0)), 0);
  EXPECT_THAT(state_.calls, ElementsAre("slave 80", "smbus read 2 0x00"));
}

TEST_F(LinuxBusTest, LongReadsUseARawTransferWhereThereIsOne) {
  EXPECT_EQ(perform(to(kReadI2cBlock, 0x10, 100)), 0);
  EXPECT_THAT(state_.calls, ElementsAre("transfer w1 r100"));
  ASSERT_EQ(answer_.size(), 100U);
  EXPECT_EQ(answer_.front(), '\x10');
  EXPECT_EQ(answer_.back(), '\x73');
}

TEST_F(LinuxBusTest, LongReadsGoInPiecesWhereThereIsNone) {
  state_.functions = kSmbusOnly;
  EXPECT_EQ(perform(to(kReadI2cBlock, 0x10, 70)), 0);
  EXPECT_THAT(state_.calls, ElementsAre("slave force 80", "smbus read 8 0x10", "smbus read 8 0x30",
                                        "smbus read 8 0x50"));
  ASSERT_EQ(answer_.size(), 70U);
  EXPECT_EQ(answer_.back(), '\x55');
}

TEST_F(LinuxBusTest, PiecesDoNotPassTheLastRegister) {
  state_.functions = kSmbusOnly;
  EXPECT_EQ(perform(to(kReadI2cBlock, 0xC0, 64)), 0);
  EXPECT_EQ(perform(to(kReadI2cBlock, 0xC1, 64)), EOPNOTSUPP);
}

TEST_F(LinuxBusTest, ALongWriteIsNeverSplit) {
  const std::string data(40, 'x');
  EXPECT_EQ(perform(to(kWriteI2cBlock, 0x10), data), 0);
  EXPECT_THAT(state_.calls, ElementsAre("transfer w41"));
  state_.functions = kSmbusOnly;
  bus_.reset();
  EXPECT_EQ(perform(to(kWriteI2cBlock, 0x10), data), EOPNOTSUPP);
  EXPECT_THAT(state_.calls, IsEmpty());
}

TEST_F(LinuxBusTest, RegistersOfTwoBytesTravelMostSignificantFirst) {
  EXPECT_EQ(perform(wide(kReadI2cBlock, 0x1234, 4)), 0);
  EXPECT_THAT(state_.calls, ElementsAre("transfer w2 r4"));
  EXPECT_THAT(state_.sent, ElementsAre("\x12\x34"));
  EXPECT_EQ(perform(wide(kWriteByte, 0x1234), "a"), 0);
  EXPECT_THAT(state_.sent, ElementsAre("\x12\x34"
                                       "a"));
  EXPECT_EQ(perform(wide(kReadByte, 0x1234)), 0);
  EXPECT_EQ(answer_.size(), 1U);
  EXPECT_EQ(perform(wide(kWriteBlock, 0x1234), "abc"), 0);
  EXPECT_THAT(state_.sent, ElementsAre("\x12\x34\x03"
                                       "abc"));
}

TEST_F(LinuxBusTest, RegistersOfTwoBytesNeedARawTransfer) {
  state_.functions = kSmbusOnly;
  EXPECT_EQ(perform(wide(kReadByte, 0x1234)), EOPNOTSUPP);
  EXPECT_EQ(perform(wide(kReadI2cBlock, 0x1234, 40)), EOPNOTSUPP);
  EXPECT_THAT(state_.calls, IsEmpty());
}

TEST_F(LinuxBusTest, AddressesOfTwoBytesMakeNoDifferenceWithoutARegister) {
  EXPECT_EQ(perform(wide(kSendByte, 0x55)), 0);
  EXPECT_EQ(perform(wide(kReceiveByte, 0)), 0);
  EXPECT_THAT(state_.calls, ElementsAre("smbus read 1 0x00"));
}

TEST_F(LinuxBusTest, ABlockReadFromAWideRegisterIsNotSupported) {
  EXPECT_EQ(perform(wide(kReadBlock, 0x1234)), EOPNOTSUPP);
}

TEST_F(LinuxBusTest, WhatTheAdapterLacksIsNotSupported) {
  state_.functions = I2C_FUNC_SMBUS_BYTE;
  EXPECT_EQ(perform(to(kReceiveByte, 0)), 0);
  EXPECT_EQ(perform(to(kReadByte, 0)), EOPNOTSUPP);
  EXPECT_EQ(perform(to(kProcessCall, 0), "ab"), EOPNOTSUPP);
}

TEST_F(LinuxBusTest, AnAdapterWithRawTransfersAloneDoesEverythingElseByThem) {
  state_.functions = I2C_FUNC_I2C;
  EXPECT_EQ(perform(to(kReceiveByte, 0)), 0);
  EXPECT_THAT(state_.calls, ElementsAre("transfer r1"));
  EXPECT_EQ(perform(to(kSendByte, 0x155)), 0);
  EXPECT_THAT(state_.sent, ElementsAre("\x55"));
  EXPECT_EQ(perform(to(kReadWord, 0x41)), 0);
  EXPECT_EQ(answer_, "AB");
  EXPECT_EQ(perform(to(kProcessCall, 0x41), "xy"), 0);
  EXPECT_THAT(state_.calls, ElementsAre("transfer w3 r2"));
}

TEST_F(LinuxBusTest, PecIsSwitchedOnAndOffForTheKernelsCalls) {
  EXPECT_EQ(perform(checked(to(kReadByte, 0))), 0);
  EXPECT_THAT(state_.calls, ElementsAre("slave force 80", "pec 1", "smbus read 2 0x00"));
  EXPECT_EQ(perform(checked(to(kReadByte, 0))), 0);
  EXPECT_THAT(state_.calls, ElementsAre("smbus read 2 0x00"));
  EXPECT_EQ(perform(to(kReadByte, 0)), 0);
  EXPECT_THAT(state_.calls, ElementsAre("pec 0", "smbus read 2 0x00"));
}

TEST_F(LinuxBusTest, PecIsNotSupportedWhereTheAdapterLacksIt) {
  state_.functions = kSmbusOnly;
  EXPECT_EQ(perform(checked(to(kReadByte, 0))), EOPNOTSUPP);
  EXPECT_EQ(perform(checked(to(kReadI2cBlock, 0, 4))), EOPNOTSUPP);
  EXPECT_EQ(perform(checked(to(kReadI2cBlock, 0, 40))), EOPNOTSUPP);
  EXPECT_THAT(state_.calls, Not(Contains("pec 1")));
}

TEST_F(LinuxBusTest, PecOfAnI2cBlockIsCheckedHere) {
  const uint8_t pec = pecOf({kFakeDevice << 1, 0x10, kFakeDevice << 1 | 1, 'a', 'b', 'c'});
  state_.toReceive = "abc" + std::string(1, static_cast<char>(pec));
  EXPECT_EQ(perform(checked(to(kReadI2cBlock, 0x10, 3))), 0);
  EXPECT_EQ(answer_, "abc");
  state_.toReceive[1] = 'x';
  EXPECT_EQ(perform(checked(to(kReadI2cBlock, 0x10, 3))), EBADMSG);
}

TEST_F(LinuxBusTest, PecOfAnI2cBlockIsAppendedHere) {
  const uint8_t pec = pecOf({kFakeDevice << 1, 0x10, 'a', 'b', 'c'});
  EXPECT_EQ(perform(checked(to(kWriteI2cBlock, 0x10)), "abc"), 0);
  EXPECT_THAT(state_.sent, ElementsAre("\x10"
                                       "abc" +
                                       std::string(1, static_cast<char>(pec))));
}

TEST_F(LinuxBusTest, TheTimeoutIsSetInUnitsOfTenMilliseconds) {
  Operation operation = to(kReadByte, 0);
  operation.timeout = milliseconds(640);
  EXPECT_EQ(perform(operation), 0);
  EXPECT_THAT(state_.calls, ElementsAre("timeout 64", "slave force 80", "smbus read 2 0x00"));
  operation.timeout = milliseconds(0);
  EXPECT_EQ(perform(operation), 0);
  EXPECT_THAT(state_.calls, ElementsAre("timeout 100", "smbus read 2 0x00"));
}

TEST_F(LinuxBusTest, ErrorsPassUnchanged) {
  for (const int error : {ENXIO, EREMOTEIO, ETIMEDOUT, EBADMSG, EIO}) {
    state_.error = error;
    EXPECT_EQ(perform(to(kReadByte, 0)), error);
    EXPECT_EQ(perform(to(kReadI2cBlock, 0, 100)), error);
  }
}

TEST_F(LinuxBusTest, ABlockCountThatCannotBeIsAnError) {
  EXPECT_EQ(perform(to(kReadBlock, 33)), EPROTO);
}

TEST_F(LinuxBusTest, MoreThanATransferTakesIsNotSupported) {
  EXPECT_EQ(perform(to(kReadI2cBlock, 0, 8192)), 0);
  EXPECT_EQ(perform(to(kReadI2cBlock, 0, 8193)), EOPNOTSUPP);
  EXPECT_EQ(perform(checked(to(kReadI2cBlock, 0, 8192))), EOPNOTSUPP);
}

}  // namespace
}  // namespace SmbusService
