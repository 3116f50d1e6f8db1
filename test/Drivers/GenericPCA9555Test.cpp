// SPDX-License-Identifier: Apache-2.0
#include "Drivers/GenericPCA9555.hpp"

#include <gmock/gmock.h>

#include <stdexcept>

#include "test/support/Check.hpp"
#include "test/support/Device.hpp"
#include "test/support/FakeHam.hpp"
#include "test/support/FaultyHam.hpp"
#include "test/support/Host.hpp"
#include "test/support/LibraryClock.hpp"
#include "test/support/ScriptedHam.hpp"

namespace {

using namespace std::chrono_literals;
using Component::LogicalDevice::Gpio;
using Doubles::FakeHam;
using Doubles::FaultyHam;
using Doubles::host;
using Doubles::LibraryClock;
using Doubles::made;
using Doubles::Operations;
using Doubles::ScriptedHam;
using Doubles::settings;
using Doubles::Trace;
using Drivers::ArgMap;
using Drivers::GenericPCA9555;
using testing::ElementsAre;
using testing::IsEmpty;

namespace Op = Doubles::Op;

constexpr const char* kUnit = "Drivers/GenericPCA9555";
constexpr const char* kRequired = "it != args.driverArgs.end()";

// The directions, and further arguments.
ArgMap withDirections(ArgMap more = {}) {
  more.insert({{"bank-io-0", "240"}, {"bank-io-1", "15"}});
  return more;
}

// Start.

TEST(Pca9555Start, WritesTheDirectionsAndNoOutput) {
  ScriptedHam ham;
  const auto device = made<GenericPCA9555>(ham, withDirections());
  EXPECT_THAT(host().traces,
              ElementsAre(Trace{0, "Creating ambiguous PCA9555 Device: cacheTimeout 2s"}));
  ham.expect({Op::write8(6, 0xF0), Op::write8(7, 0x0F)});
  device->init();
}

TEST(Pca9555Start, CutsNumbersTo8Bits) {
  ScriptedHam ham;
  const auto device = made<GenericPCA9555>(ham, {{"bank-io-0", "257"},
                                                 {"bank-io-1", "-1"},
                                                 {"cacheTimeout", "263"},
                                                 {"configBankBase", "272"}});
  EXPECT_TRUE(host().traced(0, "Creating ambiguous PCA9555 Device: cacheTimeout 7s"));
  ham.expect({Op::write8(0x10, 0x01), Op::write8(0x11, 0xFF)});
  device->init();
}

TEST(Pca9555Start, TakesTheRegistersOfItsArguments) {
  ScriptedHam ham;
  const auto device = made<GenericPCA9555>(
      ham, withDirections(
               {{"inputBankBase", "16"}, {"outputBankBase", "32"}, {"configBankBase", "48"}}));
  ham.expect({Op::write8(48, 0xF0), Op::write8(49, 0x0F)});
  device->init();
  ham.expect({Op::read8(17).gives(0x01)});
  bool level = false;
  EXPECT_EQ(device->readBit(1, 0, &level), 0);
  ham.expect({Op::read8(33).gives(0x80)});
  ham.expect({Op::write8(33, 0x81)});
  EXPECT_EQ(device->writeThrough(1, 0, true), 0);
}

TEST(Pca9555Start, WantsBothDirections) {
  EXPECT_CHECK(GenericPCA9555::create(settings({{"bank-io-1", "0"}}), nullptr), kUnit, kRequired);
  EXPECT_CHECK(GenericPCA9555::create(settings({{"bank-io-0", "0"}}), nullptr), kUnit, kRequired);
}

TEST(Pca9555Start, ThrowsOnATextThatIsNoNumber) {
  EXPECT_THROW(GenericPCA9555::create(settings(withDirections({{"cacheTimeout", "x"}})), nullptr),
               std::invalid_argument);
}

TEST(Pca9555Start, GoesOnWithoutAWordWhenTheDirectionsFail) {
  FakeHam fake;
  FaultyHam ham(fake);
  const auto device = made<GenericPCA9555>(ham, withDirections());
  ham.failAlways(6);
  host().traces.clear();
  device->init();
  EXPECT_THAT(host().traces, ElementsAre(Trace{5, "GPIOExpander::save"}));
}

TEST(Pca9555Start, ReportsPendingOutputsThatFail) {
  FakeHam fake;
  FaultyHam ham(fake);
  fake.set8(2, 0);
  const auto device = made<GenericPCA9555>(ham, withDirections());
  device->writeBit(0, 0, true);
  ham.failAt(1, 6);
  device->init();
  EXPECT_EQ(host().traces.back(), (Trace{0, "Error: failed to write PCA9555 pin configuration"}));
}

TEST(Pca9555Start, HasNoSimulatedRegisters) {
  FakeHam fake;
  EXPECT_EQ(made<GenericPCA9555>(fake, withDirections())->expectedValues(), nullptr);
}

// Input time-outs.

class Pca9555Cache : public testing::Test {
 protected:
  // Reads of a bank at the start, so long after it, and a little after that.
  size_t readsAround(std::chrono::seconds timeout, ArgMap args) {
    const auto device = made<GenericPCA9555>(fake_, withDirections(std::move(args)));
    fake_.set8(0, 0);
    bool level;
    device->readBit(0, 0, &level);
    clock_.advance(timeout);
    device->readBit(0, 1, &level);
    EXPECT_EQ(fake_.batches().size(), 1u);
    clock_.advance(1ns);
    device->readBit(0, 2, &level);
    return fake_.batches().size();
  }

