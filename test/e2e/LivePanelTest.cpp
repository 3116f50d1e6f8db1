// SPDX-License-Identifier: Apache-2.0
//
// The front panel on the whole production path: the built library, the service, and the Halvorsa
// board in its virtual form, to which things happen.
#include <gmock/gmock.h>

#include <string>
#include <utility>
#include <vector>

#include "test/e2e/BoardFile.hpp"
#include "test/e2e/Library.hpp"
#include "test/e2e/Time.hpp"
#include "test/support/BoardService.hpp"
#include "test/support/Host.hpp"
#include "test/support/Presence.hpp"

using Doubles::host;
using std::chrono::seconds;

namespace E2e {

namespace {

class LivePanel : public testing::Test {
 protected:
  LivePanel() { EXPECT_EQ(LIB(pl_system_init)(board.topology().c_str()), PL_STATUS_OK); }

  pl_xcvr* port(const char* name) {
    return LIB(pl_xcvr_add)(board.description("xcvrs", name).c_str());
  }
  pl_slot* tray(const char* name) {
    return LIB(pl_slot_add)(board.description("slots", name).c_str());
  }
  pl_led* led(const char* name) { return LIB(pl_led_add)(board.description("leds", name).c_str()); }

  void happen(const char* event) { EXPECT_TRUE(service.board().happen(event)) << event; }
  bool lit(const std::string& lamp) { return service.board().get(lamp) == 1; }

  // One of the host's seconds: whatever is armed fires.
  static void tick() {
    letPass(seconds(1));
    for (auto& [handle, timer] : host().timers) {
      if (timer.armed) {
        host().fire(timer);
      }
    }
  }

  // Transactions of the library since the last call.
  uint64_t transactions() {
    return service.transactions() - std::exchange(answered_, service.transactions());
  }
  // Transfers on the buses since the last call.
  uint64_t transfers() {
    return service.count().transfers - std::exchange(seen_, service.count().transfers);
  }

  const BoardFile board{NIMBO_BOARDS "/halvorsa/board.json"};
  Doubles::BoardService service{NIMBO_BOARDS "/halvorsa/virtual-board.json"};

