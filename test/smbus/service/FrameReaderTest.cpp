// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/FrameReader.hpp"

#include <gtest/gtest.h>

#include "smbus/Frame.hpp"
#include "test/smbus/service/support/ManualClock.hpp"
#include "test/smbus/service/support/ScriptedTransport.hpp"
#include "test/smbus/service/support/TestClient.hpp"

namespace SmbusService {
namespace {

std::string headerFor(uint32_t length) {
  std::string header(SmbusFrame::kHeaderSize, '\0');
  SmbusFrame::putLength(header.data(), length);
  return header;
}

class FrameReaderTest : public testing::Test {
 protected:
  void arrive(std::deque<std::string> pieces, bool thenSilent = false) {
    transport_ = std::make_unique<ScriptedTransport>(std::move(pieces), thenSilent);
    reader_ = std::make_unique<FrameReader>(*transport_, clock_, limits_);
  }
  FrameStatus status() { return reader_->next().status; }
  std::string message() {
    const Frame frame = reader_->next();
    EXPECT_EQ(frame.status, FrameStatus::kMessage);
    return std::string(frame.message);
  }

  ManualClock clock_;
  Limits limits_;
  std::unique_ptr<ScriptedTransport> transport_;
  std::unique_ptr<FrameReader> reader_;
};

TEST_F(FrameReaderTest, AFrameMayArriveInSingleBytes) {
  std::deque<std::string> pieces;
  for (const char byte : frameOf("hello")) {
    pieces.emplace_back(1, byte);
  }
  arrive(pieces);
  EXPECT_EQ(message(), "hello");
}

TEST_F(FrameReaderTest, FramesThatArriveTogetherAreGivenOneByOne) {
  arrive({frameOf("one") + frameOf("") + frameOf("three").substr(0, 6), "ree"});
  EXPECT_EQ(message(), "one");
  EXPECT_EQ(message(), "");
  EXPECT_EQ(message(), "three");
  EXPECT_EQ(status(), FrameStatus::kClosed);
}

TEST_F(FrameReaderTest, ACloseWithinAFrameIsTold) {
  arrive({frameOf("hello").substr(0, 3)});
  EXPECT_EQ(status(), FrameStatus::kTruncated);
  arrive({frameOf("hello").substr(0, 8)});
  EXPECT_EQ(status(), FrameStatus::kTruncated);
}

TEST_F(FrameReaderTest, TheLongestMessageIsTaken) {
  const std::string longest(limits_.messageBytes, 'x');
  arrive({frameOf(longest)});
  EXPECT_EQ(message(), longest);
}

TEST_F(FrameReaderTest, OneByteMoreIsTooLong) {
  arrive({headerFor(limits_.messageBytes + 1)});
  EXPECT_EQ(status(), FrameStatus::kTooLong);
  arrive({headerFor(0xFFFF'FFFF)});
  EXPECT_EQ(status(), FrameStatus::kTooLong);
}

TEST_F(FrameReaderTest, MemoryGrowsByWhatArrivesNotByWhatIsAnnounced) {
  arrive({headerFor(limits_.messageBytes), std::string(3000, 'x')});
  EXPECT_EQ(status(), FrameStatus::kTruncated);
  EXPECT_LT(reader_->memory(), 16U * 1024);
}

TEST_F(FrameReaderTest, TheMemoryOfALongMessageIsLetGo) {
  arrive({frameOf(std::string(500'000, 'x')), frameOf("short")});
  EXPECT_EQ(message().size(), 500'000U);
  EXPECT_EQ(message(), "short");
  EXPECT_LT(reader_->memory(), 16U * 1024);
}

TEST_F(FrameReaderTest, AnIdleConnectionHasNoDeadline) {
  arrive({frameOf("hello")});
  EXPECT_EQ(message(), "hello");
  EXPECT_EQ(status(), FrameStatus::kClosed);
  EXPECT_EQ(transport_->deadlines.front(), std::nullopt);
  EXPECT_EQ(transport_->deadlines.back(), std::nullopt);
}

TEST_F(FrameReaderTest, AFrameOnceBegunHasOneDeadlineForAllItsPieces) {
  const TimePoint begun = clock_.now();
  arrive({headerFor(3).substr(0, 1), headerFor(3).substr(1), "ab"}, true);
  EXPECT_EQ(status(), FrameStatus::kTooSlow);
  const TimePoint expected = begun + Milliseconds(limits_.frameMs);
  ASSERT_GE(transport_->deadlines.size(), 3U);
  EXPECT_EQ(transport_->deadlines[1], expected);
  EXPECT_EQ(transport_->deadlines.back(), expected);
}

}  // namespace
}  // namespace SmbusService
