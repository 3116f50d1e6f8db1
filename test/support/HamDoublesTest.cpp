// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest-spi.h>

#include "pl/pl_status.h"
#include "test/support/FakeHam.hpp"
#include "test/support/FaultyHam.hpp"
#include "test/support/ScriptedHam.hpp"

namespace Doubles {
namespace {

using testing::ElementsAre;

TEST(ScriptedHam, GivesTheAnswersOfItsScript) {
  ScriptedHam ham;
  ham.expect({Op::read8(0x32).gives(0x88), Op::read16(0x40).gives(0xFE1F)});
  ham.prepare();
  const auto stall = ham.addRead8(0x32);
  const auto speed = ham.addRead16(0x40);
  ASSERT_EQ(ham.execute(), 0);
  EXPECT_EQ(ham.get8(stall), 0x88);
  EXPECT_EQ(ham.get16(speed), 0xFE1F);
  EXPECT_TRUE(ham.finished());
}

TEST(ScriptedHam, FailsWithTheStatusOfItsScript) {
  ScriptedHam ham;
  ham.expect({Op::write16(0x3C, 0x8813)}).fails(6);
  EXPECT_EQ(ham.write16(0x3C, 0x8813, false), 6);
}

TEST(ScriptedHam, FailsTheTestOnAnotherBatch) {
  ScriptedHam ham;
  ham.expect({Op::write8(0x33, 0x01)});
  EXPECT_NONFATAL_FAILURE(ham.write8(0x33, 0x02, false),
                          "expected { write8(0x33, [01]) }\n     got { write8(0x33, [02]) }");
}

TEST(ScriptedHam, FailsTheTestOnABatchTooMany) {
  ScriptedHam ham;
  EXPECT_NONFATAL_FAILURE(ham.sendByte(0x03, true), "script's end: { sendByte([03], flag) }");
}

TEST(ScriptedHam, FailsTheTestOnABatchThatIsMissing) {
  EXPECT_NONFATAL_FAILURE(
      {
        ScriptedHam ham;
        ham.expect({Op::read(0x10, 8, true)});
      },
      "the script goes on with { read(0x10, 8 bytes, flag) }");
}

TEST(RecordingHam, FailsTheTestOnAnOperationOutsideABatch) {
  FakeHam ham;
  EXPECT_NONFATAL_FAILURE(ham.addRead8(0x32), "read8(0x32) without prepare()");
}

TEST(RecordingHam, FailsTheTestOnResultsOfAFailedBatch) {
  ScriptedHam ham;
  ham.expect({Op::read8(0x32)}).fails(4);
  ham.prepare();
  ham.addRead8(0x32);
  ham.execute();
  EXPECT_NONFATAL_FAILURE(ham.get8(0), "no batch was carried out");
}

TEST(RecordingHam, FailsTheTestOnAResultOfTheWrongWidth) {
  FakeHam ham;
  ham.set8(0x32, 1);
  ham.prepare();
  ham.addRead8(0x32);
  ham.execute();
  EXPECT_NONFATAL_FAILURE(ham.get16(0), "read8(0x32) gave 1 bytes, not 2");
}

TEST(RecordingHam, ThrowsOn32BitAccessesAsEveryHamDoes) {
  FakeHam ham;
  uint32_t value;
  EXPECT_THROW(ham.read32(0x10, &value), std::exception);
}

TEST(FakeHam, RemembersWhatWasWritten) {
  FakeHam ham;
  ham.write8(0x01, 0xAB, false);
  ham.write16(0x02, 0x1234, true);
  ham.writeBlock(0x03, "text", 4, false);
  uint8_t byte;
  uint16_t word;
  std::string block;
  EXPECT_EQ(ham.read8(0x01, &byte), 0);
  EXPECT_EQ(ham.read16(0x02, &word), 0);
  EXPECT_EQ(ham.readBlock(0x03, &block), 0);
  EXPECT_EQ(byte, 0xAB);
  EXPECT_EQ(word, 0x1234);
  EXPECT_EQ(block, "text");
}

TEST(FakeHam, KeepsEveryBatch) {
  FakeHam ham;
  ham.write8(0x01, 0xAB, false);
  ham.sendByte(0x05, false);
  EXPECT_THAT(ham.batches(),
              ElementsAre(Operations{Op::write8(0x01, 0xAB)}, Operations{Op::sendByte(0x05)}));
}

TEST(FakeHam, FillsARegisterThatIsTooShort) {
  FakeHam ham;
  ham.setBlock(0x10, "ab");
  std::string bytes;
  EXPECT_EQ(ham.read(0x10, 4, &bytes, false), 0);
  EXPECT_EQ(bytes, "ab\xFF\xFF");
}

TEST(FakeHam, FailsOnARegisterThatHoldsNothing) {
  FakeHam ham;
  uint8_t byte = 7;
  std::string block;
  EXPECT_EQ(ham.read8(0x10, &byte), PL_STATUS_FAILED);
  EXPECT_EQ(ham.readBlock(0x10, &block), PL_STATUS_FAILED);
  EXPECT_EQ(byte, 7);
  EXPECT_FALSE(ham.holds(0x10));
}

TEST(FakeHam, ReceivesTheByteLastSent) {
  FakeHam ham;
  ham.sendByte(0x04, false);
  uint8_t byte;
  EXPECT_EQ(ham.recvByte(&byte), 0);
  EXPECT_EQ(byte, 0x04);
}

TEST(FaultyHam, FailsTheBatchItIsToldTo) {
  FakeHam fake;
  FaultyHam ham(fake);
  ham.failAt(1, 6);
  EXPECT_EQ(ham.write8(0x01, 1, false), 0);
  EXPECT_EQ(ham.write8(0x01, 2, false), 6);
  EXPECT_EQ(ham.write8(0x02, 3, false), 0);
  EXPECT_EQ(fake.value8(0x01), 1);
}

TEST(FaultyHam, FailsEveryBatchThatTouchesARegister) {
  FakeHam fake;
  FaultyHam ham(fake);
  ham.failOn(0x01, 4);
  EXPECT_EQ(ham.write8(0x02, 1, false), 0);
  EXPECT_EQ(ham.write8(0x01, 1, false), 4);
  ham.heal();
  EXPECT_EQ(ham.write8(0x01, 1, false), 0);
}

TEST(FaultyHam, FailsTheTestOnResultsOfAFailedBatch) {
  FakeHam fake;
  FaultyHam ham(fake);
  ham.failAlways(4);
  ham.prepare();
  ham.addRead8(0x32);
  EXPECT_EQ(ham.execute(), 4);
  EXPECT_NONFATAL_FAILURE(ham.get8(0), "a result of a batch that failed");
}

}  // namespace
}  // namespace Doubles
