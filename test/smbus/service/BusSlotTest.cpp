// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "smbus/service/BusSet.hpp"
#include "test/smbus/service/support/FakeBus.hpp"
#include "test/smbus/service/support/ManualClock.hpp"
#include "test/smbus/service/support/Messages.hpp"

namespace SmbusService {
namespace {

using std::chrono::minutes;

class BusSlotTest : public testing::Test {
 protected:
  TimePoint later() { return clock_.now() + minutes(1); }

  SystemClock clock_;
  BusSlot slot_{busKey(), std::make_unique<FakeBus>(), clock_};
};

TEST_F(BusSlotTest, AFreeBusIsHadEvenWithNoTimeToWait) { EXPECT_TRUE(slot_.acquire(clock_.now())); }

TEST_F(BusSlotTest, AHeldBusIsWaitedForUntilTheDeadline) {
  ManualClock manual;
  BusSlot slot(busKey(), std::make_unique<FakeBus>(), manual);
  ASSERT_TRUE(slot.acquire(manual.now()));
  const TimePoint deadline = manual.now() + minutes(1);
  EXPECT_FALSE(slot.acquire(deadline));
  EXPECT_EQ(manual.now(), deadline);
}

TEST_F(BusSlotTest, WhoGaveUpWaitingIsNotGivenTheBus) {
  ASSERT_TRUE(slot_.acquire(later()));
  ASSERT_FALSE(slot_.acquire(clock_.now()));
  slot_.release();
  EXPECT_TRUE(slot_.acquire(clock_.now()));
}

TEST_F(BusSlotTest, AReleaseWakesTheNextWaiter) {
  ASSERT_TRUE(slot_.acquire(later()));
  std::atomic<bool> had{false};
  std::thread waiter([this, &had] { had = slot_.acquire(later()); });
  slot_.release();
  waiter.join();
  EXPECT_TRUE(had);
}

TEST_F(BusSlotTest, NobodyWaitsForABusThatHangs) {
  ASSERT_TRUE(slot_.acquire(later()));
  std::atomic<bool> had{true};
  std::thread waiter([this, &had] { had = slot_.acquire(later()); });
  slot_.markHung();
  waiter.join();
  EXPECT_FALSE(had);
  EXPECT_FALSE(slot_.acquire(later()));
  EXPECT_TRUE(slot_.hung());
}

TEST_F(BusSlotTest, ABusIsBackWithItsHolder) {
  ASSERT_TRUE(slot_.acquire(later()));
  slot_.markHung();
  slot_.release();
  EXPECT_FALSE(slot_.hung());
  EXPECT_TRUE(slot_.acquire(clock_.now()));
}

TEST_F(BusSlotTest, ABusThatNobodyHoldsDoesNotHang) {
  slot_.markHung();
  EXPECT_FALSE(slot_.hung());
}

TEST(BusSet, FindsABusByAllItsParts) {
  SystemClock clock;
  BusSet buses;
  ASSERT_TRUE(buses.add({Smbus::SCD, 0x700, 1, 2}, std::make_unique<FakeBus>(), clock));
  EXPECT_NE(buses.find({Smbus::SCD, 0x700, 1, 2}), nullptr);
  EXPECT_EQ(buses.find({Smbus::PLM, 0x700, 1, 2}), nullptr);
  EXPECT_EQ(buses.find({Smbus::SCD, 0x701, 1, 2}), nullptr);
  EXPECT_EQ(buses.find({Smbus::SCD, 0x700, 0, 2}), nullptr);
  EXPECT_EQ(buses.find({Smbus::SCD, 0x700, 1, 3}), nullptr);
}

TEST(BusSet, RefusesASecondBusOfTheSameName) {
  SystemClock clock;
  BusSet buses;
  EXPECT_TRUE(buses.add(busKey(), std::make_unique<FakeBus>(), clock));
  EXPECT_FALSE(buses.add(busKey(), std::make_unique<FakeBus>(), clock));
}

TEST(BusHold, HoldsEveryBusOfATransactionOrNone) {
  SystemClock clock;
  BusSet buses;
  ASSERT_TRUE(buses.add(busKey(0), std::make_unique<FakeBus>(), clock));
  ASSERT_TRUE(buses.add(busKey(1), std::make_unique<FakeBus>(), clock));
  BusSlot* first = buses.find(busKey(0));
  BusSlot* second = buses.find(busKey(1));
  Transaction both(3);
  both[0].bus = second;
  both[1].bus = first;
  both[2].bus = second;
  BusHold hold;
  EXPECT_EQ(hold.acquire(both, clock.now()), nullptr);
  EXPECT_FALSE(first->acquire(clock.now()));
  EXPECT_FALSE(second->acquire(clock.now()));
  hold.release();
  ASSERT_TRUE(second->acquire(clock.now()));
  EXPECT_EQ(hold.acquire(both, clock.now()), second);
  EXPECT_TRUE(first->acquire(clock.now()));
}

}  // namespace
}  // namespace SmbusService
