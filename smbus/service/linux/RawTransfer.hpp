// SPDX-License-Identifier: Apache-2.0
//
// An operation as the raw bytes of one I2C_RDWR transfer: what the kernel's SMBus calls cannot do
// (register addresses of two bytes, blocks above 32 bytes, a PEC on an I2C block).
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "smbus/service/Bus.hpp"
#include "smbus/service/linux/I2cCalls.hpp"

namespace SmbusService {

// Returns 0 or an errno value; EOPNOTSUPP for a block read, whose length only the device knows,
// and for more bytes than a transfer takes.
[[nodiscard]] int rawTransfer(I2cCalls& calls, const Operation& operation, std::string& answer);

}  // namespace SmbusService
