// SPDX-License-Identifier: Apache-2.0
//
// A second reading of PMBus 1.2 part II, sections 7.1 and 8.3.1: whole-number arithmetic and ldexp
// here, masks and a power function in the library.
#pragma once

#include <cmath>

namespace Doubles {

// The value of the low `bits` bits as a two's-complement number.
inline int twosComplement(unsigned value, unsigned bits) {
  const int range = 1 << bits;
  const int low = static_cast<int>(value) % range;
  return low < range / 2 ? low : low - range;
}

inline float expectedLinear(unsigned raw, unsigned exponent, unsigned mantissaBits,
                            unsigned exponentBits) {
  return std::ldexp(static_cast<float>(twosComplement(raw, mantissaBits)),
                    twosComplement(exponent, exponentBits));
}

inline float expectedLinear11(unsigned word) {
  return expectedLinear(word % 2048, word / 2048, 11, 5);
}

}  // namespace Doubles
