// SPDX-License-Identifier: Apache-2.0
#include "Components/Gpio.hpp"

#include <gmock/gmock.h>

#include <memory>
#include <stdexcept>

#include "Components/HardwareDevice.hpp"
#include "Components/MultiDevice.hpp"
#include "Drivers/Registry.hpp"
#include "test/support/Check.hpp"
#include "test/support/Describe.hpp"
#include "test/support/FakeHam.hpp"
#include "test/support/FaultyHam.hpp"
#include "test/support/Host.hpp"

namespace {

using Component::HardwareDevice;
using Component::LogicalDevice::Gpio;
using Component::LogicalDevice::RegGpio;
using Doubles::describeBare;
using Doubles::FakeHam;
using Doubles::FaultyHam;
using Doubles::host;
using Doubles::Operations;
using Doubles::Trace;
using testing::ElementsAre;
using testing::IsEmpty;

namespace Op = Doubles::Op;

constexpr const char* kUnit = "Components/Gpio";

class StubGpio : public Gpio {
 public:
  pl_status bitClear() override { return 12; }
  pl_status bitSet() override { return 11; }
  pl_status bitRead(unsigned int* level) override {
    *level = 1;
    return 13;
  }
};

TEST(GpioOps, StandInOrder) {
  EXPECT_EQ(Gpio::ops_.size, 32u);
  EXPECT_EQ(Gpio::ops_.bit_set, Gpio::bitSetCallback);
  EXPECT_EQ(Gpio::ops_.bit_clear, Gpio::bitClearCallback);
  EXPECT_EQ(Gpio::ops_.bit_read, Gpio::bitReadCallback);
}

TEST(GpioCallback, ForwardsUnderItsBareName) {
  StubGpio gpio;
  pl_gpio* record = gpio.record();
  unsigned level = 0;
  EXPECT_EQ(record->ops->bit_set(record), 11);
  EXPECT_EQ(record->ops->bit_clear(record), 12);
  EXPECT_EQ(record->ops->bit_read(record, &level), 13);
  EXPECT_EQ(level, 1u);
  EXPECT_THAT(host().traces, ElementsAre(Trace{4, "bitSetCallback"}, Trace{4, "bitClearCallback"},
                                         Trace{4, "bitReadCallback"}));
}

// A bit of a register.

Drivers::DriverArgs line(Drivers::ArgMap driverArgs) {
  Drivers::DriverArgs args;
  args.driverArgs = std::move(driverArgs);
  return args;
}

class RegisterBit : public testing::Test {
 protected:
  RegisterBit() {
    device_.ham = &faulty_;
    fake_.set8(kRegister, 0x0F);
  }
  std::unique_ptr<Gpio> bit(const char* bitpos) {
    return std::unique_ptr<Gpio>(device_.newGpio(line({{"register", "10"}, {"bitpos", bitpos}})));
  }
  std::unique_ptr<Gpio> writeOnlyBit(const char* bitpos) {
    auto gpio = bit(bitpos);
    dynamic_cast<RegGpio&>(*gpio).writeOnly = true;
    return gpio;
  }

