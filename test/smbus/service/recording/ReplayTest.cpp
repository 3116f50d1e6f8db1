// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/recording/Replay.hpp"

#include <gmock/gmock.h>

#include <sstream>

#include "smbus/service/recording/LineWriter.hpp"
#include "test/smbus/service/recording/Recordings.hpp"
#include "test/smbus/service/support/MemoryLog.hpp"

namespace SmbusService::Recording {
namespace {

using testing::HasSubstr;
using testing::SizeIs;
using Message = Smbus::TransactionRequest;
using Answer = Smbus::TransactionResponse;

constexpr uint8_t kMux = 0x70;
constexpr uint8_t kDevice = 0x50;

Message readOf(uint8_t reg, uint32_t bus = kBusNumber, uint32_t size = 1) {
  Message message;
  addRead(message, kDevice, reg, size, {.bus = bus});
  return message;
}
Message writeOf(uint8_t reg, std::string_view data) {
  Message message;
  addWrite(message, kDevice, reg, data);
  return message;
}
// A read of register 0 behind a channel of the mux.
Message readBehind(uint8_t channel) {
  Message message;
  addSend(message, kMux, channel);
  addRead(message, kDevice, 0, 1);
  addSend(message, kMux, 0);
  return message;
}

class ReplayTest : public testing::Test {
 protected:
  // What each request brought back.
  void recorded(const Message& message, const std::vector<std::string>& answers) {
    Record& record = add(message);
    for (const std::string& answer : answers) {
      record.response.add_response()->set_data(answer);
    }
  }
  void recordedFailure(const Message& message, size_t request, const std::string& reason) {
    Record& record = add(message);
    record.failedRequest = request;
    record.response.set_failed(true);
    record.response.set_reason(reason);
  }
  void begin(ReplayMode mode) { replay_ = makeReplay(mode, records_, log_); }

  // The bytes of the first read, or "failed: reason".
  std::string ask(const Message& message) {
    const Answer answer = replay_->answer(message);
    if (answer.failed()) {
      return "failed: " + answer.reason();
    }
    EXPECT_EQ(answer.response_size(), message.request_size());
    std::string data;
    for (const Smbus::Response& response : answer.response()) {
      data += response.data();
    }
    return data;
  }

  MemoryLog log_;
  std::vector<Record> records_;
  std::unique_ptr<Replay> replay_;

