// SPDX-License-Identifier: Apache-2.0
//
// The packed address of one register access. It travels unchanged in every request to the SMBus
// service; bit 0 of the word is bit 0 of the register.
#pragma once

#include <bit>
#include <cstdint>

struct AhamAddress {
  uint64_t reg : 32;        // register or command byte of one request
  uint64_t address : 7;     // SMBus device address
  uint64_t bus : 7;         // bus number
  uint64_t accel : 7;       // accelerator number
  uint64_t readFlag : 1;    // the read asks for a packet error code
  uint64_t busTimeout : 3;  // n > 0: 10 x 2^(n-1) ms for one operation; 0: the adapter's default
  uint64_t addrSize : 2;    // width of a register address in bytes
  uint64_t extraDelay : 1;  // 10 ms more after each operation
  uint64_t writeDelay : 2;  // 0, 1, 5 or 10 ms after a write
  uint64_t readDelay : 2;   // 0, 1, 5 or 10 ms after a read

  uint64_t word() const { return std::bit_cast<uint64_t>(*this); }
};
static_assert(sizeof(AhamAddress) == sizeof(uint64_t));