  FakeHam fake_;
  LibraryClock clock_;
};

TEST_F(Pca9555Cache, Lasts2SecondsUnlessSaidOtherwise) { EXPECT_EQ(readsAround(2s, {}), 2u); }

TEST_F(Pca9555Cache, LastsAsLongAsTheArgumentSays) {
  EXPECT_EQ(readsAround(7s, {{"cacheTimeout", "7"}}), 2u);
}

TEST_F(Pca9555Cache, LastsForTheArgumentsLow8Bits) {
  EXPECT_EQ(readsAround(3s, {{"cacheTimeout", "259"}}), 2u);
}

// Pins.

struct Pin {
  const char* bank;
  const char* bit;
  uint8_t input;
  uint8_t output;
  uint8_t mask;
};
constexpr Pin kPins[] = {
    {"0", "0", 0, 2, 0x01}, {"0", "1", 0, 2, 0x02}, {"0", "2", 0, 2, 0x04}, {"0", "3", 0, 2, 0x08},
    {"0", "4", 0, 2, 0x10}, {"0", "5", 0, 2, 0x20}, {"0", "6", 0, 2, 0x40}, {"0", "7", 0, 2, 0x80},
    {"1", "0", 1, 3, 0x01}, {"1", "1", 1, 3, 0x02}, {"1", "2", 1, 3, 0x04}, {"1", "3", 1, 3, 0x08},
    {"1", "4", 1, 3, 0x10}, {"1", "5", 1, 3, 0x20}, {"1", "6", 1, 3, 0x40}, {"1", "7", 1, 3, 0x80},
};

class Pca9555Pin : public testing::Test {
 protected:
  Pca9555Pin() {
    for (const uint32_t reg : {0u, 1u, 2u, 3u}) {
      fake_.set8(reg, 0);
    }
    host().traces.clear();
  }

  std::unique_ptr<Gpio> pin(const char* bank, const char* bit) {
    return std::unique_ptr<Gpio>(device_->newGpio(settings({{"bank", bank}, {"bit", bit}})));
  }

