// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/Protocol.hpp"

#include <gtest/gtest.h>

#include <cerrno>
#include <ostream>

#include "test/smbus/service/support/FakeBus.hpp"
#include "test/smbus/service/support/ManualClock.hpp"
#include "test/smbus/service/support/Messages.hpp"

namespace SmbusService {
namespace {

class ProtocolTest : public testing::Test {
 protected:
  ProtocolTest() {
    EXPECT_TRUE(buses_.add(busKey(), std::make_unique<FakeBus>(), clock_));
    EXPECT_TRUE(buses_.add({Smbus::SCD, 0x700, 2, 3}, std::make_unique<FakeBus>(), clock_));
  }

  std::optional<Refusal> translateMessage() {
    return translate(message_, buses_, limits_, transaction_);
  }
  const Operation& onlyOperation() {
    const std::optional<Refusal> refusal = translateMessage();
    EXPECT_FALSE(refusal) << refusal->what;
    EXPECT_EQ(transaction_.size(), 1U);
    return transaction_.at(0).operation;
  }
  void expectRefused(size_t request, int error, const std::string& what) {
    const std::optional<Refusal> refusal = translateMessage();
    ASSERT_TRUE(refusal);
    EXPECT_EQ(refusal->request, request);
    EXPECT_EQ(refusal->error, error);
    EXPECT_EQ(refusal->what, what);
  }

