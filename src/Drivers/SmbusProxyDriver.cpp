// SPDX-License-Identifier: Apache-2.0
#include "Drivers/SmbusProxyDriver.hpp"

#include <unistd.h>

#include <algorithm>
#include <string>

#include "Drivers/Args.hpp"
#include "Utils/Host.hpp"

namespace Drivers {

namespace {

constexpr uint32_t kUsPerMs = 1000;
constexpr uint32_t kNoRetries = 0;

uint32_t delayUs(const DriverArgs& args, const char* key) {
  return static_cast<uint32_t>(numberOr(args.driverArgs, key, 0)) * kUsPerMs;
}

}  // namespace

Component::HardwareDevice* SmbusProxyDriver::create(const DriverArgs&, Ham::Ham* ham) {
  if (ham != nullptr) {
    ham->retryCountIs(kNoRetries);
  }
  return new SmbusProxyDriver;  // to the device cache
}

Component::LogicalDevice::SmbusProxy* SmbusProxyDriver::newSmbusProxy(const DriverArgs& args) {
  const uint32_t readDelay = delayUs(args, "localReadDelayMs");
  const uint32_t writeDelay = delayUs(args, "localWriteDelayMs");
  TRACE(0, "setting read delay of %d useconds\n", static_cast<int>(readDelay));
  TRACE(0, "setting write delay of %d useconds\n", static_cast<int>(writeDelay));
  return new SmbusProxy(this, readDelay, writeDelay);
}

pl_status SmbusProxyDriver::SmbusProxy::afterRead(pl_status status) const {
  ::usleep(readDelayUs);
  return status;
}

pl_status SmbusProxyDriver::SmbusProxy::afterWrite(pl_status status) const {
  ::usleep(writeDelayUs);
  return status;
}

pl_status SmbusProxyDriver::SmbusProxy::receiveByte(unsigned char* value) {
  return afterRead(ham().recvByte(value));
}

pl_status SmbusProxyDriver::SmbusProxy::sendByte(unsigned char value) {
  return afterWrite(ham().sendByte(value, false));
}

pl_status SmbusProxyDriver::SmbusProxy::readByte(unsigned char reg, unsigned char* value) {
  return afterRead(ham().read8(reg, value));
}

pl_status SmbusProxyDriver::SmbusProxy::writeByte(unsigned char reg, unsigned char value) {
  return afterWrite(ham().write8(reg, value, false));
}

pl_status SmbusProxyDriver::SmbusProxy::readWord(unsigned char reg, unsigned short* value) {
  return afterRead(ham().read16(reg, value));
}

pl_status SmbusProxyDriver::SmbusProxy::writeWord(unsigned char reg, unsigned short value) {
  return afterWrite(ham().write16(reg, value, false));
}

pl_status SmbusProxyDriver::SmbusProxy::blockRead(unsigned char reg, unsigned char* data,
                                                  unsigned int* length) {
  std::string block;
  const pl_status status = ham().readBlock(reg, &block);
  *length = static_cast<unsigned>(block.size());
  std::copy(block.begin(), block.end(), data);
  return afterRead(status);
}

pl_status SmbusProxyDriver::SmbusProxy::blockWrite(unsigned char reg, const unsigned char* data,
                                                   unsigned int length) {
  return afterWrite(ham().writeBlock(reg, data, length, false));
}

pl_status SmbusProxyDriver::SmbusProxy::i2cBlockRead(unsigned char reg, unsigned char* data,
                                                     unsigned int length) {
  std::string block;
  const pl_status status = ham().read(reg, length, &block, false);
  if (block.size() != length) {
    return PL_STATUS_FAILED;
  }
  std::copy(block.begin(), block.end(), data);
  return afterRead(status);
}

pl_status SmbusProxyDriver::SmbusProxy::i2cBlockWrite(unsigned char reg, const unsigned char* data,
                                                      unsigned int length) {
  return afterWrite(ham().write(reg, data, length, false));
}

pl_status SmbusProxyDriver::SmbusProxy::processCall(unsigned char reg, unsigned short value,
                                                    unsigned short* result) {
  return afterWrite(ham().processCall(reg, value, result));
}

}  // namespace Drivers
