// SPDX-License-Identifier: Apache-2.0
#include "Drivers/GenericPCA9555.hpp"

#include "Drivers/Args.hpp"
#include "Utils/Host.hpp"

namespace Drivers {

namespace {

uint8_t byteOr(const ArgMap& args, const char* key, uint8_t absent) {
  return static_cast<uint8_t>(numberOr(args, key, absent));
}

}  // namespace

Component::HardwareDevice* GenericPCA9555::create(const DriverArgs& args, Ham::Ham*) {
  return new GenericPCA9555(args.driverArgs);  // to the device cache
}

GenericPCA9555::GenericPCA9555(const ArgMap& args)
    : GPIOExpander(PCA9555::kBanks, byteOr(args, "cacheTimeout", PCA9555::kCacheTimeout),
                   byteOr(args, "inputBankBase", PCA9555::kInputBankBase),
                   byteOr(args, "outputBankBase", PCA9555::kOutputBankBase),
                   byteOr(args, "configBankBase", PCA9555::kConfigBankBase)),
      directions_{requiredByte(args, "bank-io-0"), requiredByte(args, "bank-io-1")} {
  TRACE(0, "Creating ambiguous PCA9555 Device: cacheTimeout %ds",
        byteOr(args, "cacheTimeout", PCA9555::kCacheTimeout));
}

void GenericPCA9555::init() { configure(directions_); }

Component::LogicalDevice::Gpio* GenericPCA9555::newGpio(const DriverArgs& args) {
  return new ExpGpio(this, args.driverArgs);
}

GenericPCA9555::ExpGpio::ExpGpio(GPIOExpander* expander, const ArgMap& args)
    : expander_(expander),
      bank_(static_cast<uint32_t>(requiredNumber(args, "bank"))),
      bit_(static_cast<uint32_t>(requiredNumber(args, "bit"))) {}

pl_status GenericPCA9555::ExpGpio::write(bool value) {
  return expander_->writeThrough(static_cast<uint8_t>(bank_), static_cast<uint8_t>(bit_), value);
}

pl_status GenericPCA9555::ExpGpio::bitSet() {
  const pl_status status = write(true);
  if (status != PL_STATUS_OK) {
    TRACE(0, "GenericPCA9555 bitSet() failed!");
  }
  return status;
}

pl_status GenericPCA9555::ExpGpio::bitClear() {
  const pl_status status = write(false);
  if (status != PL_STATUS_OK) {
    TRACE(0, "GenericPCA9555 bitClear() failed!");
  }
  return status;
}

pl_status GenericPCA9555::ExpGpio::bitRead(unsigned int* level) {
  bool value = false;
  const pl_status status =
      expander_->readBit(static_cast<uint8_t>(bank_), static_cast<uint8_t>(bit_), &value);
  *level = value ? 1 : 0;
  if (status != PL_STATUS_OK) {
    TRACE(0, "GenericPCA9555 bitRead() failed!");
  }
  return status;
}

}  // namespace Drivers
