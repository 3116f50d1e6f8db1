// SPDX-License-Identifier: Apache-2.0
//
// smbusd as systemd and its operator see it: a process.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>

#include <atomic>
#include <csignal>
#include <thread>

#include "smbus/service/Listener.hpp"
#include "smbus/service/recording/RecordingReader.hpp"
#include "test/smbus/service/support/Messages.hpp"
#include "test/smbus/service/support/ServiceProcess.hpp"
#include "test/smbus/service/support/TestClient.hpp"

namespace SmbusService {
namespace {

using testing::HasSubstr;

constexpr int kWrongConfiguration = 2;

Smbus::TransactionRequest readOfTheChip() {
  Smbus::TransactionRequest message;
  addRead(message, kChipAddress, kChipRegister, 1, {.bus = kChipBus});
  return message;
}

bool isGoodRead(const std::optional<Smbus::TransactionResponse>& response) {
  return response && !response->failed() && response->response_size() == 1 &&
         response->response(0).data() == std::string(1, kChipValue);
}

class DaemonTest : public testing::Test {
 protected:
  ServiceProcess service_;
};

TEST_F(DaemonTest, ServesOnceItHasSaidThatItIsReady) {
  service_.start();
  TestClient client(service_.socketPath());
  EXPECT_TRUE(isGoodRead(client.call(readOfTheChip())));
  EXPECT_THAT(service_.errors(), HasSubstr("client pid " + std::to_string(::getpid()) + " uid "));
}

TEST_F(DaemonTest, ItsSocketIsForItsGroup) {
  service_.start();
  struct stat status {};
  ASSERT_EQ(::stat(service_.socketPath().c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777U, 0660U);
}

TEST_F(DaemonTest, EitherSignalStopsItCleanly) {
  for (const int number : {SIGTERM, SIGINT}) {
    service_.start();
    TestClient idle(service_.socketPath());
    EXPECT_TRUE(isGoodRead(idle.call(readOfTheChip())));
    service_.signal(number);
    EXPECT_TRUE(idle.closedByPeer());
    EXPECT_EQ(service_.wait(), 0);
    EXPECT_FALSE(std::filesystem::exists(service_.socketPath()));
  }
}

TEST_F(DaemonTest, FeedsTheWatchdogWhileEveryBusMoves) {
  service_.start();
  for (int i = 0; i < 2; ++i) {
    const std::optional<std::string> said = service_.notification();
    ASSERT_TRUE(said);
    EXPECT_THAT(*said, HasSubstr("WATCHDOG=1"));
  }
}

TEST_F(DaemonTest, ServesASocketThatSystemdHasMadeAndLeavesItThere) {
  const std::string path = testing::TempDir() + "activation_" + std::to_string(::getpid());
  const ListeningSocket ours({path, 0660, ""});
  const Descriptor handedOver(::dup(ours.descriptor()));
  service_.start(&handedOver);
  EXPECT_TRUE(isGoodRead(TestClient(path).call(readOfTheChip())));
  EXPECT_FALSE(std::filesystem::exists(service_.socketPath()));
  service_.signal(SIGTERM);
  EXPECT_EQ(service_.wait(), 0);
  EXPECT_TRUE(std::filesystem::exists(path));
}

TEST_F(DaemonTest, ASecondServiceLeavesTheFirstAlone) {
  service_.start();
  ServiceProcess second;
  second.writeConfiguration(R"({"socket": {"path": ")" + service_.socketPath() + R"("},
    "virtual_board": "board.json",
    "buses": [{"master": "I2C", "bus": 5, "backend": {"virtual": "b"}}]})");
  EXPECT_EQ(second.run("--config", second.configurationPath()), 1);
  EXPECT_THAT(second.errors(), HasSubstr("a service listens at " + service_.socketPath()));
  EXPECT_TRUE(isGoodRead(TestClient(service_.socketPath()).call(readOfTheChip())));
}

TEST_F(DaemonTest, AWrongConfigurationIsToldWithItsPlaceBeforeAnythingIsOpened) {
  service_.writeConfiguration("{\"buses\": [\n  {\"master\": \"I2C\", \"bus\": 500}]}");
  EXPECT_EQ(service_.run("--config", service_.configurationPath()), kWrongConfiguration);
  EXPECT_THAT(service_.errors(), HasSubstr(service_.configurationPath() + ":2:"));
  EXPECT_FALSE(std::filesystem::exists(service_.socketPath()));
}

TEST_F(DaemonTest, CheckReadsTheVirtualBoardToo) {
  EXPECT_EQ(service_.run("--check", service_.configurationPath()), 0);
  service_.writeConfiguration(R"({"virtual_board": "board.json", "buses": [
    {"master": "I2C", "bus": 5, "backend": {"virtual": "nowhere"}}]})");
  EXPECT_EQ(service_.run("--check", service_.configurationPath()), kWrongConfiguration);
  EXPECT_THAT(service_.errors(), HasSubstr("has no bus \"nowhere\"; it has: b"));
}