 private:
  Record& add(const Message& message) {
    Record& record = records_.emplace_back();
    record.number = records_.size();
    record.request = message;
    return record;
  }
};

class StrictReplayTest : public ReplayTest {};
class LooseReplayTest : public ReplayTest {};

TEST_F(StrictReplayTest, GivesTheRecordedAnswersInTheirOrder) {
  recorded(readOf(1), {"a"});
  recorded(readOf(1), {"b"});
  recordedFailure(readOf(2), 0, "request 0: gone");
  begin(ReplayMode::kStrict);
  EXPECT_EQ(ask(readOf(1)), "a");
  EXPECT_EQ(ask(readOf(1)), "b");
  EXPECT_EQ(ask(readOf(2)), "failed: request 0: gone");
}

TEST_F(StrictReplayTest, EachBusHasItsOwnOrder) {
  recorded(readOf(1, kBusNumber), {"a"});
  recorded(readOf(1, kBusNumber + 1), {"b"});
  begin(ReplayMode::kStrict);
  EXPECT_EQ(ask(readOf(1, kBusNumber + 1)), "b");
  EXPECT_EQ(ask(readOf(1, kBusNumber)), "a");
}

TEST_F(StrictReplayTest, AMessageOnTwoBusesIsTheNextOnBoth) {
  Message both = readOf(1, kBusNumber);
  addRead(both, kDevice, 2, 1, {.bus = kBusNumber + 1});
  recorded(readOf(9, kBusNumber + 1), {"x"});
  recorded(both, {"a", "b"});
  begin(ReplayMode::kStrict);
  EXPECT_THAT(ask(both), HasSubstr("failed: replay: transaction 1"));
  EXPECT_EQ(ask(readOf(9, kBusNumber + 1)), "x");
  EXPECT_EQ(ask(both), "ab");
}

TEST_F(StrictReplayTest, ADeviationNamesWhatWasExpectedAndWhatWasGiven) {
  recorded(writeOf(0x10, "\x01"), {""});
  begin(ReplayMode::kStrict);
  const std::string expected =
      "replay: transaction 1 of the recording has as request 0: Write of 01 at register 0x10 of "
      "device 0x50 on I2C bus 5; given: Write of 02 at register 0x10 of device 0x50 on I2C bus 5";
  EXPECT_EQ(ask(writeOf(0x10, "\x02")), "failed: " + expected);
  EXPECT_EQ(log_.count(expected), 1U);
}

TEST_F(StrictReplayTest, ADeviationDoesNotUseTheRecordingUp) {
  recorded(readOf(1), {"a"});
  begin(ReplayMode::kStrict);
  EXPECT_THAT(ask(readOf(2)), HasSubstr("failed: "));
  EXPECT_EQ(ask(readOf(1)), "a");
}

TEST_F(StrictReplayTest, AShorterOrLongerMessageDeviates) {
  Message two = readOf(1);
  addRead(two, kDevice, 2, 1);
  recorded(two, {"a", "b"});
  recorded(readOf(1), {"c"});
  begin(ReplayMode::kStrict);
  EXPECT_THAT(ask(readOf(1)), HasSubstr("given: none, the message has ended"));
  EXPECT_EQ(ask(two), "ab");
  EXPECT_THAT(ask(two), HasSubstr("has as request 1: none, it has ended; given: Read of 1 bytes"));
}

TEST_F(StrictReplayTest, AfterItsEndEverythingFails) {
  begin(ReplayMode::kStrict);
  EXPECT_THAT(ask(readOf(1)), HasSubstr("failed: replay: the recording of I2C bus 5 has ended"));
  EXPECT_EQ(ask(Message()), "");
}

TEST_F(StrictReplayTest, IdAndRetriesMakeNoDifference) {
  recorded(readOf(1), {"a"});
  begin(ReplayMode::kStrict);
  Message message = readOf(1);
  message.set_id(5);
  message.set_retrycount(3);
  EXPECT_EQ(ask(message), "a");
}

TEST_F(LooseReplayTest, EachRegisterHasItsOwnReads) {
  recorded(readOf(1), {"a"});
  recorded(readOf(2), {"x"});
  recorded(readOf(1), {"b"});
  begin(ReplayMode::kLoose);
  EXPECT_EQ(ask(readOf(1)), "a");
  EXPECT_EQ(ask(readOf(1)), "b");
  EXPECT_EQ(ask(readOf(2)), "x");
}

TEST_F(LooseReplayTest, ReadsThatHaveRunOutRepeatTheLast) {
  recorded(readOf(1), {"a"});
  begin(ReplayMode::kLoose);
  EXPECT_EQ(ask(readOf(1)), "a");
  EXPECT_EQ(ask(readOf(1)), "a");
}

TEST_F(LooseReplayTest, WhatIsWrittenIsReadWhenTheRecordedReadsHaveRunOut) {
  recorded(readOf(1), {"a"});
  recorded(writeOf(1, "w"), {""});
  recorded(readOf(1), {"b"});
  begin(ReplayMode::kLoose);
  EXPECT_EQ(ask(writeOf(1, "v")), "");
  EXPECT_EQ(ask(readOf(1)), "a");
  EXPECT_EQ(ask(readOf(1)), "b");
  EXPECT_EQ(ask(readOf(1)), "b");
  EXPECT_EQ(ask(writeOf(1, "z")), "");
  EXPECT_EQ(ask(readOf(1)), "z");
}

TEST_F(LooseReplayTest, ARegisterThatWasOnlyWrittenReadsAsItWasWritten) {
  recorded(writeOf(1, "w"), {""});
  begin(ReplayMode::kLoose);
  EXPECT_EQ(ask(readOf(1)), "w");
  EXPECT_EQ(ask(writeOf(1, "v")), "");
  EXPECT_EQ(ask(readOf(1)), "v");
}

TEST_F(LooseReplayTest, ARegisterThatWasOnlyReadTakesAWrite) {
  recorded(readOf(1), {"a"});
  begin(ReplayMode::kLoose);
  EXPECT_EQ(ask(readOf(1)), "a");
  EXPECT_EQ(ask(writeOf(1, "v")), "");
  EXPECT_EQ(ask(readOf(1)), "v");
}

TEST_F(LooseReplayTest, FailuresComeBackWithTheirReasonAndStayWhenTheyWereTheLast) {
  recorded(readOf(1), {"a"});
  recordedFailure(readOf(1), 0, "request 0: gone");
  begin(ReplayMode::kLoose);
  EXPECT_EQ(ask(readOf(1)), "a");
  EXPECT_EQ(ask(readOf(1)), "failed: request 0: gone");
  EXPECT_EQ(ask(readOf(1)), "failed: request 0: gone");
}

TEST_F(LooseReplayTest, DevicesBehindTwoChannelsAreToldApart) {
  recorded(readBehind(1), {"", "a", ""});
  recorded(readBehind(2), {"", "b", ""});
  begin(ReplayMode::kLoose);
  EXPECT_EQ(ask(readBehind(2)), "b");
  EXPECT_EQ(ask(readBehind(1)), "a");
  EXPECT_THAT(ask(readBehind(4)),
              HasSubstr("failed: replay: request 0: the recording has no Write"));
  EXPECT_THAT(ask(readOf(0)), HasSubstr("failed: replay: request 0: the recording has no Read"));
}

TEST_F(LooseReplayTest, AMuxThatWasPulledIsPulled) {
  recorded(readBehind(1), {"", "a", ""});
  recordedFailure(readBehind(1), 0, "request 0: no mux");
  begin(ReplayMode::kLoose);
  EXPECT_EQ(ask(readBehind(1)), "a");
  EXPECT_EQ(ask(readBehind(1)), "failed: request 0: no mux");
}

TEST_F(LooseReplayTest, WidthsOfAReadAreDifferentReads) {
  recorded(readOf(1, kBusNumber, 1), {"a"});
  recorded(readOf(1, kBusNumber, 2), {"bc"});
  begin(ReplayMode::kLoose);
  EXPECT_EQ(ask(readOf(1, kBusNumber, 2)), "bc");
  EXPECT_EQ(ask(readOf(1, kBusNumber, 1)), "a");
}

TEST_F(LooseReplayTest, WhatWasNotRecordedFailsAndIsLogged) {
  begin(ReplayMode::kLoose);
  const std::string reason =
      "replay: request 0: the recording has no Read of 1 bytes at register 0x01 of device 0x50 on "
      "I2C bus 5";
  EXPECT_EQ(ask(readOf(1)), "failed: " + reason);
  EXPECT_TRUE(log_.has(reason));
}

TEST(LoadRecords, AreInTheOrderOfTheirNumbersAndTellWhatIsMissing) {
  LineWriter writer({});
  std::string text(writer.header({"1", {}, {}}));
  for (const uint64_t number : {2U, 1U, 3U}) {
    Record record;
    record.number = number;
    text += writer.record(record);
  }
  text += "damage\n";
  text += writer.gap({{}, 7});
  RecordingReader reader("r", std::make_unique<std::istringstream>(text));
  MemoryLog log;
  const std::vector<Record> records = loadRecords(reader, log);
  ASSERT_THAT(records, SizeIs(3));
  EXPECT_EQ(records[0].number, 1U);
  EXPECT_EQ(records[2].number, 3U);
  EXPECT_TRUE(log.has("r:5:1: Invalid value"));
  EXPECT_TRUE(log.has("r:6:1: 7 transactions are missing here"));
}

}  // namespace
}  // namespace SmbusService::Recording
