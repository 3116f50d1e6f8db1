// SPDX-License-Identifier: Apache-2.0
#include "Drivers/Halvorsa/XcvrExpander.hpp"

#include <gmock/gmock.h>

#include "Utils/NotImplemented.hpp"
#include "test/Drivers/Halvorsa/CageSignals.hpp"
#include "test/support/Check.hpp"
#include "test/support/Device.hpp"
#include "test/support/FakeHam.hpp"
#include "test/support/FaultyHam.hpp"
#include "test/support/Host.hpp"
#include "test/support/LibraryClock.hpp"
#include "test/support/ScriptedHam.hpp"

namespace {

using namespace std::chrono_literals;
using Component::LogicalDevice::QsfpXcvr;
using Component::LogicalDevice::SfpXcvr;
using Doubles::CageRegister;
using Doubles::CageSignal;
using Doubles::checkCage;
using Doubles::FakeHam;
using Doubles::FaultyHam;
using Doubles::host;
using Doubles::LibraryClock;
using Doubles::made;
using Doubles::Operations;
using Doubles::ScriptedHam;
using Doubles::settings;
using Doubles::simulatedBytes;
using Doubles::Trace;
using Drivers::DriverArgs;
using Drivers::HalvorsaPCA9698;
using Drivers::HalvorsaSFP;
using Drivers::HalvSPCA9555;
using Drivers::HalvSQSFP;
using Drivers::HalvYQSFP;
using Drivers::HalvZQSFP;
using testing::ElementsAre;
using testing::IsEmpty;

namespace Op = Doubles::Op;

constexpr const char* kUnit = "Drivers/Halvorsa/XcvrExpander";

// Where a port's four bits stand: an input and an output register, and the lowest of the bits.
struct Place {
  unsigned id;
  uint8_t input;
  uint8_t output;
  uint8_t lowest;
};

constexpr Place kOnPca9555[] = {
    {49, 0, 2, 0x01}, {50, 0, 2, 0x10}, {51, 1, 3, 0x01},
    {52, 1, 3, 0x10}, {53, 0, 2, 0x01}, {54, 0, 2, 0x10},
};

constexpr Place kQsfpOnPca9698[] = {
    {49, 0, 8, 0x01},  {50, 0, 8, 0x10},  {51, 1, 9, 0x01},  {52, 1, 9, 0x10},
    {53, 2, 10, 0x01}, {54, 2, 10, 0x10}, {55, 3, 11, 0x01}, {56, 3, 11, 0x10},
};

// On the first expander; five more follow with the same pins.
constexpr Place kSfpOnPca9698[] = {
    {1, 0, 8, 0x01},  {2, 0, 8, 0x10},  {3, 1, 9, 0x01},  {4, 1, 9, 0x10},
    {5, 2, 10, 0x01}, {6, 2, 10, 0x10}, {7, 3, 11, 0x01}, {8, 3, 11, 0x10},
};
constexpr unsigned kSfpExpanders = 6;

// The signals by their bit of the port's four.
constexpr unsigned kSfpPresent = 0x1;
constexpr CageSignal<SfpXcvr> kSfpSignals[] = {
    {"RX loss", &SfpXcvr::getRxLos, nullptr, 0x2, 1},
    {"TX disable", &SfpXcvr::getTxDisable, &SfpXcvr::setTxDisable, 0x4, 1},
    {"TX fault", &SfpXcvr::getTxFault, nullptr, 0x8, 1},
};
constexpr unsigned kQsfpPresent = 0x4;
constexpr CageSignal<QsfpXcvr> kQsfpSignals[] = {
    {"reset", &QsfpXcvr::getReset, &QsfpXcvr::setReset, 0x1, 0},
    {"interrupt", &QsfpXcvr::getInterrupt, nullptr, 0x2, 0},
    {"low-power mode", &QsfpXcvr::getLpMode, &QsfpXcvr::setLpMode, 0x8, 1},
};

template <class Driver>
Drivers::ArgMap argsOf() {
  return {};
}
template <>
Drivers::ArgMap argsOf<HalvSQSFP>() {
  return {{"bank-io-0", "102"}, {"bank-io-1", "358"}};  // 0x66, the second in 8 bits
}

template <class Driver>
class CageExpander : public testing::Test {
 protected:
  CageExpander() { host().traces.clear(); }

