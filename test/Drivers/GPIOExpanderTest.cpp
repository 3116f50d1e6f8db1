// SPDX-License-Identifier: Apache-2.0
#include "Drivers/GPIOExpander.hpp"

#include <gmock/gmock.h>

#include "test/support/Check.hpp"
#include "test/support/FakeHam.hpp"
#include "test/support/FaultyHam.hpp"
#include "test/support/Host.hpp"
#include "test/support/LibraryClock.hpp"

namespace {

using namespace std::chrono_literals;
using Doubles::FakeHam;
using Doubles::FaultyHam;
using Doubles::host;
using Doubles::LibraryClock;
using Doubles::Operations;
using Doubles::Trace;
using testing::ElementsAre;
using testing::IsEmpty;

namespace Op = Doubles::Op;

constexpr const char* kUnit = "Drivers/GPIOExpander";
constexpr const char* kBankText = "n <= numBanks_";
constexpr const char* kBitText = "bit <= 7";

// Registers as on a PCA9555 unless said otherwise.
class Chip : public Drivers::GPIOExpander {
 public:
  explicit Chip(Ham::Ham* access, int32_t banks = 2, uint32_t timeout = 2, uint8_t inputs = 0,
                uint8_t outputs = 2, uint8_t directions = 6)
      : GPIOExpander(banks, timeout, inputs, outputs, directions) {
    ham = access;
  }
  using GPIOExpander::configure;
};

class Expander : public testing::Test {
 protected:
  Expander() {
    fake_.set8(0, 0xA5);
    fake_.set8(1, 0x3C);
    fake_.set8(2, 0x0F);
    fake_.set8(3, 0xF0);
  }

  bool bit(uint8_t bank, uint8_t number) {
    bool value = false;
    EXPECT_EQ(chip_.readBit(bank, number, &value), 0);
    return value;
  }
  uint8_t in(uint8_t bank) {
    uint8_t value = 0;
    EXPECT_EQ(chip_.getInBank(bank, &value), 0);
    return value;
  }
  uint8_t out(uint8_t bank) {
    uint8_t value = 0;
    EXPECT_EQ(chip_.getOutBank(bank, &value), 0);
    return value;
  }

