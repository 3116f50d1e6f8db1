// SPDX-License-Identifier: Apache-2.0
//
// The bytes of every operation, seen by a chip that writes them down, and what a bus makes of chips
// that refuse, hang or lie.
#include "smbus/service/board/VirtualBus.hpp"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <deque>

#include "smbus/service/board/Pec.hpp"
#include "test/smbus/service/support/ManualClock.hpp"

namespace SmbusService::Board {
namespace {

constexpr uint8_t kAddress = 0x2C;
constexpr Time kTimeout = std::chrono::milliseconds(35);

// Writes down what happens to it: "Sw"/"Sr" for START, bytes written in hex, "r" for a byte read,
// "P" for STOP. It answers with `answers`, then 0xFF.
class Scribe : public Chip {
 public:
  std::string log;
  std::deque<uint8_t> answers;
  size_t refuseAt = SIZE_MAX;  // which of the bytes, the address being 0, is not acknowledged
  size_t hangAt = SIZE_MAX;    // which byte the chip holds the clock at, for holdFor
  Time holdFor = kForever;

  bool start(bool read) override {
    log += read ? "Sr " : "Sw ";
    return next();
  }
  bool write(uint8_t byte) override {
    log += fmt::format("{:02X} ", byte);
    return next();
  }
  uint8_t read() override {
    log += "r ";
    static_cast<void>(next());
    if (answers.empty()) {
      return 0xFF;
    }
    const uint8_t byte = answers.front();
    answers.pop_front();
    return byte;
  }
  void stop() override { log += "P"; }

 private:
  bool next() {
    const size_t number = bytes_++;
    if (number == hangAt) {
      hold(holdFor);
    }
    return number != refuseAt;
  }

  size_t bytes_ = 0;
};

class VirtualBusTest : public ::testing::Test {
 protected:
  VirtualBusTest() {
    auto chip = std::make_unique<Scribe>();
    scribe = chip.get();
    bus.segment().add("scribe", kAddress, std::move(chip));
  }

  int perform(OperationKind kind, std::vector<uint8_t> data = {}) {
    operation.kind = kind;
    operation.address = kAddress;
    operation.command = 0x4711;
    operation.data = data;
    return bus.perform(operation, answer);
  }