  std::unique_ptr<SfpXcvr> sfp(unsigned id) { return Doubles::newSfp(*device_, id); }
  std::unique_ptr<QsfpXcvr> qsfp(unsigned id) { return Doubles::newQsfp(*device_, id); }

  // Inputs and outputs of a port are set together; each query comes when the cache is too old.
  CageRegister bitsAt(const Place& place) {
    return {0xFF, place.lowest,
            [this, place](unsigned value) {
              fake_.set8(place.input, static_cast<uint8_t>(value));
              fake_.set8(place.output, static_cast<uint8_t>(value));
              clock_.advance(3s);
            },
            [this, place] { return fake_.value8(place.output); }};
  }
  void checkQsfp(const Place& place) {
    checkCage(*qsfp(place.id), bitsAt(place), kQsfpPresent, kQsfpSignals);
  }

  FakeHam fake_;
  FaultyHam faulty_{fake_};
  LibraryClock clock_;
  std::unique_ptr<Driver> device_ = made<Driver>(faulty_, argsOf<Driver>());
};

// The traces of the cages' operations, without those of the expander.
std::vector<std::string> operations() {
  std::vector<std::string> found;
  for (const std::string& text : host().texts(5)) {
    if (text.find("(): ") != std::string::npos) {
      found.push_back(text);
    }
  }
  return found;
}

// HalvSPCA9555.

using Pca9555Cages = CageExpander<HalvSQSFP>;

TEST(Pca9555CagesStart, WritesTheDirectionsAndNoOutput) {
  ScriptedHam ham;
  const auto device = made<HalvSQSFP>(ham, argsOf<HalvSQSFP>());
  EXPECT_THAT(host().traces, ElementsAre(Trace{5, "Creating Halvorsa QSFP device"}));
  ham.expect({Op::write8(6, 0x66), Op::write8(7, 0x66)});
  device->init();
}

TEST(Pca9555CagesStart, WantsBothDirections) {
  constexpr const char* kText = "it != args.driverArgs.end()";
  EXPECT_CHECK(HalvSQSFP::create(settings({{"bank-io-1", "0"}}), nullptr), kUnit, kText);
  EXPECT_CHECK(HalvSQSFP::create(settings({{"bank-io-0", "0"}}), nullptr), kUnit, kText);
}

TEST_F(Pca9555Cages, ReportPendingOutputsThatFailAtTheStart) {
  fake_.set8(2, 0);
  device_->writeBit(0, 0, true);
  faulty_.failAt(1, 6);
  device_->init();
  EXPECT_EQ(host().traces.back(), (Trace{0, "Error: failed to write PCA9555 pin configuration"}));
}

TEST_F(Pca9555Cages, HaveEachSignalAtItsPin) {
  for (const Place& place : kOnPca9555) {
    checkQsfp(place);
  }
}

TEST_F(Pca9555Cages, TraceANewPort) {
  const std::unique_ptr<QsfpXcvr> cage(device_->newQsfpXcvr(54, DriverArgs()));
  EXPECT_THAT(host().traces, ElementsAre(Trace{5, "creating new QsfpXcvr for id 54"}));
}

TEST_F(Pca9555Cages, StopOnAPortThatIsNone) {
  constexpr const char* kText = "49 <= id && id <= 54";
  EXPECT_CHECK(device_->newQsfpXcvr(48, DriverArgs()), kUnit, kText);
  EXPECT_CHECK(device_->newQsfpXcvr(55, DriverArgs()), kUnit, kText);
}

TEST_F(Pca9555Cages, AreNotForSfps) {
  EXPECT_THROW(device_->newSfpXcvr(49, DriverArgs()), NotImplementedException);
}

TEST_F(Pca9555Cages, ResetPort50AtOnce) {
  fake_.set8(2, 0xFF);
  EXPECT_EQ(qsfp(50)->setReset(1), 0);
  EXPECT_THAT(fake_.batches(),
              ElementsAre(Operations{Op::read8(2)}, Operations{Op::write8(2, 0xEF)}));
}

TEST_F(Pca9555Cages, ReadTheChipOnceForTwoQueriesWithin2Seconds) {
  fake_.set8(1, 0x04);
  const auto cage = qsfp(51);
  EXPECT_EQ(cage->getPresence(), 1);
  clock_.advance(2s);
  EXPECT_EQ(cage->getPresence(), 1);
  EXPECT_THAT(fake_.batches(), ElementsAre(Operations{Op::read8(1)}));
}

TEST_F(Pca9555Cages, TraceEachOperationWithTheirIndex) {
  fake_.set8(1, 0);
  fake_.set8(3, 0);
  const auto cage = qsfp(52);
  int value = 7;
  cage->getPresence();
  cage->getLpMode(&value);
  cage->setLpMode(1);
  cage->getReset(&value);
  cage->setReset(1);
  cage->getInterrupt(&value);
  cage->getModSel(&value);
  cage->setModSel(1);
  EXPECT_THAT(operations(),
              ElementsAre("getPresence(): id=51", "getLpMode(): id=51", "setLpMode(): id=51",
                          "getReset(): id=51", "setReset(): id=51", "getInterrupt(): id=51",
                          "getModSel(): id=51", "setModSel(): id=51"));
}

TEST_F(Pca9555Cages, HaveNoModuleSelect) {
  const auto cage = qsfp(49);
  int value = 7;
  EXPECT_EQ(cage->getModSel(&value), 0);
  EXPECT_EQ(cage->setModSel(1), 0);
  EXPECT_EQ(value, 7);
  EXPECT_THAT(fake_.batches(), IsEmpty());
}

TEST_F(Pca9555Cages, NameThePortsFirstBitWhenAReadFails) {
  faulty_.failAlways(6);
  const auto cage = qsfp(52);
  int value = 7;
  EXPECT_EQ(cage->getPresence(), 6);
  EXPECT_EQ(host().traces.back(), (Trace{0, "HalvSPCA9555 bitRead() failed on Bank 1 Bit 4!"}));
  EXPECT_EQ(cage->getLpMode(&value), 6);
  EXPECT_EQ(host().traces.back(), (Trace{0, "HalvSPCA9555 bitRead() failed on Bank 1 Bit 4!"}));
  EXPECT_EQ(value, 7);
}

TEST_F(Pca9555Cages, NameThePortsFirstBitWhenAWriteFails) {
  fake_.set8(3, 0);
  faulty_.failAt(1, 6);
  EXPECT_EQ(qsfp(52)->setLpMode(1), 6);
  EXPECT_EQ(host().traces.back(), (Trace{0, "HalvSPCA9555 bitset() failed on Bank 1 Bit 4!"}));
}

TEST_F(Pca9555Cages, ReportOutputsThatCannotBeReadAndWriteNothing) {
  faulty_.failOn(3, 6);
  EXPECT_EQ(qsfp(52)->setReset(1), 6);
  EXPECT_THAT(fake_.batches(), IsEmpty());
  EXPECT_THAT(host().texts(0), ElementsAre("Error: status 6 while reading output bank 1"));
  EXPECT_EQ(host().traces.back(), (Trace{5, "GPIOExpander::save"}));
}

// Puts all that a driver's simulated registers hold.
void load(FakeHam& fake, const Utils::ExpectedVals& values) {
  for (const auto& [reg, value] : simulatedBytes(values)) {
    fake.set8(reg, value);
  }
}

TEST_F(Pca9555Cages, HoldAModuleInTheFirstPortOfEachBankInSimulation) {
  ASSERT_EQ(device_->expectedValues(), &HalvSPCA9555::values);
  load(fake_, HalvSPCA9555::values);
  int value = 7;
  for (const unsigned id : {49u, 51u}) {
    const auto cage = qsfp(id);
    EXPECT_EQ(cage->getPresence(), 1) << id;
    EXPECT_EQ(cage->getReset(&value), 0);
    EXPECT_EQ(value, 0) << id;
    EXPECT_EQ(cage->getLpMode(&value), 0);
    EXPECT_EQ(value, 0) << id;
    EXPECT_EQ(cage->getInterrupt(&value), 0);
    EXPECT_EQ(value, 0) << id;
  }
  EXPECT_EQ(qsfp(50)->getPresence(), 0);
  EXPECT_EQ(qsfp(52)->getPresence(), 0);
  EXPECT_EQ(qsfp(49)->setReset(1), 0);  // its outputs are there too
  EXPECT_EQ(qsfp(52)->setReset(1), 0);
}

// HalvorsaSFP.

using SfpCages = CageExpander<HalvorsaSFP>;

TEST(SfpCagesStart, WritesTheDirectionsOfFourBanks) {
  ScriptedHam ham;
  const auto device = made<HalvorsaSFP>(ham);
  EXPECT_THAT(host().traces, ElementsAre(Trace{5, "Creating Halvorsa SFP device"}));
  ham.expect(
      {Op::write8(24, 0xBB), Op::write8(25, 0xBB), Op::write8(26, 0xBB), Op::write8(27, 0xBB)});
  device->init();
}

TEST(SfpCagesStart, IsTheSameForGpioLines) {
  ScriptedHam ham;
  const auto device = made<HalvorsaSFP>(ham, {{"type", "gpio"}});
  ham.expect(
      {Op::write8(24, 0xBB), Op::write8(25, 0xBB), Op::write8(26, 0xBB), Op::write8(27, 0xBB)});
  device->init();
}

TEST_F(SfpCages, ReportDirectionsThatFail) {
  faulty_.failNext(6);
  device_->init();
  EXPECT_THAT(host().traces,
              ElementsAre(Trace{0, "Error: failed to write PCA9698 pin configuration"}));
}

TEST_F(SfpCages, HaveEachSignalAtItsPin) {
  for (unsigned expander = 0; expander < kSfpExpanders; ++expander) {
    for (const Place& place : kSfpOnPca9698) {
      const unsigned id = place.id + 8 * expander;
      checkCage(*sfp(id), bitsAt(place), kSfpPresent, kSfpSignals);
    }
  }
}

TEST_F(SfpCages, HavePorts3And11InTheLowHalfOfBank1) {
  fake_.set8(1, 0x01);
  fake_.set8(9, 0x00);
  EXPECT_EQ(sfp(3)->getPresence(), 1);
  EXPECT_EQ(sfp(11)->getPresence(), 1);
  EXPECT_EQ(sfp(11)->setTxDisable(1), 0);
  EXPECT_EQ(fake_.value8(9), 0x04);
}

TEST_F(SfpCages, TraceANewPort) {
  const std::unique_ptr<SfpXcvr> cage(device_->newSfpXcvr(48, DriverArgs()));
  EXPECT_THAT(host().traces, ElementsAre(Trace{5, "creating new SfpXcvr for id 48"}));
}

TEST_F(SfpCages, StopOnAPortThatIsNone) {
  constexpr const char* kText = "1 <= id && id <= 48";
  EXPECT_CHECK(device_->newSfpXcvr(0, DriverArgs()), kUnit, kText);
  EXPECT_CHECK(device_->newSfpXcvr(49, DriverArgs()), kUnit, kText);
}

TEST_F(SfpCages, AreNotForQsfps) {
  EXPECT_THROW(device_->newQsfpXcvr(1, DriverArgs()), NotImplementedException);
}

TEST_F(SfpCages, TraceEachOperationWithTheirIndex) {
  fake_.set8(1, 0);
  fake_.set8(9, 0);
  const auto cage = sfp(11);
  int value = 7;
  cage->getPresence();
  cage->getTxFault(&value);
  cage->getRxLos(&value);
  cage->getTxDisable(&value);
  cage->setTxDisable(1);
  EXPECT_THAT(operations(),
              ElementsAre("getPresence(): id=10", "getTxFault(): id=10", "getRxLos(): id=10",
                          "getTxDisable(): id=10", "setTxDisable(): id=10"));
}

TEST_F(SfpCages, TakeAnyNumberButZeroToDisable) {
  fake_.set8(8, 0x00);
  const auto cage = sfp(1);
  EXPECT_EQ(cage->setTxDisable(-2), 0);
  EXPECT_EQ(fake_.value8(8), 0x04);
  EXPECT_EQ(cage->setTxDisable(0), 0);
  EXPECT_EQ(fake_.value8(8), 0x00);
  EXPECT_EQ(cage->setTxDisable(256), 0);
  EXPECT_EQ(fake_.value8(8), 0x04);
}

TEST_F(SfpCages, GiveTxDisableAsThePinWasLastRead) {
  fake_.set8(0, 0x00);
  fake_.set8(8, 0x00);
  const auto cage = sfp(1);
  int disabled = 7;
  EXPECT_EQ(cage->getTxDisable(&disabled), 0);
  EXPECT_EQ(cage->setTxDisable(1), 0);
  fake_.set8(0, 0x04);  // the pin follows
  EXPECT_EQ(cage->getTxDisable(&disabled), 0);
  EXPECT_EQ(disabled, 0);
  clock_.advance(3s);
  EXPECT_EQ(cage->getTxDisable(&disabled), 0);
  EXPECT_EQ(disabled, 1);
}

TEST_F(SfpCages, NameTheBitWhenAReadFails) {
  faulty_.failAlways(6);
  const auto cage = sfp(4);
  int value = 7;
  EXPECT_EQ(cage->getPresence(), 6);
  EXPECT_EQ(host().traces.back(), (Trace{0, "HalvorsaPCA9698 bitRead() failed on Bank 1 Bit 4!"}));
  EXPECT_EQ(cage->getTxFault(&value), 6);
  EXPECT_EQ(host().traces.back(), (Trace{0, "HalvorsaPCA9698 bitRead() failed on Bank 1 Bit 7!"}));
  EXPECT_EQ(value, 7);
}

TEST_F(SfpCages, NameTheBitWhenAWriteFails) {
  fake_.set8(9, 0);
  faulty_.failAt(1, 6);
  EXPECT_EQ(sfp(4)->setTxDisable(1), 6);
  EXPECT_EQ(host().traces.back(), (Trace{0, "HalvorsaPCA9698 bitset() failed on Bank 1 Bit 6!"}));
}

TEST_F(SfpCages, ReportOutputsThatCannotBeReadAndWriteNothing) {
  faulty_.failOn(9, 4);
  EXPECT_EQ(sfp(4)->setTxDisable(1), 4);
  EXPECT_THAT(fake_.batches(), IsEmpty());
  EXPECT_THAT(host().texts(0), ElementsAre("Error: status 4 while reading output bank 1"));
  EXPECT_EQ(host().traces.back(), (Trace{5, "GPIOExpander::save"}));
}

TEST_F(SfpCages, HoldAModuleWithLightInTheFirstPortOfEachBankInSimulation) {
  ASSERT_EQ(device_->expectedValues(), &HalvorsaPCA9698::values);
  load(fake_, HalvorsaPCA9698::values);
  for (unsigned id = 1; id <= 8; ++id) {
    SCOPED_TRACE(id);
    const auto cage = sfp(id);
    const bool first = id % 2 == 1;
    int value = 7;
    EXPECT_EQ(cage->getPresence(), first ? 1 : 0);
    EXPECT_EQ(cage->getRxLos(&value), 0);
    EXPECT_EQ(value, first ? 0 : 1);
    EXPECT_EQ(cage->getTxFault(&value), 0);
    EXPECT_EQ(value, 0);
    EXPECT_EQ(cage->getTxDisable(&value), 0);
    EXPECT_EQ(value, 0);
    EXPECT_EQ(cage->setTxDisable(1), 0);
  }
}

// HalvYQSFP and the Z variant.

template <class Driver>
struct Qsfp9698;
template <>
struct Qsfp9698<HalvYQSFP> {
  static constexpr const char* kCreation = "Creating Halvorsa SFP device";  // as it is
  static constexpr uint8_t kDirections = 0xBB;
};
template <>
struct Qsfp9698<HalvZQSFP> {
  static constexpr const char* kCreation = "Creating HalvorsaZ QSFP device";
  static constexpr uint8_t kDirections = 0x66;
};

template <class Driver>
class QsfpCages : public CageExpander<Driver> {};
using QsfpDrivers = testing::Types<HalvYQSFP, HalvZQSFP>;
TYPED_TEST_SUITE(QsfpCages, QsfpDrivers);

TYPED_TEST(QsfpCages, WriteTheDirectionsOfFourBanks) {
  constexpr uint8_t kByte = Qsfp9698<TypeParam>::kDirections;
  ScriptedHam ham;
  const auto device = made<TypeParam>(ham);
  EXPECT_THAT(host().traces, ElementsAre(Trace{5, Qsfp9698<TypeParam>::kCreation}));
  ham.expect(
      {Op::write8(24, kByte), Op::write8(25, kByte), Op::write8(26, kByte), Op::write8(27, kByte)});
  device->init();
}

TYPED_TEST(QsfpCages, HaveEachSignalAtItsPin) {
  for (const Place& place : kQsfpOnPca9698) {
    this->checkQsfp(place);
  }
}

TYPED_TEST(QsfpCages, TraceANewPort) {
  const std::unique_ptr<QsfpXcvr> cage(this->device_->newQsfpXcvr(56, DriverArgs()));
  EXPECT_THAT(host().traces, ElementsAre(Trace{5, "creating new QsfpXcvr for id 56"}));
}

TYPED_TEST(QsfpCages, StopOnAPortThatIsNone) {
  constexpr const char* kText = "49 <= id && id <= 56";
  EXPECT_CHECK(this->device_->newQsfpXcvr(48, DriverArgs()), kUnit, kText);
  EXPECT_CHECK(this->device_->newQsfpXcvr(57, DriverArgs()), kUnit, kText);
}

TYPED_TEST(QsfpCages, AreNotForSfps) {
  EXPECT_THROW(this->device_->newSfpXcvr(49, DriverArgs()), NotImplementedException);
}

TYPED_TEST(QsfpCages, NameTheBitWhenAnAccessFails) {
  this->fake_.set8(11, 0);
  const auto cage = this->qsfp(56);
  this->faulty_.failAt(1, 6);
  EXPECT_EQ(cage->setLpMode(1), 6);
  EXPECT_EQ(host().traces.back(), (Trace{0, "HalvorsaPCA9698 bitset() failed on Bank 3 Bit 7!"}));
  this->faulty_.failAlways(6);
  EXPECT_EQ(cage->getPresence(), 6);
  EXPECT_EQ(host().traces.back(), (Trace{0, "HalvorsaPCA9698 bitRead() failed on Bank 3 Bit 6!"}));
}

}  // namespace
