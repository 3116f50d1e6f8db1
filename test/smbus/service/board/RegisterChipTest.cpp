// SPDX-License-Identifier: Apache-2.0
#include "smbus/service/board/chips/RegisterChip.hpp"

#include <cerrno>

#include "test/smbus/service/board/BoardFixture.hpp"

namespace SmbusService::Board {
namespace {

constexpr uint8_t kChip = 0x30;

class RegisterChipTest : public BoardFixture {
 protected:
  void loadRegisters(const std::string& settings) {
    loadChips("{'label': 'chip', 'model': 'register', 'address': '0x30', " + settings + "}");
  }
};

TEST_F(RegisterChipTest, HoldsItsFirstContents) {
  loadRegisters("'fill': 7, 'registers': {'0x10': '0x42', '32': [1, 2, '0x03'], '0x40': 'text'}");
  EXPECT_EQ(readMany(kChip, 0x0F, 3), 0);
  EXPECT_EQ(answer, (Bytes{7, 0x42, 7}));
  EXPECT_EQ(readMany(kChip, 0x20, 4), 0);
  EXPECT_EQ(answer, (Bytes{1, 2, 3, 7}));
  EXPECT_EQ(readMany(kChip, 0x40, 4), 0);
  EXPECT_EQ(answer, (Bytes{'t', 'e', 'x', 't'}));
}

TEST_F(RegisterChipTest, WriteGoesOnWithTheNextRegister) {
  loadRegisters("'size': 4");
  EXPECT_EQ(write(kChip, 2, {0xAA, 0xBB, 0xCC}), 0);
  EXPECT_EQ(readMany(kChip, 0, 4), 0);
  EXPECT_EQ(answer, (Bytes{0xCC, 0, 0xAA, 0xBB}));
}

TEST_F(RegisterChipTest, WithoutAutoIncrementARegisterRepeats) {
  loadRegisters("'autoIncrement': false, 'registers': {'1': 9}");
  EXPECT_EQ(readMany(kChip, 1, 3), 0);
  EXPECT_EQ(answer, (Bytes{9, 9, 9}));
}

TEST_F(RegisterChipTest, AReceivedByteComesFromTheRegisterAfterTheLast) {
  loadRegisters("'registers': {'5': [50, 60]}");
  EXPECT_EQ(send(kChip, 5), 0);
  EXPECT_EQ(receive(kChip), 0);
  EXPECT_EQ(answer, Bytes{50});
  EXPECT_EQ(receive(kChip), 0);
  EXPECT_EQ(answer, Bytes{60});
}

TEST_F(RegisterChipTest, ARegisterBeyondItsSizeIsRefused) {
  loadRegisters("'size': 4");
  EXPECT_EQ(read(kChip, 4), EREMOTEIO);
}

TEST_F(RegisterChipTest, AReadOnlyRegisterKeepsItsValue) {
  loadRegisters("'registers': {'1': [1, 2, 3, 4, 5]}, 'readOnly': [1, '0x03-0x04']");
  EXPECT_EQ(write(kChip, 1, {9, 9, 9, 9, 9}), 0);
  EXPECT_EQ(readMany(kChip, 1, 5), 0);
  EXPECT_EQ(answer, (Bytes{1, 9, 3, 4, 9}));
}

TEST_F(RegisterChipTest, AWideRegisterTravelsMostSignificantByteFirst) {
  loadRegisters("'width': 16, 'registers': {'1': '0x1234'}");
  EXPECT_EQ(readWord(kChip, 1), 0);
  EXPECT_EQ(answer, (Bytes{0x12, 0x34}));
  EXPECT_EQ(write(kChip, 2, {0xAB, 0xCD, 0xEF}), 0);
  EXPECT_EQ(readMany(kChip, 1, 6), 0);
  EXPECT_EQ(answer, (Bytes{0x12, 0x34, 0xAB, 0xCD, 0, 0})) << "half a register is not written";
}

TEST_F(RegisterChipTest, ALittleEndianRegisterTravelsTheOtherWayRound) {
  loadRegisters("'width': 16, 'byteOrder': 'little', 'registers': {'1': '0x1234'}");
  EXPECT_EQ(readWord(kChip, 1), 0);
  EXPECT_EQ(answer, (Bytes{0x34, 0x12}));
}

TEST_F(RegisterChipTest, WithoutPecThePecByteIsData) {
  loadRegisters("'size': 8");
  EXPECT_EQ(
      perform({.kind = OperationKind::kWriteByte, .address = kChip, .command = 2, .pec = true},
              {0xAA}),
      0);
  EXPECT_EQ(readMany(kChip, 2, 2), 0);
  Pec pec;
  for (const int byte : {kChip << 1, 2, 0xAA}) {
    pec.add(static_cast<uint8_t>(byte));
  }
  EXPECT_EQ(answer, (Bytes{0xAA, pec.value()}));
}

class RegisterPinsTest : public BoardFixture {
 protected:
  RegisterPinsTest() {
    load(R"({'nets': {'in': {'pins': ['chip:in1.13']}, 'not': {'pins': ['!chip:in0x01.2']},
                      'out': {'pins': ['chip:out2.0']}},
             'buses': [{'name': 'main', 'chips': [
               {'label': 'chip', 'model': 'register', 'address': '0x30', 'width': 16,
                'registers': {'1': '0x0101'}}]}]})");
  }
};

