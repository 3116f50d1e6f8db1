// SPDX-License-Identifier: Apache-2.0
//
// One SMBus, as the service drives it: the seam between the protocol and what carries it out
// (Linux's i2c adapters, the virtual board).
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace SmbusService {

// The operations of SMBus 3.0 section 6.5 and the I2C block transfers beside them.
enum class OperationKind : uint8_t {
  kReceiveByte,
  kReadByte,
  kReadWord,      // low byte first
  kReadI2cBlock,  // exactly `size` bytes
  kReadBlock,     // the device's own count, then that many bytes
  kSendByte,
  kWriteByte,
  kWriteWord,
  kWriteI2cBlock,
  kWriteBlock,   // count, then `data`
  kProcessCall,  // two bytes out, two bytes in
};

// One operation on one device of the bus. It borrows `data` for the call.
struct Operation {
  OperationKind kind = OperationKind::kReadByte;
  uint8_t address = 0;       // 7 bits
  uint32_t command = 0;      // the register; for kSendByte its low 8 bits are the byte sent
  uint8_t commandBytes = 1;  // 1 or 2, most significant byte first
  bool pec = false;          // packet error code, appended or checked
  size_t size = 0;           // bytes to read, for kReadI2cBlock
  std::span<const uint8_t> data = {};
  std::chrono::milliseconds timeout{0};  // 0: the adapter's own default
};

// Used by one thread at a time: the service holds the bus's lock for a whole transaction.
class Bus {
 public:
  virtual ~Bus() = default;

  // Carries out one operation and blocks until it is over. Bytes read replace the contents of
  // `answer` (a block read's count byte is not among them); a write empties it. Returns 0, or the
  // errno value that says best what happened, as Linux's i2c adapters use them: ENXIO for an
  // address that no device acknowledged, EREMOTEIO for a byte refused later, ETIMEDOUT for a bus
  // that hangs, EBADMSG for a wrong PEC, EBUSY for a bus whose lines are held, EIO for a transfer
  // cut short, EPROTO for a block count that cannot be, EOPNOTSUPP for what the adapter cannot do.
  [[nodiscard]] virtual int perform(const Operation& operation, std::string& answer) = 0;
};

}  // namespace SmbusService
