// SPDX-License-Identifier: Apache-2.0
#include "Drivers/Halvorsa/BitXcvr.hpp"

#include <gmock/gmock.h>

#include "test/support/Host.hpp"

namespace {

using Doubles::host;
using Doubles::Trace;
using Drivers::BitQsfpXcvr;
using Drivers::BitSfpXcvr;
using Drivers::Polarity;
using Drivers::XcvrBits;
using Drivers::XcvrPort;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr XcvrBits kBits = {3, 8};

// One access of a port's bit; `value` is what a setter was given.
struct Access {
  uint8_t reg;
  uint8_t base;
  uint8_t offset;
  int value;

  bool operator==(const Access&) const = default;
};
std::ostream& operator<<(std::ostream& out, const Access& access) {
  return out << +access.reg << "/" << +access.base << "+" << +access.offset << "=" << access.value;
}

class StubChip final : public Drivers::XcvrChip {
 public:
  pl_status getRegisterBit(const XcvrBits& bits, uint8_t offset, int* value) override {
    gets.push_back({bits.reg, bits.base, offset, 0});
    if (status == 0) {
      *value = level;
    }
    return status;
  }
  pl_status writeRegisterBit(const XcvrBits& bits, uint8_t offset, bool value) override {
    sets.push_back({bits.reg, bits.base, offset, value ? 1 : 0});
    return status;
  }

