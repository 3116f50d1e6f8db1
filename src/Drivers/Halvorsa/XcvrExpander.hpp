// SPDX-License-Identifier: Apache-2.0
//
// Transceiver cages on GPIO expanders: four pins a port, two ports a bank.
//
//   offset   SFP             QSFP
//     +0     present         reset, active low, written
//     +1     RX loss         interrupt, active low
//     +2     TX disable, w   present
//     +3     TX fault        low-power mode, written
//
// Reads go through the expander's input cache; every write reaches the chip at once. What differs
// between the chips is an XcvrExpanderKind, and a driver is a class for its name, ports and
// directions.
#pragma once

#include <cstdint>

#include "Drivers/GPIOExpander.hpp"
#include "Drivers/GenericPCA9555.hpp"
#include "Drivers/Halvorsa/BitXcvr.hpp"

namespace Drivers {

struct XcvrExpanderKind {
  const char* name;  // in traces
  int32_t banks;
  uint8_t inputBankBase;
  uint8_t outputBankBase;
  uint8_t configBankBase;
  bool tracesBase;                    // failures name the port's first bit, not the bit itself
  XcvrBits (*bitsOf)(unsigned port);  // bank and base by port index, the port's number less 1
};

class XcvrExpander : public GPIOExpander, private XcvrChip {
 protected:
  explicit XcvrExpander(const XcvrExpanderKind& kind);

  // Cages of a port; the caller has checked its number.
  Component::LogicalDevice::SfpXcvr* makeSfp(unsigned int id);
  Component::LogicalDevice::QsfpXcvr* makeQsfp(unsigned int id);

 private:
  pl_status getRegisterBit(const XcvrBits& bits, uint8_t offset, int* value) override;
  pl_status writeRegisterBit(const XcvrBits& bits, uint8_t offset, bool value) override;
  int tracedBit(const XcvrBits& bits, uint8_t offset) const;
  XcvrPort portOf(unsigned int id);

  const XcvrExpanderKind& kind_;
};

// QSFP ports 49 to 54 on a PCA9555; "bank-io-0" and "bank-io-1" are its directions.
class HalvSPCA9555 : public XcvrExpander {
 public:
  void init() override { configure(directions_); }
  Utils::ExpectedVals* expectedValues() override { return &values; }

  static Utils::ExpectedVals values;

 protected:
  explicit HalvSPCA9555(const ArgMap& args);

 private:
  uint8_t directions_[PCA9555::kBanks];
};

class HalvSQSFP : public HalvSPCA9555 {
 public:
  static Component::HardwareDevice* create(const DriverArgs& args, Ham::Ham* ham);
  Component::LogicalDevice::QsfpXcvr* newQsfpXcvr(unsigned int id, const DriverArgs& args) override;

 private:
  using HalvSPCA9555::HalvSPCA9555;
};

// Eight ports on a PCA9698, four of whose banks are used; all have the same directions.
class HalvorsaPCA9698 : public XcvrExpander {
 public:
  void init() override;
  Utils::ExpectedVals* expectedValues() override { return &values; }

  static Utils::ExpectedVals values;

 protected:
  explicit HalvorsaPCA9698(uint8_t directions);

 private:
  uint8_t directions_;
};

// SFP ports 1 to 48.
class HalvorsaSFP : public HalvorsaPCA9698 {
 public:
  static Component::HardwareDevice* create(const DriverArgs& args, Ham::Ham* ham);
  Component::LogicalDevice::SfpXcvr* newSfpXcvr(unsigned int id, const DriverArgs& args) override;

 private:
  using HalvorsaPCA9698::HalvorsaPCA9698;
};

// QSFP ports 49 to 56 with the SFP ports' directions, which leave reset and low-power inputs.
class HalvYQSFP : public HalvorsaPCA9698 {
 public:
  static Component::HardwareDevice* create(const DriverArgs& args, Ham::Ham* ham);
  Component::LogicalDevice::QsfpXcvr* newQsfpXcvr(unsigned int id, const DriverArgs& args) override;

 private:
  using HalvorsaPCA9698::HalvorsaPCA9698;
};

// QSFP ports 49 to 56; not a driver of this board.
class HalvZQSFP : public HalvorsaPCA9698 {
 public:
  static Component::HardwareDevice* create(const DriverArgs& args, Ham::Ham* ham);
  Component::LogicalDevice::QsfpXcvr* newQsfpXcvr(unsigned int id, const DriverArgs& args) override;

 private:
  using HalvorsaPCA9698::HalvorsaPCA9698;
};

}  // namespace Drivers
