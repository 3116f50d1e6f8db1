// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/recording/RecordQueue.hpp"

#include "test/smbus/service/recording/Recordings.hpp"
#include "test/smbus/service/support/ManualClock.hpp"

namespace SmbusService::Recording {
namespace {

constexpr size_t kBytes = 4096;

Entry entry(uint64_t number, std::string_view request, std::string_view response = "") {
  Entry entry;
  entry.number = number;
  entry.request = request;
  entry.response = response;
  return entry;
}

class RecordQueueTest : public testing::Test {
 protected:
  ManualClock clock_;
  RecordQueue queue_{kBytes, clock_};
  Batch batch_;
};

TEST_F(RecordQueueTest, GivesWhatWasPutInItsOrder) {
  Entry first = entry(1, "ask", "answer");
  first.client.connection = 5;
  first.failedRequest = 3;
  queue_.put(first);
  queue_.put(entry(2, "", ""));
  queue_.take(batch_);
  Entry taken;
  ASSERT_TRUE(batch_.next(taken));
  EXPECT_EQ(taken.number, 1U);
  EXPECT_EQ(taken.request, "ask");
  EXPECT_EQ(taken.response, "answer");
  EXPECT_EQ(taken.client.connection, 5U);
  EXPECT_EQ(taken.failedRequest, 3U);
  ASSERT_TRUE(batch_.next(taken));
  EXPECT_EQ(taken.number, 2U);
  EXPECT_EQ(taken.request, "");
  EXPECT_FALSE(batch_.next(taken));
  EXPECT_EQ(batch_.dropped(), 0U);
}

TEST_F(RecordQueueTest, CountsWhatDoesNotFit) {
  const std::string big(kBytes / 3, 'x');
  for (uint64_t i = 1; i <= 10; ++i) {
    queue_.put(entry(i, big));
  }
  queue_.put(entry(11, "small, but after a gap"));
  queue_.take(batch_);
  Entry taken;
  uint64_t kept = 0;
  while (batch_.next(taken)) {
    EXPECT_EQ(taken.number, ++kept);
    EXPECT_EQ(taken.request, big);
  }
  EXPECT_EQ(kept, 2U);
  EXPECT_EQ(batch_.dropped(), 9U);
}

TEST_F(RecordQueueTest, TakesInAgainOnceItIsEmptied) {
  queue_.put(entry(1, std::string(2 * kBytes, 'x')));
  queue_.take(batch_);
  EXPECT_EQ(batch_.dropped(), 1U);
  queue_.put(entry(2, "fits"));
  queue_.take(batch_);
  EXPECT_EQ(batch_.dropped(), 0U);
  Entry taken;
  ASSERT_TRUE(batch_.next(taken));
  EXPECT_EQ(taken.number, 2U);
}

TEST_F(RecordQueueTest, WaitsNoMoreWhenHalfFullOrStopped) {
  const TimePoint begin = clock_.now();
  const TimePoint later = begin + std::chrono::hours(1);
  queue_.put(entry(1, std::string(kBytes / 2, 'x')));
  EXPECT_TRUE(queue_.wait(later));
  EXPECT_EQ(clock_.now(), begin);
  queue_.take(batch_);
  EXPECT_TRUE(queue_.wait(later));
  EXPECT_EQ(clock_.now(), later);
  queue_.stop();
  EXPECT_FALSE(queue_.wait(later + std::chrono::hours(1)));
  EXPECT_EQ(clock_.now(), later);
}

}  // namespace
}  // namespace SmbusService::Recording
