// SPDX-License-Identifier: Apache-2.0
//
// The server under load: clients that misbehave, and restarts in the middle of everything.
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <map>
#include <mutex>
#include <random>
#include <set>
#include <thread>

#include "test/smbus/service/support/TestServer.hpp"

namespace SmbusService {
namespace {

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
    addWrite(message, kFakeBusDevice, 1, data);
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

TEST(ServerLoad, ARestartUnderLoadDoublesNoWriteAndLosesNoAnsweredOne) {
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
  const std::string good = frameOf(readWordOn(0));
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

TEST(ServerLoad, HostileClientsCostAGoodOneNothing) {
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
    ASSERT_TRUE(isGoodWord(good.call(readWordOn(0)))) << "read " << reads;
    ++reads;
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
}

}  // namespace
}  // namespace SmbusService
