// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/Executor.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>

#include "smbus/service/Protocol.hpp"
#include "test/smbus/service/support/FakeBus.hpp"
#include "test/smbus/service/support/ManualClock.hpp"
#include "test/smbus/service/support/Messages.hpp"

namespace SmbusService {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr uint8_t kMux = 0x70;
constexpr uint8_t kInnerMux = 0x71;
constexpr uint8_t kDevice = 0x50;

Performed sent(uint8_t address, uint8_t byte) {
  return {OperationKind::kSendByte, address, byte, ""};
}
Performed readByte(uint8_t address, uint32_t reg) {
  return {OperationKind::kReadByte, address, reg, ""};
}

// Gives a transaction up while the n-th operation is under way.
class GivingUp : public OperationWatch {
 public:
  void begins(size_t step, TimePoint) override { steps.push_back(step); }
  bool ends() override { return steps.size() <= giveUpAt; }

  size_t giveUpAt = SIZE_MAX;
  std::vector<size_t> steps;
};

class ExecutorTest : public testing::Test {
 protected:
  ExecutorTest() {
    auto bus = std::make_unique<FakeBus>();
    bus_ = bus.get();
    EXPECT_TRUE(buses_.add(busKey(), std::move(bus), clock_));
  }

  Outcome run(uint32_t retries = 0, Milliseconds within = std::chrono::hours(1)) {
    Transaction transaction;
    EXPECT_FALSE(translate(message_, buses_, Limits{}, transaction));
    return Executor(clock_, watch_).run(transaction, retries, clock_.now() + within, response_);
  }
  void nestedMuxRead() {
    addSend(message_, kMux, 4);
    addSend(message_, kInnerMux, 2);
    addRead(message_, kDevice, 0x8B, 1);
    addSend(message_, kInnerMux, 0);
    addSend(message_, kMux, 0);
  }