  static constexpr uint32_t kRegister = 10;
  FakeHam fake_;
  FaultyHam faulty_{fake_};
  HardwareDevice device_;
};

TEST_F(RegisterBit, IsMadeByEveryDeviceWithRegisters) {
  const auto gpio = bit("3");
  const auto& made = dynamic_cast<RegGpio&>(*gpio);
  EXPECT_EQ(made.device, &device_);
  EXPECT_FALSE(made.writeOnly);
  EXPECT_EQ(made.reg, kRegister);
  EXPECT_EQ(made.bitpos, 3u);
}

TEST_F(RegisterBit, WantsRegisterAndBit) {
  EXPECT_CHECK(device_.newGpio(line({{"bitpos", "1"}})), kUnit, "it != args.driverArgs.end()");
  EXPECT_CHECK(device_.newGpio(line({{"register", "1"}})), kUnit, "it != args.driverArgs.end()");
}

TEST_F(RegisterBit, ThrowsOnATextThatIsNoNumber) {
  EXPECT_THROW(device_.newGpio(line({{"register", "x"}, {"bitpos", "1"}})), std::invalid_argument);
  EXPECT_THROW(bit("4294967296"), std::out_of_range);
}

TEST_F(RegisterBit, IsSetBesideTheOthers) {
  EXPECT_EQ(bit("7")->bitSet(), 0);
  EXPECT_THAT(fake_.batches(), ElementsAre(Operations{Op::read8(kRegister)},
                                           Operations{Op::write8(kRegister, 0x8F)}));
}

TEST_F(RegisterBit, IsClearedBesideTheOthers) {
  EXPECT_EQ(bit("0")->bitClear(), 0);
  EXPECT_THAT(fake_.batches(), ElementsAre(Operations{Op::read8(kRegister)},
                                           Operations{Op::write8(kRegister, 0x0E)}));
}

TEST_F(RegisterBit, IsWrittenBlindlyWhenWriteOnly) {
  EXPECT_EQ(writeOnlyBit("7")->bitSet(), 0);
  EXPECT_EQ(writeOnlyBit("0")->bitClear(), 0);
  EXPECT_THAT(fake_.batches(), ElementsAre(Operations{Op::write8(kRegister, 0x80)},
                                           Operations{Op::write8(kRegister, 0xFE)}));
}

TEST_F(RegisterBit, IsRead) {
  unsigned level = 7;
  EXPECT_EQ(bit("3")->bitRead(&level), 0);
  EXPECT_EQ(level, 1u);
  EXPECT_EQ(bit("4")->bitRead(&level), 0);
  EXPECT_EQ(level, 0u);
  EXPECT_EQ(writeOnlyBit("2")->bitRead(&level), 0);
  EXPECT_EQ(level, 1u);
}

TEST_F(RegisterBit, BeyondTheRegisterReadsAs0AndIsNeverSet) {
  unsigned level = 7;
  EXPECT_EQ(bit("8")->bitRead(&level), 0);
  EXPECT_EQ(level, 0u);
  EXPECT_EQ(bit("40")->bitSet(), 0);
  EXPECT_EQ(fake_.value8(kRegister), 0x0F);
}

TEST_F(RegisterBit, ReportsAReadThatFailsAndDoesNotWrite) {
  unsigned level = 7;
  faulty_.failAlways(6);
  EXPECT_EQ(bit("0")->bitRead(&level), 6);
  EXPECT_EQ(bit("0")->bitSet(), 6);
  EXPECT_EQ(bit("0")->bitClear(), 6);
  EXPECT_EQ(level, 7u);
  EXPECT_THAT(fake_.batches(), IsEmpty());
}

TEST_F(RegisterBit, ReportsAWriteThatFails) {
  faulty_.failAt(1, 4);
  EXPECT_EQ(bit("7")->bitSet(), 4);
  faulty_.failAt(1, 6);
  EXPECT_EQ(bit("0")->bitClear(), 6);
}

// Adding lines.

class NoLines : public HardwareDevice {
 public:
  Gpio* newGpio(const DriverArgs&) override { return nullptr; }
};

TEST(GpioAdder, GivesTheRecordOfARegisterBit) {
  pl_gpio* record =
      pl_gpio_add(describeBare(7, "GpioDriver", R"({"register":10,"bitpos":1})").c_str());
  ASSERT_NE(record, nullptr);
  const std::unique_ptr<Gpio> gpio(static_cast<Gpio*>(record->object));
  EXPECT_EQ(gpio->record(), record);
  EXPECT_EQ(dynamic_cast<RegGpio&>(*gpio).reg, 10u);
}

TEST(GpioAdder, SaysNothingOfItsOwnWhenThereIsNoDevice) {
  EXPECT_EQ(pl_gpio_add("{"), nullptr);
  EXPECT_EQ(host().traces.back(), (Trace{0, "failed to parse json object as a device"}));
}

TEST(GpioAdder, SaysNothingOfItsOwnWhenThereIsNoLine) {
  Drivers::drivers["NoLines"] = [](const auto&, auto*) { return new NoLines; };
  EXPECT_EQ(pl_gpio_add(describeBare(7, "NoLines").c_str()), nullptr);
  EXPECT_EQ(host().traces.back(), (Trace{0, "NoLines device created"}));
}

TEST(GpioAdder, GivesNullForAContainer) {
  Drivers::drivers["Container"] = [](const auto&, auto*) { return new Component::MultiDevice; };
  const std::string text =
      describeBare(7, "Container", "{}", R"(,"isMultiDevice":true,"multiDeviceArgs":{})");
  EXPECT_EQ(pl_gpio_add(text.c_str()), nullptr);
}

}  // namespace
