// SPDX-License-Identifier: Apache-2.0
//
// Buses used at the same time, with chips on nets between them and events from outside.
#include <array>
#include <atomic>
#include <thread>

#include "test/smbus/service/board/BoardFixture.hpp"

namespace SmbusService::Board {
namespace {

constexpr uint8_t kSupply = 0x58;
constexpr uint8_t kPins = 0x20;
constexpr int kRounds = 5000;

class BoardThreadsTest : public BoardFixture {
 protected:
  BoardThreadsTest() {
    load(R"({
      'buses': [
        {'name': 'main', 'chips': [{'label': 'pins', 'model': 'pca9555', 'address': '0x20'}]},
        {'name': 'power', 'chips': [
          {'label': 'psu', 'model': 'pmbus', 'address': '0x58', 'outputs': [{}],
           'fans': [{'maxRpm': 9000}], 'rises': [10]}]}],
      'nets': {
        'ac': {'pins': ['psu:ac', 'pins:IO0_0']},
        'good': {'level': false, 'pins': ['psu:power_good', 'pins:IO0_1']},
        'led': {'level': false, 'pins': ['pins:IO1_0']}},
      'events': {'ac off': {'ac': 0}, 'ac on': {'ac': 1}}
    })");
  }

  static int readWordOf(VirtualBus& bus, uint8_t address, uint8_t command) {
    std::string text;
    return bus.perform({.kind = OperationKind::kReadWord, .address = address, .command = command},
                       text);
  }
  static int writeByteOf(VirtualBus& bus, uint8_t address, uint8_t command, uint8_t value) {
    std::string text;
    const std::array data = {value};
    return bus.perform(
        {.kind = OperationKind::kWriteByte, .address = address, .command = command, .data = data},
        text);
  }
};

TEST_F(BoardThreadsTest, BusesNetsAndEventsGoOnBesideEachOther) {
  std::atomic<int> failures{0};
  const auto repeat = [&](auto action) {
    return std::thread([&failures, action] {
      for (int i = 0; i < kRounds; ++i) {
        failures += action(i) ? 0 : 1;
      }
    });
  };
  VirtualBus& power = *board->bus("power");
  std::array threads = {
      repeat([&](int) { return readWordOf(power, kSupply, 0x79) == 0; }),
      repeat([&](int i) {
        return writeByteOf(main(), kPins, 7, i % 2 == 0 ? 0xFE : 0xFF) == 0 &&
               readWordOf(main(), kPins, 0) == 0;
      }),
      repeat([&](int i) { return board->happen(i % 2 == 0 ? "ac off" : "ac on"); }),
      repeat([&](int) { return board->get("psu:fan1.rpm") && board->set("psu:vin", 200) == 0; }),
  };
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(failures, 0);
  EXPECT_EQ(board->get("good"), 1) << "the last event was \"ac on\"";
  EXPECT_EQ(power.counts().all.total().transfers, uint64_t{kRounds});
}

}  // namespace
}  // namespace SmbusService::Board