  ManualClock clock_;
  GivingUp watch_;
  BusSet buses_;
  FakeBus* bus_ = nullptr;
  Smbus::TransactionRequest message_;
  Smbus::TransactionResponse response_;
};

TEST_F(ExecutorTest, PerformsTheRequestsInOrderAndAnswersEach) {
  nestedMuxRead();
  EXPECT_EQ(run().error, 0);
  EXPECT_THAT(bus_->performed(),
              ElementsAre(sent(kMux, 4), sent(kInnerMux, 2), readByte(kDevice, 0x8B),
                          sent(kInnerMux, 0), sent(kMux, 0)));
  ASSERT_EQ(response_.response_size(), 5);
  EXPECT_EQ(response_.response(1).data(), "");
  EXPECT_EQ(response_.response(2).data(), "\x10");
}

TEST_F(ExecutorTest, AnEmptyTransactionSucceeds) {
  EXPECT_EQ(run().error, 0);
  EXPECT_EQ(response_.response_size(), 0);
}

TEST_F(ExecutorTest, AFailedAccessStillReleasesEveryMux) {
  nestedMuxRead();
  bus_->failAt(2, EREMOTEIO);
  const Outcome outcome = run();
  EXPECT_EQ(outcome.error, EREMOTEIO);
  EXPECT_EQ(outcome.step, 2U);
  EXPECT_EQ(response_.response_size(), 0);
  EXPECT_THAT(bus_->performed(),
              ElementsAre(sent(kMux, 4), sent(kInnerMux, 2), readByte(kDevice, 0x8B),
                          sent(kInnerMux, 0), sent(kMux, 0)));
}

TEST_F(ExecutorTest, AFailedSelectionReachesNoDeviceBehindIt) {
  addSend(message_, kMux, 4);
  addWrite(message_, kDevice, 1, "x");
  addSend(message_, kMux, 0);
  bus_->failAt(0, ENXIO);
  EXPECT_EQ(run().error, ENXIO);
  EXPECT_THAT(bus_->performed(), ElementsAre(sent(kMux, 4), sent(kMux, 0)));
}

TEST_F(ExecutorTest, AFailedReleaseDoesNotKeepTheOthersFromTheirs) {
  nestedMuxRead();
  bus_->failAt(3, EREMOTEIO);
  const Outcome outcome = run();
  EXPECT_EQ(outcome.step, 3U);
  EXPECT_THAT(bus_->performed(),
              ElementsAre(sent(kMux, 4), sent(kInnerMux, 2), readByte(kDevice, 0x8B),
                          sent(kInnerMux, 0), sent(kMux, 0)));
}

TEST_F(ExecutorTest, WritesThatEndATransactionButReleaseNothingAreNotPerformed) {
  addSend(message_, kMux, 4);
  addRead(message_, kDevice, 0, 1);
  addSend(message_, kDevice, 3);
  bus_->failAt(1, EIO);
  EXPECT_EQ(run().error, EIO);
  EXPECT_THAT(bus_->performed(), SizeIs(2));
}

TEST_F(ExecutorTest, TheReleaseIsTheUnbrokenRunAtTheEnd) {
  addSend(message_, kMux, 4);
  addRead(message_, kDevice, 0, 1);
  addSend(message_, kMux, 8);
  addRead(message_, kDevice, 0, 1);
  addSend(message_, kMux, 0);
  bus_->failAt(1, EIO);
  EXPECT_EQ(run().error, EIO);
  EXPECT_THAT(bus_->performed(), ElementsAre(sent(kMux, 4), readByte(kDevice, 0), sent(kMux, 0)));
}

TEST_F(ExecutorTest, ASentByteBehindAMuxIsNotTakenForARelease) {
  addSend(message_, kMux, 4);
  addSend(message_, kDevice, 3);
  addSend(message_, kDevice, 5);
  addSend(message_, kMux, 0);
  bus_->failAt(0, ENXIO);
  EXPECT_EQ(run().error, ENXIO);
  EXPECT_THAT(bus_->performed(), ElementsAre(sent(kMux, 4), sent(kMux, 0)));
}

TEST_F(ExecutorTest, EveryMuxIsReleasedWhicheverRequestFails) {
  for (size_t failing = 0; failing < 3; ++failing) {
    message_.Clear();
    nestedMuxRead();
    const size_t before = bus_->count();
    bus_->failAt(failing, ETIMEDOUT);
    EXPECT_EQ(run().step, failing);
    const std::vector<Performed> all = bus_->performed();
    ASSERT_EQ(all.size() - before, failing + 3);
    EXPECT_EQ(all[all.size() - 2], sent(kInnerMux, 0));
    EXPECT_EQ(all[all.size() - 1], sent(kMux, 0));
  }
}

TEST_F(ExecutorTest, ARetryRepeatsTheWholeTransaction) {
  addSend(message_, kMux, 4);
  addRead(message_, kDevice, 0, 1);
  addSend(message_, kMux, 0);
  bus_->failAt(1, EREMOTEIO);
  EXPECT_EQ(run(2).error, 0);
  EXPECT_THAT(bus_->performed(), ElementsAre(sent(kMux, 4), readByte(kDevice, 0), sent(kMux, 0),
                                             sent(kMux, 4), readByte(kDevice, 0), sent(kMux, 0)));
  EXPECT_EQ(response_.response_size(), 3);
}

TEST_F(ExecutorTest, RetriesEndAtTheirCount) {
  addRead(message_, kDevice, 0, 1);
  for (size_t i = 0; i < 10; ++i) {
    bus_->failAt(i, EREMOTEIO);
  }
  EXPECT_EQ(run(3).error, EREMOTEIO);
  EXPECT_EQ(bus_->count(), 4U);
}

TEST_F(ExecutorTest, NothingIsBegunAfterTheDeadlineButTheRelease) {
  const uint64_t slow = SmbusAddress::kReadDelay.set(addressWord(kDevice, 0), 3);
  addSend(message_, kMux, 4);
  addRead(message_, kDevice, 0, 1).set_addr(slow);
  addRead(message_, kDevice, 0, 1).set_addr(slow);
  addSend(message_, kMux, 0);
  const Outcome outcome = run(5, Milliseconds(10));
  EXPECT_EQ(outcome.error, ETIMEDOUT);
  EXPECT_EQ(outcome.step, 2U);
  EXPECT_THAT(bus_->performed(), ElementsAre(sent(kMux, 4), readByte(kDevice, 0), sent(kMux, 0)));
}

TEST_F(ExecutorTest, ATransactionGivenUpDoesNothingMoreButItsRelease) {
  addSend(message_, kMux, 4);
  addRead(message_, kDevice, 0, 1);
  addWrite(message_, kDevice, 1, "x");
  addSend(message_, kMux, 0);
  watch_.giveUpAt = 1;
  EXPECT_EQ(run(5).error, ETIMEDOUT);
  EXPECT_THAT(bus_->performed(), ElementsAre(sent(kMux, 4), readByte(kDevice, 0), sent(kMux, 0)));
}

TEST_F(ExecutorTest, TheWatchSeesEveryOperation) {
  nestedMuxRead();
  bus_->failAt(2, EIO);
  (void)run();
  EXPECT_THAT(watch_.steps, ElementsAre(0, 1, 2, 3, 4));
}

TEST_F(ExecutorTest, PausesAfterAnOperationAsAsked) {
  addRead(message_, kDevice, 0, 1)
      .set_addr(SmbusAddress::kReadDelay.set(addressWord(kDevice, 0), 2));
  addRead(message_, kDevice, 0, 1)
      .set_addr(SmbusAddress::kExtraDelay.set(addressWord(kDevice, 0), 1));
  EXPECT_EQ(run().error, 0);
  EXPECT_EQ(clock_.slept(), Milliseconds(15));
}

TEST_F(ExecutorTest, AnAnswerOfTheWrongLengthIsAnError) {
  addRead(message_, kDevice, 0, 2);
  bus_->wrongBy = 1;
  EXPECT_EQ(run().error, EPROTO);
  bus_->wrongBy = -1;
  EXPECT_EQ(run().error, EPROTO);
}

TEST_F(ExecutorTest, ABlockReadReturnsWhatTheDeviceCounts) {
  add(message_, Smbus::ReadBlock, addressWord(kDevice, 0x99), 0);
  bus_->blockLength = 0;
  EXPECT_EQ(run().error, 0);
  EXPECT_THAT(response_.response(0).data(), IsEmpty());
  bus_->blockLength = 32;
  EXPECT_EQ(run().error, 0);
  EXPECT_THAT(response_.response(0).data(), SizeIs(32));
}

}  // namespace
}  // namespace SmbusService
