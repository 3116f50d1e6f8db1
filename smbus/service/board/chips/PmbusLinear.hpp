// SPDX-License-Identifier: Apache-2.0
//
// The number formats of PMBus 1.2 part II, sections 7 and 8.3.
#pragma once

#include <cstdint>

namespace SmbusService::Board {

// LINEAR11: an 11-bit two's-complement mantissa times 2 to the power of a 5-bit two's-complement
// exponent in the top bits. The encoding takes the smallest exponent that holds the value, and the
// largest value there is for one beyond the range.
[[nodiscard]] uint16_t toLinear11(double value);
[[nodiscard]] double fromLinear11(uint16_t word);

// ULINEAR16: an unsigned mantissa times 2 to the power of the exponent that VOUT_MODE gives in its
// low five bits, two's complement.
[[nodiscard]] uint16_t toLinear16(double value, uint8_t voutMode);
[[nodiscard]] double fromLinear16(uint16_t word, uint8_t voutMode);

}  // namespace SmbusService::Board
