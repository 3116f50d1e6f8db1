// SPDX-License-Identifier: Apache-2.0
//
// Transactions through muxes on a virtual board that goes wrong at random: whoever answers is the
// device that was meant, and no channel stays open.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "smbus/service/Executor.hpp"
#include "smbus/service/Protocol.hpp"
#include "smbus/service/board/Random.hpp"
#include "smbus/service/board/Scenario.hpp"
#include "test/smbus/service/support/ManualClock.hpp"
#include "test/smbus/service/support/Messages.hpp"

namespace SmbusService {
namespace {

using Board::mix;

constexpr uint8_t kDevice = 0x50;
constexpr std::array<uint8_t, 2> kMuxes = {0x70, 0x71};  // side by side on each bus
constexpr unsigned kChannels = 4;
constexpr uint32_t kBuses = 2;
constexpr unsigned kClients = 8;
constexpr unsigned kCallsOfAClient = 12'500;  // 100,000 in all

// What the device behind a channel has in all its registers.
unsigned valueOf(uint32_t bus, size_t mux, unsigned channel) {
  return 1 + channel + kChannels * (static_cast<unsigned>(mux) + 2 * bus);
}

std::string muxText(uint32_t bus, size_t mux) {
  std::string channels;
  for (unsigned channel = 0; channel < kChannels; ++channel) {
    const std::string value = std::to_string(valueOf(bus, mux, channel));
    channels += std::string(channel == 0 ? "" : ",") + R"({"channel": )" + std::to_string(channel) +
                R"(, "chips": [{"label": "device)" + value +
                R"(", "model": "register", "address": 80, "fill": )" + value + "}]}";
  }
  return R"({"label": "mux)" + std::to_string(bus) + std::to_string(mux) +
         R"(", "model": "pca9546", "address": )" + std::to_string(kMuxes[mux]) +
         R"(, "channels": [)" + channels + "]}";
}

std::string boardText() {
  std::string buses;
  for (uint32_t bus = 0; bus < kBuses; ++bus) {
    buses += std::string(bus == 0 ? "" : ",") + R"({"name": "b)" + std::to_string(bus) +
             R"(", "waitBusTime": true, "chips": [)" + muxText(bus, 0) + "," + muxText(bus, 1) +
             "]}";
  }
  return R"({"seed": 11, "buses": [)" + buses + "]}";
}

class Unwatched : public OperationWatch {
 public:
  void begins(size_t, TimePoint) override {}
  bool ends() override { return true; }
};

class GatingTest : public testing::Test {
 protected:
  GatingTest() {
    board_ = Board::VirtualBoard::build(Config::JsonFile::parse("board.json", boardText()), clock_);
    for (uint32_t bus = 0; bus < kBuses; ++bus) {
      Board::VirtualBus* virtualBus = board_->bus("b" + std::to_string(bus));
      EXPECT_TRUE(buses_.add(busKey(bus), {board_, virtualBus}, realClock_));
    }
  }

  // Faults of devices of every kind, and muxes that are pulled, again and again.
  void breakAtRandom(uint64_t chance) {
    using enum Board::FaultKind;
    static constexpr std::array kOfDevices = {kSilent, kNack, kStop, kSlow};
    Board::FaultOrder order;
    const bool pullsMux = chance % 4 == 0;
    const uint32_t bus = chance / 4 % kBuses;
    const size_t mux = chance / 16 % 2;
    order.kind = pullsMux ? kSilent : kOfDevices[chance / 64 % kOfDevices.size()];
    order.target = pullsMux ? "mux" + std::to_string(bus) + std::to_string(mux)
                            : "device" + std::to_string(valueOf(bus, mux, chance / 256 % 4));
    order.count = 1 + static_cast<uint32_t>(chance / 1024 % 3);
    order.nth = order.kind == kSilent ? 1 : 1 + static_cast<uint32_t>(chance / 4096 % 3);
    order.bytes = static_cast<uint32_t>(chance / 16384 % 3);
    order.delay = Milliseconds(chance / 65536 % 50);
    board_->faults().inject(order, board_->clock().now());
  }

  // One transaction as the library makes it: select, read, release.
  static void readBehind(Smbus::TransactionRequest& message, uint32_t bus, size_t mux,
                         unsigned channel) {
    const RequestOptions at{.bus = kBusNumber + bus};
    addSend(message, kMuxes[mux], static_cast<uint8_t>(1u << channel), at);
    addRead(message, kDevice, 0x10, 1, at);
    addSend(message, kMuxes[mux], 0, at);
  }

  // With the bus held: every mux has its channels closed.
  bool allClosed(uint32_t bus) const {
    for (size_t mux = 0; mux < kMuxes.size(); ++mux) {
      if (board_->peek("mux" + std::to_string(bus) + std::to_string(mux), 0)->value != 0) {
        return false;
      }
    }
    return true;
  }

