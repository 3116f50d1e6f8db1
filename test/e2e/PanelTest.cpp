// SPDX-License-Identifier: Apache-2.0
//
// The front panel's drivers by name, from the description to what the simulation's files hold.
#include <gmock/gmock.h>

#include <vector>

#include "test/e2e/ChipBoard.hpp"
#include "test/e2e/Library.hpp"
#include "test/e2e/Time.hpp"

using testing::ElementsAre;
using testing::IsSupersetOf;

namespace E2e {

namespace {

constexpr Chip kPins = {1, "GenericPCA9555"};
constexpr Chip kTrays = {2, "HalvorsaPCA9555"};
constexpr Chip kSupplies = {3, "HalvPsuPCA9555"};
constexpr Chip kSfpPins = {4, "HalvorsaSFP"};
constexpr Chip kQsfpPins = {5, "HalvSPCA9555"};
constexpr Chip kMoreQsfpPins = {6, "HalvYQSFP"};
constexpr Chip kQsfps = {7, "HalvQCPLD"};
constexpr Chip kSfps = {8, "HalvYCPLD"};
constexpr Chip kPortLeds = {9, "HalvCLedCPLD"};

class Panel : public ChipBoard {
 protected:
  Panel()
      : ChipBoard({kPins, kTrays, kSupplies, kSfpPins, kQsfpPins, kMoreQsfpPins, kQsfps, kSfps,
                   kPortLeds}) {}