  ManualClock clock;
  BoardClock boardClock{clock};
  Wiring wiring;
  Agenda agenda{boardClock};
  VirtualBus bus{"main", {}, boardClock, wiring, agenda};
  Scribe* scribe = nullptr;
  Operation operation;
  std::string answer = "left over";
};

struct Frame {
  OperationKind kind;
  std::vector<uint8_t> data;
  const char* log;
  uint32_t bits;
};

class FrameTest : public VirtualBusTest, public ::testing::WithParamInterface<Frame> {};

TEST_P(FrameTest, GoesOverTheBusAsTheStandardDrawsIt) {
  scribe->answers = {2};
  operation.size = 3;
  EXPECT_EQ(perform(GetParam().kind, GetParam().data), 0);
  EXPECT_EQ(scribe->log, GetParam().log);
  EXPECT_EQ(bus.lastTransfers(1).back().bits, GetParam().bits);
}

INSTANTIATE_TEST_SUITE_P(
    Operations, FrameTest,
    ::testing::Values(Frame{OperationKind::kReceiveByte, {}, "Sr r P", 20},
                      Frame{OperationKind::kReadByte, {}, "Sw 11 Sr r P", 39},
                      Frame{OperationKind::kReadWord, {}, "Sw 11 Sr r r P", 48},
                      Frame{OperationKind::kReadI2cBlock, {}, "Sw 11 Sr r r r P", 57},
                      Frame{OperationKind::kReadBlock, {}, "Sw 11 Sr r r r P", 57},
                      Frame{OperationKind::kSendByte, {}, "Sw 11 P", 20},
                      Frame{OperationKind::kWriteByte, {0xA1}, "Sw 11 A1 P", 29},
                      Frame{OperationKind::kWriteWord, {0xA1, 0xA2}, "Sw 11 A1 A2 P", 38},
                      Frame{OperationKind::kWriteI2cBlock, {1, 2, 3}, "Sw 11 01 02 03 P", 47},
                      Frame{OperationKind::kWriteBlock, {7, 8}, "Sw 11 02 07 08 P", 47},
                      Frame{OperationKind::kProcessCall, {5, 6}, "Sw 11 05 06 Sr r r P", 66}));

TEST_F(VirtualBusTest, ATwoByteCommandGoesMostSignificantByteFirst) {
  operation.commandBytes = 2;
  EXPECT_EQ(perform(OperationKind::kReadByte), 0);
  EXPECT_EQ(scribe->log, "Sw 47 11 Sr r P");
}

TEST_F(VirtualBusTest, ASentByteHasNoSecondOne) {
  operation.commandBytes = 2;
  EXPECT_EQ(perform(OperationKind::kSendByte), 0);
  EXPECT_EQ(scribe->log, "Sw 11 P");
}

TEST_F(VirtualBusTest, APecIsAppendedToAWrite) {
  Pec pec;
  for (const int byte : {kAddress << 1, 0x11, 0xA1}) {
    pec.add(static_cast<uint8_t>(byte));
  }
  operation.pec = true;
  EXPECT_EQ(perform(OperationKind::kWriteByte, {0xA1}), 0);
  EXPECT_EQ(scribe->log, fmt::format("Sw 11 A1 {:02X} P", pec.value()));
}

TEST_F(VirtualBusTest, ARightPecOfAReadIsNotAmongTheBytes) {
  Pec pec;
  for (const int byte : {kAddress << 1, 0x11, kAddress << 1 | 1, 0x5A}) {
    pec.add(static_cast<uint8_t>(byte));
  }
  scribe->answers = {0x5A, pec.value()};
  operation.pec = true;
  EXPECT_EQ(perform(OperationKind::kReadByte), 0);
  EXPECT_EQ(answer, "\x5A");
}

TEST_F(VirtualBusTest, AWrongPecOfAReadIsABadMessage) {
  scribe->answers = {0x5A, 0x00};
  operation.pec = true;
  EXPECT_EQ(perform(OperationKind::kReadByte), EBADMSG);
  EXPECT_EQ(answer, "");
}

TEST_F(VirtualBusTest, AWriteEmptiesTheAnswer) {
  EXPECT_EQ(perform(OperationKind::kWriteByte, {1}), 0);
  EXPECT_EQ(answer, "");
}

TEST_F(VirtualBusTest, AnAddressWithoutAChipIsNotThere) {
  operation.address = kAddress + 1;
  EXPECT_EQ(bus.perform(operation, answer), ENXIO);
  EXPECT_EQ(scribe->log, "");
}

TEST_F(VirtualBusTest, AChipThatRefusesItsAddressIsNotThere) {
  scribe->refuseAt = 0;
  EXPECT_EQ(perform(OperationKind::kReadByte), ENXIO);
  EXPECT_EQ(scribe->log, "Sw P");
}

TEST_F(VirtualBusTest, AChipThatRefusesAfterTheRepeatedStartIsNotThere) {
  scribe->refuseAt = 2;
  EXPECT_EQ(perform(OperationKind::kReadByte), ENXIO);
  EXPECT_EQ(scribe->log, "Sw 11 Sr P");
}

TEST_F(VirtualBusTest, ARefusedByteEndsTheTransfer) {
  scribe->refuseAt = 2;
  EXPECT_EQ(perform(OperationKind::kWriteWord, {1, 2}), EREMOTEIO);
  EXPECT_EQ(scribe->log, "Sw 11 01 P");
}

TEST_F(VirtualBusTest, ABlockOfNoBytesCannotBe) {
  scribe->answers = {0};
  EXPECT_EQ(perform(OperationKind::kReadBlock), EPROTO);
}

TEST_F(VirtualBusTest, ABlockMayHave255Bytes) {
  scribe->answers = {255};
  EXPECT_EQ(perform(OperationKind::kReadBlock), 0);
  EXPECT_EQ(answer.size(), 255u);
}

TEST_F(VirtualBusTest, ABlockOfNoneOrMoreThan255BytesIsNotWritten) {
  EXPECT_EQ(perform(OperationKind::kWriteBlock, {}), EPROTO);
  EXPECT_EQ(perform(OperationKind::kWriteBlock, std::vector<uint8_t>(256)), EPROTO);
  EXPECT_EQ(scribe->log, "");
}

class HangTest : public VirtualBusTest, public ::testing::WithParamInterface<size_t> {};

TEST_P(HangTest, AChipThatHoldsTheClockForGoodTimesOutAtAnyByte) {
  scribe->hangAt = GetParam();
  operation.pec = true;
  EXPECT_EQ(perform(OperationKind::kProcessCall, {1, 2}), ETIMEDOUT);
  EXPECT_EQ(clock.slept(), kTimeout);
  EXPECT_EQ(answer, "");
}

INSTANTIATE_TEST_SUITE_P(Bytes, HangTest, ::testing::Range(size_t{0}, size_t{8}));

TEST_F(VirtualBusTest, AnOperationsOwnTimeoutBoundsAHang) {
  scribe->hangAt = 1;
  operation.timeout = std::chrono::milliseconds(10);
  EXPECT_EQ(perform(OperationKind::kReadByte), ETIMEDOUT);
  EXPECT_EQ(clock.slept(), Time(operation.timeout));
}

TEST_F(VirtualBusTest, ASlowAnswerTakesItsTime) {
  scribe->hangAt = 3;
  scribe->holdFor = std::chrono::milliseconds(3);
  EXPECT_EQ(perform(OperationKind::kReadByte), 0);
  EXPECT_EQ(clock.slept(), scribe->holdFor);
}

TEST_F(VirtualBusTest, CountsWhatWentOverIt) {
  EXPECT_EQ(perform(OperationKind::kReceiveByte), 0);
  EXPECT_EQ(perform(OperationKind::kReadByte), 0);
  EXPECT_EQ(bus.counts().all.total().transfers, 2u);
  EXPECT_EQ(bus.counts().all.total().bits, 59u);
}

TEST(VirtualBusTimeTest, WaitsForAsLongAsTheBitsTake) {
  ManualClock clock;
  BoardClock boardClock(clock);
  Wiring wiring;
  Agenda agenda(boardClock);
  VirtualBus bus("slow", {.clockHz = 10'000, .waitBusTime = true}, boardClock, wiring, agenda);
  bus.segment().add("scribe", kAddress, std::make_unique<Scribe>());
  std::string answer;
  EXPECT_EQ(bus.perform({.kind = OperationKind::kReadByte, .address = kAddress}, answer), 0);
  EXPECT_EQ(clock.slept(), std::chrono::microseconds(3900));
}

}  // namespace
}  // namespace SmbusService::Board
