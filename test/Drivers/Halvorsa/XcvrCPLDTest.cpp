// SPDX-License-Identifier: Apache-2.0
#include "Drivers/Halvorsa/XcvrCPLD.hpp"

#include <gmock/gmock.h>

#include "Utils/NotImplemented.hpp"
#include "test/Drivers/Halvorsa/CageSignals.hpp"
#include "test/support/Check.hpp"
#include "test/support/Device.hpp"
#include "test/support/FakeHam.hpp"
#include "test/support/FaultyHam.hpp"
#include "test/support/Host.hpp"
#include "test/support/ScriptedHam.hpp"

namespace {

using Component::LogicalDevice::QsfpXcvr;
using Component::LogicalDevice::SfpXcvr;
using Doubles::CageRegister;
using Doubles::CageSignal;
using Doubles::checkCage;
using Doubles::FakeHam;
using Doubles::FaultyHam;
using Doubles::host;
using Doubles::made;
using Doubles::Operations;
using Doubles::ScriptedHam;
using Doubles::simulatedBytes;
using Doubles::Trace;
using Drivers::DriverArgs;
using Drivers::HalvorsaQCPLD;
using Drivers::HalvorsaYCPLD;
using Drivers::HalvorsaZCPLD;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

namespace Op = Doubles::Op;

constexpr const char* kUnit = "Drivers/Halvorsa/XcvrCPLD";
const Operations kPoll = {Op::read16(1), Op::read16(2), Op::read16(3), Op::read16(4)};

// The high byte of a CPLD's register comes first on the bus, the low byte of a word.
constexpr uint16_t onBus(uint16_t reg) { return static_cast<uint16_t>(reg << 8 | reg >> 8); }

// Where a port's four bits stand: a register and the lowest of the bits.
struct Place {
  unsigned index;
  uint8_t reg;
  uint16_t lowest;
  const char* text;  // register and bit as traced
};
constexpr Place kPlaces[] = {
    {0, 1, 0x1000, "reg=0x1 bit=12"},  {1, 1, 0x0100, "reg=0x1 bit=8"},
    {2, 1, 0x0010, "reg=0x1 bit=4"},   {3, 1, 0x0001, "reg=0x1 bit=0"},
    {4, 2, 0x1000, "reg=0x2 bit=12"},  {5, 2, 0x0100, "reg=0x2 bit=8"},
    {6, 2, 0x0010, "reg=0x2 bit=4"},   {7, 2, 0x0001, "reg=0x2 bit=0"},
    {8, 3, 0x1000, "reg=0x3 bit=12"},  {9, 3, 0x0100, "reg=0x3 bit=8"},
    {10, 3, 0x0010, "reg=0x3 bit=4"},  {11, 3, 0x0001, "reg=0x3 bit=0"},
    {12, 4, 0x1000, "reg=0x4 bit=12"}, {13, 4, 0x0100, "reg=0x4 bit=8"},
    {14, 4, 0x0010, "reg=0x4 bit=4"},  {15, 4, 0x0001, "reg=0x4 bit=0"},
};

// The signals by their bit of the port's four.
constexpr unsigned kPresent = 0x2;  // of both kinds
constexpr CageSignal<SfpXcvr> kSfpSignals[] = {
    {"RX loss", &SfpXcvr::getRxLos, nullptr, 0x1, 1},
    {"TX disable", &SfpXcvr::getTxDisable, &SfpXcvr::setTxDisable, 0x4, 1},
    {"TX fault", &SfpXcvr::getTxFault, nullptr, 0x8, 1},
};
constexpr CageSignal<QsfpXcvr> kQsfpSignals[] = {
    {"low-power mode", &QsfpXcvr::getLpMode, &QsfpXcvr::setLpMode, 0x1, 1},
    {"interrupt", &QsfpXcvr::getInterrupt, nullptr, 0x4, 0},
    {"reset", &QsfpXcvr::getReset, &QsfpXcvr::setReset, 0x8, 0},
};

// A CPLD over a fake HAM whose registers hold 0.
template <class Driver>
class Cpld : public testing::Test {
 protected:
  Cpld() {
    for (uint8_t reg = 1; reg <= 4; ++reg) {
      fake_.set16(reg, 0);
    }
  }

