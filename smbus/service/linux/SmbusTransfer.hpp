// SPDX-License-Identifier: Apache-2.0
//
// An operation as one of the kernel's SMBus calls (I2C_SMBUS), to the address set before.
#pragma once

#include <string>

#include "smbus/service/Bus.hpp"
#include "smbus/service/linux/I2cCalls.hpp"

namespace SmbusService {

// The bit of the adapter's functionality word that the operation needs.
[[nodiscard]] unsigned long functionFor(OperationKind kind);

// Whether the call can carry the operation: a register of one byte, a block of up to 32 bytes, and
// a PEC on anything but an I2C block, where the kernel would leave it out without a word.
[[nodiscard]] bool fitsSmbusCall(const Operation& operation);

// Returns 0 or an errno value.
[[nodiscard]] int smbusTransfer(I2cCalls& calls, const Operation& operation, std::string& answer);

}  // namespace SmbusService
