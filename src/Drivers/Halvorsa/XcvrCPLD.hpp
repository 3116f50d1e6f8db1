// SPDX-License-Identifier: Apache-2.0
//
// Transceiver cages on a CPLD: registers 1 to 4 of 16 bits, most significant byte first, four ports
// a register and four bits a port. Port index p (0 to 15) is in register p / 4 + 1, the first port
// of a register in its highest four bits.
//
//   offset   SFP              QSFP
//     +0     RX loss          low-power mode, written
//     +1     present          present
//     +2     TX disable, w    interrupt, active low
//     +3     TX fault         reset, active low, written
//
// The registers are polled every 1000 ms. Queries answer from that cache and never touch the bus;
// before the first poll that succeeds every bit is 0. A control bit is written into the cached
// value of its register.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "Components/PollingDevice.hpp"
#include "Drivers/Halvorsa/BitXcvr.hpp"

namespace Drivers {

class HalvXcvrCPLD : public Component::PollingDevice<Component::HardwareDevice>, private XcvrChip {
 public:
  // Reads the registers once and starts polling.
  void init() override;
  // Ports 1 to 48; the CPLD has 16, and the number's higher part selects it in the topology.
  Component::LogicalDevice::SfpXcvr* newSfpXcvr(XcvrId id, const DriverArgs& args) override;
  void pollCallback() override { updateRegisterCache(); }

  // A bit of a register as last polled, or read anew with `refresh`.
  pl_status getRegisterBit(uint8_t reg, uint8_t bit, int* value, bool refresh);
  // Changes a bit of the cached value, or with `refresh` of what the register holds, and writes it.
  pl_status setRegisterBit(uint8_t reg, uint8_t bit, bool value, bool refresh);

 protected:
  // Puts the ports' registers at the head of those that each poll reads.
  void pollPortRegisters();
  // A cage's place on the CPLD, traced.
  XcvrPort portOf(unsigned index, unsigned tracedId);

 private:
  pl_status getRegisterBit(const XcvrBits& bits, uint8_t offset, int* value) override;
  pl_status writeRegisterBit(const XcvrBits& bits, uint8_t offset, bool value) override;
  bool updateRegisterCache();
  pl_status refreshed(uint8_t reg, uint16_t* value);

  std::array<uint16_t, 256> registerCache_{};  // by register; bytes in their natural order
  std::vector<uint8_t> registers_;
};

// QSFP ports 1 to 32, sixteen a CPLD.
class HalvorsaQCPLD : public HalvXcvrCPLD {
 public:
  static Component::HardwareDevice* create(const DriverArgs& args, Ham::Ham* ham);
  void init() override;
  Component::LogicalDevice::QsfpXcvr* newQsfpXcvr(XcvrId id, const DriverArgs& args) override;
  Utils::ExpectedVals* expectedValues() override { return &values; }

  static Utils::ExpectedVals values;
};

class HalvorsaYCPLD : public HalvXcvrCPLD {
 public:
  static Component::HardwareDevice* create(const DriverArgs& args, Ham::Ham* ham);
  void init() override;
};

// Not a driver of this board.
class HalvorsaZCPLD : public HalvXcvrCPLD {
 public:
  static Component::HardwareDevice* create(const DriverArgs& args, Ham::Ham* ham);
  void init() override;
};

}  // namespace Drivers