  int level = 1;
  pl_status status = 0;
  std::vector<Access> gets;
  std::vector<Access> sets;
};

constexpr Drivers::SfpSignals kSfp = {
    .present = {"askPresent", nullptr, 0, Polarity::kActiveHigh},
    .txFault = {"askFault", nullptr, 1, Polarity::kActiveHigh},
    .rxLos = {"askLoss", nullptr, 2, Polarity::kActiveLow},
    .txDisable = {"askDisable", "putDisable", 3, Polarity::kActiveHigh},
};
constexpr Drivers::QsfpSignals kQsfp = {
    .present = {"askPresent", nullptr, 3, Polarity::kActiveLow},
    .lpMode = {"askLow", "putLow", 2, Polarity::kActiveHigh},
    .reset = {"askReset", "putReset", 1, Polarity::kActiveLow},
    .interrupt = {"askInterrupt", nullptr, 0, Polarity::kActiveLow},
    .modSelGetter = "askSelect",
    .modSelSetter = "putSelect",
};

class Cage : public testing::Test {
 protected:
  StubChip chip_;
  BitSfpXcvr sfp_{30, XcvrPort(&chip_, 13, kBits), kSfp};
  BitQsfpXcvr qsfp_{31, XcvrPort(&chip_, 14, kBits), kQsfp};
};

TEST_F(Cage, HasTheNumberItWasGiven) {
  EXPECT_EQ(sfp_.id, 30u);
  EXPECT_EQ(qsfp_.id, 31u);
}

TEST_F(Cage, AsksForEachSignalOfAnSfp) {
  int value = 7;
  EXPECT_EQ(sfp_.getPresence(), 1);
  EXPECT_EQ(sfp_.getTxFault(&value), 0);
  EXPECT_EQ(value, 1);
  EXPECT_EQ(sfp_.getRxLos(&value), 0);
  EXPECT_EQ(value, 0);  // active low
  EXPECT_EQ(sfp_.getTxDisable(&value), 0);
  EXPECT_EQ(value, 1);
  EXPECT_THAT(chip_.gets, ElementsAre(Access{3, 8, 0, 0}, Access{3, 8, 1, 0}, Access{3, 8, 2, 0},
                                      Access{3, 8, 3, 0}));
  EXPECT_THAT(host().traces,
              ElementsAre(Trace{5, "askPresent(): id=13"}, Trace{5, "askFault(): id=13"},
                          Trace{5, "askLoss(): id=13"}, Trace{5, "askDisable(): id=13"}));
}

TEST_F(Cage, AsksForEachSignalOfAQsfp) {
  int value = 7;
  EXPECT_EQ(qsfp_.getPresence(), 0);  // active low
  EXPECT_EQ(qsfp_.getLpMode(&value), 0);
  EXPECT_EQ(value, 1);
  EXPECT_EQ(qsfp_.getReset(&value), 0);
  EXPECT_EQ(value, 0);
  EXPECT_EQ(qsfp_.getInterrupt(&value), 0);
  EXPECT_EQ(value, 0);
  EXPECT_THAT(chip_.gets, ElementsAre(Access{3, 8, 3, 0}, Access{3, 8, 2, 0}, Access{3, 8, 1, 0},
                                      Access{3, 8, 0, 0}));
  EXPECT_THAT(host().traces,
              ElementsAre(Trace{5, "askPresent(): id=14"}, Trace{5, "askLow(): id=14"},
                          Trace{5, "askReset(): id=14"}, Trace{5, "askInterrupt(): id=14"}));
}

TEST_F(Cage, GivesTheOppositeOfAClearBitThatIsActiveLow) {
  chip_.level = 0;
  int value = 7;
  EXPECT_EQ(qsfp_.getPresence(), 1);
  EXPECT_EQ(qsfp_.getReset(&value), 0);
  EXPECT_EQ(value, 1);
  EXPECT_EQ(qsfp_.getLpMode(&value), 0);
  EXPECT_EQ(value, 0);
}

TEST_F(Cage, WritesWhatIsAskedFor) {
  EXPECT_EQ(sfp_.setTxDisable(1), 0);
  EXPECT_EQ(sfp_.setTxDisable(0), 0);
  EXPECT_EQ(qsfp_.setLpMode(-5), 0);
  EXPECT_THAT(chip_.sets, ElementsAre(Access{3, 8, 3, 1}, Access{3, 8, 3, 0}, Access{3, 8, 2, 1}));
  EXPECT_THAT(host().traces,
              ElementsAre(Trace{5, "putDisable(): id=13"}, Trace{5, "putDisable(): id=13"},
                          Trace{5, "putLow(): id=14"}));
}

TEST_F(Cage, WritesTheOppositeWhereTheBitIsActiveLow) {
  qsfp_.setReset(0);
  qsfp_.setReset(1);
  qsfp_.setReset(256);
  EXPECT_THAT(chip_.sets, ElementsAre(Access{3, 8, 1, 1}, Access{3, 8, 1, 0}, Access{3, 8, 1, 0}));
}

TEST_F(Cage, HasNoModuleSelect) {
  int value = 7;
  EXPECT_EQ(qsfp_.getModSel(&value), 0);
  EXPECT_EQ(qsfp_.setModSel(1), 0);
  EXPECT_EQ(value, 7);
  EXPECT_THAT(chip_.gets, IsEmpty());
  EXPECT_THAT(chip_.sets, IsEmpty());
  EXPECT_THAT(host().traces,
              ElementsAre(Trace{5, "askSelect(): id=14"}, Trace{5, "putSelect(): id=14"}));
}

TEST_F(Cage, ReportsFailuresAndLeavesOutputsAlone) {
  chip_.status = 6;
  int value = 7;
  EXPECT_EQ(sfp_.getPresence(), 6);
  EXPECT_EQ(sfp_.getTxFault(&value), 6);
  EXPECT_EQ(qsfp_.getPresence(), 6);
  EXPECT_EQ(qsfp_.getReset(&value), 6);
  EXPECT_EQ(value, 7);
  EXPECT_EQ(sfp_.setTxDisable(1), 6);
  EXPECT_EQ(qsfp_.setReset(1), 6);
}

TEST_F(Cage, TracesItsIndexIn8Bits) {
  BitSfpXcvr sfp(1, XcvrPort(&chip_, 257, kBits), kSfp);
  sfp.getPresence();
  EXPECT_THAT(host().traces, ElementsAre(Trace{5, "askPresent(): id=1"}));
}

}  // namespace
