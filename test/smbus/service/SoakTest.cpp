// SPDX-License-Identifier: Apache-2.0
//
// Long operation with random faults, in one thread, on simulated time, from a seed: a mux whose
// channels carry a device of the same address each, the place where a transaction that ends badly
// does harm.
#include <gtest/gtest.h>

#include <cerrno>
#include <random>

#include "smbus/Frame.hpp"
#include "smbus/service/Call.hpp"
#include "test/smbus/service/support/ManualClock.hpp"
#include "test/smbus/service/support/Messages.hpp"

namespace SmbusService {
namespace {

using std::chrono::hours;

constexpr uint8_t kMux = 0x70;
constexpr uint8_t kDevice = 0x50;
constexpr int kTransactions = 100'000;

// A fault of the wire: before the device has taken the byte, or after.
enum class Fault { kNone, kRefused, kLostAfterwards };

class FaultyMuxBus : public Bus {
 public:
  explicit FaultyMuxBus(unsigned seed) : chance_(seed) {}

  int perform(const Operation& operation, std::string& answer) override {
    const Fault fault = nextFault();
    history = history * 31 + operation.command + static_cast<uint32_t>(fault);
    if (fault == Fault::kRefused) {
      releaseFailed = releaseFailed || isRelease(operation);
      return ENXIO;
    }
    if (operation.address == kMux) {
      open = operation.command;
      releaseFailed = releaseFailed && !isRelease(operation);
    } else {
      // Each write carries the channel that it is meant for.
      misdirected += operation.data.empty() || operation.data[0] == open ? 0 : 1;
      writes += operation.data.empty() ? 0 : 1;
    }
    answer.assign(operation.kind == OperationKind::kReadByte ? 1 : 0, static_cast<char>(open));
    return fault == Fault::kLostAfterwards ? ETIMEDOUT : 0;
  }

  uint32_t open = 0;           // the mux's channels
  bool releaseFailed = false;  // the mux never saw the last release
  int misdirected = 0;
  int writes = 0;
  uint64_t history = 0;  // of everything done, in one number

 private:
  static bool isRelease(const Operation& operation) {
    return operation.address == kMux && operation.command == 0;
  }
  Fault nextFault() {
    const auto drawn = chance_() % 20;
    return drawn == 0 ? Fault::kRefused : drawn == 1 ? Fault::kLostAfterwards : Fault::kNone;
  }

  std::mt19937 chance_;
};

class Soak {
 public:
  explicit Soak(unsigned seed) : chance_(seed), bus_(std::make_shared<FaultyMuxBus>(seed)) {
    EXPECT_TRUE(buses_.add(busKey(), bus_, clock_));
  }

  FaultyMuxBus& bus() { return *bus_; }
  int failures() const { return failures_; }
  Duration passed() { return clock_.slept(); }

  // One transaction behind a channel chosen by chance, checked, and a second's pause.
  void step() {
    const auto channel = static_cast<uint8_t>(1U << (chance_() % 8));
    Smbus::TransactionRequest message;
    message.set_retrycount(chance_() % 2);
    addSend(message, kMux, channel);
    addWrite(message, kDevice, 1, std::string(1, static_cast<char>(channel)));
    addRead(message, kDevice, 2, 1);
    addSend(message, kMux, 0);
    ASSERT_EQ(call_.perform(message.SerializeAsString()), Call::Result::kAnswered);
    Smbus::TransactionResponse response;
    ASSERT_TRUE(
        response.ParseFromString(std::string(call_.answer().substr(SmbusFrame::kHeaderSize))));
    failures_ += response.failed() ? 1 : 0;
    if (!response.failed()) {
      EXPECT_EQ(response.response(2).data(), std::string(1, static_cast<char>(channel)));
    }
    EXPECT_TRUE(bus_->open == 0 || bus_->releaseFailed);
    clock_.sleep(std::chrono::seconds(10));
  }

 private:
  class NoLog : public Log {
    void line(Level, std::string_view) override {}
  };

  std::mt19937 chance_;
  ManualClock clock_;
  NoLog log_;
  Limits limits_;
  BusSet buses_;
  std::shared_ptr<FaultyMuxBus> bus_;
  Call call_{Context{buses_, limits_, 0, clock_, log_}};
  int failures_ = 0;
};

TEST(Soak, NoFaultLeavesAChannelOpenOrSendsAWriteAstray) {
  Soak soak(1);
  for (int i = 0; i < kTransactions; ++i) {
    soak.step();
  }
  EXPECT_EQ(soak.bus().misdirected, 0);
  EXPECT_GT(soak.bus().writes, kTransactions / 2);
  EXPECT_GT(soak.failures(), kTransactions / 10);
  EXPECT_GT(soak.passed(), hours(24 * 7));
}

TEST(Soak, TheSameSeedGivesTheSameHistory) {
  constexpr int kSteps = 2000;
  Soak first(7);
  Soak second(7);
  Soak other(8);
  for (int i = 0; i < kSteps; ++i) {
    first.step();
    second.step();
    other.step();
  }
  EXPECT_EQ(first.bus().history, second.bus().history);
  EXPECT_NE(first.bus().history, other.bus().history);
}

}  // namespace
}  // namespace SmbusService
