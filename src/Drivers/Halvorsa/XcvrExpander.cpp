// SPDX-License-Identifier: Apache-2.0
#include "Drivers/Halvorsa/XcvrExpander.hpp"

#include <array>

#include "Drivers/Args.hpp"
#include "Utils/Check.hpp"
#include "Utils/Host.hpp"

namespace Drivers {

namespace {

constexpr uint32_t kCacheTimeout = 2;  // seconds
constexpr int32_t kPCA9698Banks = 4;

constexpr SfpSignals kSfp = {
    .present = {"getPresence", nullptr, 0, Polarity::kActiveHigh},
    .txFault = {"getTxFault", nullptr, 3, Polarity::kActiveHigh},
    .rxLos = {"getRxLos", nullptr, 1, Polarity::kActiveHigh},
    .txDisable = {"getTxDisable", "setTxDisable", 2, Polarity::kActiveHigh},
};

constexpr QsfpSignals kQsfp = {
    .present = {"getPresence", nullptr, 2, Polarity::kActiveHigh},
    .lpMode = {"getLpMode", "setLpMode", 3, Polarity::kActiveHigh},
    .reset = {"getReset", "setReset", 0, Polarity::kActiveLow},
    .interrupt = {"getInterrupt", nullptr, 1, Polarity::kActiveLow},
    .modSelGetter = "getModSel",
    .modSelSetter = "setModSel",
};

// Outputs are 0: TX disable of an SFP port; reset and low-power mode of a QSFP port.
constexpr uint8_t kSfpDirections = 0xBB;
constexpr uint8_t kQsfpDirections = 0x66;

constexpr uint8_t baseOf(unsigned port) { return static_cast<uint8_t>((port & 1) * 4); }

// The ports' higher bits select the expander, in the topology.
XcvrBits onPCA9555(unsigned port) { return {static_cast<uint8_t>(port >> 1 & 1), baseOf(port)}; }
XcvrBits onPCA9698(unsigned port) { return {static_cast<uint8_t>(port >> 1 & 3), baseOf(port)}; }

constexpr XcvrExpanderKind kPCA9555 = {"HalvSPCA9555",
                                       PCA9555::kBanks,
                                       PCA9555::kInputBankBase,
                                       PCA9555::kOutputBankBase,
                                       PCA9555::kConfigBankBase,
                                       true,
                                       onPCA9555};
constexpr XcvrExpanderKind kPCA9698 = {"HalvorsaPCA9698", kPCA9698Banks, 0, 8, 24, false,
                                       onPCA9698};

}  // namespace

XcvrExpander::XcvrExpander(const XcvrExpanderKind& kind)
    : GPIOExpander(kind.banks, kCacheTimeout, kind.inputBankBase, kind.outputBankBase,
                   kind.configBankBase),
      kind_(kind) {}

XcvrPort XcvrExpander::portOf(unsigned int id) { return {this, id - 1, kind_.bitsOf(id - 1)}; }

Component::LogicalDevice::SfpXcvr* XcvrExpander::makeSfp(unsigned int id) {
  TRACE(5, "creating new SfpXcvr for id %hhu", static_cast<unsigned char>(id));
  return new BitSfpXcvr(id, portOf(id), kSfp);
}

Component::LogicalDevice::QsfpXcvr* XcvrExpander::makeQsfp(unsigned int id) {
  TRACE(5, "creating new QsfpXcvr for id %hhu", static_cast<unsigned char>(id));
  return new BitQsfpXcvr(id, portOf(id), kQsfp);
}

int XcvrExpander::tracedBit(const XcvrBits& bits, uint8_t offset) const {
  return kind_.tracesBase ? bits.base : bits.base + offset;
}

pl_status XcvrExpander::getRegisterBit(const XcvrBits& bits, uint8_t offset, int* value) {
  bool level;
  const auto bit = static_cast<uint8_t>(bits.base + offset);
  if (const pl_status status = readBit(bits.reg, bit, &level)) {
    TRACE(0, "%s bitRead() failed on Bank %d Bit %d!", kind_.name, bits.reg,
          tracedBit(bits, offset));
    return status;
  }
  *value = level ? 1 : 0;
  return PL_STATUS_OK;
}

// The write-back follows also a change that could not be made, whose status then counts.
pl_status XcvrExpander::writeRegisterBit(const XcvrBits& bits, uint8_t offset, bool value) {
  const auto bit = static_cast<uint8_t>(bits.base + offset);
  const pl_status written = writeBit(bits.reg, bit, value);
  const pl_status saved = save();
  if (saved != PL_STATUS_OK) {
    TRACE(0, "%s bitset() failed on Bank %d Bit %d!", kind_.name, bits.reg,
          tracedBit(bits, offset));
  }
  return written != PL_STATUS_OK ? written : saved;
}

// Ports 49 and 51 hold a module, awake and out of reset; outputs as they stand after that.
Utils::ExpectedVals HalvSPCA9555::values = {
    {0, {0x37, 1}},
    {1, {0x37, 1}},
    {2, {0x11, 1}},
    {3, {0x11, 1}},
};

HalvSPCA9555::HalvSPCA9555(const ArgMap& args)
    : XcvrExpander(kPCA9555),
      directions_{requiredByte(args, "bank-io-0"), requiredByte(args, "bank-io-1")} {}

Component::HardwareDevice* HalvSQSFP::create(const DriverArgs& args, Ham::Ham*) {
  TRACE(5, "Creating Halvorsa QSFP device");
  return new HalvSQSFP(args.driverArgs);  // to the device cache
}

Component::LogicalDevice::QsfpXcvr* HalvSQSFP::newQsfpXcvr(unsigned int id, const DriverArgs&) {
  CHECK(49 <= id && id <= 54);
  return makeQsfp(id);
}

// The first port of each bank holds a module with light, the second is empty; read as SFP ports.
Utils::ExpectedVals HalvorsaPCA9698::values = {
    {0, {0x21, 1}}, {1, {0x21, 1}}, {2, {0x21, 1}},  {3, {0x21, 1}},
    {8, {0x00, 1}}, {9, {0x00, 1}}, {10, {0x00, 1}}, {11, {0x00, 1}},
};

HalvorsaPCA9698::HalvorsaPCA9698(uint8_t directions)
    : XcvrExpander(kPCA9698), directions_(directions) {}

void HalvorsaPCA9698::init() {
  std::array<uint8_t, kPCA9698Banks> bytes;
  bytes.fill(directions_);
  if (writeConfig(bytes) != PL_STATUS_OK) {
    TRACE(0, "Error: failed to write PCA9698 pin configuration");
  }
}

Component::HardwareDevice* HalvorsaSFP::create(const DriverArgs&, Ham::Ham*) {
  TRACE(5, "Creating Halvorsa SFP device");
  return new HalvorsaSFP(kSfpDirections);  // to the device cache
}

Component::LogicalDevice::SfpXcvr* HalvorsaSFP::newSfpXcvr(unsigned int id, const DriverArgs&) {
  CHECK(1 <= id && id <= 48);
  return makeSfp(id);
}

// Its trace is the SFP driver's.
Component::HardwareDevice* HalvYQSFP::create(const DriverArgs&, Ham::Ham*) {
  TRACE(5, "Creating Halvorsa SFP device");
  return new HalvYQSFP(kSfpDirections);  // to the device cache
}

Component::LogicalDevice::QsfpXcvr* HalvYQSFP::newQsfpXcvr(unsigned int id, const DriverArgs&) {
  CHECK(49 <= id && id <= 56);
  return makeQsfp(id);
}

Component::HardwareDevice* HalvZQSFP::create(const DriverArgs&, Ham::Ham*) {
  TRACE(5, "Creating HalvorsaZ QSFP device");
  return new HalvZQSFP(kQsfpDirections);  // to the device cache
}

Component::LogicalDevice::QsfpXcvr* HalvZQSFP::newQsfpXcvr(unsigned int id, const DriverArgs&) {
  CHECK(49 <= id && id <= 56);
  return makeQsfp(id);
}

}  // namespace Drivers
