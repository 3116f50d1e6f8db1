// SPDX-License-Identifier: Apache-2.0
//
// The number formats of PMBus (PMBus 1.2 part II, sections 7 and 8.3), as pure functions.
#pragma once

#include <cstdint>

namespace Drivers {

// Mantissa x 2^exponent, both two's-complement numbers of the given widths in the low bits of `raw`
// and `exponent`.
float linearToReal(uint16_t raw, uint8_t exponent, uint8_t mantissaBits, uint8_t exponentBits);

// A LINEAR11 word: 5 bits of exponent above 11 of mantissa.
float linear11ToReal(uint16_t word);

// The LINEAR11 word of a number from 0 to 65535, low bits lost where 10 are not enough.
uint16_t realToLinear(uint16_t value);

}  // namespace Drivers
