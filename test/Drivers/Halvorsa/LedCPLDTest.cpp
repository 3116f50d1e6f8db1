// SPDX-License-Identifier: Apache-2.0
#include "Drivers/Halvorsa/LedCPLD.hpp"

#include <gmock/gmock.h>

#include "test/support/Device.hpp"
#include "test/support/FakeHam.hpp"
#include "test/support/FaultyHam.hpp"
#include "test/support/Host.hpp"
#include "test/support/ScriptedHam.hpp"

namespace {

using Component::LogicalDevice::Gpio;
using Component::LogicalDevice::RegGpio;
using Doubles::FakeHam;
using Doubles::FaultyHam;
using Doubles::host;
using Doubles::made;
using Doubles::Operations;
using Doubles::ScriptedHam;
using Doubles::settings;
using Doubles::Trace;
using Drivers::HalvCLedCPLD;
using Drivers::HalvTLedCPLD;
using Drivers::HalvZLedCPLD;
using testing::ElementsAre;
using testing::IsEmpty;

namespace Op = Doubles::Op;

// The C variant.

TEST(PortLeds, AreSwitchedOneByOneAtTheStart) {
  ScriptedHam ham;
  const auto device = made<HalvCLedCPLD>(ham);
  EXPECT_THAT(host().traces, ElementsAre(Trace{5, "Creating HalvCLedCPLD device"}));
  for (const uint32_t reg : {0u, 1u, 2u, 3u, 4u, 5u, 8u, 9u, 10u, 11u}) {
    ham.expect({Op::write8(reg, 0x00)});
  }
  for (const uint32_t reg : {6u, 7u}) {
    ham.expect({Op::write8(reg, 0xFF)});
  }
  host().traces.clear();
  device->init();
  EXPECT_THAT(host().traces, ElementsAre(Trace{0, "Successfully disable QSFP Port LEDs"},
                                         Trace{0, "Successfully enable QSFP Port LEDs"}));
}

TEST(PortLeds, TraceEachWriteThatFailsAndGoOn) {
  FakeHam fake;
  FaultyHam ham(fake);
  ham.failAlways(6);
  const auto device = made<HalvCLedCPLD>(ham);
  host().traces.clear();
  device->init();
  EXPECT_THAT(
      host().texts(0),
      ElementsAre(
          "Failed to write QSFP Port LED Register: 0", "Failed to write QSFP Port LED Register: 1",
          "Failed to write QSFP Port LED Register: 2", "Failed to write QSFP Port LED Register: 3",
          "Failed to write QSFP Port LED Register: 4", "Failed to write QSFP Port LED Register: 5",
          "Failed to write QSFP Port LED Register: 8", "Failed to write QSFP Port LED Register: 9",
          "Failed to write QSFP Port LED Register: 10",
          "Failed to write QSFP Port LED Register: 11", "Successfully disable QSFP Port LEDs",
          "Failed to write QSFP Port LED Register: 6", "Failed to write QSFP Port LED Register: 7",
          "Successfully enable QSFP Port LEDs"));
}

TEST(PortLeds, AreSwitchedBesideOneThatFails) {
  FakeHam fake;
  FaultyHam ham(fake);
  ham.failOn(4, 6);
  const auto device = made<HalvCLedCPLD>(ham);
  device->init();
  EXPECT_EQ(fake.batches().size(), 11u);
  EXPECT_EQ(fake.value8(11), 0x00);
  EXPECT_EQ(fake.value8(7), 0xFF);
}

TEST(PortLeds, AreSwitchedAgainOnRequest) {
  FakeHam fake;
  const auto device = made<HalvCLedCPLD>(fake);
  device->setLedsRegister();
  EXPECT_THAT(fake.batches(), IsEmpty());  // the lists come with init()
  device->init();
  device->setLedsRegister();
  EXPECT_EQ(fake.batches().size(), 24u);
}

TEST(PortLeds, HaveNoSimulatedRegistersAndPlainLines) {
  FakeHam fake;
  const auto device = made<HalvCLedCPLD>(fake);
  EXPECT_EQ(device->expectedValues(), nullptr);
  fake.set8(6, 0x00);
  const std::unique_ptr<Gpio> line(device->newGpio(settings({{"register", "6"}, {"bitpos", "3"}})));
  EXPECT_EQ(line->bitSet(), 0);
  EXPECT_EQ(fake.value8(6), 0x08);
}

// The variants whose lines are active low.

template <class Cpld>
const char* creationTrace();
template <>
const char* creationTrace<HalvZLedCPLD>() {
  return "Creating HalvZLedCPLD device";
}
template <>
const char* creationTrace<HalvTLedCPLD>() {
  return "Creating HalvTLedCPLD device";
}

template <class Cpld>
class ActiveLowLine : public testing::Test {
 protected:
  std::unique_ptr<Gpio> line(const char* bitpos) {
    return std::unique_ptr<Gpio>(
        device_->newGpio(settings({{"register", "32"}, {"bitpos", bitpos}})));
  }

  static constexpr uint32_t kRegister = 32;
  FakeHam fake_;
  FaultyHam faulty_{fake_};
  std::unique_ptr<Cpld> device_ = made<Cpld>(faulty_);
};
using Variants = testing::Types<HalvZLedCPLD, HalvTLedCPLD>;
TYPED_TEST_SUITE(ActiveLowLine, Variants);

TYPED_TEST(ActiveLowLine, IsOfADeviceThatDoesNothingAtItsStart) {
  EXPECT_THAT(host().traces, ElementsAre(Trace{5, creationTrace<TypeParam>()}));
  this->device_->init();
  this->device_->setLedsRegister();
  EXPECT_THAT(this->fake_.batches(), IsEmpty());
}

TYPED_TEST(ActiveLowLine, WritesA0ToBeSetAndReadsItAsA0) {
  this->fake_.set8(this->kRegister, 0xFF);
  const auto line = this->line("3");
  EXPECT_EQ(line->bitSet(), 0);
  EXPECT_EQ(this->fake_.value8(this->kRegister), 0xF7);
  unsigned level = 7;
  EXPECT_EQ(line->bitRead(&level), 0);
  EXPECT_EQ(level, 0u);
}

TYPED_TEST(ActiveLowLine, WritesA1ToBeClearedAndReadsItAsA1) {
  this->fake_.set8(this->kRegister, 0x00);
  const auto line = this->line("3");
  EXPECT_EQ(line->bitClear(), 0);
  EXPECT_EQ(this->fake_.value8(this->kRegister), 0x08);
  unsigned level = 7;
  EXPECT_EQ(line->bitRead(&level), 0);
  EXPECT_EQ(level, 1u);
}

TYPED_TEST(ActiveLowLine, IsWrittenTheOtherWayRoundBlindlyToo) {
  const auto line = this->line("3");
  dynamic_cast<RegGpio&>(*line).writeOnly = true;
  EXPECT_EQ(line->bitSet(), 0);
  EXPECT_EQ(line->bitClear(), 0);
  EXPECT_THAT(this->fake_.batches(), ElementsAre(Operations{Op::write8(this->kRegister, 0xF7)},
                                                 Operations{Op::write8(this->kRegister, 0x08)}));
}

TYPED_TEST(ActiveLowLine, ReportsFailures) {
  this->faulty_.failAlways(6);
  EXPECT_EQ(this->line("3")->bitSet(), 6);
  EXPECT_EQ(this->line("3")->bitClear(), 6);
}

}  // namespace
