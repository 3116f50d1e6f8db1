// SPDX-License-Identifier: Apache-2.0
//
// The packed 64-bit address word of a request (`Smbus.Request.addr`): the register and everything
// that tells how to reach it. This is the one place that knows its bits.
#pragma once

#include <cstdint>

namespace SmbusAddress {

// A run of bits of the word, the lowest at `shift`.
struct Field {
  unsigned shift;
  unsigned width;

  [[nodiscard]] constexpr uint64_t mask() const { return (uint64_t{1} << width) - 1; }
  [[nodiscard]] constexpr uint32_t get(uint64_t word) const {
    return static_cast<uint32_t>(word >> shift & mask());
  }
  // The word with this field replaced; a value too wide is cut to the field.
  [[nodiscard]] constexpr uint64_t set(uint64_t word, uint64_t value) const {
    return (word & ~(mask() << shift)) | (value & mask()) << shift;
  }
};

inline constexpr Field kRegister{0, 32};     // register, command byte, or the byte sent
inline constexpr Field kDevice{32, 7};       // 7-bit device address
inline constexpr Field kBus{39, 7};          // bus number
inline constexpr Field kAccelerator{46, 7};  // accelerator number
inline constexpr Field kReadFlag{53, 1};     // the read is checked by a packet error code
inline constexpr Field kBusTimeout{54, 3};  // n > 0: 10 * 2^(n-1) ms an operation; 0: the adapter's
inline constexpr Field kAddressSize{57, 2};  // bytes of the register address
inline constexpr Field kExtraDelay{59, 1};   // 10 ms more after a read or a write
inline constexpr Field kWriteDelay{60, 2};   // wait after a write: 0, 1, 5 or 10 ms
inline constexpr Field kReadDelay{62, 2};    // the same after a read

}  // namespace SmbusAddress
