// SPDX-License-Identifier: Apache-2.0
#include "Drivers/Halvorsa/LedCPLD.hpp"

#include "Utils/Host.hpp"
#include "pl/pl_status.h"

namespace Drivers {

namespace {

constexpr uint8_t qsfpPortLedsDisableMap[] = {0, 1, 2, 3, 4, 5, 8, 9, 10, 11};
constexpr uint8_t qsfpPortLedsEnableMap[] = {6, 7};
constexpr uint8_t kDisabled = 0x00;
constexpr uint8_t kEnabled = 0xFF;

void writeAll(Ham::Ham& ham, std::span<const uint8_t> registers, uint8_t value) {
  for (const uint8_t reg : registers) {
    if (ham.write8(reg, value, false) != PL_STATUS_OK) {
      TRACE(0, "Failed to write QSFP Port LED Register: %hhu", reg);
    }
  }
}

// A line whose writes are inverted, and whose reads are not.
class InvertedRegGpio : public Component::LogicalDevice::RegGpio {
 public:
  using Component::LogicalDevice::RegGpio::RegGpio;
  pl_status bitSet() override { return Component::LogicalDevice::RegGpio::bitClear(); }
  pl_status bitClear() override { return Component::LogicalDevice::RegGpio::bitSet(); }
};

}  // namespace

Component::HardwareDevice* HalvCLedCPLD::create(const DriverArgs&, Ham::Ham*) {
  TRACE(5, "Creating HalvCLedCPLD device");
  return new HalvCLedCPLD;  // to the device cache
}

void HalvCLedCPLD::init() {
  disable_ = qsfpPortLedsDisableMap;
  enable_ = qsfpPortLedsEnableMap;
  setLedsRegister();
}

void HalvCLedCPLD::setLedsRegister() {
  writeAll(*ham, disable_, kDisabled);
  TRACE(0, "Successfully disable QSFP Port LEDs");
  writeAll(*ham, enable_, kEnabled);
  TRACE(0, "Successfully enable QSFP Port LEDs");
}

class HalvZLedCPLD::RegGpio : public InvertedRegGpio {
 public:
  using InvertedRegGpio::InvertedRegGpio;
};

class HalvTLedCPLD::RegGpio : public InvertedRegGpio {
 public:
  using InvertedRegGpio::InvertedRegGpio;
};

Component::HardwareDevice* HalvZLedCPLD::create(const DriverArgs&, Ham::Ham*) {
  TRACE(5, "Creating HalvZLedCPLD device");
  return new HalvZLedCPLD;  // to the device cache
}

Component::LogicalDevice::Gpio* HalvZLedCPLD::newGpio(const DriverArgs& args) {
  return new RegGpio(this, args);
}

Component::HardwareDevice* HalvTLedCPLD::create(const DriverArgs&, Ham::Ham*) {
  TRACE(5, "Creating HalvTLedCPLD device");
  return new HalvTLedCPLD;  // to the device cache
}

Component::LogicalDevice::Gpio* HalvTLedCPLD::newGpio(const DriverArgs& args) {
  return new RegGpio(this, args);
}

}  // namespace Drivers
