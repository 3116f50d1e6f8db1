// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/Call.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <thread>

#include "smbus/Frame.hpp"
#include "test/smbus/service/support/FakeBus.hpp"
#include "test/smbus/service/support/ManualClock.hpp"
#include "test/smbus/service/support/MemoryLog.hpp"
#include "test/smbus/service/support/Messages.hpp"

namespace SmbusService {
namespace {

using testing::SizeIs;

constexpr uint8_t kMux = 0x70;
constexpr uint8_t kDevice = 0x50;

class CallTest : public testing::Test {
 protected:
  CallTest() {
    auto bus = std::make_shared<FakeBus>();
    bus_ = bus.get();
    EXPECT_TRUE(buses_.add(busKey(), std::move(bus), clock_));
  }

  Smbus::TransactionResponse answered() {
    EXPECT_EQ(call_.perform(message_.SerializeAsString()), Call::Result::kAnswered);
    const std::string_view frame = call_.answer();
    Smbus::TransactionResponse response;
    EXPECT_EQ(SmbusFrame::announcedLength(frame.data()), frame.size() - SmbusFrame::kHeaderSize);
    EXPECT_TRUE(response.ParseFromString(std::string(frame.substr(SmbusFrame::kHeaderSize))));
    return response;
  }
  std::string failure() {
    const Smbus::TransactionResponse response = answered();
    EXPECT_TRUE(response.failed());
    EXPECT_EQ(response.response_size(), 0);
    return response.reason();
  }
  TimePoint whenStuck() { return clock_.now() + Milliseconds(limits_.busMs); }