 private:
  uint64_t answered_ = 0;
  uint64_t seen_ = 0;
};

int read(pl_xcvr* xcvr, pl_status (*get)(pl_xcvr*, int*)) {
  int value = -1;
  EXPECT_EQ(get(xcvr, &value), PL_STATUS_OK);
  return value;
}

Doubles::Presence ask(pl_slot* slot) {
  return Doubles::presenceBy(
      [&](char** descriptor) { return slot->ops->get_presence(slot, descriptor); });
}

constexpr const char* kBackToFront = "model=HT-400 airflow=backToFrontAirflow maxRpm=21000";
constexpr const char* kFrontToBack = "model=HT-400 airflow=frontToBackAirflow maxRpm=23000";

TEST_F(LivePanel, SfpIsSeenWithinASecondOfItsInsertion) {
  pl_xcvr* seventh = port("sfp7");
  const pl_sfp_ops& ops = seventh->ops->kind.sfp;
  EXPECT_EQ(ops.get_presence(seventh), 0);
  happen("port 7 insert");
  tick();
  EXPECT_EQ(ops.get_presence(seventh), 1);
  EXPECT_EQ(read(seventh, ops.get_rx_los), 0);
  EXPECT_EQ(read(seventh, ops.get_tx_fault), 0);
  happen("port 7 los 1");
  happen("port 7 fault 1");
  tick();
  EXPECT_EQ(read(seventh, ops.get_rx_los), 1);
  EXPECT_EQ(read(seventh, ops.get_tx_fault), 1);
  happen("port 7 remove");
  tick();
  EXPECT_EQ(ops.get_presence(seventh), 0);
}

TEST_F(LivePanel, TransmitterIsSwitchedAtItsOwnPort) {
  pl_xcvr* last = port("sfp48");
  const pl_sfp_ops& ops = last->ops->kind.sfp;
  EXPECT_EQ(ops.set_tx_disable(last, 1), PL_STATUS_OK);
  EXPECT_TRUE(lit("port 48 tx off"));
  EXPECT_FALSE(lit("port 47 tx off"));
  EXPECT_FALSE(lit("port 16 tx off")) << "the same bits of another CPLD";
  tick();
  EXPECT_EQ(read(last, ops.get_tx_disable), 1);
  EXPECT_EQ(read(last, ops.get_tx_fault), 1) << "as before";
}

TEST_F(LivePanel, QsfpOfTheCpldIsWokenAndReset) {
  pl_xcvr* first = port("qsfp55");
  const pl_qsfp_ops& ops = first->ops->kind.qsfp;
  EXPECT_EQ(ops.get_presence(first), 1);
  EXPECT_EQ(read(first, ops.get_lp_mode), 1);
  EXPECT_EQ(ops.set_lp_mode(first, 0), PL_STATUS_OK);
  EXPECT_FALSE(lit("port 55 low power"));
  EXPECT_EQ(ops.set_reset(first, 1), PL_STATUS_OK);
  EXPECT_TRUE(lit("port 55 reset"));
  EXPECT_TRUE(lit("port 56 low power"));
  happen("port 55 interrupt 1");
  tick();
  EXPECT_EQ(read(first, ops.get_interrupt), 1);
  EXPECT_EQ(read(first, ops.get_reset), 1);
}

TEST_F(LivePanel, QsfpOfAnExpanderIsSeenOnceItsInputsAreReadAnew) {
  pl_xcvr* last = port("qsfp54");
  const pl_qsfp_ops& ops = last->ops->kind.qsfp;
  EXPECT_EQ(ops.get_presence(last), 0);
  happen("port 54 insert");
  EXPECT_EQ(ops.get_presence(last), 0) << "read less than 2 s ago";
  letPass(seconds(3));
  EXPECT_EQ(ops.get_presence(last), 1);
  EXPECT_EQ(ops.set_lp_mode(last, 0), PL_STATUS_OK);
  EXPECT_EQ(ops.set_reset(last, 1), PL_STATUS_OK);
  EXPECT_FALSE(lit("port 54 low power"));
  EXPECT_TRUE(lit("port 54 reset"));
  EXPECT_FALSE(lit("port 53 reset"));
}

TEST_F(LivePanel, TrayThatIsPulledComesBackWithTheOtherAirflow) {
  pl_slot* second = tray("tray2");
  EXPECT_EQ(ask(second), Doubles::presence(PL_STATUS_OK, kBackToFront));
  happen("tray 2 pull");
  letPass(seconds(3));
  EXPECT_EQ(ask(second), Doubles::presence(PL_STATUS_EMPTY));
  happen("tray 2 insert front-to-back");
  letPass(seconds(3));
  EXPECT_EQ(ask(second), Doubles::presence(PL_STATUS_OK, kFrontToBack));
}

TEST_F(LivePanel, LedsShowTheirSettings) {
  pl_led* supply = led("psu2");
  pl_led* trayLed = led("tray3");
  EXPECT_EQ(supply->ops->set_light_setting(supply, PL_LED_GOOD), PL_STATUS_OK);
  EXPECT_TRUE(lit("psu 2 led green"));
  EXPECT_EQ(supply->ops->set_light_setting(supply, PL_LED_BAD), PL_STATUS_OK);
  EXPECT_FALSE(lit("psu 2 led green"));
  EXPECT_TRUE(lit("psu 2 led red"));
  EXPECT_EQ(trayLed->ops->set_light_setting(trayLed, PL_LED_GOOD), PL_STATUS_OK);
  EXPECT_FALSE(lit("tray 3 led"));
  EXPECT_EQ(trayLed->ops->set_light_setting(trayLed, PL_LED_WARNING), PL_STATUS_OK);
  EXPECT_TRUE(lit("tray 3 led"));
}

TEST_F(LivePanel, BeaconsOfAllLedsBlinkInStepForTenTicks) {
  const std::vector<std::string> lamps = {"tray 1 led",   "tray 2 led",      "tray 3 led",
                                          "tray 4 led",   "psu 1 led green", "psu 2 led green",
                                          "fan led green"};
  for (const char* name : {"tray1", "tray2", "tray3", "tray4", "psu1", "psu2", "fan-status"}) {
    pl_led* each = led(name);
    EXPECT_EQ(each->ops->set_light_setting(each, PL_LED_BEACON), PL_STATUS_OK) << name;
  }
  for (int tick = 0; tick < 10; ++tick) {
    LivePanel::tick();
    for (const std::string& lamp : lamps) {
      EXPECT_EQ(lit(lamp), tick % 2 == 1) << lamp << " at tick " << tick;
    }
  }
}

TEST_F(LivePanel, LinesOfAnExpander) {
  pl_gpio* button = LIB(pl_gpio_add)(board.description("gpios", "locate-button").c_str());
  pl_gpio* enable = LIB(pl_gpio_add)(board.description("gpios", "usb-enable").c_str());
  unsigned level = 7;
  EXPECT_EQ(button->ops->bit_read(button, &level), PL_STATUS_OK);
  EXPECT_EQ(level, 1u);
  happen("locate button press");
  letPass(seconds(3));
  EXPECT_EQ(button->ops->bit_read(button, &level), PL_STATUS_OK);
  EXPECT_EQ(level, 0u);
  EXPECT_EQ(enable->ops->bit_clear(enable), PL_STATUS_OK);
  EXPECT_FALSE(lit("usb enable"));
  EXPECT_EQ(enable->ops->bit_set(enable), PL_STATUS_OK);
  EXPECT_TRUE(lit("usb enable"));
}

TEST_F(LivePanel, PortLedsAreSwitchedAtStart) {
  ASSERT_NE(LIB(pl_gpio_add)(board.description("gpios", "port-led-test").c_str()), nullptr);
  EXPECT_TRUE(host().traced(0, "Successfully enable QSFP Port LEDs"));
  std::string answer;
  ASSERT_EQ(
      service.board()
          .bus("scd0.accel0.bus2")
          ->perform({.kind = SmbusService::OperationKind::kReadByte, .address = 0x64, .command = 6},
                    answer),
      0);
  EXPECT_EQ(answer, "\xFF");
}

// What things cost.

TEST_F(LivePanel, PollOfSixteenPortsIsOneTransactionOfFourReads) {
  ASSERT_NE(port("sfp1"), nullptr);
  ASSERT_NE(port("sfp16"), nullptr);
  transactions();
  transfers();
  tick();
  EXPECT_EQ(transactions(), 1u);
  EXPECT_EQ(transfers(), 4u);
}

TEST_F(LivePanel, QueryOfACpldPortCostsNoTransaction) {
  pl_xcvr* seventh = port("sfp7");
  const pl_sfp_ops& ops = seventh->ops->kind.sfp;
  transactions();
  transfers();
  EXPECT_EQ(ops.get_presence(seventh), 0);
  EXPECT_EQ(read(seventh, ops.get_rx_los), 1);
  EXPECT_EQ(read(seventh, ops.get_tx_fault), 1);
  EXPECT_EQ(read(seventh, ops.get_tx_disable), 0);
  EXPECT_EQ(transactions(), 0u);
  EXPECT_EQ(transfers(), 0u);
}

TEST_F(LivePanel, CommandToACpldPortIsOneWrite) {
  pl_xcvr* seventh = port("sfp7");
  transactions();
  transfers();
  EXPECT_EQ(seventh->ops->kind.sfp.set_tx_disable(seventh, 1), PL_STATUS_OK);
  EXPECT_EQ(transactions(), 1u);
  EXPECT_EQ(transfers(), 1u);
}

TEST_F(LivePanel, SettingAnLedIsOneReadAndOneWrite) {
  for (const char* name : {"tray1", "psu1", "fan-status"}) {
    pl_led* each = led(name);
    transactions();
    transfers();
    EXPECT_EQ(each->ops->set_light_setting(each, PL_LED_BAD), PL_STATUS_OK) << name;
    EXPECT_EQ(transactions(), 2u) << name;
    EXPECT_EQ(transfers(), 2u) << name;
  }
}

TEST_F(LivePanel, ExpanderIsReadOnceForAllOfABanksSignals) {
  pl_xcvr* first = port("qsfp49");
  pl_xcvr* second = port("qsfp50");
  transactions();
  for (pl_xcvr* each : {first, second}) {
    const pl_qsfp_ops& ops = each->ops->kind.qsfp;
    EXPECT_EQ(ops.get_presence(each), each == first ? 1 : 0);
    EXPECT_EQ(read(each, ops.get_lp_mode), 1);
    EXPECT_EQ(read(each, ops.get_interrupt), 0);
  }
  EXPECT_EQ(transactions(), 1u);
}

}  // namespace

}  // namespace E2e
