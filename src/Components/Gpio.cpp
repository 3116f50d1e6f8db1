// SPDX-License-Identifier: Apache-2.0
#include "Components/Gpio.hpp"

#include "Components/Adder.hpp"
#include "Components/HardwareDevice.hpp"
#include "Drivers/Args.hpp"
#include "Nimbo.hpp"

namespace Component::LogicalDevice {

namespace {

Gpio* object(pl_gpio* gpio) { return static_cast<Gpio*>(gpio->object); }

// The register has 8 bits; a line beyond them is never set and reads as 0.
uint8_t maskOf(uint32_t bitpos) { return static_cast<uint8_t>(bitpos < 8 ? 1u << bitpos : 0u); }

}  // namespace

const pl_gpio_ops Gpio::ops_ = {
    .size = sizeof(pl_gpio_ops),
    .bit_set = bitSetCallback,
    .bit_clear = bitClearCallback,
    .bit_read = bitReadCallback,
};

pl_status Gpio::bitSetCallback(pl_gpio* gpio) {
  TRACE(4, "%s", "bitSetCallback");
  return object(gpio)->bitSet();
}

pl_status Gpio::bitClearCallback(pl_gpio* gpio) {
  TRACE(4, "%s", "bitClearCallback");
  return object(gpio)->bitClear();
}

pl_status Gpio::bitReadCallback(pl_gpio* gpio, unsigned int* level) {
  TRACE(4, "%s", "bitReadCallback");
  return object(gpio)->bitRead(level);
}

RegGpio::RegGpio(HardwareDevice* owner, const Drivers::DriverArgs& args)
    : device(owner),
      reg(static_cast<uint32_t>(Drivers::requiredNumber(args.driverArgs, "register"))),
      bitpos(static_cast<uint32_t>(Drivers::requiredNumber(args.driverArgs, "bitpos"))) {}

pl_status RegGpio::base(uint8_t blind, uint8_t* value) {
  *value = blind;
  return writeOnly ? PL_STATUS_OK : device->ham->read8(reg, value);
}

pl_status RegGpio::bitSet() {
  uint8_t value;
  if (const pl_status status = base(0x00, &value)) {
    return status;
  }
  return device->ham->write8(reg, static_cast<uint8_t>(value | maskOf(bitpos)), false);
}

pl_status RegGpio::bitClear() {
  uint8_t value;
  if (const pl_status status = base(0xFF, &value)) {
    return status;
  }
  return device->ham->write8(reg, static_cast<uint8_t>(value & ~maskOf(bitpos)), false);
}

pl_status RegGpio::bitRead(unsigned int* level) {
  uint8_t value;
  if (const pl_status status = device->ham->read8(reg, &value)) {
    return status;
  }
  *level = (value & maskOf(bitpos)) != 0 ? 1 : 0;
  return PL_STATUS_OK;
}

}  // namespace Component::LogicalDevice

using namespace Component;

pl_status pl_gpio_init(const char* json) {
  return nimboLibraryInit("pl_gpio_init", json, kSocketRetries);
}

// Only a device with registers has lines.
pl_gpio* pl_gpio_add(const char* json) {
  static constexpr AdderTrace kSilent = {0, nullptr, nullptr};
  Drivers::DriverArgs args;
  return recordOf(makeLogical(DeviceBase::create(json, args), kSilent, [&](DeviceBase* device) {
    auto* hardware = dynamic_cast<HardwareDevice*>(device);
    return hardware != nullptr ? hardware->newGpio(args) : nullptr;
  }));
}