  FakeHam fake_;
  FaultyHam faulty_{fake_};
  LibraryClock clock_;
  Chip chip_{&faulty_};
};

// Inputs.

TEST_F(Expander, ReadsABankOnceWithinTheCacheTimeout) {
  EXPECT_TRUE(bit(0, 0));
  clock_.advance(2s);
  EXPECT_FALSE(bit(0, 1));
  EXPECT_THAT(fake_.batches(), ElementsAre(Operations{Op::read8(0)}));
}

TEST_F(Expander, ReadsABankAgainAfterTheCacheTimeout) {
  EXPECT_EQ(in(0), 0xA5);
  fake_.set8(0, 0x5A);
  clock_.advance(2s);
  EXPECT_EQ(in(0), 0xA5);
  clock_.advance(1ns);
  EXPECT_EQ(in(0), 0x5A);
  EXPECT_THAT(fake_.batches(), ElementsAre(Operations{Op::read8(0)}, Operations{Op::read8(0)}));
}

TEST_F(Expander, KnowsTheAgeOfEachBank) {
  in(0);
  clock_.advance(1500ms);
  in(1);
  clock_.advance(1s);
  in(0);
  in(1);
  EXPECT_THAT(fake_.batches(), ElementsAre(Operations{Op::read8(0)}, Operations{Op::read8(1)},
                                           Operations{Op::read8(0)}));
}

TEST_F(Expander, ReadsEachTimeWithATimeoutOf0) {
  Chip chip(&fake_, 2, 0);
  uint8_t value = 0;
  chip.getInBank(0, &value);
  chip.getInBank(0, &value);
  EXPECT_EQ(fake_.batches().size(), 2u);
}

TEST_F(Expander, TakesItsBanksForReadAs0AtTheClocksStart) {
  clock_.set(2s);
  EXPECT_EQ(in(0), 0);
  EXPECT_THAT(fake_.batches(), IsEmpty());
  clock_.advance(1ns);
  EXPECT_EQ(in(0), 0xA5);
}

TEST_F(Expander, ReportsAnInputBankThatCannotBeRead) {
  uint8_t value = 0x77;
  faulty_.failOn(1, 6);
  EXPECT_EQ(chip_.getInBank(1, &value), 6);
  EXPECT_EQ(value, 0x77);
  EXPECT_THAT(host().traces, ElementsAre(Trace{0, "Error: status 6 while reading input bank 1"}));
}

TEST_F(Expander, ReadsABankAgainThatCouldNotBeRead) {
  in(0);
  clock_.advance(3s);
  uint8_t value;
  faulty_.failNext(6);
  EXPECT_EQ(chip_.getInBank(0, &value), 6);
  fake_.set8(0, 0x5A);
  EXPECT_EQ(in(0), 0x5A);
}

TEST_F(Expander, KeepsTheCacheOverAReadThatFails) {
  in(0);
  clock_.advance(3s);
  uint8_t value;
  faulty_.failNext(6);
  EXPECT_EQ(chip_.getInBank(0, &value), 6);
  fake_.set8(0, 0x5A);
  clock_.advance(-2s);
  EXPECT_EQ(in(0), 0xA5);
}

TEST_F(Expander, TracesEachBankItGives) {
  in(0);
  in(0);
  EXPECT_THAT(host().traces, ElementsAre(Trace{5, "GPIOExpander::getInBank( 0 ) = a5"},
                                         Trace{5, "GPIOExpander::getInBank( 0 ) = a5"}));
}

TEST_F(Expander, FindsEachBitOfABank) {
  constexpr bool kLevels[] = {true, false, true, false, false, true, false, true};  // A5
  uint8_t number = 0;
  for (const bool level : kLevels) {
    EXPECT_EQ(bit(0, number), level) << "bit " << +number;
    ++number;
  }
}

TEST_F(Expander, TracesABit) {
  bit(1, 5);
  EXPECT_THAT(host().traces, ElementsAre(Trace{5, "GPIOExpander::getInBank( 1 ) = 3c"},
                                         Trace{5, "GPIOExpander::readBit( 1, 5 ) = 1"}));
}

TEST_F(Expander, ReportsABitThatCannotBeRead) {
  bool value = true;
  faulty_.failAlways(4);
  EXPECT_EQ(chip_.readBit(1, 5, &value), 4);
  EXPECT_TRUE(value);
  EXPECT_THAT(host().traces, ElementsAre(Trace{0, "Error: status 4 while reading input bank 1"},
                                         Trace{5, "Error 4: GPIOExpander::readBit( 1, 5 )"}));
}

TEST_F(Expander, ReadsPin13AsBit5OfBank1) {
  fake_.set8(1, 0x20);
  bool value = false;
  EXPECT_EQ(chip_.readBit(13, &value), 0);
  EXPECT_TRUE(value);
  EXPECT_THAT(fake_.batches(), ElementsAre(Operations{Op::read8(1)}));
  EXPECT_TRUE(host().traced(5, "GPIOExpander::readBit( 1, 5 ) = 1"));
}

// Outputs.

TEST_F(Expander, ReadsAndWritesAnOutputBankOnce) {
  EXPECT_EQ(chip_.writeBit(0, 7, true), 0);
  EXPECT_EQ(chip_.writeBit(0, 0, false), 0);
  EXPECT_EQ(chip_.writeBit(0, 1, true), 0);
  EXPECT_EQ(chip_.save(), 0);
  EXPECT_THAT(fake_.batches(),
              ElementsAre(Operations{Op::read8(2)}, Operations{Op::write8(2, 0x8E)}));
}

TEST_F(Expander, WritesNothingAtASecondSave) {
  chip_.writeBit(0, 7, true);
  chip_.save();
  fake_.forgetBatches();
  EXPECT_EQ(chip_.save(), 0);
  EXPECT_THAT(fake_.batches(), IsEmpty());
}

TEST_F(Expander, WritesABankBackThatWasOnlyRead) {
  EXPECT_EQ(out(1), 0xF0);
  EXPECT_EQ(chip_.save(), 0);
  EXPECT_THAT(fake_.batches(),
              ElementsAre(Operations{Op::read8(3)}, Operations{Op::write8(3, 0xF0)}));
}

TEST_F(Expander, GivesAnOutputBankWithWhatIsPending) {
  chip_.writeBit(0, 7, true);
  EXPECT_EQ(out(0), 0x8F);
  EXPECT_EQ(fake_.value8(2), 0x0F);
}

TEST_F(Expander, WritesAllBanksInOneBatchFromTheLowest) {
  chip_.writeBit(1, 0, true);
  chip_.writeBit(0, 0, false);
  EXPECT_EQ(chip_.save(), 0);
  EXPECT_EQ(fake_.batches().back(), (Operations{Op::write8(2, 0x0E), Op::write8(3, 0xF1)}));
}

TEST_F(Expander, ReadsTheChipAnewAfterASave) {
  chip_.writeBit(0, 7, true);
  chip_.save();
  fake_.set8(2, 0x00);
  chip_.writeBit(0, 6, true);
  chip_.save();
  EXPECT_EQ(fake_.value8(2), 0x40);
}

TEST_F(Expander, KnowsABankOfOnesAsLoaded) {
  fake_.set8(2, 0xFF);
  EXPECT_EQ(out(0), 0xFF);
  EXPECT_EQ(out(0), 0xFF);
  EXPECT_EQ(chip_.save(), 0);
  EXPECT_THAT(fake_.batches(),
              ElementsAre(Operations{Op::read8(2)}, Operations{Op::write8(2, 0xFF)}));
}

TEST_F(Expander, FindsAPinsOutput) {
  EXPECT_EQ(chip_.writeBit(13, false), 0);
  EXPECT_EQ(chip_.writeBit(8, true), 0);
  EXPECT_EQ(chip_.save(), 0);
  EXPECT_EQ(fake_.value8(3), 0xD1);
}

TEST_F(Expander, TracesTheWayOfAnOutput) {
  chip_.writeBit(1, 0, true);
  chip_.save();
  EXPECT_THAT(
      host().traces,
      ElementsAre(Trace{5, "GPIOExpander::getoutBank( 1 ) = f0"}, Trace{5, "GPIOExpander::save"},
                  Trace{5, " GPIOExpander::save -- writing output bank 1 = 241"}));
}

TEST_F(Expander, ReportsAnOutputBankThatCannotBeRead) {
  uint8_t value = 0x77;
  faulty_.failOn(3, 6);
  EXPECT_EQ(chip_.getOutBank(1, &value), 6);
  EXPECT_EQ(value, 0x77);
  EXPECT_EQ(chip_.writeBit(1, 0, true), 6);
  EXPECT_EQ(chip_.writeBit(8, true), 6);
  EXPECT_THAT(host().texts(0), testing::Each("Error: status 6 while reading output bank 1"));
  EXPECT_EQ(host().texts(0).size(), 3u);
  faulty_.heal();
  EXPECT_EQ(chip_.save(), 0);
  EXPECT_THAT(fake_.batches(), IsEmpty());
}

TEST_F(Expander, ReportsASaveThatFailsAndForgetsTheChange) {
  chip_.writeBit(0, 7, true);
  faulty_.failNext(6);
  EXPECT_EQ(chip_.save(), 6);
  EXPECT_EQ(host().traces.back(), (Trace{0, "Error: status 6 writing to GPIOExpander"}));
  EXPECT_EQ(chip_.save(), 0);
  EXPECT_EQ(out(0), 0x0F);
}

TEST_F(Expander, WritesThroughWithOneReadAndOneWrite) {
  EXPECT_EQ(chip_.writeThrough(0, 7, true), 0);
  EXPECT_EQ(chip_.writeThrough(15, false), 0);
  EXPECT_THAT(fake_.batches(),
              ElementsAre(Operations{Op::read8(2)}, Operations{Op::write8(2, 0x8F)},
                          Operations{Op::read8(3)}, Operations{Op::write8(3, 0x70)}));
}

TEST_F(Expander, WritesThroughWithTheStatusOfTheSave) {
  faulty_.failOn(2, 6);
  EXPECT_EQ(chip_.writeThrough(0, 7, true), 0);  // nothing could be read, nothing is pending
  faulty_.heal();
  faulty_.failAt(1, 4);
  EXPECT_EQ(chip_.writeThrough(0, 7, true), 4);
}

// Directions.

TEST_F(Expander, WritesTheDirectionsInOneBatch) {
  const uint8_t directions[] = {0xF0, 0x0F};
  EXPECT_EQ(chip_.writeConfig(directions), 0);
  EXPECT_THAT(fake_.batches(), ElementsAre(Operations{Op::write8(6, 0xF0), Op::write8(7, 0x0F)}));
  faulty_.failNext(6);
  EXPECT_EQ(chip_.writeConfig(directions), 6);
}

TEST_F(Expander, ConfiguresWithoutAWordOnDirectionsThatFail) {
  const uint8_t directions[] = {0xF0, 0x0F};
  faulty_.failNext(6);
  chip_.configure(directions);
  EXPECT_THAT(host().traces, ElementsAre(Trace{5, "GPIOExpander::save"}));
  EXPECT_THAT(fake_.batches(), IsEmpty());
}

TEST_F(Expander, ReportsPendingOutputsThatCannotBeConfigured) {
  const uint8_t directions[] = {0xF0, 0x0F};
  out(0);
  faulty_.failAt(1, 6);
  chip_.configure(directions);
  EXPECT_EQ(host().traces.back(), (Trace{0, "Error: failed to write PCA9555 pin configuration"}));
}

// Other geometry.

TEST(ExpanderOf5Banks, FindsEachKindOfBankFromItsBase) {
  FakeHam fake;
  Chip chip(&fake, 5, 2, 0x10, 0x20, 0x30);
  fake.set8(0x14, 0x01);
  fake.set8(0x24, 0x02);
  uint8_t value = 0;
  EXPECT_EQ(chip.getInBank(4, &value), 0);
  EXPECT_EQ(value, 0x01);
  EXPECT_EQ(chip.getOutBank(4, &value), 0);
  EXPECT_EQ(value, 0x02);
  const uint8_t directions[] = {1, 2, 3, 4, 5};
  EXPECT_EQ(chip.writeConfig(directions), 0);
  EXPECT_EQ(fake.batches().back(),
            (Operations{Op::write8(0x30, 1), Op::write8(0x31, 2), Op::write8(0x32, 3),
                        Op::write8(0x33, 4), Op::write8(0x34, 5)}));
}

TEST(ExpanderAtTheTop, KeepsRegistersIn8Bits) {
  FakeHam fake;
  Chip chip(&fake, 2, 2, 0xFF, 0xFF, 0xFF);
  fake.set8(0x00, 0x5A);
  uint8_t value = 0;
  EXPECT_EQ(chip.getInBank(1, &value), 0);
  EXPECT_EQ(value, 0x5A);
  EXPECT_EQ(chip.getOutBank(1, &value), 0);
  EXPECT_EQ(value, 0x5A);
  const uint8_t directions[] = {1, 2};
  chip.writeConfig(directions);
  EXPECT_EQ(fake.batches().back(), (Operations{Op::write8(0xFF, 1), Op::write8(0x00, 2)}));
}

// Banks that the chip does not have.

TEST_F(Expander, RefusesTheBankBehindTheLast) {
  uint8_t byte = 0x77;
  bool level = true;
  EXPECT_EQ(chip_.getInBank(2, &byte), 5);
  EXPECT_EQ(chip_.getOutBank(2, &byte), 5);
  EXPECT_EQ(chip_.readBit(2, 0, &level), 5);
  EXPECT_EQ(chip_.readBit(16, &level), 5);
  EXPECT_EQ(chip_.writeBit(2, 0, true), 5);
  EXPECT_EQ(chip_.writeBit(16, true), 5);
  EXPECT_EQ(chip_.writeThrough(2, 0, true), 5);
  EXPECT_EQ(chip_.writeThrough(16, true), 5);
  EXPECT_EQ(byte, 0x77);
  EXPECT_TRUE(level);
  EXPECT_EQ(chip_.save(), 0);
  EXPECT_THAT(fake_.batches(), IsEmpty());
}

TEST_F(Expander, WritesWhatIsPendingWhenItRefusesABank) {
  chip_.writeBit(0, 7, true);
  EXPECT_EQ(chip_.writeThrough(2, 0, true), 5);
  EXPECT_EQ(fake_.value8(2), 0x8F);
}

TEST_F(Expander, StopsOnABankBehindThat) {
  uint8_t byte;
  bool level;
  EXPECT_CHECK(chip_.getInBank(3, &byte), kUnit, kBankText);
  EXPECT_CHECK(chip_.getOutBank(3, &byte), kUnit, kBankText);
  EXPECT_CHECK(chip_.readBit(24, &level), kUnit, kBankText);
  EXPECT_CHECK(chip_.writeBit(255, 0, true), kUnit, kBankText);
}

TEST_F(Expander, StopsOnABitThatAByteDoesNotHave) {
  bool level;
  EXPECT_CHECK(chip_.readBit(0, 8, &level), kUnit, kBitText);
  EXPECT_CHECK(chip_.writeBit(0, 8, true), kUnit, kBitText);
}

TEST(ExpanderWithoutBanks, RefusesTheFirst) {
  FakeHam fake;
  Chip chip(&fake, 0);
  uint8_t byte;
  EXPECT_EQ(chip.getInBank(0, &byte), 5);
  EXPECT_EQ(chip.getOutBank(0, &byte), 5);
  EXPECT_EQ(chip.save(), 0);
  EXPECT_THAT(fake.batches(), IsEmpty());
}

}  // namespace
