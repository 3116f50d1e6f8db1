// SPDX-License-Identifier: Apache-2.0
//
// The system calls of one open i2c adapter (/dev/i2c-N), so that a test can stand in for the
// kernel. Each returns 0 or an errno value.
#pragma once

#include <linux/i2c-dev.h>
#include <linux/i2c.h>

#include <cstdint>
#include <memory>

namespace SmbusService {

class I2cCalls {
 public:
  virtual ~I2cCalls() = default;

  // I2C_FUNCS.
  [[nodiscard]] virtual int functions(unsigned long& functions) = 0;

  // One of the requests that take a number: I2C_SLAVE, I2C_SLAVE_FORCE, I2C_PEC, I2C_TIMEOUT.
  [[nodiscard]] virtual int set(unsigned long request, unsigned long value) = 0;

  // I2C_SMBUS, to the address set.
  [[nodiscard]] virtual int smbus(uint8_t readWrite, uint8_t command, uint32_t size,
                                  i2c_smbus_data& data) = 0;

  // I2C_RDWR.
  [[nodiscard]] virtual int transfer(i2c_rdwr_ioctl_data& messages) = 0;
};

// Opens /dev/i2c-`adapter`; throws std::system_error.
[[nodiscard]] std::unique_ptr<I2cCalls> openAdapter(uint32_t adapter);

}  // namespace SmbusService