  ManualClock clock_;
  BusSet buses_;
  Limits limits_;
  Smbus::TransactionRequest message_;
  Transaction transaction_;
};

struct KindCase {
  const char* name;
  Smbus::RequestType type;
  uint32_t size;
  size_t dataBytes;
  OperationKind kind;
};

void PrintTo(const KindCase& row, std::ostream* out) { *out << row.name; }

class KindTest : public ProtocolTest, public testing::WithParamInterface<KindCase> {};

TEST_P(KindTest, TypeAndSizeChooseTheOperation) {
  const KindCase& row = GetParam();
  add(message_, row.type, addressWord(0x50, 0x8B), row.size)
      .set_data(std::string(row.dataBytes, '\x07'));
  const Operation& operation = onlyOperation();
  EXPECT_EQ(operation.kind, row.kind);
  EXPECT_EQ(operation.address, 0x50);
  EXPECT_EQ(operation.command, 0x8BU);
  EXPECT_EQ(operation.data.size(), row.dataBytes);
  EXPECT_EQ(operation.size, row.kind == OperationKind::kReadI2cBlock ? row.size : 0);
}

INSTANTIATE_TEST_SUITE_P(
    All, KindTest,
    testing::Values(KindCase{"ReceiveByte", Smbus::Read, 0, 0, OperationKind::kReceiveByte},
                    KindCase{"ReadByte", Smbus::Read, 1, 0, OperationKind::kReadByte},
                    KindCase{"ReadWord", Smbus::Read, 2, 0, OperationKind::kReadWord},
                    KindCase{"ReadThree", Smbus::Read, 3, 0, OperationKind::kReadI2cBlock},
                    KindCase{"ReadMany", Smbus::Read, 300, 0, OperationKind::kReadI2cBlock},
                    KindCase{"SendByte", Smbus::Write, 0, 0, OperationKind::kSendByte},
                    KindCase{"WriteByte", Smbus::Write, 1, 1, OperationKind::kWriteByte},
                    KindCase{"WriteWord", Smbus::Write, 2, 2, OperationKind::kWriteWord},
                    KindCase{"WriteThree", Smbus::Write, 3, 3, OperationKind::kWriteI2cBlock},
                    KindCase{"ProcessCall", Smbus::ProcessCall, 2, 2, OperationKind::kProcessCall},
                    KindCase{"ReadBlock", Smbus::ReadBlock, 0, 0, OperationKind::kReadBlock},
                    KindCase{"WriteBlock", Smbus::WriteBlock, 5, 5, OperationKind::kWriteBlock}),
    [](const auto& row) { return row.param.name; });

TEST_F(ProtocolTest, MasterControllerAcceleratorAndBusChooseTheBus) {
  uint64_t word = addressWord(0x50, 0, {.bus = 3});
  word = SmbusAddress::kAccelerator.set(word, 2);
  Smbus::Request& request = add(message_, Smbus::Read, word, 1);
  request.set_mastertype(Smbus::SCD);
  request.set_controlleraddr(0x700);
  ASSERT_FALSE(translateMessage());
  EXPECT_EQ(transaction_.at(0).bus->name(), "SCD 0x00000700 accelerator 2 bus 3");
}

TEST_F(ProtocolTest, ABusThatTheServiceLacksIsRefused) {
  addRead(message_, 0x50, 0, 1);
  addRead(message_, 0x50, 0, 1, {.bus = 9});
  expectRefused(1, ENODEV, "the service has no I2C bus 9");
}

TEST_F(ProtocolTest, ASendByteKeepsTheLowEightBitsOfItsRegister) {
  add(message_, Smbus::Write, addressWord(0x70, 0x1234), 0);
  EXPECT_EQ(onlyOperation().command, 0x34U);
}

TEST_F(ProtocolTest, TwoByteRegistersAreCarried) {
  addRead(message_, 0x50, 0x1234, 1, {.addressSize = 2});
  EXPECT_EQ(onlyOperation().command, 0x1234U);
  EXPECT_EQ(onlyOperation().commandBytes, 2);
}

TEST_F(ProtocolTest, ARegisterWiderThanItsAddressIsRefused) {
  addRead(message_, 0x50, 0x100, 1);
  expectRefused(0, EINVAL, "register 0x100 does not fit in 1 bytes");
}

TEST_F(ProtocolTest, AnAddressOfNoOrThreeBytesIsRefused) {
  addRead(message_, 0x50, 0, 1, {.addressSize = 3});
  expectRefused(0, EINVAL, "register addresses are 1 or 2 bytes wide, not 3");
  message_.mutable_request(0)->set_addr(addressWord(0x50, 0, {.addressSize = 0}));
  expectRefused(0, EINVAL, "register addresses are 1 or 2 bytes wide, not 0");
}

TEST_F(ProtocolTest, TheReadFlagAsksForPecOnReadsOnly) {
  addRead(message_, 0x50, 0, 1);
  message_.mutable_request(0)->set_addr(SmbusAddress::kReadFlag.set(addressWord(0x50, 0), 1));
  EXPECT_TRUE(onlyOperation().pec);
  message_.mutable_request(0)->set_type(Smbus::Write);
  message_.mutable_request(0)->set_data("a");
  EXPECT_FALSE(onlyOperation().pec);
}

TEST_F(ProtocolTest, TheWriteFlagAsksForPecOnWritesOnly) {
  addSend(message_, 0x50, 1).set_writeflag(true);
  EXPECT_TRUE(onlyOperation().pec);
  message_.mutable_request(0)->set_type(Smbus::Read);
  EXPECT_FALSE(onlyOperation().pec);
}

TEST_F(ProtocolTest, BusTimeoutCodesDoubleFromTenMilliseconds) {
  addRead(message_, 0x50, 0, 1);
  const std::vector<int> expected{0, 10, 20, 40, 80, 160, 320, 640};
  for (size_t code = 0; code < expected.size(); ++code) {
    message_.mutable_request(0)->set_addr(
        SmbusAddress::kBusTimeout.set(addressWord(0x50, 0), code));
    EXPECT_EQ(onlyOperation().timeout, Milliseconds(expected[code]));
  }
}

TEST_F(ProtocolTest, DelayCodesWaitAfterTheirOwnKindOfAccess) {
  const std::vector<int> expected{0, 1, 5, 10};
  for (size_t code = 0; code < expected.size(); ++code) {
    message_.Clear();
    addRead(message_, 0x50, 0, 1)
        .set_addr(SmbusAddress::kReadDelay.set(addressWord(0x50, 0), code));
    addWrite(message_, 0x50, 0, "a")
        .set_addr(SmbusAddress::kReadDelay.set(addressWord(0x50, 0), code));
    addSend(message_, 0x50, 0).set_addr(SmbusAddress::kWriteDelay.set(addressWord(0x50, 0), code));
    ASSERT_FALSE(translateMessage());
    EXPECT_EQ(transaction_[0].pause, Milliseconds(expected[code]));
    EXPECT_EQ(transaction_[1].pause, Milliseconds(0));
    EXPECT_EQ(transaction_[2].pause, Milliseconds(expected[code]));
  }
}

TEST_F(ProtocolTest, TheExtraDelayAddsTenMilliseconds) {
  uint64_t word = SmbusAddress::kExtraDelay.set(addressWord(0x50, 0), 1);
  addRead(message_, 0x50, 0, 1).set_addr(word);
  addSend(message_, 0x50, 0).set_addr(SmbusAddress::kWriteDelay.set(word, 2));
  ASSERT_FALSE(translateMessage());
  EXPECT_EQ(transaction_[0].pause, Milliseconds(10));
  EXPECT_EQ(transaction_[1].pause, Milliseconds(15));
}

TEST_F(ProtocolTest, AProcessCallWaitsTheLongerDelay) {
  const uint64_t word =
      SmbusAddress::kReadDelay.set(SmbusAddress::kWriteDelay.set(addressWord(0x50, 0), 3), 1);
  add(message_, Smbus::ProcessCall, word, 2).set_data("ab");
  ASSERT_FALSE(translateMessage());
  EXPECT_EQ(transaction_[0].pause, Milliseconds(10));
}

TEST_F(ProtocolTest, AbsentFieldsThatChooseTheOperationAreRefused) {
  addRead(message_, 0x50, 0, 1).clear_type();
  expectRefused(0, EINVAL, "its field type is absent or unknown");
  message_.mutable_request(0)->set_type(Smbus::Read);
  message_.mutable_request(0)->clear_addr();
  expectRefused(0, EINVAL, "its field addr is absent or unknown");
  message_.mutable_request(0)->set_addr(addressWord(0x50, 0));
  message_.mutable_request(0)->clear_mastertype();
  expectRefused(0, EINVAL, "its field mastertype is absent or unknown");
  message_.mutable_request(0)->set_mastertype(Smbus::I2C);
  message_.mutable_request(0)->clear_size();
  expectRefused(0, EINVAL, "its field size is absent or unknown");
}

TEST_F(ProtocolTest, BlockRequestsNeedNoSize) {
  add(message_, Smbus::WriteBlock, addressWord(0x50, 0), 0).clear_size();
  message_.mutable_request(0)->set_data("abc");
  EXPECT_EQ(onlyOperation().data.size(), 3U);
}

TEST_F(ProtocolTest, DataThatDiffersFromItsSizeIsRefused) {
  addWrite(message_, 0x50, 0, "abc").set_size(4);
  expectRefused(0, EINVAL, "its size is 4 and its data 3 bytes");
}

TEST_F(ProtocolTest, AProcessCallTakesTwoBytes) {
  add(message_, Smbus::ProcessCall, addressWord(0x50, 0), 3).set_data("abc");
  expectRefused(0, EINVAL, "a ProcessCall of 3 bytes");
}

TEST_F(ProtocolTest, ABlockAbove255BytesIsRefused) {
  add(message_, Smbus::WriteBlock, addressWord(0x50, 0), 256).set_data(std::string(256, 'x'));
  expectRefused(0, EINVAL, "a WriteBlock of 256 bytes");
}

TEST_F(ProtocolTest, AReadAboveTheLimitIsRefused) {
  addRead(message_, 0x50, 0, limits_.readBytes);
  EXPECT_FALSE(translateMessage());
  message_.mutable_request(0)->set_size(limits_.readBytes + 1);
  expectRefused(0, EMSGSIZE, "it reads 8193 bytes; the service's limit is 8192");
}

TEST_F(ProtocolTest, AnAnswerAboveTheLimitIsRefused) {
  for (int i = 0; i < 128; ++i) {
    addRead(message_, 0x50, 0, 8192);
  }
  expectRefused(127, EMSGSIZE, "the answer could pass 1048576 bytes");
}

TEST_F(ProtocolTest, RequestsAreCountedWithoutParsing) {
  message_.set_id(7);
  message_.set_retrycount(1);
  for (int i = 0; i < 5; ++i) {
    addRead(message_, 0x50, 0, 1);
  }
  EXPECT_EQ(countRequests(message_.SerializeAsString()), 5U);
  EXPECT_EQ(countRequests(""), 0U);
}

TEST_F(ProtocolTest, BytesThatAreNoMessageCountAsNone) {
  addRead(message_, 0x50, 0, 1);
  std::string bytes = message_.SerializeAsString();
  bytes.pop_back();
  EXPECT_EQ(countRequests(bytes), std::nullopt);
  EXPECT_EQ(countRequests("\xff\xff\xff"), std::nullopt);
}

}  // namespace
}  // namespace SmbusService