  void call(uint64_t chance) {
    const uint32_t bus = chance % kBuses;
    const size_t mux = chance / 2 % 2;
    const unsigned channel = chance / 4 % kChannels;
    Smbus::TransactionRequest message;
    readBehind(message, bus, mux, channel);
    Transaction transaction;
    ASSERT_FALSE(translate(message, buses_, Limits{}, transaction));
    BusHold hold;
    ASSERT_EQ(hold.acquire(transaction, realClock_.now() + std::chrono::minutes(2)), nullptr);
    Smbus::TransactionResponse response;
    const Outcome outcome =
        Executor(clock_, watch_)
            .run(transaction, 0, clock_.now() + std::chrono::hours(1), response);
    if (outcome.error == 0) {
      ++succeeded_;
      mixedUp_ +=
          response.response(1).data()[0] == static_cast<char>(valueOf(bus, mux, channel)) ? 0 : 1;
    } else {
      ++failed_;
    }
    leftOpen_ += allClosed(bus) || !closable(bus) ? 0 : 1;
    unselected_ += allClosed(bus) && answers(bus) ? 1 : 0;
  }

  // A mux that is off its bus cannot be closed by it; it closes by coming back.
  bool closable(uint32_t bus) {
    for (const Board::FaultReport& fault : board_->faults().inForce()) {
      if (fault.order.target.starts_with("mux" + std::to_string(bus))) {
        return false;
      }
    }
    return true;
  }

  // Whether any device behind the muxes answers; none of their channels is selected.
  bool answers(uint32_t bus) {
    std::string text;
    return board_->bus("b" + std::to_string(bus))->perform({.address = kDevice}, text) == 0;
  }

  ManualClock clock_;      // the board's
  SystemClock realClock_;  // of those who wait for a bus
  std::shared_ptr<Board::VirtualBoard> board_;
  BusSet buses_;
  Unwatched watch_;
  std::atomic<int> succeeded_{0};
  std::atomic<int> failed_{0};
  std::atomic<int> mixedUp_{0};
  std::atomic<int> leftOpen_{0};
  std::atomic<int> unselected_{0};
};

TEST_F(GatingTest, ManyClientsOnABoardThatGoesWrongReachWhomTheyMean) {
  std::vector<std::thread> clients;
  for (unsigned client = 0; client < kClients; ++client) {
    clients.emplace_back([this, client] {
      for (uint64_t i = 0; i < kCallsOfAClient; ++i) {
        const uint64_t chance = mix(client * uint64_t{kCallsOfAClient} + i);
        if (chance % 16 == 0) {
          breakAtRandom(mix(chance));
        }
        call(chance / 16);
      }
    });
  }
  for (std::thread& client : clients) {
    client.join();
  }
  EXPECT_EQ(succeeded_ + failed_, 100'000);
  EXPECT_GT(succeeded_, 10'000);
  EXPECT_GT(failed_, 1'000);
  EXPECT_EQ(mixedUp_, 0);
  EXPECT_EQ(leftOpen_, 0);
  EXPECT_EQ(unselected_, 0);
}

// What a client sees of a scenario, and when, in words.
class ScenarioRunTest : public testing::Test {
 protected:
  static std::string transcript() {
    ManualClock clock;
    std::shared_ptr<Board::VirtualBoard> board = Board::VirtualBoard::load(HALVORSA_BOARD, clock);
    BusSet buses;
    for (uint32_t bus = 0; bus < 2; ++bus) {
      Board::VirtualBus* virtualBus = board->bus("scd0.accel0.bus" + std::to_string(bus));
      EXPECT_TRUE(buses.add(busKey(bus), {board, virtualBus}, clock));
    }
    board->scenarios().start(
        Board::readScenario(Config::JsonFile::load(HALVORSA_SCENARIO), *board));
    std::string text;
    for (uint64_t i = 0; i < 20'000; ++i) {
      text += callOf(i, buses, clock);
      clock.sleep(std::chrono::microseconds(mix(i) % 10'000));
    }
    EXPECT_FALSE(board->scenarios().progress()->running);
    return text;
  }

  // A read of the fan controller, or of a supply's memory behind a mux.
  static std::string callOf(uint64_t i, const BusSet& buses, Clock& clock) {
    constexpr uint8_t kFans = 0x4E;
    Smbus::TransactionRequest message;
    if (i % 2 == 0) {
      addRead(message, kFans, 0x20 + static_cast<uint32_t>(mix(i) % 0x28), 2);
    } else {
      const RequestOptions at{.bus = kBusNumber + 1};
      addSend(message, 0x70, static_cast<uint8_t>(2u << (mix(i) % 2)), at);
      addRead(message, kDevice, 0, 5, at);
      addSend(message, 0x70, 0, at);
    }
    Transaction transaction;
    EXPECT_FALSE(translate(message, buses, Limits{}, transaction));
    Unwatched watch;
    Smbus::TransactionResponse response;
    const Outcome outcome =
        Executor(clock, watch).run(transaction, 1, clock.now() + std::chrono::hours(1), response);
    return std::to_string(clock.now().time_since_epoch().count()) + " " +
           std::to_string(outcome.error) + "@" + std::to_string(outcome.step) + " " +
           response.SerializeAsString() + "\n";
  }
};

TEST_F(ScenarioRunTest, AScenarioGivesTheSameTransactionsAndReadingsTwice) {
  const std::string first = transcript();
  EXPECT_NE(first.find("6@0"), std::string::npos) << "the mux was gone for a while (ENXIO)";
  EXPECT_EQ(first, transcript());
}

}  // namespace
}  // namespace SmbusService
