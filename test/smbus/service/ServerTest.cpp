// SPDX-License-Identifier: Apache-2.0
//
// The server as its clients see it, with real threads.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pthread.h>

#include <thread>

#include "test/smbus/service/support/TestServer.hpp"

namespace SmbusService {
namespace {

using testing::HasSubstr;

Limits quickToGiveUp() {
  Limits limits;
  limits.busMs = 50;
  return limits;
}

// While it lives the system has no memory for the stack of a further thread.
class NoMoreThreads {
 public:
  NoMoreThreads() {
    ::pthread_getattr_default_np(&usual_);
    pthread_attr_t huge = usual_;
    ::pthread_attr_setstacksize(&huge, size_t{1} << 47);  // all that there is of addresses
    ::pthread_setattr_default_np(&huge);
  }
  ~NoMoreThreads() { ::pthread_setattr_default_np(&usual_); }
  NoMoreThreads(const NoMoreThreads&) = delete;
  NoMoreThreads& operator=(const NoMoreThreads&) = delete;

 private:
  pthread_attr_t usual_{};
};

TEST(Server, AnswersTransactionsOneAfterTheOther) {
  TestServer service;
  TestClient client = service.connect();
  for (int i = 0; i < 100; ++i) {
    EXPECT_TRUE(isGoodWord(client.call(readWordOn(0))));
  }
}

TEST(Server, NeverMixesTheTransactionsOfTwoClients) {
  constexpr int kClients = 8;
  constexpr int kTransactions = 100;
  TestServer service;
  std::vector<std::thread> threads;
  for (uint8_t id = 0; id < kClients; ++id) {
    threads.emplace_back([&service, id] {
      TestClient client = service.connect();
      Smbus::TransactionRequest message;
      addSend(message, static_cast<uint8_t>(0x70 + id), 1);
      addWrite(message, kFakeBusDevice, id, "x");
      addRead(message, kFakeBusDevice, id, 1);
      addSend(message, static_cast<uint8_t>(0x70 + id), 0);
      for (int i = 0; i < kTransactions; ++i) {
        const auto response = client.call(message);
        ASSERT_TRUE(response);
        EXPECT_FALSE(response->failed());
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  const std::vector<Performed> all = service.bus().performed();
  ASSERT_EQ(all.size(), size_t{4} * kClients * kTransactions);
  EXPECT_FALSE(service.bus().overlapped());
  for (size_t i = 0; i < all.size(); i += 4) {
    const uint32_t id = all[i].address - 0x70U;
    EXPECT_EQ(all[i].command, 1U);
    EXPECT_EQ(all[i + 1].command, id);
    EXPECT_EQ(all[i + 2].command, id);
    EXPECT_EQ(all[i + 3].address, all[i].address);
    EXPECT_EQ(all[i + 3].command, 0U);
  }
}

TEST(Server, AHungBusIsAnsweredForAndTheConversationGoesOn) {
  TestServer service(2, quickToGiveUp());
  TestClient client = service.connect();
  service.bus(0).hang();
  const auto response = client.call(readWordOn(0));
  ASSERT_TRUE(response);
  EXPECT_TRUE(response->failed());
  EXPECT_THAT(response->reason(), HasSubstr(" on I2C bus 5: no end after "));
  EXPECT_TRUE(isGoodWord(client.call(readWordOn(1))));
  service.bus(0).resume();
}

TEST(Server, SevenHungBusesLeaveTheEighthAnswering) {
  constexpr uint32_t kBuses = 8;
  TestServer service(kBuses, quickToGiveUp());
  std::vector<TestClient> hanging;
  for (uint32_t bus = 1; bus < kBuses; ++bus) {
    service.bus(bus).hang();
    for (int i = 0; i < 4; ++i) {
      hanging.push_back(service.connect());
      ASSERT_TRUE(hanging.back().sendMessage(readWordOn(bus)));
    }
  }
  TestClient good = service.connect();
  for (int i = 0; i < 200; ++i) {
    EXPECT_TRUE(isGoodWord(good.call(readWordOn(0))));
  }
  for (TestClient& client : hanging) {
    const auto response = client.receive();
    ASSERT_TRUE(response);
    EXPECT_TRUE(response->failed());
    EXPECT_THAT(response->reason(), HasSubstr("Connection timed out"));
  }
  EXPECT_TRUE(isGoodWord(good.call(readWordOn(0))));
}

TEST(Server, ABusThatComesBackServesAgainAndDoublesNoWrite) {
  TestServer service(1, quickToGiveUp());
  TestClient client = service.connect();
  Smbus::TransactionRequest message;
  message.set_retrycount(3);
  addWrite(message, kFakeBusDevice, 1, "a");
  addWrite(message, kFakeBusDevice, 2, "b");
  service.bus().hang();
  auto response = client.call(message);
  ASSERT_TRUE(response);
  EXPECT_TRUE(response->failed());
  service.bus().resume();
  do {  // until the stuck thread has let go of the bus
    response = client.call(readWordOn(0));
    ASSERT_TRUE(response);
  } while (response->failed());
  size_t writes = 0;
  for (const Performed& performed : service.bus().performed()) {
    writes += performed.kind == OperationKind::kWriteByte ? 1 : 0;
  }
  EXPECT_EQ(writes, 1U);  // the one that was stuck
}

TEST(Server, TheSupervisorReportsABusWhileItHangs) {
  TestServer service(1, quickToGiveUp());
  TestClient client = service.connect();
  service.bus().hang();
  ASSERT_TRUE(client.call(readWordOn(0)));
  while (!service.sawHung()) {
    std::this_thread::yield();
  }
  service.bus().resume();
  while (service.sawHung()) {
    std::this_thread::yield();
  }
  EXPECT_TRUE(service.log().has("given up: request 0"));
}

TEST(Server, RefusesMoreConnectionsThanItsLimit) {
  Limits limits;
  limits.connections = 2;
  TestServer service(1, limits);
  TestClient first = service.connect();
  TestClient second = service.connect();
  EXPECT_TRUE(service.connect().closedByPeer());
  EXPECT_TRUE(isGoodWord(first.call(readWordOn(0))));
  EXPECT_TRUE(isGoodWord(second.call(readWordOn(0))));
}

TEST(Server, OneUserCannotTakeTheConnectionsOfAnother) {
  Limits limits;
  limits.connectionsPerUser = 2;
  TestServer service(1, limits);
  TestClient first = service.connect(1);
  TestClient second = service.connect(1);
  EXPECT_TRUE(service.connect(1).closedByPeer());
  EXPECT_TRUE(isGoodWord(service.connect(2).call(readWordOn(0))));
}

TEST(Server, AClosedConnectionMakesRoom) {
  Limits limits;
  limits.connections = 1;
  TestServer service(1, limits);
  for (int i = 0; i < 20; ++i) {
    { TestClient client = service.connect(); }
    while (service.server().connections() != 0) {
      std::this_thread::yield();
    }
  }
  EXPECT_TRUE(isGoodWord(service.connect().call(readWordOn(0))));
}

TEST(Server, AConnectionThatGetsNoThreadIsClosedAndTheOthersGoOn) {
  TestServer service;
  TestClient early = service.connect();
  ASSERT_TRUE(isGoodWord(early.call(readWordOn(0))));
  {
    const NoMoreThreads exhausted;
    EXPECT_TRUE(service.connect().closedByPeer());
    EXPECT_TRUE(isGoodWord(early.call(readWordOn(0))));
  }
  EXPECT_TRUE(service.log().has("closed: no thread to be had"));
  EXPECT_EQ(service.server().connections(), 1U);
  EXPECT_TRUE(isGoodWord(service.connect().call(readWordOn(0))));
}

TEST(Server, GarbageClosesTheConnection) {
  TestServer service;
  TestClient client = service.connect();
  client.sendBytes(frameOf("\xff\xff\xff"));
  EXPECT_TRUE(client.closedByPeer());
}

TEST(Server, AnOversizedFrameClosesTheConnection) {
  TestServer service;
  TestClient client = service.connect();
  client.sendBytes(std::string("\x00\x10\x00\x01", 4));
  EXPECT_TRUE(client.closedByPeer());
}

TEST(Server, AHalfSentFrameIsCutAfterItsTime) {
  Limits limits;
  limits.frameMs = 20;
  TestServer service(1, limits);
  TestClient client = service.connect();
  client.sendBytes(frameOf(readWordOn(0)).substr(0, 7));
  EXPECT_TRUE(client.closedByPeer());
  EXPECT_TRUE(service.log().has("a frame took too long to arrive"));
}

TEST(Server, AClientThatTakesNoAnswersIsCut) {
  Limits limits;
  limits.sendMs = 20;
  TestServer service(1, limits);
  TestClient client = service.connect();
  Smbus::TransactionRequest message;
  for (int i = 0; i < 100; ++i) {
    addRead(message, kFakeBusDevice, 0, 8192);
  }
  const std::string frame = frameOf(message);
  while (client.sendBytes(frame)) {
  }
  EXPECT_TRUE(service.log().has("it does not take its answer"));
}

TEST(Server, StopAnswersWhatIsUnderWay) {
  TestServer service;
  TestClient idle = service.connect();
  TestClient client = service.connect();
  service.bus().hang();
  ASSERT_TRUE(client.sendMessage(readWordOn(0)));
  service.bus().waitUntilStuck();
  std::thread stopping([&service] { service.restart(); });
  EXPECT_TRUE(idle.closedByPeer());  // so the stop has begun
  service.bus().resume();
  EXPECT_TRUE(isGoodWord(client.receive()));
  EXPECT_TRUE(client.closedByPeer());
  stopping.join();
}

TEST(Server, StopDoesNotWaitForABusThatHangsForGood) {
  Limits limits = quickToGiveUp();
  limits.stopMs = 100;
  TestServer service(1, limits);
  TestClient client = service.connect();
  service.bus().hang();
  ASSERT_TRUE(client.call(readWordOn(0)));
  EXPECT_FALSE(service.server().stop());
  EXPECT_TRUE(client.closedByPeer());
  service.bus().resume();
}

}  // namespace
}  // namespace SmbusService
