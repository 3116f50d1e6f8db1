// SPDX-License-Identifier: Apache-2.0
//
// What happens at the Halvorsa board's front panel, and every register that shows it.
#include <gtest/gtest.h>

#include <cerrno>

#include "test/smbus/service/board/BoardFixture.hpp"

namespace SmbusService::Board {
namespace {

constexpr uint8_t kSfpCpld[] = {0x60, 0x61, 0x62};
constexpr uint8_t kQsfpCpld = 0x63;
constexpr uint8_t kFanPca = 0x20;
constexpr uint8_t kPsuPca = 0x21;
constexpr uint8_t kQsfpPca[] = {0x22, 0x23};
constexpr uint8_t kPanelPca = 0x24;

class FrontPanelTest : public BoardFixture {
 protected:
  FrontPanelTest() { board = VirtualBoard::load(HALVORSA_BOARD, clock); }

  unsigned cpld(uint8_t address, uint8_t number) {
    const Bytes bytes = ask("scd0.accel0.bus2", OperationKind::kReadWord, address, number);
    return bytes.size() == 2 ? bytes[0] * 256u + bytes[1] : 0x10000;
  }
  unsigned pins(uint8_t address, uint8_t bank) {
    const Bytes bytes = ask("scd0.accel0.bus3", OperationKind::kReadByte, address, bank);
    return bytes.size() == 1 ? bytes[0] : 0x100u;
  }
  void put(const char* bus, uint8_t address, uint8_t number, const Bytes& data) {
    std::string nothing;
    EXPECT_EQ(board->bus(bus)->perform({.kind = OperationKind::kWriteI2cBlock,
                                        .address = address,
                                        .command = number,
                                        .data = data},
                                       nothing),
              0);
  }
  void happen(const std::string& event) { EXPECT_TRUE(board->happen(event)) << event; }
  double fan(int number) {
    return board->get("PSoC:fan" + std::to_string(number) + ".stalled").value_or(-1);
  }

