// SPDX-License-Identifier: Apache-2.0
//
// The supply model against PMBus 1.2 part II.
#include "smbus/service/board/chips/PmbusSupply.hpp"

#include <cerrno>
#include <cmath>

#include "smbus/service/board/chips/PmbusLinear.hpp"
#include "test/smbus/service/board/BoardFixture.hpp"

namespace SmbusService::Board {
namespace {

using namespace std::chrono_literals;

constexpr uint8_t kSupply = 0x58;

class PmbusSupplyTest : public BoardFixture {
 protected:
  PmbusSupplyTest() {
    load(R"({'nets': {
        'ac': {'pins': ['psu:ac']},
        'there': {'pins': ['psu:present']},
        'good': {'level': false, 'pins': ['psu:power_good', 'pins:IO0_1']}},
      'buses': [{'name': 'main', 'chips': [
        {'label': 'pins', 'model': 'pca9555', 'address': '0x20'},
        {'label': 'psu', 'model': 'pmbus', 'address': '0x58', 'vin': 230, 'efficiency': 0.9,
         'outputs': [{'volts': 12, 'maxAmps': 100}, {'volts': 3.3, 'maxAmps': 10}],
         'noise': 0, 'fans': [{'maxRpm': 20000}, {'maxRpm': 16000}], 'duty': 50,
         'ambient': 25, 'load': 0.5, 'rises': [20, 40],
         'id': 'ACME', 'mfrModel': 'PS-1200 ', 'serial': 'S123'}]}]})");
  }

  unsigned byte(uint8_t command) {
    EXPECT_EQ(read(kSupply, command), 0);
    return answer[0];
  }
  uint16_t word(uint8_t command) {
    EXPECT_EQ(readWord(kSupply, command), 0);
    return static_cast<uint16_t>(answer[0] | answer[1] << 8);
  }
  double value(uint8_t command) { return fromLinear11(word(command)); }
  void writeWord(uint8_t command, uint16_t value) {
    EXPECT_EQ(
        write(kSupply, command, {static_cast<uint8_t>(value), static_cast<uint8_t>(value >> 8)}),
        0);
  }
  std::string text(uint8_t command) {
    EXPECT_EQ(perform({.kind = OperationKind::kReadBlock, .address = kSupply, .command = command}),
              0);
    return {answer.begin(), answer.end()};
  }
};

TEST_F(PmbusSupplyTest, ReadingsAgreeWithEachOther) {
  EXPECT_EQ(value(0x88), 230);
  EXPECT_EQ(value(0x8C), 50);
  EXPECT_EQ(value(0x96), 600);
  EXPECT_NEAR(value(0x97), (600 + 16.5) / 0.9, 1);
  EXPECT_NEAR(value(0x89), (600 + 16.5) / 0.9 / 230, 0.01);
}

TEST_F(PmbusSupplyTest, TheOutputVoltageHasTheExponentOfVoutMode) {
  EXPECT_EQ(byte(0x20), 0x17u);
  EXPECT_EQ(word(0x8B), 12 * 512);
}

TEST_F(PmbusSupplyTest, APageChoosesTheOutput) {
  EXPECT_EQ(write(kSupply, 0x00, {1}), 0);
  EXPECT_EQ(byte(0x00), 1u);
  EXPECT_NEAR(word(0x8B) / 512.0, 3.3, 0.01);
  EXPECT_EQ(value(0x8C), 5);
  EXPECT_EQ(write(kSupply, 0x00, {0xFF}), 0);
  EXPECT_EQ(word(0x8B), 12 * 512);
}

TEST_F(PmbusSupplyTest, APageThatIsNotThereIsInvalidData) {
  EXPECT_EQ(
      perform({.kind = OperationKind::kWriteByte, .address = kSupply, .command = 0, .pec = true},
              {2}),
      EREMOTEIO);
  EXPECT_EQ(byte(0x00), 0u);
  EXPECT_EQ(byte(0x7E), 0x40u);
  EXPECT_EQ(byte(0x78), 0x02u);
}

TEST_F(PmbusSupplyTest, AHealthySupplyHasNoStatus) {
  EXPECT_EQ(word(0x79), 0u);
  for (uint8_t status = 0x7A; status <= 0x82; ++status) {
    EXPECT_EQ(byte(status), 0u) << unsigned{status};
  }
  EXPECT_EQ(board->get("good"), 1);
}