TEST_F(RegisterPinsTest, AnInputShowsInItsBit) {
  EXPECT_EQ(readWord(kChip, 1), 0);
  EXPECT_EQ(answer, (Bytes{0x21, 0x01}));
  EXPECT_EQ(board->set("in", 0), 0);
  EXPECT_EQ(board->set("not", 0), 0);
  EXPECT_EQ(readWord(kChip, 1), 0);
  EXPECT_EQ(answer, (Bytes{0x01, 0x05}));
}

TEST_F(RegisterPinsTest, AWriteDoesNotMoveAnInput) {
  EXPECT_EQ(write(kChip, 1, {0x00, 0x00}), 0);
  EXPECT_EQ(readWord(kChip, 1), 0);
  EXPECT_EQ(answer, (Bytes{0x20, 0x00}));
}

TEST_F(RegisterPinsTest, AnOutputDrivesWhatItsBitHolds) {
  EXPECT_EQ(board->get("out"), 0);
  EXPECT_EQ(write(kChip, 2, {0x00, 0x01}), 0);
  EXPECT_EQ(board->get("out"), 1);
}

class PecRegisterChipTest : public RegisterChipTest {
 protected:
  PecRegisterChipTest() { loadRegisters("'pec': true, 'size': 8, 'registers': {'3': 33}"); }
};

TEST_F(PecRegisterChipTest, ReadsAndWritesWithPec) {
  EXPECT_EQ(
      perform({.kind = OperationKind::kWriteByte, .address = kChip, .command = 2, .pec = true},
              {0xAA}),
      0);
  EXPECT_EQ(
      perform({.kind = OperationKind::kReadByte, .address = kChip, .command = 2, .pec = true}), 0);
  EXPECT_EQ(answer, Bytes{0xAA});
  EXPECT_EQ(read(kChip, 3), 0);
  EXPECT_EQ(answer, Bytes{33}) << "the PEC is not written to the next register";
}

TEST_F(PecRegisterChipTest, ReadsAndWritesWithoutPec) {
  EXPECT_EQ(write(kChip, 2, {0xBB}), 0);
  EXPECT_EQ(read(kChip, 2), 0);
  EXPECT_EQ(answer, Bytes{0xBB});
}

TEST_F(PecRegisterChipTest, AWrongPecIsRefusedAndNothingWritten) {
  EXPECT_EQ(write(kChip, 3, {0xAA, 0x00}), EREMOTEIO);
  EXPECT_EQ(read(kChip, 3), 0);
  EXPECT_EQ(answer, Bytes{33});
}

TEST_F(PecRegisterChipTest, ASpoiltPecIsFound) {
  dynamic_cast<CommandChip&>(*board->chip("chip")).spoilPec(true);
  EXPECT_EQ(
      perform({.kind = OperationKind::kReadByte, .address = kChip, .command = 3, .pec = true}),
      EBADMSG);
  EXPECT_EQ(read(kChip, 3), 0);
}

TEST_F(PecRegisterChipTest, AnUnknownCommandIsRefused) { EXPECT_EQ(read(kChip, 8), EREMOTEIO); }

TEST_F(PecRegisterChipTest, BeyondThePecTheLinesAreReleased) {
  EXPECT_EQ(readMany(kChip, 3, 4), 0);
  EXPECT_EQ(answer[0], 33);
  EXPECT_EQ(answer[2], 0xFF);
  EXPECT_EQ(answer[3], 0xFF);
}

}  // namespace
}  // namespace SmbusService::Board
