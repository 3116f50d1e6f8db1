// SPDX-License-Identifier: Apache-2.0
//
// Raw SMBus access, as drivers implement it (pl/pl_smbus.h says what the operations mean).
#pragma once

#include "pl/pl_smbus.h"

namespace Component::LogicalDevice {

// Never deleted through this interface, and so without a virtual destructor.
class SmbusProxy {
 public:
  SmbusProxy() : record_{0, &ops_, this} {}
  SmbusProxy(const SmbusProxy&) = delete;
  SmbusProxy& operator=(const SmbusProxy&) = delete;

  // Throws NotImplementedException unless a driver has it.
  virtual pl_status quickCommand(int bit);
  virtual pl_status receiveByte(unsigned char* value) = 0;
  virtual pl_status sendByte(unsigned char value) = 0;
  virtual pl_status readByte(unsigned char reg, unsigned char* value) = 0;
  virtual pl_status writeByte(unsigned char reg, unsigned char value) = 0;
  virtual pl_status readWord(unsigned char reg, unsigned short* value) = 0;
  virtual pl_status writeWord(unsigned char reg, unsigned short value) = 0;
  virtual pl_status blockRead(unsigned char reg, unsigned char* data, unsigned int* length) = 0;
  virtual pl_status blockWrite(unsigned char reg, const unsigned char* data,
                               unsigned int length) = 0;
  virtual pl_status i2cBlockRead(unsigned char reg, unsigned char* data, unsigned int length) = 0;
  virtual pl_status i2cBlockWrite(unsigned char reg, const unsigned char* data,
                                  unsigned int length) = 0;
  virtual pl_status processCall(unsigned char reg, unsigned short value,
                                unsigned short* result) = 0;
  // Throws NotImplementedException unless a driver has it.
  virtual pl_status blockProcessCall(unsigned char reg, const unsigned char* data,
                                     unsigned char length, unsigned char* result,
                                     unsigned char* resultLength);

  pl_smbus* record() { return &record_; }

  static pl_status quickCommandCallback(pl_smbus* smbus, int bit);
  static pl_status receiveByteCallback(pl_smbus* smbus, unsigned char* value);
  static pl_status sendByteCallback(pl_smbus* smbus, unsigned char value);
  static pl_status readByteCallback(pl_smbus* smbus, unsigned char reg, unsigned char* value);
  static pl_status writeByteCallback(pl_smbus* smbus, unsigned char reg, unsigned char value);
  static pl_status readWordCallback(pl_smbus* smbus, unsigned char reg, unsigned short* value);
  static pl_status writeWordCallback(pl_smbus* smbus, unsigned char reg, unsigned short value);
  static pl_status blockReadCallback(pl_smbus* smbus, unsigned char reg, unsigned char* data,
                                     unsigned int* length);
  static pl_status blockWriteCallback(pl_smbus* smbus, unsigned char reg, const unsigned char* data,
                                      unsigned int length);
  static pl_status i2cBlockReadCallback(pl_smbus* smbus, unsigned char reg, unsigned char* data,
                                        unsigned int length);
  static pl_status i2cBlockWriteCallback(pl_smbus* smbus, unsigned char reg,
                                         const unsigned char* data, unsigned int length);
  static pl_status processCallCallback(pl_smbus* smbus, unsigned char reg, unsigned short value,
                                       unsigned short* result);
  static pl_status blockProcessCallCallback(pl_smbus* smbus, unsigned char reg,
                                            const unsigned char* data, unsigned char length,
                                            unsigned char* result, unsigned char* resultLength);
  static const pl_smbus_ops ops_;

 protected:
  ~SmbusProxy() = default;

 private:
  pl_smbus record_;
};

}  // namespace Component::LogicalDevice