TEST_F(PmbusSupplyTest, WithoutAcItIsOffAndSaysSo) {
  EXPECT_EQ(board->set("ac", 0), 0);
  EXPECT_EQ(board->get("good"), 0);
  EXPECT_EQ(word(0x79), 0x2848u);
  EXPECT_EQ(byte(0x7C), 0x18u);
  EXPECT_EQ(value(0x88), 0);
  EXPECT_EQ(word(0x8B), 0u);
  EXPECT_EQ(value(0x97), 0);
  EXPECT_EQ(read(0x20, 0), 0);
  EXPECT_EQ(answer, Bytes{0xFD}) << "power good on the expander";
}

TEST_F(PmbusSupplyTest, AFaultStaysUntilItIsClearedAndReturnsWhileItLasts) {
  EXPECT_EQ(board->set("ac", 0), 0);
  EXPECT_EQ(send(kSupply, 0x03), 0);
  EXPECT_EQ(word(0x79), 0x2848u);
  EXPECT_EQ(board->set("ac", 1), 0);
  EXPECT_EQ(word(0x79), 0x2008u) << "back, and still telling of it";
  EXPECT_EQ(send(kSupply, 0x03), 0);
  EXPECT_EQ(word(0x79), 0u);
}

TEST_F(PmbusSupplyTest, AOneClearsItsBitOfAStatusRegister) {
  EXPECT_EQ(board->set("ac", 0), 0);
  EXPECT_EQ(board->set("ac", 1), 0);
  EXPECT_EQ(write(kSupply, 0x7C, {0x10}), 0);
  EXPECT_EQ(byte(0x7C), 0x08u);
}

// PMBus 1.2 part II, tables 15 and 16.
struct StatusBit {
  uint8_t command;
  unsigned bits;
  unsigned word;
};

class StatusBitTest : public PmbusSupplyTest, public testing::WithParamInterface<StatusBit> {};

TEST_P(StatusBitTest, IsSummedUpInTheStatusWord) {
  EXPECT_EQ(board->poke("psu", GetParam().command, GetParam().bits), 0);
  EXPECT_EQ(byte(GetParam().command), GetParam().bits);
  EXPECT_EQ(word(0x79), GetParam().word);
}

INSTANTIATE_TEST_SUITE_P(
    Registers, StatusBitTest,
    testing::Values(StatusBit{0x7A, 0x80, 0x8020}, StatusBit{0x7A, 0x40, 0x8001},
                    StatusBit{0x7B, 0x80, 0x4010}, StatusBit{0x7B, 0x20, 0x4001},
                    StatusBit{0x7C, 0x10, 0x2008}, StatusBit{0x7C, 0x20, 0x2001},
                    StatusBit{0x7D, 0x40, 0x0004}, StatusBit{0x7E, 0x20, 0x0002},
                    StatusBit{0x7F, 0x01, 0x0201}, StatusBit{0x80, 0x10, 0x1001},
                    StatusBit{0x81, 0x80, 0x0401}, StatusBit{0x82, 0x80, 0x0401}));

TEST_F(PmbusSupplyTest, OperationSwitchesTheOutputs) {
  EXPECT_EQ(write(kSupply, 0x01, {0x00}), 0);
  EXPECT_EQ(word(0x79), 0x0840u);
  EXPECT_EQ(board->get("good"), 0);
  EXPECT_EQ(value(0x88), 230);
  EXPECT_EQ(write(kSupply, 0x01, {0x80}), 0);
  EXPECT_EQ(word(0x79), 0u);
  EXPECT_EQ(board->get("good"), 1);
}

TEST_F(PmbusSupplyTest, AFailedSupplyIsOnAndNotGood) {
  EXPECT_EQ(board->set("psu:failed", 1), 0);
  EXPECT_EQ(word(0x79), 0x8801u);
  EXPECT_EQ(byte(0x7A), 0x10u);
  EXPECT_EQ(word(0x8B), 0u);
  EXPECT_EQ(board->get("good"), 0);
  EXPECT_EQ(board->set("psu:failed", 0), 0);
  EXPECT_EQ(word(0x79), 0x8001u) << "good again, and still telling of it";
  EXPECT_EQ(board->get("good"), 1);
}

