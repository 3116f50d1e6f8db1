// SPDX-License-Identifier: Apache-2.0
//
// Stands in for the kernel's i2c adapter: one device with 256 registers of a byte, at kFakeDevice,
// that counts its registers up; another functionality word makes another adapter of it.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "smbus/service/linux/I2cCalls.hpp"

namespace SmbusService {

inline constexpr uint8_t kFakeDevice = 0x50;

// What the adapter was asked, and what a test wants it to do.
struct FakeI2cState {
  unsigned long functions = I2C_FUNC_I2C | I2C_FUNC_SMBUS_EMUL_ALL;
  std::array<uint8_t, 256> registers{};
  std::vector<std::string> calls;  // "slave 0x50", "smbus read 8 0x10", "transfer w2 r40"
  std::vector<std::string> sent;   // the bytes of each message written by a transfer
  std::string toReceive;           // what a transfer reads; empty: the registers
  int error = 0;                   // of every transfer
  bool bound = false;              // a kernel driver has the device
};

class FakeI2c : public I2cCalls {
 public:
  explicit FakeI2c(FakeI2cState& state) : state_(state) {}

  int functions(unsigned long& functions) override;
  int set(unsigned long request, unsigned long value) override;
  int smbus(uint8_t readWrite, uint8_t command, uint32_t size, i2c_smbus_data& data) override;
  int transfer(i2c_rdwr_ioctl_data& messages) override;

 private:
  void receive(i2c_msg& message);

  FakeI2cState& state_;
  size_t pointer_ = 0;  // the register that a transfer named last
};

}  // namespace SmbusService