  ManualClock clock_;
  MemoryLog log_;
  Limits limits_;
  BusSet buses_;
  FakeBus* bus_ = nullptr;
  Call call_{Context{buses_, limits_, 1, clock_, log_}};
  Smbus::TransactionRequest message_;
};

TEST_F(CallTest, AnswersWithOneResponseForEachRequest) {
  addSend(message_, kMux, 1);
  addRead(message_, kDevice, 0, 2);
  const Smbus::TransactionResponse response = answered();
  EXPECT_FALSE(response.failed());
  ASSERT_EQ(response.response_size(), 2);
  EXPECT_EQ(response.response(1).data(), "\x10\x11");
}

TEST_F(CallTest, AFailureNamesRequestDeviceAndError) {
  message_.set_retrycount(0);
  addSend(message_, kMux, 1);
  addRead(message_, kDevice, 0x8B, 2);
  bus_->failAt(1, ENXIO);
  EXPECT_EQ(failure(),
            "request 1 (read word at register 0x8b) to device 0x50 on I2C bus 5: "
            "No such device or address");
}

TEST_F(CallTest, ARequestThatCannotBeTranslatedTouchesNoBus) {
  addSend(message_, kMux, 1);
  addRead(message_, kDevice, 0, 2, {.bus = 9});
  EXPECT_EQ(failure(), "request 1 to device 0x50: the service has no I2C bus 9: No such device");
  EXPECT_EQ(bus_->count(), 0U);
}

TEST_F(CallTest, AbsentRetryCountMeansTheServicesDefault) {
  addRead(message_, kDevice, 0, 1);
  bus_->failAt(0, EREMOTEIO);
  EXPECT_FALSE(answered().failed());
  EXPECT_EQ(bus_->count(), 2U);
}

TEST_F(CallTest, ARetryCountOfZeroIsKept) {
  message_.set_retrycount(0);
  addRead(message_, kDevice, 0, 1);
  bus_->failAt(0, EREMOTEIO);
  EXPECT_TRUE(answered().failed());
  EXPECT_EQ(bus_->count(), 1U);
}

TEST_F(CallTest, RetriesAreBounded) {
  message_.set_retrycount(4'000'000'000);
  addRead(message_, kDevice, 0, 1);
  for (size_t i = 0; i < 100; ++i) {
    bus_->failAt(i, EREMOTEIO);
  }
  EXPECT_TRUE(answered().failed());
  EXPECT_EQ(bus_->count(), limits_.retries + 1);
}

TEST_F(CallTest, BytesThatDoNotParseAreNoMessage) {
  EXPECT_EQ(call_.perform("\xff\xff\xff"), Call::Result::kNotAMessage);
}

TEST_F(CallTest, TooManyRequestsAreNoMessage) {
  for (uint32_t i = 0; i < limits_.requests; ++i) {
    message_.add_request();
  }
  EXPECT_TRUE(answered().failed());  // read, and found wanting
  message_.add_request();
  EXPECT_EQ(call_.perform(message_.SerializeAsString()), Call::Result::kNotAMessage);
}

TEST_F(CallTest, TheIdIsEchoedInTheLog) {
  message_.set_id(77);
  addRead(message_, kDevice, 0, 1);
  EXPECT_FALSE(answered().failed());
  EXPECT_EQ(call_.remark(), "transaction id 77: done");
}

TEST_F(CallTest, WithoutAnIdOnlyFailuresAreRemarkedUpon) {
  message_.set_retrycount(0);
  addRead(message_, kDevice, 0, 1);
  EXPECT_FALSE(answered().failed());
  EXPECT_EQ(call_.remark(), std::nullopt);
  bus_->failAt(0, EIO);
  const std::string reason = failure();
  EXPECT_EQ(call_.remark(), "transaction: " + reason);
}

TEST_F(CallTest, ABusHeldByOthersIsGivenUpAfterItsBound) {
  ASSERT_TRUE(buses_.find(busKey())->acquire(clock_.now()));
  const TimePoint deadline = whenStuck();
  addRead(message_, kDevice, 0, 1);
  EXPECT_EQ(failure(),
            "request 0 (read byte at register 0x00) to device 0x50 on I2C bus 5: "
            "the bus is held by others: Connection timed out");
  EXPECT_EQ(clock_.now(), deadline);
  EXPECT_EQ(bus_->count(), 0U);
}

TEST_F(CallTest, AnIdleCallIsNotStuck) {
  EXPECT_EQ(call_.giveUpIfStuck(whenStuck()), std::nullopt);
}

TEST_F(CallTest, ACallGivenUpWritesNothingMoreButReleasesItsMux) {
  message_.set_retrycount(5);
  addSend(message_, kMux, 1);
  addWrite(message_, kDevice, 1, "a");
  addWrite(message_, kDevice, 2, "b");
  addSend(message_, kMux, 0);
  bus_->hang();
  std::thread stuck(
      [this] { EXPECT_EQ(call_.perform(message_.SerializeAsString()), Call::Result::kGivenUp); });
  bus_->waitUntilStuck();
  EXPECT_EQ(call_.giveUpIfStuck(whenStuck() - Milliseconds(1)), std::nullopt);
  EXPECT_EQ(call_.giveUpIfStuck(whenStuck()),
            "request 0 (send byte) to device 0x70 on I2C bus 5: no end after 5000 ms: "
            "Connection timed out");
  EXPECT_EQ(call_.giveUpIfStuck(whenStuck()), std::nullopt);
  EXPECT_TRUE(buses_.find(busKey())->hung());
  bus_->resume();
  stuck.join();
  ASSERT_THAT(bus_->performed(), SizeIs(2));
  EXPECT_EQ(bus_->performed()[0].command, 1U);
  EXPECT_EQ(bus_->performed()[1].address, kMux);
  EXPECT_EQ(bus_->performed()[1].command, 0U);
  EXPECT_FALSE(buses_.find(busKey())->hung());
  EXPECT_TRUE(buses_.find(busKey())->acquire(clock_.now()));
}

TEST_F(CallTest, AReleaseThatDragsOnDoesNotKeepTheClientWaiting) {
  addSend(message_, kMux, 1);
  addRead(message_, kDevice, 0, 1)
      .set_addr(  // takes all the time that a transaction has
          SmbusAddress::kReadDelay.set(addressWord(kDevice, 0), 3));
  addRead(message_, kDevice, 0, 1);
  addSend(message_, kMux, 0);
  limits_.transactionMs = 10;
  bus_->hangAt(2);
  const TimePoint begun = clock_.now();
  std::thread stuck(
      [this] { EXPECT_EQ(call_.perform(message_.SerializeAsString()), Call::Result::kGivenUp); });
  bus_->waitUntilStuck();
  const TimePoint worst = begun + Milliseconds(limits_.transactionMs + limits_.busMs);
  EXPECT_EQ(call_.giveUpIfStuck(worst - Milliseconds(1)), std::nullopt);
  EXPECT_TRUE(call_.giveUpIfStuck(worst));
  bus_->resume();
  stuck.join();
}

TEST_F(CallTest, NobodyWaitsForTheBusOfACallGivenUp) {
  addRead(message_, kDevice, 0, 1);
  bus_->hang();
  std::thread stuck([this] { (void)call_.perform(message_.SerializeAsString()); });
  bus_->waitUntilStuck();
  ASSERT_TRUE(call_.giveUpIfStuck(whenStuck()));
  const TimePoint before = clock_.now();
  Call other(Context{buses_, limits_, 0, clock_, log_});
  EXPECT_EQ(other.perform(message_.SerializeAsString()), Call::Result::kAnswered);
  EXPECT_NE(other.answer().find("the bus hangs"), std::string_view::npos);
  EXPECT_EQ(clock_.now(), before);
  bus_->resume();
  stuck.join();
}

}  // namespace
}  // namespace SmbusService
