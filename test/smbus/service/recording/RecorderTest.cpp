// SPDX-License-Identifier: Apache-2.0
//
// The recorder behind calls and behind a server with clients.
#include "smbus/service/recording/Recorder.hpp"

#include <gmock/gmock.h>

#include <algorithm>
#include <map>
#include <thread>

#include "smbus/service/Call.hpp"
#include "test/smbus/service/recording/FileSizeLimit.hpp"
#include "test/smbus/service/recording/Recordings.hpp"
#include "test/smbus/service/support/FakeBus.hpp"
#include "test/smbus/service/support/ManualClock.hpp"
#include "test/smbus/service/support/MemoryLog.hpp"
#include "test/smbus/service/support/TestServer.hpp"

namespace SmbusService::Recording {
namespace {

using std::chrono::hours;
using testing::HasSubstr;
using testing::SizeIs;

constexpr uint8_t kDevice = 0x50;
constexpr std::chrono::nanoseconds kUtc = std::chrono::hours(24);
constexpr size_t kEnough = 64 * 1024 * 1024;

class RecorderTest : public RecordingTest {
 protected:
  RecorderTest() {
    auto bus = std::make_shared<FakeBus>();
    bus_ = bus.get();
    EXPECT_TRUE(buses_.add(busKey(), std::move(bus), clock_));
  }

  RecorderSettings settings(size_t queueBytes = kEnough) const {
    return {path(), "1.2.3", {busKey()}, kEnough, queueBytes};
  }
  Context context() { return {buses_, limits_, 0, clock_, log_, &recorder_}; }
  static Smbus::TransactionRequest readWord() {
    Smbus::TransactionRequest message;
    addRead(message, kDevice, 0x10, 2);
    return message;
  }
  void perform(const Smbus::TransactionRequest& message) {
    EXPECT_EQ(call_.perform(message.SerializeAsString()), Call::Result::kAnswered);
  }
  Contents written() {
    recorder_.writeOut();
    return read(path());
  }

  ManualClock clock_;
  MemoryLog log_;
  Limits limits_;
  BusSet buses_;
  FakeBus* bus_ = nullptr;
  Recorder recorder_{settings(), clock_, log_, [] { return kUtc; }};
  Call call_{context(), {.pid = 1, .uid = 2, .gid = 3, .connection = 4}};
};

TEST_F(RecorderTest, TheHeaderNamesServiceTimeAndBuses) {
  const RecordingReader reader(path());
  EXPECT_EQ(reader.header().service, "1.2.3");
  EXPECT_EQ(reader.header().begun.utc, kUtc);
  EXPECT_EQ(reader.header().begun.monotonic, clock_.now().time_since_epoch());
  EXPECT_EQ(reader.header().buses, std::vector{busKey()});
}

TEST_F(RecorderTest, KeepsRequestAnswerClientAndTime) {
  Smbus::TransactionRequest message = readWord();
  message.mutable_request(0)->set_addr(
      SmbusAddress::kReadDelay.set(message.request(0).addr(), 3));  // 10 ms
  perform(message);
  const Contents contents = written();
  ASSERT_THAT(contents.records, SizeIs(1));
  const Record& record = contents.records[0];
  EXPECT_EQ(record.number, 1U);
  EXPECT_EQ(record.client.pid, 1);
  EXPECT_EQ(record.client.uid, 2U);
  EXPECT_EQ(record.client.connection, 4U);
  EXPECT_EQ(record.duration, Milliseconds(10));
  EXPECT_EQ(record.begun.utc, kUtc - Milliseconds(10));
  EXPECT_EQ(record.request.request(0).addr(), message.request(0).addr());
  EXPECT_EQ(record.response.response(0).data(), "\x10\x11");
}

TEST_F(RecorderTest, KeepsFailuresWithTheRequestAndTheReason) {
  Smbus::TransactionRequest message = readWord();
  addRead(message, kDevice, 0x11, 2);
  bus_->failAt(1, ENXIO);
  perform(message);
  const Contents contents = written();
  ASSERT_THAT(contents.records, SizeIs(1));
  EXPECT_EQ(contents.records[0].failedRequest, 1U);
  EXPECT_THAT(contents.records[0].response.reason(), HasSubstr("request 1 (read word"));
}

TEST_F(RecorderTest, KeepsWhatTheServiceRefuses) {
  Smbus::TransactionRequest message;
  addRead(message, kDevice, 0x10, 2, {.bus = 77});
  perform(message);
  const Contents contents = written();
  ASSERT_THAT(contents.records, SizeIs(1));
  EXPECT_EQ(contents.records[0].failedRequest, 0U);
  EXPECT_THAT(contents.records[0].response.reason(), HasSubstr("the service has no I2C bus 77"));
  EXPECT_EQ(bus_->count(), 0U);
}

TEST_F(RecorderTest, KeepsACallThatWasGivenUpOnce) {
  bus_->hang();
  std::thread stuck(
      [this] { EXPECT_EQ(call_.perform(readWord().SerializeAsString()), Call::Result::kGivenUp); });
  bus_->waitUntilStuck();
  EXPECT_TRUE(call_.giveUpIfStuck(clock_.now() + hours(1)));
  bus_->resume();
  stuck.join();
  Call next(context());
  EXPECT_EQ(next.perform(readWord().SerializeAsString()), Call::Result::kAnswered);
  const Contents contents = written();
  ASSERT_THAT(contents.records, SizeIs(2));
  EXPECT_THAT(contents.records[0].response.reason(), HasSubstr("no end after"));
  EXPECT_EQ(contents.records[0].failedRequest, 0U);
  EXPECT_GE(contents.records[0].duration, hours(1));
  EXPECT_EQ(contents.records[1].number, 2U);
}

TEST_F(RecorderTest, UtcIsThatOfTheMomentEvenWhenItIsSet) {
  std::chrono::nanoseconds utc = kUtc;
  Recorder recorder(settings(), clock_, log_, [&utc] { return utc; });
  const std::string message = readWord().SerializeAsString();
  Call call({buses_, limits_, 0, clock_, log_, &recorder});
  utc = 2 * kUtc;
  EXPECT_EQ(call.perform(message), Call::Result::kAnswered);
  recorder.writeOut();
  EXPECT_EQ(read(path()).records.at(0).begun.utc, 2 * kUtc);
}

TEST_F(RecorderTest, WhatDidNotFitIsStatedInTheRecording) {
  constexpr uint64_t kCalls = 100;
  Recorder small(settings(1024), clock_, log_, [] { return kUtc; });
  Call call({buses_, limits_, 0, clock_, log_, &small});
  for (uint64_t i = 0; i < kCalls; ++i) {
    EXPECT_EQ(call.perform(readWord().SerializeAsString()), Call::Result::kAnswered);
  }
  small.writeOut();
  const Contents contents = read(path());
  EXPECT_GT(contents.records.size(), 0U);
  EXPECT_GT(contents.dropped, 0U);
  EXPECT_EQ(contents.records.size() + contents.dropped, kCalls);
  EXPECT_EQ(bus_->count(), kCalls) << "no bus was held up";
}

TEST_F(RecorderTest, AFullDiskIsToldOnceAndWhatIsMissingIsStatedLater) {
  perform(readWord());
  recorder_.writeOut();
  {
    const FileSizeLimit full(std::filesystem::file_size(path()));
    for (int i = 0; i < 3; ++i) {
      perform(readWord());
      recorder_.writeOut();
    }
  }
  EXPECT_EQ(log_.count("the recording cannot be written: File too large"), 1U);
  EXPECT_FALSE(log_.has("the recording goes on"));
  perform(readWord());
  const Contents contents = written();
  EXPECT_THAT(contents.records, SizeIs(2));
  EXPECT_EQ(contents.dropped, 3U);
  EXPECT_EQ(log_.count("the recording goes on"), 1U);
}

// Each client writes to its own register of every bus in turn, so that the order on a bus is seen
// in what the bus was asked.
class RecordedServer : public RecordingTest {
 protected:
  static constexpr uint32_t kBuses = 2;
  static constexpr int kClients = 8;
  static constexpr uint32_t kWrites = 500;

