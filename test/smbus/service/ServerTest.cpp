// SPDX-License-Identifier: Apache-2.0
//
// The server as its clients see it, with real threads.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <random>
#include <set>
#include <thread>

#include "smbus/Frame.hpp"
#include "test/smbus/service/support/TestServer.hpp"

namespace SmbusService {
namespace {

using testing::HasSubstr;

constexpr uint8_t kDevice = 0x50;

Smbus::TransactionRequest readOn(uint32_t bus) {
  Smbus::TransactionRequest message;
  addRead(message, kDevice, 0x8B, 2, {.bus = kBusNumber + bus});
  return message;
}

bool isGoodRead(const std::optional<Smbus::TransactionResponse>& response) {
  return response && !response->failed() && response->response_size() == 1 &&
         response->response(0).data() == "\x10\x11";
}

Limits quickToGiveUp() {
  Limits limits;
  limits.busMs = 50;
  return limits;
}

TEST(Server, AnswersTransactionsOneAfterTheOther) {
  TestServer service;
  TestClient client = service.connect();
  for (int i = 0; i < 100; ++i) {
    EXPECT_TRUE(isGoodRead(client.call(readOn(0))));
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
      addWrite(message, kDevice, id, "x");
      addRead(message, kDevice, id, 1);
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
  const auto response = client.call(readOn(0));
  ASSERT_TRUE(response);
  EXPECT_TRUE(response->failed());
  EXPECT_THAT(response->reason(), HasSubstr(" on I2C bus 5: no end after "));
  EXPECT_TRUE(isGoodRead(client.call(readOn(1))));
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
      ASSERT_TRUE(hanging.back().sendMessage(readOn(bus)));
    }
  }
  TestClient good = service.connect();
  for (int i = 0; i < 200; ++i) {
    EXPECT_TRUE(isGoodRead(good.call(readOn(0))));
  }
  for (TestClient& client : hanging) {
    const auto response = client.receive();
    ASSERT_TRUE(response);
    EXPECT_TRUE(response->failed());
    EXPECT_THAT(response->reason(), HasSubstr("Connection timed out"));
  }
  EXPECT_TRUE(isGoodRead(good.call(readOn(0))));
}

TEST(Server, ABusThatComesBackServesAgainAndDoublesNoWrite) {
  TestServer service(1, quickToGiveUp());
  TestClient client = service.connect();
  Smbus::TransactionRequest message;
  message.set_retrycount(3);
  addWrite(message, kDevice, 1, "a");
  addWrite(message, kDevice, 2, "b");
  service.bus().hang();
  auto response = client.call(message);
  ASSERT_TRUE(response);
  EXPECT_TRUE(response->failed());
  service.bus().resume();
  do {  // until the stuck thread has let go of the bus
    response = client.call(readOn(0));
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
  ASSERT_TRUE(client.call(readOn(0)));
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
  EXPECT_TRUE(isGoodRead(first.call(readOn(0))));
  EXPECT_TRUE(isGoodRead(second.call(readOn(0))));
}

TEST(Server, OneUserCannotTakeTheConnectionsOfAnother) {
  Limits limits;
  limits.connectionsPerUser = 2;
  TestServer service(1, limits);
  TestClient first = service.connect(1);
  TestClient second = service.connect(1);
  EXPECT_TRUE(service.connect(1).closedByPeer());
  EXPECT_TRUE(isGoodRead(service.connect(2).call(readOn(0))));
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
  EXPECT_TRUE(isGoodRead(service.connect().call(readOn(0))));
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
  client.sendBytes(frameOf(readOn(0)).substr(0, 7));
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
    addRead(message, kDevice, 0, 8192);
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
  ASSERT_TRUE(client.sendMessage(readOn(0)));
  service.bus().waitUntilStuck();
  std::thread stopping([&service] { service.restart(); });
  EXPECT_TRUE(idle.closedByPeer());  // so the stop has begun
  service.bus().resume();
  EXPECT_TRUE(isGoodRead(client.receive()));
  EXPECT_TRUE(client.closedByPeer());
  stopping.join();
}

// What one client did: each write carries a number of its own.
struct Written {
  std::set<std::string> answered;
  std::set<std::string> unknown;  // sent, but the connection was lost
};

// Writes numbers over one connection after the other. Connects under `connecting` only.
Written writeNumbers(TestServer& service, std::mutex& connecting, int client, int count) {
  Written written;
  std::optional<TestClient> connection;
  for (int i = 0; i < count; ++i) {
    const std::string data = "w" + std::to_string(client) + ":" + std::to_string(i);
    Smbus::TransactionRequest message;
    addWrite(message, kDevice, 1, data);
    if (!connection) {
      const std::lock_guard lock(connecting);
      connection.emplace(service.connect());
    }
    const auto response = connection->call(message);
    (response && !response->failed() ? written.answered : written.unknown).insert(data);
    if (!response) {
      connection.reset();
    }
  }
  return written;
}

std::map<std::string, int> writesAt(FakeBus& bus) {
  std::map<std::string, int> times;
  for (const Performed& write : bus.performed()) {
    ++times[write.data];
  }
  return times;
}

TEST(Server, ARestartUnderLoadDoublesNoWriteAndLosesNoAnsweredOne) {
  constexpr int kClients = 4;
  constexpr int kWrites = 300;
  TestServer service;
  std::mutex replacing;
  std::array<Written, kClients> written;
  std::atomic<int> running{kClients};
  std::vector<std::thread> threads;
  for (int id = 0; id < kClients; ++id) {
    threads.emplace_back([&, id] {
      written[static_cast<size_t>(id)] = writeNumbers(service, replacing, id, kWrites);
      --running;
    });
  }
  while (running > 0) {
    const std::lock_guard lock(replacing);
    service.restart();
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  const std::map<std::string, int> performed = writesAt(service.bus());
  for (const auto& [data, times] : performed) {
    EXPECT_EQ(times, 1) << data;
  }
  for (const Written& mine : written) {
    EXPECT_EQ(mine.answered.size() + mine.unknown.size(), size_t{kWrites});
    for (const std::string& data : mine.answered) {
      EXPECT_EQ(performed.count(data), 1U) << data;
    }
  }
}

// One hostile connection, chosen by chance.
void misbehave(TestServer& service, std::mt19937& chance) {
  TestClient client = service.connect(static_cast<uid_t>(2000 + chance() % 4));
  const std::string good = frameOf(readOn(0));
  switch (chance() % 6) {
    case 0:
      break;  // opens and drops
    case 1:
      client.sendBytes(good.substr(0, chance() % good.size()));
      break;
    case 2:
      client.sendBytes("\xff\xff\xff\xff and more");
      break;
    case 3: {
      std::string garbage(chance() % 200, '\0');
      for (char& byte : garbage) {
        byte = static_cast<char>(chance());
      }
      client.sendBytes(frameOf(garbage));
      break;
    }
    case 4:
      client.sendBytes(good + good + good);
      break;  // and takes no answer
    case 5:
      client.sendBytes(frameOf(std::string(100'000, '\x12')));
      break;
  }
}

TEST(Server, HostileClientsCostAGoodOneNothing) {
  constexpr int kHostile = 3;
  constexpr int kConnections = 700;
  TestServer service;
  std::vector<std::thread> threads;
  std::atomic<int> running{kHostile};
  for (unsigned seed = 1; seed <= kHostile; ++seed) {
    threads.emplace_back([&service, &running, seed] {
      std::mt19937 chance(seed);
      for (int i = 0; i < kConnections; ++i) {
        misbehave(service, chance);
      }
      --running;
    });
  }
  TestClient good = service.connect();
  int reads = 0;
  while (running > 0 || reads < 100) {
    ASSERT_TRUE(isGoodRead(good.call(readOn(0)))) << "read " << reads;
    ++reads;
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
}

}  // namespace
}  // namespace SmbusService