  void start() {
    device_->init();
    fake_.forgetBatches();
    host().traces.clear();
  }
  void poll() { host().fire(host().timer()); }
  // What a register holds, from the next poll on.
  void hold(uint8_t reg, uint16_t value) {
    fake_.set16(reg, onBus(value));
    poll();
    fake_.forgetBatches();
    host().traces.clear();
  }
  uint16_t held(uint8_t reg) { return onBus(fake_.value16(reg)); }

  std::unique_ptr<SfpXcvr> sfp(unsigned id) { return Doubles::newSfp(*device_, id); }
  std::unique_ptr<QsfpXcvr> qsfp(unsigned id) { return Doubles::newQsfp(*device_, id); }

  CageRegister bitsAt(const Place& place) {
    return {0xFFFF, place.lowest,
            [this, place](unsigned value) { hold(place.reg, static_cast<uint16_t>(value)); },
            [this, place] { return held(place.reg); }};
  }

  FakeHam fake_;
  FaultyHam faulty_{fake_};
  std::unique_ptr<Driver> device_ = made<Driver>(faulty_);
};

// What the variants share.

template <class Driver>
constexpr const char* kName = nullptr;
template <>
constexpr const char* kName<HalvorsaQCPLD> = "HalvorsaQCPLD";
template <>
constexpr const char* kName<HalvorsaYCPLD> = "HalvorsaYCPLD";
template <>
constexpr const char* kName<HalvorsaZCPLD> = "HalvorsaZCPLD";

template <class Driver>
class SfpCpld : public Cpld<Driver> {};
using Variants = testing::Types<HalvorsaQCPLD, HalvorsaYCPLD, HalvorsaZCPLD>;
TYPED_TEST_SUITE(SfpCpld, Variants);

TYPED_TEST(SfpCpld, MakesItsTimerAndThenPollsOnceAndEverySecond) {
  const std::string name = kName<TypeParam>;
  EXPECT_THAT(host().traces,
              ElementsAre(Trace{5, "Creating " + name + " device"}, Trace{0, "creating timer"}));
  EXPECT_THAT(host().timer().intervals, IsEmpty());
  host().traces.clear();
  this->device_->init();
  EXPECT_THAT(host().traces,
              ElementsAre(Trace{5, name + " init function"}, Trace{0, "HalvXcvrCPLD::init()"},
                          Trace{6, "Register cache updated for HalvXcvrCPLD"},
                          Trace{0, "setting polling interval to 1000ms"}));
  EXPECT_THAT(this->fake_.batches(), ElementsAre(kPoll));
  EXPECT_THAT(host().timer().intervals, ElementsAre(1000u));
}

TYPED_TEST(SfpCpld, PollsWithOneTransactionOfFourReads) {
  this->start();
  this->poll();
  this->poll();
  EXPECT_THAT(this->fake_.batches(), ElementsAre(kPoll, kPoll));
  EXPECT_THAT(host().timer().intervals, ElementsAre(1000u, 1000u, 1000u));
}

TYPED_TEST(SfpCpld, HasEachSignalAtItsBit) {
  this->start();
  unsigned id = 0;
  for (const char* cpld : {"first", "second", "third"}) {
    SCOPED_TRACE(cpld);
    for (const Place& place : kPlaces) {
      checkCage(*this->sfp(++id), this->bitsAt(place), kPresent, kSfpSignals);
    }
  }
  EXPECT_EQ(id, 48u);
}

TYPED_TEST(SfpCpld, StopsOnAPortThatIsNone) {
  constexpr const char* kText = "id >= 1 && id <= 48";
  EXPECT_CHECK(this->device_->newSfpXcvr(0, DriverArgs()), kUnit, kText);
  EXPECT_CHECK(this->device_->newSfpXcvr(49, DriverArgs()), kUnit, kText);
}

// One variant, as SFP.

using YCpld = Cpld<HalvorsaYCPLD>;

TEST_F(YCpld, TracesANewPortWithItsNumberLess1) {
  host().traces.clear();
  for (const Place& place : kPlaces) {
    host().traces.clear();
    const std::unique_ptr<SfpXcvr> cage(device_->newSfpXcvr(place.index + 33, DriverArgs()));
    EXPECT_THAT(
        host().traces,
        ElementsAre(
            Trace{5, "creating new SfpXcvr for id " + std::to_string(place.index + 33)},
            Trace{5, "id=" + std::to_string(place.index + 32) + " " + std::string(place.text)}));
  }
}

TEST_F(YCpld, TracesEachOperationWithThePortsIndex) {
  start();
  const auto cage = sfp(18);
  int value;
  cage->getPresence();
  cage->getTxFault(&value);
  cage->getRxLos(&value);
  cage->getTxDisable(&value);
  cage->setTxDisable(0);
  EXPECT_THAT(host().traces,
              ElementsAre(Trace{5, "getSfpPresence(): id=1"}, Trace{5, "getSfpTxFault(): id=1"},
                          Trace{5, "getSfpRxLos(): id=1"}, Trace{5, "getSfpTxDisable(): id=1"},
                          Trace{5, "setSfpTxDisable(): id=1"}));
}

TEST_F(YCpld, TakesTheFirstByteOfAWordForTheHighOne) {
  fake_.setBlock(3, std::string("\x20\x00", 2));
  start();
  EXPECT_EQ(sfp(9)->getPresence(), 1);
}

TEST_F(YCpld, WritesTheHighByteFirst) {
  start();
  const auto cage = sfp(6);
  EXPECT_EQ(cage->setTxDisable(1), 0);
  EXPECT_THAT(fake_.batches(), ElementsAre(Operations{Op::write16(2, 0x0004)}));
  EXPECT_EQ(fake_.block(2), std::string("\x04\x00", 2));
  int disabled = 0;
  EXPECT_EQ(cage->getTxDisable(&disabled), 0);
  EXPECT_EQ(disabled, 1);
}

TEST_F(YCpld, AnswersQueriesWithoutTouchingTheBus) {
  start();
  const auto cage = sfp(1);
  fake_.set16(1, 0xFFFF);
  int value = 7;
  EXPECT_EQ(cage->getPresence(), 0);
  EXPECT_EQ(cage->getTxFault(&value), 0);
  EXPECT_EQ(cage->getRxLos(&value), 0);
  EXPECT_EQ(cage->getTxDisable(&value), 0);
  EXPECT_EQ(value, 0);
  EXPECT_THAT(fake_.batches(), IsEmpty());
  poll();
  EXPECT_EQ(cage->getPresence(), 1);
}

TEST_F(YCpld, WritesIntoTheCachedValue) {
  start();
  hold(1, 0x8421);
  fake_.set16(1, 0);  // not polled yet
  EXPECT_EQ(sfp(4)->setTxDisable(1), 0);
  EXPECT_EQ(held(1), 0x8425);
}

TEST_F(YCpld, KeepsTheCacheOverAWriteThatFails) {
  start();
  const auto cage = sfp(6);
  faulty_.failNext(6);
  EXPECT_EQ(cage->setTxDisable(1), 6);
  int disabled = 7;
  EXPECT_EQ(cage->getTxDisable(&disabled), 0);
  EXPECT_EQ(disabled, 0);
}

TEST_F(YCpld, KeepsTheCacheOverAPollThatFails) {
  start();
  hold(1, 0x2000);
  const auto cage = sfp(1);
  fake_.set16(1, 0);
  faulty_.failNext(6);
  poll();
  EXPECT_EQ(host().traces.back(), (Trace{0, "Failed to poll information for HalvXcvrCPLD"}));
  EXPECT_TRUE(host().timer().armed);
  EXPECT_EQ(cage->getPresence(), 1);
  poll();
  EXPECT_EQ(cage->getPresence(), 0);
}

TEST_F(YCpld, StartsWithoutAFirstPoll) {
  faulty_.failNext(6);
  device_->init();
  EXPECT_TRUE(host().traced(0, "Failed to poll information for HalvXcvrCPLD"));
  EXPECT_TRUE(host().timer().armed);
  int value = 7;
  EXPECT_EQ(sfp(1)->getPresence(), 0);
  EXPECT_EQ(sfp(1)->getRxLos(&value), 0);
  EXPECT_EQ(value, 0);
  fake_.set16(1, onBus(0x2000));
  poll();
  EXPECT_EQ(sfp(1)->getPresence(), 1);
}

TEST_F(YCpld, StopsWhenItCannotPoll) {
  host().timerSetStatus = 1;
  EXPECT_CHECK_AFTER(device_->init(), (Trace{0, "failed to set timer interval"}), kUnit,
                     "pollStart()");
}

TEST_F(YCpld, GivesItsTimerBack) {
  start();
  device_.reset();
  EXPECT_TRUE(host().timer().deleted);
}

TEST_F(YCpld, HasNoQsfpsAndNoSimulatedRegisters) {
  EXPECT_THROW(device_->newQsfpXcvr(1, DriverArgs()), NotImplementedException);
  EXPECT_EQ(device_->expectedValues(), nullptr);
}

// Single bits.

TEST_F(YCpld, ReadsABitAnewOnRequest) {
  start();
  fake_.set16(9, onBus(0x0080));
  int value = 7;
  EXPECT_EQ(device_->getRegisterBit(9, 7, &value, false), 0);
  EXPECT_EQ(value, 0);
  EXPECT_EQ(device_->getRegisterBit(9, 7, &value, true), 0);
  EXPECT_EQ(value, 1);
  EXPECT_THAT(fake_.batches(), ElementsAre(Operations{Op::read16(9)}));
  EXPECT_EQ(device_->getRegisterBit(9, 7, &value, false), 0);  // it is cached now
  EXPECT_EQ(value, 1);
}

TEST_F(YCpld, ReportsABitThatCannotBeReadAnew) {
  start();
  hold(1, 0x0001);
  int value = 7;
  faulty_.failNext(6);
  EXPECT_EQ(device_->getRegisterBit(1, 0, &value, true), 6);
  EXPECT_EQ(value, 7);
  EXPECT_EQ(device_->getRegisterBit(1, 0, &value, false), 0);
  EXPECT_EQ(value, 1);
}

TEST_F(YCpld, WritesABitIntoWhatTheRegisterHoldsOnRequest) {
  start();
  fake_.set16(1, onBus(0x00F0));
  EXPECT_EQ(device_->setRegisterBit(1, 15, true, true), 0);
  EXPECT_THAT(fake_.batches(),
              ElementsAre(Operations{Op::read16(1)}, Operations{Op::write16(1, onBus(0x80F0))}));
  int value = 0;
  EXPECT_EQ(device_->getRegisterBit(1, 4, &value, false), 0);
  EXPECT_EQ(value, 1);
}

TEST_F(YCpld, WritesNoBitWhenTheRegisterCannotBeRead) {
  start();
  faulty_.failNext(4);
  EXPECT_EQ(device_->setRegisterBit(1, 15, true, true), 4);
  EXPECT_THAT(fake_.batches(), IsEmpty());
}

// QSFP.

using QCpld = Cpld<HalvorsaQCPLD>;

TEST_F(QCpld, HasEachSignalOfAQsfpAtItsBit) {
  start();
  unsigned id = 0;
  for (const char* cpld : {"first", "second"}) {
    SCOPED_TRACE(cpld);
    for (const Place& place : kPlaces) {
      checkCage(*qsfp(++id), bitsAt(place), kPresent, kQsfpSignals);
    }
  }
  EXPECT_EQ(id, 32u);
}

TEST_F(QCpld, TracesANewQsfpWithItsIndex) {
  for (const Place& place : kPlaces) {
    host().traces.clear();
    const std::unique_ptr<QsfpXcvr> cage(device_->newQsfpXcvr(place.index + 17, DriverArgs()));
    EXPECT_THAT(
        host().traces,
        ElementsAre(Trace{5, "creating new QsfpXcvr for id " + std::to_string(place.index + 17)},
                    Trace{5, "id=" + std::to_string(place.index) + " " + std::string(place.text)}));
  }
}

TEST_F(QCpld, TracesEachOperationWithThePortsIndex) {
  start();
  const auto cage = qsfp(19);
  int value = 7;
  cage->getPresence();
  cage->getLpMode(&value);
  cage->setLpMode(0);
  cage->getReset(&value);
  cage->setReset(0);
  cage->getInterrupt(&value);
  cage->getModSel(&value);
  cage->setModSel(0);
  EXPECT_THAT(host().traces,
              ElementsAre(Trace{5, "getQsfpPresence(): id=2"}, Trace{5, "getQsfpLpMode(): id=2"},
                          Trace{5, "setQsfpLpMode(): id=2"}, Trace{5, "getQsfpReset(): id=2"},
                          Trace{5, "setQsfpReset(): id=2"}, Trace{5, "getQsfpInterrupt(): id=2"},
                          Trace{5, "getQsfpModSel(): id=2"}, Trace{5, "setQsfpModSel(): id=2"}));
}

TEST_F(QCpld, HasQsfps3And19AtTheSameBits) {
  start();
  EXPECT_EQ(qsfp(3)->setLpMode(1), 0);
  int low = 0;
  EXPECT_EQ(qsfp(19)->getLpMode(&low), 0);
  EXPECT_EQ(low, 1);
  EXPECT_EQ(held(1), 0x0010);
}

TEST_F(QCpld, ResetsByClearingTheBitAndReadsBackWhatWasGiven) {
  start();
  const auto cage = qsfp(1);
  int reset = 7;
  EXPECT_EQ(cage->setReset(0), 0);
  EXPECT_EQ(held(1), 0x8000);
  EXPECT_EQ(cage->getReset(&reset), 0);
  EXPECT_EQ(reset, 0);
  EXPECT_EQ(cage->setReset(1), 0);
  EXPECT_EQ(held(1), 0x0000);
  EXPECT_EQ(cage->getReset(&reset), 0);
  EXPECT_EQ(reset, 1);
}

TEST_F(QCpld, IsEmptyInResetAndInterruptingBeforeTheFirstPoll) {
  faulty_.failAlways(6);
  device_->init();
  const auto cage = qsfp(1);
  int value = 7;
  EXPECT_EQ(cage->getPresence(), 0);
  EXPECT_EQ(cage->getReset(&value), 0);
  EXPECT_EQ(value, 1);
  value = 7;
  EXPECT_EQ(cage->getInterrupt(&value), 0);
  EXPECT_EQ(value, 1);
  EXPECT_EQ(cage->getLpMode(&value), 0);
  EXPECT_EQ(value, 0);
}

TEST_F(QCpld, HasNoModuleSelect) {
  start();
  const auto cage = qsfp(1);
  int value = 7;
  EXPECT_EQ(cage->getModSel(&value), 0);
  EXPECT_EQ(cage->setModSel(1), 0);
  EXPECT_EQ(value, 7);
  EXPECT_THAT(fake_.batches(), IsEmpty());
}

TEST_F(QCpld, ReportsACommandThatFails) {
  start();
  const auto cage = qsfp(1);
  faulty_.failAlways(6);
  EXPECT_EQ(cage->setReset(0), 6);
  EXPECT_EQ(cage->setLpMode(1), 6);
  int value = 7;
  EXPECT_EQ(cage->getLpMode(&value), 0);
  EXPECT_EQ(value, 0);
}

TEST_F(QCpld, StopsOnAQsfpThatIsNone) {
  constexpr const char* kText = "id >= 1 && id <= 32";
  EXPECT_CHECK(device_->newQsfpXcvr(0, DriverArgs()), kUnit, kText);
  EXPECT_CHECK(device_->newQsfpXcvr(33, DriverArgs()), kUnit, kText);
}

TEST_F(QCpld, HasItsSimulatedRegisters) {
  EXPECT_EQ(device_->expectedValues(), &HalvorsaQCPLD::values);
  EXPECT_THAT(simulatedBytes(HalvorsaQCPLD::values),
              ElementsAre(Pair(1, 0), Pair(2, 0), Pair(3, 0), Pair(4, 0)));
}

}  // namespace
