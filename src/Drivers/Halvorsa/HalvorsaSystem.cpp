// SPDX-License-Identifier: Apache-2.0
//
// The board as a whole. The PSoC switches its power: a bit set there does it, and nothing clears
// the bit again.
#include <cstdlib>
#include <memory>

#include "Components/Gpio.hpp"
#include "Drivers/Helpers.hpp"
#include "Nimbo.hpp"
#include "Utils/Check.hpp"
#include "Utils/Host.hpp"
#include "pl/pl_system.h"

namespace {

using Component::LogicalDevice::Gpio;
using Component::LogicalDevice::RegGpio;

struct PowerBit {
  uint32_t reg;
  uint32_t bitpos;
};

constexpr const char* kPowerDevice = "PSoC";
constexpr PowerBit kPowerOff = {10, 1};
constexpr PowerBit kPowerCycle = {8, 0};

// The registers cannot be read back, so the bit is written without reading its neighbours.
pl_status setPowerBit(const PowerBit& bit) {
  const std::unique_ptr<Gpio> gpio(Drivers::getRegGpioForDevice(kPowerDevice, bit.reg, bit.bitpos));
  CHECK(gpio);
  if (auto* regGpio = dynamic_cast<RegGpio*>(gpio.get())) {
    regGpio->writeOnly = true;
  }
  return gpio->bitSet();
}

constexpr pl_system_ops kSystemOps = {
    .size = sizeof(pl_system_ops),
    .poweroff = pl_system_poweroff,
    .powercycle = pl_system_powercycle,
    .get_reload_cause = pl_system_get_reload_cause,
    .reserved = nullptr,
};

}  // namespace

pl_status pl_system_init(const char* json) {
  return nimboLibraryInit("pl_system_init", json, kSocketRetries);
}

pl_system* pl_system_add(const char* name) {
  TRACE(0, "HalvorsaSystem::pl_system_add( '%s' )", name);
  void* memory = std::malloc(sizeof(pl_system));  // the caller's, who may be written in C
  CHECK(memory);
  return new (memory) pl_system{0, &kSystemOps};
}

pl_status pl_system_poweroff(pl_system*) { return setPowerBit(kPowerOff); }

pl_status pl_system_powercycle(pl_system*) { return setPowerBit(kPowerCycle); }

pl_status pl_system_get_reload_cause(pl_system*, char (*)[100], long*, char (*)[500]) {
  return PL_STATUS_UNSUPPORTED;
}