  static pl_led* led(const Chip& chip, const std::string& args) {
    return LIB(pl_led_add)(text(chip, args).c_str());
  }
  static pl_gpio* line(const Chip& chip, const std::string& args) {
    return LIB(pl_gpio_add)(text(chip, args).c_str());
  }
  static pl_xcvr* cage(const Chip& chip, const char* type, unsigned id) {
    const std::string port = R"("type": ")" + std::string(type) + R"(", "id": )";
    return LIB(pl_xcvr_add)(text(chip, port + std::to_string(id) + kDirections).c_str());
  }
  static pl_slot* tray(int id) {
    return LIB(pl_slot_add)(
        text(kTrays, R"("fanId": )" + std::to_string(id) +
                         R"(, "fanFdl": "{modelName} {airflowDirection} {maxRpm}", "rpmF2B": 11000,
                            "rpmB2F": 9000, "modelName": "T1")" +
                         kDirections)
            .c_str());
  }
  static constexpr const char* kDirections = R"(, "bank-io-0": 255, "bank-io-1": 15)";
};

int read(pl_xcvr* xcvr, pl_status (*get)(pl_xcvr*, int*)) {
  int value = -1;
  EXPECT_EQ(get(xcvr, &value), PL_STATUS_OK);
  return value;
}

// Trays.

TEST_F(Panel, TraysComeWithTheirDescriptors) {
  EXPECT_EQ(ask(tray(1)), std::pair(0, std::string("T1 backToFrontAirflow 9000")));
  EXPECT_EQ(ask(tray(4)), std::pair(1, std::string("none")));
  EXPECT_EQ(registers(kTrays), "8b0f8f\n");
}

TEST_F(Panel, TrayOfTheOtherAirflowHasAnotherDescriptor) {
  pl_slot* first = tray(1);
  put(kTrays, 2, "0e");
  EXPECT_EQ(ask(first), std::pair(0, std::string("T1 frontToBackAirflow 11000")));
}

TEST_F(Panel, TrayThatIsPulledIsGone) {
  pl_slot* first = tray(1);
  put(kTrays, 0, "9b");
  EXPECT_EQ(ask(first), std::pair(1, std::string("none")));
}

TEST_F(Panel, TrayThatIsPulledComesBackWithTheOtherAirflow) {
  pl_slot* second = tray(2);
  EXPECT_EQ(ask(second), std::pair(0, std::string("T1 backToFrontAirflow 9000")));
  put(kTrays, 0, "ab");
  EXPECT_EQ(ask(second).first, PL_STATUS_OK) << "read less than 2 s ago";
  letPass(std::chrono::seconds(3));
  EXPECT_EQ(ask(second), std::pair(1, std::string("none")));
  put(kTrays, 0, "8b0d");
  letPass(std::chrono::seconds(3));
  EXPECT_EQ(ask(second), std::pair(0, std::string("T1 frontToBackAirflow 11000")));
}

// LEDs.

TEST_F(Panel, LedsLightUp) {
  pl_led* trayLed = led(kTrays, R"("id": 1)" + std::string(kDirections));
  pl_led* psuLed = led(kSupplies, R"("id": 1, "type": "psu")");
  pl_led* fanLed = led(kSupplies, R"("id": 2, "type": "multifan")");
  EXPECT_EQ(trayLed->ops->set_light_setting(trayLed, PL_LED_BAD), PL_STATUS_OK);
  EXPECT_EQ(registers(kTrays), "8b0f9f\n");
  EXPECT_EQ(psuLed->ops->set_light_setting(psuLed, PL_LED_GOOD), PL_STATUS_OK);
  EXPECT_EQ(registers(kSupplies), "3444\n");
  EXPECT_EQ(fanLed->ops->set_light_setting(fanLed, PL_LED_BAD), PL_STATUS_OK);
  EXPECT_EQ(registers(kSupplies), "3484\n");
}

TEST_F(Panel, BeaconsOfAllLedsBlinkInStepForTenTicks) {
  std::vector<pl_led*> leds;
  for (const char* id : {"1", "2", "3", "4"}) {
    leds.push_back(led(kTrays, R"("id": )" + std::string(id) + kDirections));
  }
  for (const char* args : {R"("id": 1, "type": "psu")", R"("id": 2, "type": "psu")",
                           R"("id": 1, "type": "multifan")"}) {
    leds.push_back(led(kSupplies, args));
  }
  for (pl_led* each : leds) {
    EXPECT_EQ(each->ops->set_light_setting(each, PL_LED_BEACON), PL_STATUS_OK);
  }
  for (int tick = 0; tick < 10; ++tick) {
    fireTimer();
    EXPECT_EQ(registers(kTrays), tick % 2 == 1 ? "8b0fff\n" : "8b0f0f\n") << tick;
    EXPECT_EQ(registers(kSupplies), tick % 2 == 1 ? "3454\n" : "3400\n") << tick;
  }
}

TEST_F(Panel, LedThatTheChipDoesNotHaveIsRefused) {
  pl_led* fifth = led(kTrays, R"("id": 5)" + std::string(kDirections));
  EXPECT_EQ(fifth->ops->set_light_setting(fifth, PL_LED_BAD), PL_STATUS_UNSUPPORTED);
  EXPECT_EQ(registers(kTrays), "8b0f8f\n");
}

TEST_F(Panel, PortLedsAreSwitchedWhenTheirChipIsFirstUsed) {
  ASSERT_NE(line(kPortLeds, R"("register": 6, "bitpos": 0)"), nullptr);
  EXPECT_THAT(takeTexts(0), IsSupersetOf({"Successfully disable QSFP Port LEDs",
                                          "Successfully enable QSFP Port LEDs"}));
}

// Cages.

TEST_F(Panel, SfpCagesOnAnExpander) {
  pl_xcvr* first = cage(kSfpPins, "sfp", 1);
  pl_xcvr* second = cage(kSfpPins, "sfp+", 2);
  const pl_sfp_ops& ops = first->ops->kind.sfp;
  EXPECT_EQ(ops.get_presence(first), 1);
  EXPECT_EQ(read(first, ops.get_rx_los), 0);
  EXPECT_EQ(ops.get_presence(second), 0);
  EXPECT_EQ(read(second, ops.get_rx_los), 1);
  EXPECT_EQ(ops.set_tx_disable(second, 1), PL_STATUS_OK);
  EXPECT_EQ(registers(kSfpPins), "2121212140000000\n");
}

TEST_F(Panel, QsfpCagesOnAPca9555) {
  pl_xcvr* first = cage(kQsfpPins, "qsfp", 49);
  const pl_qsfp_ops& ops = first->ops->kind.qsfp;
  EXPECT_EQ(ops.get_presence(first), 1);
  EXPECT_EQ(read(first, ops.get_reset), 0);
  EXPECT_EQ(ops.set_reset(first, 1), PL_STATUS_OK);
  EXPECT_EQ(ops.set_lp_mode(first, 1), PL_STATUS_OK);
  EXPECT_EQ(registers(kQsfpPins), "37371811\n");
}

TEST_F(Panel, QsfpCagesOnAPca9698) {
  pl_xcvr* last = cage(kMoreQsfpPins, "qsfp+", 56);
  const pl_qsfp_ops& ops = last->ops->kind.qsfp;
  EXPECT_EQ(ops.get_presence(last), 0);
  EXPECT_EQ(ops.set_reset(last, 0), PL_STATUS_OK);
  EXPECT_EQ(registers(kMoreQsfpPins), "2121212100000010\n");
}

TEST_F(Panel, QsfpInsertedIntoACpldsCageIsSeenWithTheNextTick) {
  pl_xcvr* third = cage(kQsfps, "qsfp", 3);
  const pl_qsfp_ops& ops = third->ops->kind.qsfp;
  EXPECT_EQ(ops.get_presence(third), 0);
  put(kQsfps, 6, "20");
  EXPECT_EQ(ops.get_presence(third), 0);
  fireTimer();
  EXPECT_EQ(ops.get_presence(third), 1);
  EXPECT_THAT(Doubles::host().timer().intervals, ElementsAre(1000u, 1000u));
}

TEST_F(Panel, SfpCagesOnACpldWithoutSimulatedRegistersAreEmpty) {
  pl_xcvr* last = cage(kSfps, "sfp", 48);
  const pl_sfp_ops& ops = last->ops->kind.sfp;
  EXPECT_EQ(ops.get_presence(last), 0);
  EXPECT_EQ(ops.set_tx_disable(last, 1), PL_STATUS_OK);
  EXPECT_EQ(read(last, ops.get_tx_disable), 1);
}

// Lines.

TEST_F(Panel, LinesOfAnExpanderWithoutSimulatedRegistersReadAs0) {
  pl_gpio* pin = line(kPins, R"("bank": 1, "bit": 7)" + std::string(kDirections));
  unsigned level = 7;
  EXPECT_EQ(pin->ops->bit_set(pin), PL_STATUS_OK);
  EXPECT_EQ(pin->ops->bit_read(pin, &level), PL_STATUS_OK);
  EXPECT_EQ(level, 0u);
}

TEST_F(Panel, LineOfABankThatTheChipDoesNotHaveIsRefused) {
  pl_gpio* pin = line(kPins, R"("bank": 2, "bit": 0)" + std::string(kDirections));
  unsigned level = 7;
  EXPECT_EQ(pin->ops->bit_set(pin), PL_STATUS_UNSUPPORTED);
  EXPECT_EQ(pin->ops->bit_clear(pin), PL_STATUS_UNSUPPORTED);
  EXPECT_EQ(pin->ops->bit_read(pin, &level), PL_STATUS_UNSUPPORTED);
  EXPECT_EQ(level, 0u);
}

}  // namespace

}  // namespace E2e