  static void write(TestServer& service, TestClient client, uint8_t device) {
    for (uint32_t i = 0; i < kWrites; ++i) {
      Smbus::TransactionRequest message;
      const std::string data{static_cast<char>(i & 0xFF), static_cast<char>(i >> 8)};
      addWrite(message, device, 1, data, {.bus = kBusNumber + i % kBuses});
      EXPECT_TRUE(client.call(message)) << service.server().connections();
    }
  }
  void run(size_t queueBytes) {
    MemoryLog log;
    SystemClock clock;
    Recorder recorder({path(), "1", {busKey(0), busKey(1)}, kEnough, queueBytes}, clock, log,
                      systemUtc);
    TestServer service(kBuses, {}, &recorder);
    {
      const RecorderThread writer(recorder, clock);
      std::vector<std::thread> clients;
      for (int id = 0; id < kClients; ++id) {
        clients.emplace_back(write, std::ref(service), service.connect(),
                             static_cast<uint8_t>(0x10 + id));
      }
      for (std::thread& client : clients) {
        client.join();
      }
    }
    for (uint32_t i = 0; i < kBuses; ++i) {
      performed_.push_back(service.bus(i).performed());
    }
  }

  std::vector<std::vector<Performed>> performed_;
};

TEST_F(RecordedServer, KeepsEveryTransactionOfEightClientsInTheOrderOnEachBus) {
  run(kEnough);
  Contents contents = read(path());
  EXPECT_EQ(contents.dropped, 0U);
  ASSERT_EQ(contents.records.size(), size_t{kClients} * kWrites);
  std::ranges::sort(contents.records, {}, &Record::number);
  std::vector<std::vector<Performed>> recorded(kBuses);
  std::map<uint64_t, uint32_t> connections;
  for (const Record& record : contents.records) {
    const Smbus::Request& request = record.request.request(0);
    ++connections[record.client.connection];
    recorded[SmbusAddress::kBus.get(request.addr()) - kBusNumber].push_back(
        {OperationKind::kWriteWord, static_cast<uint8_t>(SmbusAddress::kDevice.get(request.addr())),
         SmbusAddress::kRegister.get(request.addr()), request.data()});
  }
  EXPECT_EQ(recorded, performed_);
  EXPECT_THAT(connections, SizeIs(kClients));
  EXPECT_THAT(connections, testing::Each(testing::Pair(testing::Ge(1U), kWrites)));
}

TEST_F(RecordedServer, ATooSmallQueueStatesEveryTransactionThatIsMissing) {
  run(2048);
  const Contents contents = read(path());
  EXPECT_EQ(contents.records.size() + contents.dropped, size_t{kClients} * kWrites);
  EXPECT_EQ(performed_[0].size() + performed_[1].size(), size_t{kClients} * kWrites);
}

}  // namespace
}  // namespace SmbusService::Recording