  FakeHam fake_;
  FaultyHam faulty_{fake_};
  LibraryClock clock_;
  std::unique_ptr<GenericPCA9555> device_ =
      made<GenericPCA9555>(faulty_, withDirections({{"cacheTimeout", "0"}}));
};

TEST_F(Pca9555Pin, ReadsItsBitAlone) {
  for (const Pin& row : kPins) {
    SCOPED_TRACE(testing::Message() << "bank " << row.bank << " bit " << row.bit);
    const auto gpio = pin(row.bank, row.bit);
    unsigned level = 7;
    fake_.set8(row.input, row.mask);
    EXPECT_EQ(gpio->bitRead(&level), 0);
    EXPECT_EQ(level, 1u);
    fake_.set8(row.input, static_cast<uint8_t>(~row.mask));
    EXPECT_EQ(gpio->bitRead(&level), 0);
    EXPECT_EQ(level, 0u);
  }
}

TEST_F(Pca9555Pin, SetsAndClearsItsBitAlone) {
  for (const Pin& row : kPins) {
    SCOPED_TRACE(testing::Message() << "bank " << row.bank << " bit " << row.bit);
    const auto gpio = pin(row.bank, row.bit);
    fake_.set8(row.output, 0x00);
    EXPECT_EQ(gpio->bitSet(), 0);
    EXPECT_EQ(fake_.value8(row.output), row.mask);
    fake_.set8(row.output, 0xFF);
    EXPECT_EQ(gpio->bitClear(), 0);
    EXPECT_EQ(fake_.value8(row.output), static_cast<uint8_t>(~row.mask));
  }
}

TEST_F(Pca9555Pin, CostsOneReadAndOneWriteToSet) {
  pin("1", "7")->bitSet();
  EXPECT_THAT(fake_.batches(),
              ElementsAre(Operations{Op::read8(3)}, Operations{Op::write8(3, 0x80)}));
}

TEST_F(Pca9555Pin, WantsBankAndBit) {
  EXPECT_CHECK(device_->newGpio(settings({{"bit", "0"}})), kUnit, kRequired);
  EXPECT_CHECK(device_->newGpio(settings({{"bank", "0"}})), kUnit, kRequired);
}

TEST_F(Pca9555Pin, ReportsAWriteThatFails) {
  const auto gpio = pin("0", "0");
  faulty_.failAt(1, 6);
  EXPECT_EQ(gpio->bitSet(), 6);
  EXPECT_EQ(host().traces.back(), (Trace{0, "GenericPCA9555 bitSet() failed!"}));
  faulty_.failAt(1, 4);
  EXPECT_EQ(gpio->bitClear(), 4);
  EXPECT_EQ(host().traces.back(), (Trace{0, "GenericPCA9555 bitClear() failed!"}));
}

TEST_F(Pca9555Pin, SucceedsInChangingNothingWhenItsBankCannotBeRead) {
  const auto gpio = pin("0", "0");
  faulty_.failOn(2, 6);
  EXPECT_EQ(gpio->bitSet(), 0);
  EXPECT_EQ(gpio->bitClear(), 0);
  EXPECT_THAT(fake_.batches(), IsEmpty());
  EXPECT_THAT(host().texts(0), ElementsAre("Error: status 6 while reading output bank 0",
                                           "Error: status 6 while reading output bank 0"));
}

TEST_F(Pca9555Pin, ReadsAs0WhenItCannotBeRead) {
  fake_.set8(0, 0xFF);
  const auto gpio = pin("0", "0");
  unsigned level = 7;
  faulty_.failNext(6);
  EXPECT_EQ(gpio->bitRead(&level), 6);
  EXPECT_EQ(level, 0u);
  EXPECT_EQ(host().traces.back(), (Trace{0, "GenericPCA9555 bitRead() failed!"}));
}

TEST_F(Pca9555Pin, OfBank2IsRefusedToTheHost) {
  const auto gpio = pin("2", "0");
  pl_gpio* record = gpio->record();
  unsigned level = 7;
  EXPECT_EQ(record->ops->bit_set(record), 5);
  EXPECT_EQ(record->ops->bit_clear(record), 5);
  EXPECT_EQ(record->ops->bit_read(record, &level), 5);
  EXPECT_EQ(level, 0u);
  EXPECT_THAT(fake_.batches(), IsEmpty());
  EXPECT_THAT(host().texts(0),
              ElementsAre("GenericPCA9555 bitSet() failed!", "GenericPCA9555 bitClear() failed!",
                          "GenericPCA9555 bitRead() failed!"));
}

TEST_F(Pca9555Pin, BehindThatStopsTheProcess) {
  const auto gpio = pin("3", "0");
  unsigned level;
  EXPECT_CHECK(gpio->bitSet(), "Drivers/GPIOExpander", "n <= numBanks_");
  EXPECT_CHECK(gpio->bitRead(&level), "Drivers/GPIOExpander", "n <= numBanks_");
  EXPECT_CHECK(pin("0", "8")->bitClear(), "Drivers/GPIOExpander", "bit <= 7");
}

TEST_F(Pca9555Pin, HasBankAndBitCutTo8Bits) {
  EXPECT_EQ(pin("257", "258")->bitSet(), 0);
  EXPECT_EQ(fake_.value8(3), 0x04);
}

}  // namespace