TEST_F(PmbusSupplyTest, AnOverloadWarnsThenFaults) {
  EXPECT_EQ(board->set("psu:load", 1.1), 0);
  EXPECT_EQ(byte(0x7B), 0x20u);
  EXPECT_EQ(word(0x79), 0x4001u);
  EXPECT_EQ(board->set("psu:load", 1.3), 0);
  EXPECT_EQ(byte(0x7B), 0xA0u);
  EXPECT_EQ(word(0x79), 0x4011u);
}

TEST_F(PmbusSupplyTest, HeatWarnsThenFaults) {
  const double before = value(0x8E);
  EXPECT_GT(before, value(0x8D));
  EXPECT_EQ(board->set("psu:ambient", 70 - before + 25 + 1), 0);
  clock.sleep(5min);
  EXPECT_EQ(byte(0x7D), 0x40u);
  EXPECT_EQ(board->set("psu:ambient", 70 - before + 25 + 15), 0);
  clock.sleep(5min);
  EXPECT_EQ(byte(0x7D), 0xC0u);
  EXPECT_EQ(word(0x79), 0x0004u);
}

TEST_F(PmbusSupplyTest, FansFollowADutyCommand) {
  EXPECT_EQ(byte(0x3A), 0x99u);
  EXPECT_EQ(value(0x90), 10000);
  writeWord(0x3B, 80);
  EXPECT_EQ(word(0x3B), 80u);
  clock.sleep(1min);
  EXPECT_NEAR(value(0x90), 16000, 16);
  EXPECT_EQ(value(0x91), 8000) << "the other has its own command";
}

TEST_F(PmbusSupplyTest, FansFollowARpmCommand) {
  EXPECT_EQ(write(kSupply, 0x3A, {0xDD}), 0);
  writeWord(0x3C, toLinear11(4000));
  clock.sleep(1min);
  EXPECT_NEAR(value(0x91), 4000, 4);
}

TEST_F(PmbusSupplyTest, AFanCommandTakesNoMoreThanTheFanCan) {
  writeWord(0x3B, 100);
  writeWord(0x3C, 300);
  clock.sleep(1min);
  EXPECT_NEAR(value(0x91), 16000, 16);
}

TEST_F(PmbusSupplyTest, AStalledFanIsAFault) {
  EXPECT_EQ(board->set("psu:load", 0), 0);  // it shall not get hot, too
  EXPECT_EQ(board->set("psu:fan2.stalled", 1), 0);
  clock.sleep(1min);
  EXPECT_EQ(byte(0x81), 0x40u);
  EXPECT_EQ(word(0x79), 0x0401u);
}

TEST_F(PmbusSupplyTest, TextsAreBlocks) {
  EXPECT_EQ(text(0x99), "ACME");
  EXPECT_EQ(text(0x9A), "PS-1200 ");
  EXPECT_EQ(text(0x9E), "S123");
}

TEST_F(PmbusSupplyTest, TheFirstByteOfATextIsItsLength) { EXPECT_EQ(byte(0x9A), 8u); }

TEST_F(PmbusSupplyTest, ATextThatIsNotThereIsAnEmptyBlock) {
  EXPECT_EQ(perform({.kind = OperationKind::kReadBlock, .address = kSupply, .command = 0x9B}),
            EPROTO);
}

TEST_F(PmbusSupplyTest, AnswersComeWithPec) {
  EXPECT_EQ(
      perform({.kind = OperationKind::kReadWord, .address = kSupply, .command = 0x88, .pec = true}),
      0);
  EXPECT_EQ(
      perform(
          {.kind = OperationKind::kReadBlock, .address = kSupply, .command = 0x99, .pec = true}),
      0);
  EXPECT_EQ(answer, (Bytes{'A', 'C', 'M', 'E'}));
}

TEST_F(PmbusSupplyTest, AWrongPecIsRefusedAndRemembered) {
  EXPECT_EQ(write(kSupply, 0x3B, {80, 0, 0x00}), EREMOTEIO);
  EXPECT_EQ(word(0x3B), 0u);
  EXPECT_EQ(byte(0x7E), 0x20u);
}