TEST_F(DaemonTest, CheckOpensNoDevice) {
  service_.writeConfiguration(
      R"({"buses": [{"master": "I2C", "bus": 5, "backend": {"linux": 1048575}}]})");
  EXPECT_EQ(service_.run("--check", service_.configurationPath()), 0);
  EXPECT_EQ(service_.run("--config", service_.configurationPath()), kWrongConfiguration);
  EXPECT_THAT(service_.errors(), HasSubstr("/dev/i2c-1048575: No such file or directory"));
}

constexpr const char* kRecorded = R"({"virtual_board": "board.json", "record": "recording",
  "buses": [{"master": "I2C", "bus": 5, "backend": {"virtual": "b"}}]})";

TEST_F(DaemonTest, RecordsEveryTransactionAndWritesTheLastOnesWhenItIsStopped) {
  service_.writeConfiguration(kRecorded);
  service_.start();
  for (int i = 0; i < 3; ++i) {
    TestClient client(service_.socketPath());
    EXPECT_TRUE(isGoodRead(client.call(readOfTheChip())));
  }
  service_.signal(SIGTERM);
  EXPECT_EQ(service_.wait(), 0);
  Recording::RecordingReader reader(service_.path("recording"));
  EXPECT_EQ(reader.header().buses, std::vector{busKey()});
  Recording::Line line;
  for (uint64_t i = 1; i <= 3; ++i) {
    ASSERT_TRUE(reader.next(line));
    ASSERT_TRUE(std::holds_alternative<Recording::Record>(line));
    const auto& record = std::get<Recording::Record>(line);
    EXPECT_EQ(record.number, i);
    EXPECT_EQ(record.client.connection, i);
    EXPECT_EQ(record.client.pid, ::getpid());
    EXPECT_TRUE(isGoodRead(record.response));
  }
  EXPECT_FALSE(reader.next(line));
}

TEST_F(DaemonTest, ARecordingThatCannotBeWrittenKeepsItFromServing) {
  service_.writeConfiguration(R"({"virtual_board": "board.json", "record": "nowhere/recording",
    "buses": [{"master": "I2C", "bus": 5, "backend": {"virtual": "b"}}]})");
  EXPECT_EQ(service_.run("--config", service_.configurationPath()), 1);
  EXPECT_THAT(service_.errors(), HasSubstr("nowhere/recording: the recording cannot be written"));
}

// Reads until told to stop, over a new connection whenever the old one is lost; counts the good
// reads. No answer may ever be wrong.
void readOn(const ServiceProcess& service, const std::atomic<bool>& stop, std::atomic<int>& good) {
  const std::string path = service.socketPath();
  while (!stop) {
    TestClient client(path);
    while (client.connected() && !stop) {
      const auto response = client.call(readOfTheChip());
      if (!response) {
        break;
      }
      EXPECT_TRUE(isGoodRead(response));
      ++good;
    }
  }
}

TEST_F(DaemonTest, AWrongCommandLineIsToldAndEndsTheService) {
  EXPECT_EQ(service_.run("--replay-mode", "loose"), 1);
  EXPECT_THAT(service_.errors(), HasSubstr("--replay-mode requires --replay"));
  EXPECT_EQ(service_.run("--replay-mode", "lax"), 1);
  EXPECT_THAT(service_.errors(), HasSubstr("--replay-mode: lax not in {loose,strict}"));
}

TEST_F(DaemonTest, KilledUnderLoadItServesAgainWhenStarted) {
  constexpr int kRounds = 5;
  constexpr int kReadsARound = 50;
  std::atomic<bool> stop{false};
  std::atomic<int> good{0};
  service_.start();
  std::thread client(readOn, std::cref(service_), std::cref(stop), std::ref(good));
  for (int round = 1; round <= kRounds; ++round) {
    while (good < round * kReadsARound) {
      std::this_thread::yield();
    }
    service_.signal(SIGKILL);
    EXPECT_EQ(service_.wait(), -SIGKILL);
    EXPECT_TRUE(std::filesystem::exists(service_.socketPath()));
    service_.start();
  }
  stop = true;
  client.join();
}

}  // namespace
}  // namespace SmbusService