 private:
  Bytes ask(const char* bus, OperationKind kind, uint8_t address, uint8_t number) {
    std::string text;
    EXPECT_EQ(board->bus(bus)->perform({.kind = kind, .address = address, .command = number}, text),
              0);
    return {text.begin(), text.end()};
  }
};

// An SFP port's register and nibble, counted from the left: four ports a register, 16 a CPLD.
struct Port {
  int number;
  int cpld;
  uint8_t reg;
  unsigned shift;
};
constexpr Port kPorts[] = {{4, 0, 1, 0},  {5, 0, 2, 12}, {7, 0, 2, 4},   {16, 0, 4, 0},
                           {18, 1, 1, 8}, {32, 1, 4, 0}, {33, 2, 1, 12}, {47, 2, 4, 4}};

TEST_F(FrontPanelTest, AnSfpPortsSignalsAreInItsNibble) {
  for (const Port& port : kPorts) {
    const std::string name = "port " + std::to_string(port.number);
    const auto nibble = [&] { return cpld(kSfpCpld[port.cpld], port.reg) >> port.shift & 0xF; };
    EXPECT_EQ(nibble(), 0x9u) << name << ": empty, pulled up";
    happen(name + " insert");
    EXPECT_EQ(nibble(), 0x2u) << name;
    happen(name + " los 1");
    EXPECT_EQ(nibble(), 0x3u) << name;
    happen(name + " fault 1");
    EXPECT_EQ(nibble(), 0xBu) << name;
    happen(name + " los 0");
    happen(name + " fault 0");
    EXPECT_EQ(nibble(), 0x2u) << name;
    happen(name + " remove");
    EXPECT_EQ(nibble(), 0x9u) << name;
  }
}

TEST_F(FrontPanelTest, AnEventLeavesTheOtherPortsAlone) {
  const unsigned before = cpld(kSfpCpld[0], 2);
  const unsigned first = cpld(kSfpCpld[0], 1);
  happen("port 7 insert");
  EXPECT_EQ(cpld(kSfpCpld[0], 2) ^ before, 0x00B0u);
  EXPECT_EQ(cpld(kSfpCpld[0], 1), first);
}

TEST_F(FrontPanelTest, EveryPortHasItsEvents) {
  for (int port = 1; port <= 62; ++port) {
    happen("port " + std::to_string(port) + " insert");
    happen("port " + std::to_string(port) + " remove");
  }
}

TEST_F(FrontPanelTest, TxDisableIsWhatTheHostWrote) {
  happen("port 8 insert");
  put("scd0.accel0.bus2", kSfpCpld[0], 2, {0x00, 0x04});
  EXPECT_EQ(cpld(kSfpCpld[0], 2), 0x9996u) << "what is an input stays as the port has it";
  EXPECT_EQ(board->get("port 8 tx off"), 1);
  EXPECT_EQ(board->get("port 7 tx off"), 0);
}

TEST_F(FrontPanelTest, AQsfpPortOfTheCpldStartsInLowPower) {
  EXPECT_EQ(cpld(kQsfpCpld, 2), 0xDDDDu);
  happen("port 62 insert");
  EXPECT_EQ(cpld(kQsfpCpld, 2), 0xDDDFu);
  happen("port 62 interrupt 1");
  EXPECT_EQ(cpld(kQsfpCpld, 2), 0xDDDBu);
  put("scd0.accel0.bus2", kQsfpCpld, 2, {0x99, 0x90});
  EXPECT_EQ(board->get("port 62 low power"), 0);
  EXPECT_EQ(board->get("port 62 reset"), 1);
  happen("port 62 remove");
  EXPECT_EQ(cpld(kQsfpCpld, 2), 0xDDD4u);
}

TEST_F(FrontPanelTest, AQsfpPortOfAnExpanderHasFourPins) {
  put("scd0.accel0.bus3", kQsfpPca[1], 6, {0x66});
  EXPECT_EQ(pins(kQsfpPca[1], 0), 0xBBu) << "empty, not in reset, low power";
  happen("port 54 insert");
  EXPECT_EQ(pins(kQsfpPca[1], 0), 0xFBu);
  happen("port 53 interrupt 1");
  EXPECT_EQ(pins(kQsfpPca[1], 0), 0xF9u);
  put("scd0.accel0.bus3", kQsfpPca[1], 2, {0x6F});
  EXPECT_EQ(pins(kQsfpPca[1], 0), 0x69u);
  EXPECT_EQ(board->get("port 54 reset"), 1);
  EXPECT_EQ(board->get("port 54 low power"), 0);
  EXPECT_EQ(board->get("port 53 reset"), 0);
}

TEST_F(FrontPanelTest, AModulesMemoryComesAndGoesWithIt) {
  std::string text;
  const auto ask = [&] {
    board->bus("scd0.accel0.bus1")
        ->perform({.kind = OperationKind::kSendByte, .address = 0x70, .command = 0x08}, text);
    board->bus("scd0.accel0.bus1")
        ->perform({.kind = OperationKind::kSendByte, .address = 0x71, .command = 0x02}, text);
    return board->bus("scd0.accel0.bus1")
        ->perform({.kind = OperationKind::kReadByte, .address = 0x50, .command = 0}, text);
  };
  EXPECT_EQ(ask(), ENXIO);
  happen("port 50 insert");
  EXPECT_EQ(ask(), 0);
  happen("port 50 remove");
  EXPECT_EQ(ask(), ENXIO);
}

TEST_F(FrontPanelTest, ATrayThatIsPulledTakesItsFanAlong) {
  EXPECT_EQ(pins(kFanPca, 0), 0x8Fu) << "tray 4 is not there";
  EXPECT_EQ(pins(kFanPca, 1), 0x0Fu) << "all back to front, LEDs dark";
  EXPECT_EQ(fan(2), 0);
  happen("tray 2 pull");
  EXPECT_EQ(pins(kFanPca, 0), 0xAFu);
  EXPECT_EQ(fan(2), 1);
  happen("tray 2 insert front-to-back");
  EXPECT_EQ(pins(kFanPca, 0), 0x8Fu);
  EXPECT_EQ(pins(kFanPca, 1), 0x0Du);
  EXPECT_EQ(fan(2), 0);
}

TEST_F(FrontPanelTest, ASupplyWithoutAcGivesNoPower) {
  EXPECT_EQ(pins(kPsuPca, 0), 0xFFu);
  happen("psu 1 ac off");
  EXPECT_EQ(pins(kPsuPca, 0), 0xBDu);
  happen("psu 2 fail");
  EXPECT_EQ(pins(kPsuPca, 0), 0xADu);
  happen("psu 1 ac on");
  EXPECT_EQ(pins(kPsuPca, 0), 0xEFu);
}

TEST_F(FrontPanelTest, LedsAreNetsOfTheBoard) {
  put("scd0.accel0.bus3", kFanPca, 3, {0x2F});
  put("scd0.accel0.bus3", kFanPca, 7, {0x0F});
  EXPECT_EQ(board->get("tray 1 led"), 0);
  EXPECT_EQ(board->get("tray 2 led"), 1);
  put("scd0.accel0.bus3", kPsuPca, 3, {0x58});
  put("scd0.accel0.bus3", kPsuPca, 7, {0x00});
  EXPECT_EQ(board->get("psu 1 led red"), 1);
  EXPECT_EQ(board->get("psu 1 led green"), 0);
  EXPECT_EQ(board->get("psu 2 led green"), 1);
  EXPECT_EQ(board->get("fan led green"), 1);
  EXPECT_EQ(board->get("fan led red"), 0);
}

TEST_F(FrontPanelTest, ButtonsPullTheirLinesDown) {
  EXPECT_EQ(pins(kPanelPca, 0), 0xFFu);
  happen("locate button press");
  EXPECT_EQ(pins(kPanelPca, 0), 0xFDu);
  happen("locate button release");
  EXPECT_EQ(pins(kPanelPca, 0), 0xFFu);
}

}  // namespace
}  // namespace SmbusService::Board