TEST_F(PmbusSupplyTest, AnUnknownCommandIsRefusedAndRemembered) {
  EXPECT_EQ(read(kSupply, 0xD0), EREMOTEIO);
  EXPECT_EQ(byte(0x7E), 0x80u);
}

TEST_F(PmbusSupplyTest, TooFewBytesAreRemembered) {
  EXPECT_EQ(write(kSupply, 0x3B, {80}), 0);
  EXPECT_EQ(word(0x3B), 0u);
  EXPECT_EQ(byte(0x7E), 0x02u);
}

TEST_F(PmbusSupplyTest, APulledSupplyDoesNotAnswer) {
  EXPECT_EQ(board->set("there", 0), 0);
  EXPECT_EQ(read(kSupply, 0x79), ENXIO);
  EXPECT_EQ(board->get("good"), 0);
}

TEST_F(PmbusSupplyTest, ASupplyThatIsPluggedInBeginsAnew) {
  writeWord(0x3B, 80);
  EXPECT_EQ(write(kSupply, 0x01, {0x00}), 0);
  EXPECT_EQ(write(kSupply, 0x00, {1}), 0);
  EXPECT_EQ(board->set("there", 0), 0);
  EXPECT_EQ(board->set("there", 1), 0);
  EXPECT_EQ(byte(0x00), 0u);
  EXPECT_EQ(byte(0x01), 0x80u);
  EXPECT_EQ(word(0x3B), 0u);
  EXPECT_EQ(word(0x79), 0u);
}

TEST_F(PmbusSupplyTest, SuppliesOfOneBayTakeTurnsAtItsLine) {
  load(R"({'nets': {
      'is a': {'level': false, 'pins': ['a:present']},
      'is b': {'level': false, 'pins': ['b:present']},
      'good': {'level': false, 'pins': ['a:power_good', 'b:power_good']}},
    'buses': [{'name': 'main', 'chips': [
      {'label': 'a', 'model': 'pmbus', 'address': '0x58', 'outputs': [{}], 'fans': []},
      {'label': 'b', 'model': 'pmbus', 'address': '0x59', 'outputs': [{}], 'fans': []}]}]})");
  EXPECT_EQ(board->get("good"), 0);
  for (const char* there : {"is a", "is b", "is a"}) {
    EXPECT_EQ(board->set(there, 1), 0);
    EXPECT_EQ(board->get("good"), 1) << there;
    EXPECT_EQ(board->set(there, 0), 0);
    EXPECT_EQ(board->get("good"), 0) << there;
  }
}

TEST(PmbusLinearTest, EncodesWithTheSmallestExponentThatFits) {
  EXPECT_EQ(toLinear11(0), 0x8000);
  EXPECT_EQ(toLinear11(1023), 0x03FF);
  EXPECT_EQ(toLinear11(1024), 0x0A00);
  EXPECT_EQ(toLinear11(38), 0xE260);
  EXPECT_EQ(toLinear11(-1), 0xB400);
}

TEST(PmbusLinearTest, DecodesTheStandardsFormat) {
  EXPECT_EQ(fromLinear11(0xF84C), 38);
  EXPECT_EQ(fromLinear11(0xD2E1), 11.515625);
  EXPECT_EQ(fromLinear11(0x0A00), 1024);
  EXPECT_EQ(fromLinear11(0xE7FF), -1.0 / 16);
}

TEST(PmbusLinearTest, WhatIsTooLargeIsTheLargestThereIs) {
  EXPECT_EQ(toLinear11(1e12), 0x7BFF);
  EXPECT_EQ(toLinear11(-1e12), 0x7C00);
  EXPECT_EQ(toLinear16(1e6, 0x17), 0xFFFF);
  EXPECT_EQ(toLinear16(-1, 0x17), 0);
}

TEST(PmbusLinearTest, AValueSurvivesTheWayThereAndBack) {
  for (double value = 0.001; value < 3e7; value *= 1.37) {
    EXPECT_NEAR(fromLinear11(toLinear11(value)), value, value / 1000 + 1e-5);
  }
}

}  // namespace
}  // namespace SmbusService::Board
