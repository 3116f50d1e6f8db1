// SPDX-License-Identifier: Apache-2.0
//
// What each kind of fault does on the bus, when it strikes and how it ends.
#include "smbus/service/board/Fault.hpp"

#include <gmock/gmock.h>

#include <bit>
#include <cerrno>

#include "test/smbus/service/board/FaultFixture.hpp"

namespace SmbusService::Board {
namespace {

using std::chrono::milliseconds;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class FaultTest : public FaultFixture {};

TEST_F(FaultTest, ASilentChipDoesNotAnswerAndTheOthersDo) {
  inject("{'kind': 'silent', 'target': 'plain'}");
  EXPECT_EQ(read(kPlain, 0), ENXIO);
  EXPECT_EQ(read(kPec, 0), 0);
}

TEST_F(FaultTest, OnASilentBusNobodyAnswers) {
  inject("{'kind': 'silent', 'target': 'main'}");
  EXPECT_EQ(read(kPlain, 0), ENXIO);
  EXPECT_EQ(read(kPec, 0), ENXIO);
  std::string text;
  EXPECT_EQ(board->bus("other")->perform({.address = kPlain}, text), 0);
}

TEST_F(FaultTest, BehindAMuxThatIsPulledNobodyAnswers) {
  ASSERT_EQ(send(kMux, 1), 0);
  ASSERT_EQ(read(kBehind, 0), 0);
  inject("{'kind': 'silent', 'target': 'mux'}");
  EXPECT_EQ(send(kMux, 0), ENXIO);
  EXPECT_EQ(read(kBehind, 0), ENXIO);
}

TEST_F(FaultTest, AMuxComesBackWithItsChannelsClosed) {
  ASSERT_EQ(send(kMux, 1), 0);
  const uint32_t fault = inject("{'kind': 'silent', 'target': 'mux'}");
  ASSERT_TRUE(board->faults().clear(fault));
  EXPECT_EQ(read(kBehind, 0), ENXIO);
  ASSERT_EQ(receive(kMux), 0);
  EXPECT_THAT(answer, ElementsAre(0));
}

TEST_F(FaultTest, TheNthAccessIsNotAcknowledged) {
  inject("{'kind': 'nack', 'target': 'plain', 'nth': 3}");
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(read(kPlain, 0), 0);
    EXPECT_EQ(read(kPec, 0), 0) << "no access of the target";
    EXPECT_EQ(read(kPlain, 0), 0);
    EXPECT_EQ(read(kPlain, 0), ENXIO);
  }
}

TEST_F(FaultTest, AByteAfterTheAddressIsRefusedAndLost) {
  inject("{'kind': 'nack', 'target': 'plain', 'bytes': 3}");
  EXPECT_EQ(write(kPlain, 0x10, {1, 2, 3}), EREMOTEIO);
  board->faults().clearAll();
  ASSERT_EQ(readMany(kPlain, 0x10, 3), 0);
  EXPECT_THAT(answer, ElementsAre(1, 165, 165));
}

TEST_F(FaultTest, AStopCutsTheTransferShort) {
  inject("{'kind': 'stop', 'target': 'plain', 'bytes': 2}");
  EXPECT_EQ(write(kPlain, 0x10, {1, 2, 3}), EIO);
  EXPECT_EQ(write(kPlain, 0x10, {9}), 0) << "it is no longer than that";
  board->faults().clearAll();
  ASSERT_EQ(readMany(kPlain, 0x10, 2), 0);
  EXPECT_THAT(answer, ElementsAre(9, 165));
}

TEST_F(FaultTest, AStopRightAfterTheAddressIsOneToo) {
  inject("{'kind': 'stop', 'target': 'main', 'bytes': 0}");
  EXPECT_EQ(receive(kPlain), EIO);
  EXPECT_EQ(main().lastTransfers(1).back().bits, 11u) << "START, the address, STOP";
}

TEST_F(FaultTest, AMuxThatHearsAStopTooSoonKeepsItsChannels) {
  inject("{'kind': 'stop', 'target': 'mux', 'bytes': 0}");
  EXPECT_EQ(send(kMux, 1), EIO);
  EXPECT_EQ(read(kBehind, 0), ENXIO);
}

TEST_F(FaultTest, AWrongPecIsNoticedByTheMaster) {
  inject("{'kind': 'wrong-pec', 'target': 'pec'}");
  EXPECT_EQ(readWithPec(kPec), EBADMSG);
  EXPECT_EQ(read(kPec, 0), 0) << "nobody asked for it";
}

TEST_F(FaultTest, AWrongPecIsNoticedByTheChip) {
  inject("{'kind': 'wrong-pec', 'target': 'pec'}");
  const Bytes data = {1};
  const Operation operation{
      .kind = OperationKind::kWriteByte, .address = kPec, .command = 4, .pec = true};
  EXPECT_EQ(perform(operation, data), EREMOTEIO);
  EXPECT_EQ(board->peek("pec", 4)->value, 90u);
}

TEST_F(FaultTest, CorruptedBytesDifferInOneBit) {
  inject("{'kind': 'corrupt', 'target': 'plain'}");
  ASSERT_EQ(readMany(kPlain, 0, 16), 0);
  for (const uint8_t byte : answer) {
    EXPECT_EQ(std::popcount(uint8_t(byte ^ 165)), 1);
  }
  EXPECT_EQ(board->peek("plain", 0)->value, 165u);
}

TEST_F(FaultTest, CorruptionIsTheSameForTheSameSeed) {
  inject("{'kind': 'corrupt', 'target': 'plain'}");
  ASSERT_EQ(readMany(kPlain, 0, 16), 0);
  const Bytes first = answer;
  switchOn();
  inject("{'kind': 'corrupt', 'target': 'plain'}");
  ASSERT_EQ(readMany(kPlain, 0, 16), 0);
  EXPECT_EQ(answer, first);
}

TEST_F(FaultTest, ASlowChipTakesItsTime) {
  inject("{'kind': 'slow', 'target': 'plain', 'ms': 30}");
  EXPECT_EQ(read(kPlain, 0), 0);
  EXPECT_EQ(clock.slept(), milliseconds(30));
}

TEST_F(FaultTest, AChipThatIsTooSlowTimesOut) {
  inject("{'kind': 'slow', 'target': 'plain', 'ms': 50}");
  EXPECT_EQ(read(kPlain, 0), ETIMEDOUT);
  EXPECT_EQ(clock.slept(), milliseconds(35));
}

TEST_F(FaultTest, ALineThatIsStuckStopsTheWholeBus) {
  const uint32_t data = inject("{'kind': 'sda-stuck', 'target': 'main'}");
  EXPECT_EQ(read(kPlain, 0), EBUSY);
  EXPECT_EQ(clock.slept(), milliseconds(35));
  ASSERT_TRUE(board->faults().clear(data));
  inject("{'kind': 'scl-stuck', 'target': 'main'}");
  EXPECT_EQ(read(kPlain, 0), ETIMEDOUT);
  EXPECT_EQ(main().lastTransfers(1).back().bits, 0u);
}

TEST_F(FaultTest, AChipThatHoldsALineIsKeptAwayByItsMux) {
  inject("{'kind': 'sda-stuck', 'target': 'left'}");
  EXPECT_EQ(read(kPlain, 0), 0);
  EXPECT_EQ(send(kMux, 1), 0);
  EXPECT_EQ(read(kPlain, 0), EBUSY);
  EXPECT_EQ(send(kMux, 0), EBUSY) << "there is no way back but a reset of the mux";
}

TEST_F(FaultTest, AHangLastsAsLongAsItIsToldTo) {
  inject("{'kind': 'hang', 'target': 'main', 'ms': 4000, 'count': 1}");
  EXPECT_EQ(read(kPlain, 0), ETIMEDOUT);
  EXPECT_EQ(board->clock().now(), milliseconds(4000));
  EXPECT_EQ(read(kPlain, 0), 0);
}

TEST_F(FaultTest, AHangEndsWithItsFault) {
  inject("{'kind': 'hang', 'target': 'main', 'forMs': 90000}");
  EXPECT_EQ(read(kPlain, 0), ETIMEDOUT);
  EXPECT_EQ(board->clock().now(), milliseconds(90'000));
  EXPECT_EQ(read(kPlain, 0), 0);
}

TEST_F(FaultTest, AStalledFanStandsUntilTheFaultEnds) {
  inject("{'kind': 'fan-stall', 'target': 'fans', 'fan': 1, 'forMs': 60000}");
  pass(milliseconds(30'000));
  ASSERT_EQ(read(kFans, kStallBits), 0);
  EXPECT_THAT(answer, ElementsAre(1));
  pass(milliseconds(60'000));
  ASSERT_EQ(read(kFans, kStallBits), 0);
  pass(milliseconds(30'000));
  ASSERT_EQ(read(kFans, kStallBits), 0);
  EXPECT_THAT(answer, ElementsAre(0));
  EXPECT_THAT(board->faults().inForce(), IsEmpty());
}

TEST_F(FaultTest, TwoStallsOfAFanEndWithTheLast) {
  const uint32_t first = inject("{'kind': 'fan-stall', 'target': 'fans'}");
  const uint32_t second = inject("{'kind': 'fan-stall', 'target': 'fans'}");
  ASSERT_TRUE(board->faults().clear(first));
  EXPECT_EQ(board->get("fans:fan1.stalled"), 1);
  ASSERT_TRUE(board->faults().clear(second));
  EXPECT_EQ(board->get("fans:fan1.stalled"), 0);
}

TEST_F(FaultTest, EndsAfterItsCount) {
  inject("{'kind': 'nack', 'target': 'plain', 'count': 2}");
  EXPECT_EQ(read(kPlain, 0), ENXIO);
  EXPECT_EQ(read(kPlain, 0), ENXIO);
  EXPECT_EQ(read(kPlain, 0), 0);
  EXPECT_THAT(board->faults().inForce(), IsEmpty());
}

TEST_F(FaultTest, WithoutAnOccasionNothingIsCounted) {
  inject("{'kind': 'wrong-pec', 'target': 'pec', 'count': 1}");
  EXPECT_EQ(read(kPec, 0), 0);
  EXPECT_EQ(readWithPec(kPec), EBADMSG);
  EXPECT_EQ(readWithPec(kPec), 0);
}

TEST_F(FaultTest, EndsAfterItsTime) {
  inject("{'kind': 'silent', 'target': 'plain', 'forMs': 100}");
  pass(milliseconds(99));
  EXPECT_EQ(read(kPlain, 0), ENXIO);
  pass(milliseconds(1));
  EXPECT_EQ(read(kPlain, 0), 0);
}

TEST_F(FaultTest, EndsByCommand) {
  const uint32_t id = inject("{'kind': 'silent', 'target': 'plain'}");
  inject("{'kind': 'silent', 'target': 'pec'}");
  EXPECT_TRUE(board->faults().clear(id));
  EXPECT_FALSE(board->faults().clear(id));
  EXPECT_EQ(read(kPlain, 0), 0);
  EXPECT_EQ(board->faults().clearAll("pec"), 1u);
  EXPECT_EQ(read(kPec, 0), 0);
}

TEST_F(FaultTest, TheListTellsWhatHasHappened) {
  inject("{'kind': 'nack', 'target': 'plain', 'nth': 2, 'count': 9, 'forMs': 1000}");
  for (int i = 0; i < 5; ++i) {
    static_cast<void>(read(kPlain, 0));
  }
  const std::vector<FaultReport> reports = board->faults().inForce();
  ASSERT_EQ(reports.size(), 1u);
  EXPECT_EQ(reports[0].order.target, "plain");
  EXPECT_EQ(reports[0].accesses, 5u);
  EXPECT_EQ(reports[0].strikes, 2u);
  EXPECT_EQ(reports[0].until, milliseconds(1000));
}

TEST_F(FaultTest, AClosedDeskTakesNoFault) {
  inject("{'kind': 'silent', 'target': 'plain'}");
  board->faults().close();
  EXPECT_EQ(read(kPlain, 0), 0);
  EXPECT_THAT(complaint("{'kind': 'silent', 'target': 'plain'}"), HasSubstr("switched off"));
}

struct Refused {
  const char* order;
  const char* remedy;
};

class RefusedFaultTest : public FaultFixture, public testing::WithParamInterface<Refused> {};

TEST_P(RefusedFaultTest, SaysWhatIsWrong) {
  EXPECT_THAT(complaint(GetParam().order), HasSubstr(GetParam().remedy));
  EXPECT_THAT(board->faults().inForce(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    Orders, RefusedFaultTest,
    testing::Values(
        Refused{"{'target': 'plain'}", "add the key \"kind\""},
        Refused{"{'kind': 'quiet', 'target': 'plain'}", "write one of \"silent\", \"nack\""},
        Refused{"{'kind': 'silent', 'target': 'plian'}", "did you mean \"plain\"?"},
        Refused{"{'kind': 'hang', 'target': 'plain'}", "there is no bus \"plain\" for \"hang\""},
        Refused{"{'kind': 'hang', 'target': 'main', 'count': 2}", "needs \"ms\""},
        Refused{"{'kind': 'silent', 'target': 'plain', 'bytes': 2}", "\"bytes\" is not known"},
        Refused{"{'kind': 'nack', 'target': 'plain', 'nth': 0}", "whole number from 1"},
        Refused{"{'kind': 'fan-stall', 'target': 'plain'}", "\"plain\" has no fan 1"},
        Refused{"{'kind': 'fan-stall', 'target': 'fans', 'fan': 2}", "\"fans\" has no fan 2"}));

}  // namespace
}  // namespace SmbusService::Board
