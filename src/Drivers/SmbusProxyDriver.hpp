// SPDX-License-Identifier: Apache-2.0
//
// Raw SMBus access to one device, for the host's own purposes. What goes through a proxy is never
// retried. "localReadDelayMs" and "localWriteDelayMs" of the arguments, decimal milliseconds, make
// it wait after each operation; the wait blocks the host's thread.
#pragma once

#include "Components/HardwareDevice.hpp"
#include "Components/SmbusProxy.hpp"

namespace Drivers {

class SmbusProxyDriver : public Component::HardwareDevice {
 public:
  class SmbusProxy;

  static Component::HardwareDevice* create(const DriverArgs& args, Ham::Ham* ham);

  Component::LogicalDevice::SmbusProxy* newSmbusProxy(const DriverArgs& args) override;
};

// Each operation is the HAM's, without PEC, then the wait of its kind, failed or not; a process
// call waits as a write does.
class SmbusProxyDriver::SmbusProxy final : public Component::LogicalDevice::SmbusProxy {
 public:
  // Delays in microseconds; the device is borrowed.
  SmbusProxy(Component::HardwareDevice* device, uint32_t readDelay, uint32_t writeDelay)
      : device_(device), readDelayUs(readDelay), writeDelayUs(writeDelay) {}

  pl_status receiveByte(unsigned char* value) override;
  pl_status sendByte(unsigned char value) override;
  pl_status readByte(unsigned char reg, unsigned char* value) override;
  pl_status writeByte(unsigned char reg, unsigned char value) override;
  pl_status readWord(unsigned char reg, unsigned short* value) override;
  pl_status writeWord(unsigned char reg, unsigned short value) override;
  // Stores as many bytes as the device gave: the buffer must hold a full block.
  pl_status blockRead(unsigned char reg, unsigned char* data, unsigned int* length) override;
  pl_status blockWrite(unsigned char reg, const unsigned char* data, unsigned int length) override;
  // An answer of another length, also that of a failed access, is status 4 at once.
  pl_status i2cBlockRead(unsigned char reg, unsigned char* data, unsigned int length) override;
  pl_status i2cBlockWrite(unsigned char reg, const unsigned char* data,
                          unsigned int length) override;
  pl_status processCall(unsigned char reg, unsigned short value, unsigned short* result) override;

 private:
  Ham::Ham& ham() const { return *device_->ham; }
  pl_status afterRead(pl_status status) const;
  pl_status afterWrite(pl_status status) const;

  Component::HardwareDevice* device_;
  uint32_t readDelayUs;
  uint32_t writeDelayUs;
};

}  // namespace Drivers
